#pragma once

// Shared by the compositor's redraw, presentation, palette, effect and text tests: the protected side of
// QorOffScreenBuffer opened to the tests, pixel helpers, and the comparison with golden images.
#include "qor/pictures.h"
#include "qor/compositor.h"
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace qortest
{
class Probe : public QorOffScreenBuffer
{
public:
    using QorOffScreenBuffer::CreateNewPic;
    using QorOffScreenBuffer::GetCorrespondingSprite;
    using QorOffScreenBuffer::SetPaletteActually;

    OffScrBuf* Main() { return GetMainBuffer(); }
    QorGuider MainGuider() const { return m_mainBuffer; }
    OffScrBuf* Buffer(const QorGuider& g) { return FindBuffer(g); }
    QorSprite* Sprite(const QorGuider& g) { return FindSprite(g); }
    PicRecord* Pic(const QorGuider& g) { return FindPicOrSurface(g); }
    QorPicBlock& Picture(const QorGuider& g) { return FindPicOrSurface(g)->picture; }
    std::uint32_t ActiveEffects() const { return m_activeEffects; }
    const stPaletteEntry& Stored(int i) const { return m_palette[i]; }
    const RGBQUAD& TableEntry(int i) const { return m_bitmapHeader.bmiColors[i]; }
    const BITMAPINFOHEADER& Header() const { return m_bitmapHeader.bmiHeader; }
    HBITMAP Section() const { return m_section; }
    HDC SectionDC() const { return m_sectionDC; }
    HDC WindowDC() const { return m_windowDC; }

    /// A registry picture of the system colour type, w x h, every pixel colour (bytes per pixel bytes).
    QorGuider MakePic(long w, long h, const unsigned char* colour)
    {
        QorGuider g = CreateNewPic();
        QorPicBlock& p = Picture(g);
        p.Reset(GetSystemColorType(), w, h);
        for (long y = 0; y < h; ++y)
            for (long x = 0; x < w; ++x)
                std::memcpy(p.GetPixel(x, y), colour, p.GetBytesPerPixel());
        return g;
    }
    /// The same with one byte value repeated.
    QorGuider MakePic(long w, long h, unsigned char value)
    {
        const unsigned char colour[4] = {value, value, value, value};
        return MakePic(w, h, colour);
    }
    /// The guider of a sprite known only by its address.
    static QorGuider GuiderOf(QorSprite* sprite)
    {
        QorGuider g;
        if (sprite)
        {
            g.identifier = static_cast<std::uint32_t>(sprite->GetId());
            g.object = sprite;
        }
        return g;
    }
    /// The guider naming a child's surface as a picture.
    QorGuider SurfaceOf(const QorGuider& child)
    {
        QorGuider g;
        OffScrBuf* buffer = FindBuffer(child);
        if (buffer)
        {
            g.identifier = buffer->surface.id;
            g.object = &buffer->surface;
        }
        return g;
    }
};

using Bytes = std::vector<unsigned char>;

inline Bytes At(const QorPicBlock& p, long x, long y)
{
    return Bytes(p.GetPixel(x, y), p.GetPixel(x, y) + p.GetBytesPerPixel());
}

inline void SetAt(QorPicBlock& p, long x, long y, const Bytes& v)
{
    std::memcpy(p.GetPixel(x, y), v.data(), p.GetBytesPerPixel());
}

/// The 32-bit frame a headless window last presented, as a Bit32 picture (blue, green, red, 0).
inline QorPicBlock FrameOf(HWND window)
{
    QorPicBlock frame(QorPicBlock::Bit32);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    if (!port)
        return frame;
    frame.Reset(QorPicBlock::Bit32, port->GetWidth(), port->GetHeight());
    const std::vector<unsigned char>& bytes = port->GetPresentedFrame();
    for (std::size_t i = 0; i + 3 < bytes.size() && i + 3 < frame.GetSize(); i += 4)
    {
        std::memcpy(frame.GetDataPtr() + i, bytes.data() + i, 3);
        frame.GetDataPtr()[i + 3] = 0;
    }
    return frame;
}

/// Compares a picture with tests/golden/<family>/<name>.png byte for byte. On a mismatch the picture is
/// written to golden-actual/<family>/<name>.actual.png in the build tree (tools/update-goldens.sh copies
/// it over the golden), with the golden beside it as <name>.expected.png.
inline void ExpectMatchesGolden(const QorPicBlock& actual, const std::string& family, const std::string& name)
{
    QorPicBlock expected;
    const std::string path = std::string(QOR_GOLDEN_DIR) + "/" + family + "/" + name + ".png";
    const bool loaded = QorLoadPicturePng(expected, path.c_str(), actual.GetColorType());
    std::string difference;
    if (!loaded)
        difference = "golden missing or unreadable";
    else if (expected.GetWidth() != actual.GetWidth() || expected.GetHeight() != actual.GetHeight())
        difference = "size " + std::to_string(actual.GetWidth()) + "x" + std::to_string(actual.GetHeight()) +
                     ", golden " + std::to_string(expected.GetWidth()) + "x" + std::to_string(expected.GetHeight());
    else
        for (long y = 0; y < actual.GetHeight() && difference.empty(); ++y)
            for (long x = 0; x < actual.GetWidth() && difference.empty(); ++x)
                if (At(actual, x, y) != At(expected, x, y))
                    difference = "first difference at (" + std::to_string(x) + ", " + std::to_string(y) + ")";
    if (difference.empty())
        return;
    std::filesystem::create_directories("golden-actual/" + family);
    const std::string base = "golden-actual/" + family + "/" + name;
    QorSavePicturePng(actual, (base + ".actual.png").c_str());
    if (loaded)
        QorSavePicturePng(expected, (base + ".expected.png").c_str());
    ADD_FAILURE() << name << ": " << difference << "; wrote " << base << ".actual.png";
}
} // namespace qortest
