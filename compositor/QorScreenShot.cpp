#include "compositor/QorScreenShot.h"

#include "core/QorError.h"
#include "pictures/QorPicFiles.h"

#include <cstring>

char QorCaptureScreen(QorOffScreenBuffer& screen, QorPicBlock& picture)
{
    const QorPicBlock* main = screen.GetMainBufferPicBlockPtr();
    if (!main || main->GetWidth() < 1 || main->GetHeight() < 1)
        return QorSetError("screenshot: the compositor has no screen (Initialize it first)");
    const long w = main->GetWidth();
    const long h = main->GetHeight();
    // A top-down 32-bit section receives exactly what the window would.
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = LONG(w);
    info.bmiHeader.biHeight = -LONG(h);
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP section = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!section || !bits)
        return QorSetError("screenshot: no memory for a %ld x %ld image", w, h);
    CDC dc;
    dc.CreateCompatibleDC(nullptr);
    HGDIOBJ previous = ::SelectObject(dc.GetSafeHdc(), section);
    screen.DrawToDC(&dc, 0, 0);

    QorPicBlock shot(QorPicBlock::Bit32, w, h);
    const bool made = shot.GetWidth() == w && shot.GetHeight() == h;
    if (made)
    {
        std::memcpy(shot.GetDataPtr(), bits, shot.GetSize());
        for (unsigned long i = 3; i < shot.GetSize(); i += 4)
            shot.GetDataPtr()[i] = 0;
    }
    ::SelectObject(dc.GetSafeHdc(), previous);
    dc.DeleteDC();
    ::DeleteObject(section);
    if (!made)
        return QorSetError("screenshot: no memory for a %ld x %ld picture", w, h);
    picture = shot;
    return 1;
}

char QorSaveScreenPng(QorOffScreenBuffer& screen, const char* path)
{
    QorPicBlock shot(QorPicBlock::Bit32);
    return QorCaptureScreen(screen, shot) ? QorSavePicturePng(shot, path) : 0;
}
