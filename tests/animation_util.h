#pragma once

// Shared by the animation tests: the set's protected side opened to the tests, the test set written with
// QorAnimSetWriter, and byte-level helpers for set files made by hand.
#include "compositor_probe.h"
#include "qor/animation.h"
#include "test_util.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qortest
{
class SetProbe : public QorAnimSet
{
public:
    using QorAnimSet::FindIndex;
    using QorAnimSet::QorAnimUnitRun;
    static QorAnimUnitRun* Run(const QorGuider& g) { return static_cast<QorAnimUnitRun*>(g.object); }
};

/// An 8-bit w x h picture, every pixel value, mask colour 0; with keyed, pixel (0, 0) is the key.
inline QorPicBlock MakeSetPicture(long w, long h, unsigned char value, bool keyed = false)
{
    QorPicBlock p(QorPicBlock::Bit8, w, h);
    for (long y = 0; y < h; ++y)
        for (long x = 0; x < w; ++x)
            *p.GetPixel(x, y) = value;
    const unsigned char key = 0;
    p.SetMask(&key);
    if (keyed)
        *p.GetPixel(0, 0) = key;
    return p;
}

// The test set: pictures 0 (4 x 3 of 10, keyed corner), 1 (2 x 5 of 20), 2 (3 x 3 of 30), and the units
//   0 "walk"  loop       origin (10, 20) depth 700, frames pics 0 1 2, x 0 5 -3, y 0 1 2
//   1 "blink" play once  origin (30, 5)  depth 400, frames pics 2 2,   x 1 2,    y 0 0
//   2 "empty" loop without frames
//   3 "inert" mode 2     origin (0, 0)   depth 100, frame pic 1 at (0, 0)
inline QorAnimSetWriter TestSetWriter(long defaultFlag = QorAnimSet::kReadHeaders)
{
    QorAnimSetWriter w;
    w.AddPicture(MakeSetPicture(4, 3, 10, true));
    w.AddPicture(MakeSetPicture(2, 5, 20));
    w.AddPicture(MakeSetPicture(3, 3, 30));
    const long walkPics[] = {0, 1, 2}, walkXs[] = {0, 5, -3}, walkYs[] = {0, 1, 2};
    w.AddUnit("walk", 1, 10, 20, 700, walkPics, walkXs, walkYs, 3);
    const long blinkPics[] = {2, 2}, blinkXs[] = {1, 2}, blinkYs[] = {0, 0};
    w.AddUnit("blink", 0, 30, 5, 400, blinkPics, blinkXs, blinkYs, 2);
    w.AddUnit("empty", 1, 0, 0, 10, nullptr, nullptr, nullptr, 0);
    const long inertPics[] = {1}, inertXs[] = {0}, inertYs[] = {0};
    w.AddUnit("inert", 2, 0, 0, 100, inertPics, inertXs, inertYs, 1);
    w.SetDefaultOpenFlag(defaultFlag);
    return w;
}

inline std::string WriteTestSet(const std::string& path, long defaultFlag = QorAnimSet::kReadHeaders)
{
    QorAnimSetWriter w = TestSetWriter(defaultFlag);
    EXPECT_GT(w.Write(path.c_str()), 0u);
    return path;
}

inline void PutLE32(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
}

inline void AppendLE32(std::vector<std::uint8_t>& bytes, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        bytes.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

inline std::uint32_t GetLE32(const std::vector<std::uint8_t>& bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) | static_cast<std::uint32_t>(bytes[at + 1]) << 8 |
           static_cast<std::uint32_t>(bytes[at + 2]) << 16 | static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

/// The header of a set file: magic, version, kept value, default flag, three reserved words.
inline std::vector<std::uint8_t> SetHeader(std::uint32_t defaultFlag)
{
    std::vector<std::uint8_t> bytes = {0x00, 'S', 'A', 'Q'};
    AppendLE32(bytes, 0x10000);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, defaultFlag);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 0);
    return bytes;
}

/// A unit record: 31-byte name, mode, x, y, depth, frame count and the three tables.
inline void AppendUnit(std::vector<std::uint8_t>& bytes, const std::string& name, std::int32_t mode, std::int32_t x,
                       std::int32_t y, std::int32_t depth, const std::vector<std::uint32_t>& pics,
                       const std::vector<std::int32_t>& xs, const std::vector<std::int32_t>& ys)
{
    std::vector<std::uint8_t> field(31, 0);
    for (std::size_t i = 0; i < name.size() && i < 31; ++i)
        field[i] = static_cast<std::uint8_t>(name[i]);
    bytes.insert(bytes.end(), field.begin(), field.end());
    AppendLE32(bytes, static_cast<std::uint32_t>(mode));
    AppendLE32(bytes, static_cast<std::uint32_t>(x));
    AppendLE32(bytes, static_cast<std::uint32_t>(y));
    AppendLE32(bytes, static_cast<std::uint32_t>(depth));
    AppendLE32(bytes, static_cast<std::uint32_t>(pics.size()));
    for (std::uint32_t v : pics)
        AppendLE32(bytes, v);
    for (std::int32_t v : xs)
        AppendLE32(bytes, static_cast<std::uint32_t>(v));
    for (std::int32_t v : ys)
        AppendLE32(bytes, static_cast<std::uint32_t>(v));
}

/// An 8-bit QGB picture: type 1, width, height, pixels, one mask byte.
inline void AppendQgb8(std::vector<std::uint8_t>& bytes, std::uint32_t w, std::uint32_t h, std::uint8_t value,
                       std::uint8_t mask)
{
    AppendLE32(bytes, 1);
    AppendLE32(bytes, w);
    AppendLE32(bytes, h);
    bytes.insert(bytes.end(), std::size_t(w) * h, value);
    bytes.push_back(mask);
}
} // namespace qortest
