// Picture transforms: nearest-neighbour zoom, rotation about the top-left pixel, the transparent screen
// and the declared-only deform.
#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace
{
// An 8-bit picture whose pixel (x, y) is 10 * y + x + 1.
QorPicBlock Numbered(long w, long h)
{
    QorPicBlock p(QorPicBlock::Bit8, w, h);
    for (long y = 0; y < h; ++y)
        for (long x = 0; x < w; ++x)
            *p.GetPixel(x, y) = static_cast<unsigned char>(10 * y + x + 1);
    return p;
}

// Every byte of every pixel differs: byte b of pixel (x, y) is x * 16 + y * 4 + b + 1.
void FillDistinct(QorPicBlock& p)
{
    const int bpp = p.GetBytesPerPixel();
    for (long y = 0; y < p.GetHeight(); ++y)
        for (long x = 0; x < p.GetWidth(); ++x)
            for (int b = 0; b < bpp; ++b)
                p.GetPixel(x, y)[b] = static_cast<unsigned char>(x * 16 + y * 4 + b + 1);
}

std::vector<unsigned char> Bytes(const QorPicBlock& p)
{
    return std::vector<unsigned char>(p.GetDataPtr(), p.GetDataPtr() + p.GetSize());
}

std::vector<int> Row8(const QorPicBlock& p, long y)
{
    return std::vector<int>(p.GetPixel(0, y), p.GetPixel(0, y) + p.GetWidth());
}

QorPicBlock::ColorType TypeOfBytes(int bpp)
{
    return QorPicBlock::ColorType(bpp);
}

// A picture's observable state, to show that an operation left it alone.
struct stSnapshot
{
    explicit stSnapshot(const QorPicBlock& p)
        : type(p.GetColorType()), width(p.GetWidth()), height(p.GetHeight()), data(p.GetDataPtr()), bytes(Bytes(p)),
          mask(p.GetMask(), p.GetMask() + p.GetBytesPerPixel())
    {
    }
    bool operator==(const stSnapshot& o) const
    {
        return type == o.type && width == o.width && height == o.height && data == o.data && bytes == o.bytes &&
               mask == o.mask;
    }

    QorPicBlock::ColorType type;
    long width;
    long height;
    const unsigned char* data;
    std::vector<unsigned char> bytes;
    std::vector<unsigned char> mask;
};

// The zoom's table entry: trunc(i / (newSize / oldSize)).
long ZoomIndex(long i, long oldSize, long newSize)
{
    return static_cast<long>(double(i) / (double(newSize) / double(oldSize)));
}

// The rotation worked out separately: bounding box of the truncated corners, then each result pixel turned
// back and rounded by +0.5 with truncation.
struct stRotation
{
    stRotation(long srcWidth, long srcHeight, double degrees)
    {
        const double theta = 3.14159265358979323846 * degrees * 0.005555555555555556;
        c = std::cos(theta);
        s = std::sin(theta);
        cr = std::cos(-theta);
        sr = std::sin(-theta);
        w = srcWidth - 1;
        h = srcHeight - 1;
        const long xs[4] = {0, w, w, 0};
        const long ys[4] = {0, 0, h, h};
        for (int k = 0; k < 4; ++k)
        {
            const long x = static_cast<long>(double(xs[k]) * c - double(ys[k]) * s);
            const long y = static_cast<long>(double(xs[k]) * s + double(ys[k]) * c);
            if (k == 0 || x < minX)
                minX = x;
            if (k == 0 || x > maxX)
                maxX = x;
            if (k == 0 || y < minY)
                minY = y;
            if (k == 0 || y > maxY)
                maxY = y;
        }
    }
    long Width() const { return maxX - minX + 1; }
    long Height() const { return maxY - minY + 1; }
    // False when the result pixel (i, j) lies outside the source.
    bool Source(long i, long j, long& u, long& v) const
    {
        const double x = double(i + minX), y = double(j + minY);
        u = static_cast<long>(x * cr - y * sr + 0.5);
        v = static_cast<long>(x * sr + y * cr + 0.5);
        return u >= 0 && u <= w && v >= 0 && v <= h;
    }

    double c = 0, s = 0, cr = 0, sr = 0;
    long w = 0, h = 0;
    long minX = 0, maxX = 0, minY = 0, maxY = 0;
};

// Checks every pixel of a rotation result of src against the separate computation; uncovered pixels hold mask.
void ExpectRotation(const QorPicBlock& result, const QorPicBlock& src, double degrees, const unsigned char* mask)
{
    const stRotation r(src.GetWidth(), src.GetHeight(), degrees);
    ASSERT_EQ(result.GetWidth(), r.Width());
    ASSERT_EQ(result.GetHeight(), r.Height());
    const std::size_t bpp = src.GetBytesPerPixel();
    for (long j = 0; j < r.Height(); ++j)
        for (long i = 0; i < r.Width(); ++i)
        {
            long u = 0, v = 0;
            const unsigned char* expected = r.Source(i, j, u, v) ? src.GetPixel(u, v) : mask;
            EXPECT_EQ(std::memcmp(result.GetPixel(i, j), expected, bpp), 0) << degrees << ": " << i << "," << j;
        }
}

// The screen table of the transparency levels 1 to 9: keep pattern, step, period.
struct stLevel
{
    int keep[10];
    int step;
    int period;
};
const stLevel kLevels[10] = {
    {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 1, 1}, {{0, 0, 0, 0, 1, 0, 0, 0, 0, 0}, 3, 2},
    {{0, 0, 1, 0, 0, 0, 0, 1, 0, 0}, 2, 2}, {{0, 0, 1, 0, 0, 1, 0, 0, 1, 0}, 1, 3},
    {{0, 0, 1, 0, 1, 0, 0, 1, 0, 1}, 1, 3}, {{0, 1, 0, 1, 0, 1, 0, 1, 0, 1}, 1, 2},
    {{1, 1, 0, 1, 0, 1, 1, 0, 1, 0}, 1, 3}, {{1, 1, 0, 1, 1, 0, 1, 1, 0, 1}, 1, 3},
    {{1, 1, 0, 1, 1, 1, 1, 0, 1, 1}, 2, 2}, {{1, 1, 1, 1, 0, 1, 1, 1, 1, 1}, 3, 2},
};

bool Kept(int level, long x, long y)
{
    const stLevel& l = kLevels[level];
    return l.keep[((y % l.period) * l.step + x) % 10] != 0;
}

// Columns of row y that keep their colour after CreateTransparent of a picture whose pixels are all non-zero
// with mask colour 0.
std::vector<long> KeptColumns(const QorPicBlock& p, long y)
{
    std::vector<long> out;
    for (long x = 0; x < p.GetWidth(); ++x)
        if (*p.GetPixel(x, y) != 0)
            out.push_back(x);
    return out;
}

QorPicBlock Opaque8(long w, long h)
{
    unsigned char five = 5;
    return QorPicBlock(QorPicBlock::Bit8, w, h, &five);
}
} // namespace

// ---- CreateZoom

TEST(QorPicBlockZoom, TwoByTwoToFourByFourRepeatsEachPixelInATwoByTwoBlock)
{
    const QorPicBlock src = Numbered(2, 2);
    QorPicBlock p;
    p.CreateZoom(src, 4L, 4L);
    ASSERT_EQ(p.GetWidth(), 4);
    ASSERT_EQ(p.GetHeight(), 4);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{1, 1, 2, 2}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{1, 1, 2, 2}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{11, 11, 12, 12}));
    EXPECT_EQ(Row8(p, 3), (std::vector<int>{11, 11, 12, 12}));
}

TEST(QorPicBlockZoom, FourByFourToTwoByTwoKeepsColumnsAndRowsZeroAndTwo)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p;
    p.CreateZoom(src, 2L, 2L);
    ASSERT_EQ(p.GetWidth(), 2);
    ASSERT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{1, 3}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{21, 23}));
}

TEST(QorPicBlockZoom, ThreeToFiveRepeatsTheFirstTwoColumns)
{
    // Columns i / (5 / 3): 0, 0.6, 1.2, 1.8, 2.4.
    const QorPicBlock src = Numbered(3, 3);
    QorPicBlock p;
    p.CreateZoom(src, 5L, 3L);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{1, 1, 2, 2, 3}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{21, 21, 22, 22, 23}));
}

TEST(QorPicBlockZoom, FiveToThreeKeepsColumnsZeroOneAndThree)
{
    // Columns i / 0.6: 0, 1.67, 3.33.
    const QorPicBlock src = Numbered(5, 5);
    QorPicBlock p;
    p.CreateZoom(src, 3L, 3L);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{1, 2, 4}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{11, 12, 14}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{31, 32, 34}));
}

TEST(QorPicBlockZoom, EveryPixelFollowsTheTruncatedRatio)
{
    const long sizes[][4] = {{7, 3, 3, 7}, {3, 7, 10, 4}, {10, 4, 6, 9}, {9, 6, 1, 1}, {1, 1, 8, 5}};
    for (const auto& s : sizes)
    {
        const QorPicBlock src = Numbered(s[0], s[1]);
        QorPicBlock p;
        p.CreateZoom(src, s[2], s[3]);
        ASSERT_EQ(p.GetWidth(), s[2]);
        ASSERT_EQ(p.GetHeight(), s[3]);
        for (long j = 0; j < s[3]; ++j)
            for (long i = 0; i < s[2]; ++i)
                EXPECT_EQ(*p.GetPixel(i, j), *src.GetPixel(ZoomIndex(i, s[0], s[2]), ZoomIndex(j, s[1], s[3])))
                    << s[0] << "x" << s[1] << " -> " << s[2] << "x" << s[3] << " at " << i << "," << j;
    }
}

TEST(QorPicBlockZoom, MaskColourIsCopiedAndThePalettePointerIsNot)
{
    stPaletteEntry mine[256];
    stPaletteEntry theirs[256];
    QorPicBlock src = Numbered(2, 2);
    unsigned char mask = 11;
    src.SetMask(&mask);
    src.SetPaletteEntryPtr(theirs);
    QorPicBlock p;
    p.SetPaletteEntryPtr(mine);
    p.CreateZoom(src, 3L, 3L);
    EXPECT_EQ(*p.GetMask(), 11);
    EXPECT_EQ(p.GetPaletteEntryPtr(), mine);
}

TEST(QorPicBlockZoom, ResultTakesTheSourceTypeAndCopiesWholePixels)
{
    for (int bpp = 1; bpp <= 4; ++bpp)
    {
        QorPicBlock src(TypeOfBytes(bpp), 3, 2);
        FillDistinct(src);
        unsigned char mask[4] = {9, 8, 7, 6};
        src.SetMask(mask);
        QorPicBlock p(QorPicBlock::Bit8, 1, 1);
        p.CreateZoom(src, 6L, 4L);
        ASSERT_EQ(p.GetColorType(), TypeOfBytes(bpp));
        ASSERT_EQ(p.GetWidth(), 6);
        ASSERT_EQ(p.GetHeight(), 4);
        EXPECT_EQ(std::memcmp(p.GetMask(), mask, std::size_t(bpp)), 0);
        for (long j = 0; j < 4; ++j)
            for (long i = 0; i < 6; ++i)
                EXPECT_EQ(std::memcmp(p.GetPixel(i, j), src.GetPixel(i / 2, j / 2), std::size_t(bpp)), 0)
                    << bpp << " " << i << "," << j;
    }
}

TEST(QorPicBlockZoom, SameSizeGivesAnIdenticalCopy)
{
    QorPicBlock src(QorPicBlock::Bit24, 5, 3);
    FillDistinct(src);
    QorPicBlock p;
    p.CreateZoom(src, 5L, 3L);
    EXPECT_EQ(Bytes(p), Bytes(src));
}

TEST(QorPicBlockZoom, EmptySourceLeavesThePictureUnchanged)
{
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateZoom(QorPicBlock(QorPicBlock::Bit8, 0, 4), 4L, 4L);
    p.CreateZoom(QorPicBlock(QorPicBlock::Bit8, 4, 0), 4L, 4L);
    p.CreateZoom(QorPicBlock(QorPicBlock::Bit32), 4L, 4L);
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockZoom, NewSideBelowOneLeavesThePictureUnchanged)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateZoom(src, 0L, 4L);
    p.CreateZoom(src, 4L, 0L);
    p.CreateZoom(src, -2L, 4L);
    p.CreateZoom(src, 4L, -7L);
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockZoom, SizeBeyondThirtyTwoBitsLeavesThePictureUnchanged)
{
    const QorPicBlock src = Numbered(2, 2);
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateZoom(src, 70000L, 70000L);
    p.CreateZoom(src, 2147483648L, 1L);
    p.CreateZoom(src, 1L, 4294967297L);
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockZoom, ByFactorsLeavesThePictureUnchanged)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateZoom(src, 2.0, 2.0);
    p.CreateZoom(src, 0.5, 3.0);
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockZoom, AttachedPictureKeepsItsSizeAndReceivesWhatFits)
{
    // Attached pictures never change size: the 8 x 8 result is written only where the 4 x 4 buffer reaches.
    std::vector<unsigned char> buffer(16, 0);
    QorPicBlock p;
    p.Attach(4, 4, buffer.data());
    const QorPicBlock src = Numbered(2, 2);
    p.CreateZoom(src, 8L, 8L);
    EXPECT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(p.GetHeight(), 4);
    EXPECT_EQ(buffer, std::vector<unsigned char>(16, 1));
}

TEST(QorPicBlockZoom, PictureCanZoomItself)
{
    QorPicBlock p = Numbered(2, 2);
    p.CreateZoom(p, 4L, 2L);
    ASSERT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{1, 1, 2, 2}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{11, 11, 12, 12}));
}

// ---- CreateRotate

TEST(QorPicBlockRotate, ZeroDegreesGivesAnIdenticalCopy)
{
    QorPicBlock src(QorPicBlock::Bit32, 4, 3);
    FillDistinct(src);
    QorPicBlock p;
    p.CreateRotate(src, 0.0);
    ASSERT_EQ(p.GetWidth(), 4);
    ASSERT_EQ(p.GetHeight(), 3);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(Bytes(p), Bytes(src));
}

TEST(QorPicBlockRotate, NinetyDegreesTurnsFourByThreeIntoThreeByFourClockwise)
{
    const QorPicBlock src = Numbered(4, 3);
    const stRotation r(4, 3, 90.0);
    EXPECT_EQ(r.minX, -2);
    EXPECT_EQ(r.minY, 0);
    QorPicBlock p;
    p.CreateRotate(src, 90.0);
    ASSERT_EQ(p.GetWidth(), 3);
    ASSERT_EQ(p.GetHeight(), 4);
    // Result pixel (i, j) is source pixel (j, 2 - i): the top-left corner goes to the top right.
    for (long j = 0; j < 4; ++j)
        for (long i = 0; i < 3; ++i)
            EXPECT_EQ(*p.GetPixel(i, j), *src.GetPixel(j, 2 - i)) << i << "," << j;
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{21, 11, 1}));
    ExpectRotation(p, src, 90.0, p.GetMask());
}

TEST(QorPicBlockRotate, FortyFiveDegreesGivesFourByFourWithUncoveredCornersMasked)
{
    QorPicBlock src = Numbered(4, 3);
    unsigned char mask = 99;
    src.SetMask(&mask);
    const stRotation r(4, 3, 45.0);
    EXPECT_EQ(r.minX, -1);
    EXPECT_EQ(r.minY, 0);
    QorPicBlock p;
    p.CreateRotate(src, 45.0);
    ASSERT_EQ(p.GetWidth(), 4);
    ASSERT_EQ(p.GetHeight(), 4);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{11, 1, 2, 2}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{11, 12, 2, 3}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{22, 12, 13, 4}));
    EXPECT_EQ(Row8(p, 3), (std::vector<int>{99, 23, 14, 99}));
    ExpectRotation(p, src, 45.0, &mask);
}

TEST(QorPicBlockRotate, OneEightyDegreesKeepsTheSizeAndMirrorsBothWays)
{
    const QorPicBlock src = Numbered(4, 3);
    const stRotation r(4, 3, 180.0);
    EXPECT_EQ(r.minX, -3);
    EXPECT_EQ(r.minY, -2);
    QorPicBlock p;
    p.CreateRotate(src, 180.0);
    ASSERT_EQ(p.GetWidth(), 4);
    ASSERT_EQ(p.GetHeight(), 3);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{24, 23, 22, 21}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{14, 13, 12, 11}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{4, 3, 2, 1}));
}

TEST(QorPicBlockRotate, TwoSeventyDegreesTurnsAntiClockwise)
{
    const QorPicBlock src = Numbered(4, 3);
    const stRotation r(4, 3, 270.0);
    EXPECT_EQ(r.minX, 0);
    EXPECT_EQ(r.minY, -3);
    QorPicBlock p;
    p.CreateRotate(src, 270.0);
    ASSERT_EQ(p.GetWidth(), 3);
    ASSERT_EQ(p.GetHeight(), 4);
    // Result pixel (i, j) is source pixel (3 - j, i): the top-left corner goes to the bottom left.
    for (long j = 0; j < 4; ++j)
        for (long i = 0; i < 3; ++i)
            EXPECT_EQ(*p.GetPixel(i, j), *src.GetPixel(3 - j, i)) << i << "," << j;
    EXPECT_EQ(*p.GetPixel(0, 3), 1);
}

TEST(QorPicBlockRotate, ThirtyDegreesFollowsTheTruncatedCornersAndRoundedSources)
{
    const QorPicBlock src = Numbered(4, 3);
    QorPicBlock p;
    p.CreateRotate(src, 30.0);
    ASSERT_EQ(p.GetWidth(), 3);
    ASSERT_EQ(p.GetHeight(), 4);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Row8(p, 1), (std::vector<int>{12, 2, 3}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{22, 13, 14}));
    EXPECT_EQ(Row8(p, 3), (std::vector<int>{0, 23, 24}));
    ExpectRotation(p, src, 30.0, p.GetMask());
}

TEST(QorPicBlockRotate, OtherAnglesMatchTheSeparateComputation)
{
    const QorPicBlock src = Numbered(7, 5);
    const double angles[] = {10.0, 60.0, 135.0, 200.0, 315.0, -45.0, 400.0};
    for (double degrees : angles)
    {
        QorPicBlock p;
        p.CreateRotate(src, degrees);
        ExpectRotation(p, src, degrees, p.GetMask());
    }
}

TEST(QorPicBlockRotate, UncoveredPixelsTakeAllBytesOfTheMaskColour)
{
    QorPicBlock src(QorPicBlock::Bit32, 4, 3);
    FillDistinct(src);
    unsigned char mask[4] = {200, 201, 202, 203};
    src.SetMask(mask);
    QorPicBlock p;
    p.CreateRotate(src, 45.0);
    EXPECT_EQ(std::memcmp(p.GetMask(), mask, 4), 0);
    EXPECT_EQ(std::memcmp(p.GetPixel(0, 3), mask, 4), 0);
    EXPECT_EQ(std::memcmp(p.GetPixel(3, 3), mask, 4), 0);
    EXPECT_EQ(std::memcmp(p.GetPixel(1, 0), src.GetPixel(0, 0), 4), 0);
    ExpectRotation(p, src, 45.0, mask);
}

TEST(QorPicBlockRotate, SixteenBitPixelsMoveWhole)
{
    QorPicBlock src(QorPicBlock::Bit16, 4, 3);
    FillDistinct(src);
    QorPicBlock p;
    p.CreateRotate(src, 90.0);
    ASSERT_EQ(p.GetColorType(), QorPicBlock::Bit16);
    for (long j = 0; j < 4; ++j)
        for (long i = 0; i < 3; ++i)
            EXPECT_EQ(std::memcmp(p.GetPixel(i, j), src.GetPixel(j, 2 - i), 2), 0) << i << "," << j;
}

TEST(QorPicBlockRotate, PalettePointerIsNotCopied)
{
    stPaletteEntry mine[256];
    stPaletteEntry theirs[256];
    QorPicBlock src = Numbered(2, 2);
    src.SetPaletteEntryPtr(theirs);
    QorPicBlock p;
    p.SetPaletteEntryPtr(mine);
    p.CreateRotate(src, 90.0);
    EXPECT_EQ(p.GetPaletteEntryPtr(), mine);
}

TEST(QorPicBlockRotate, EmptySourceLeavesThePictureUnchanged)
{
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateRotate(QorPicBlock(QorPicBlock::Bit8, 0, 3), 90.0);
    p.CreateRotate(QorPicBlock(QorPicBlock::Bit16, 3, 0), 45.0);
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockRotate, AngleThatIsNotFiniteLeavesThePictureUnchanged)
{
    const QorPicBlock src = Numbered(4, 3);
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateRotate(src, std::numeric_limits<double>::quiet_NaN());
    p.CreateRotate(src, std::numeric_limits<double>::infinity());
    p.CreateRotate(src, -std::numeric_limits<double>::infinity());
    p.CreateRotate(src, std::numeric_limits<double>::max());
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockRotate, ResultBeyondThirtyTwoBitsLeavesThePictureUnchanged)
{
    // A 65536 x 65536 source turned by 45 degrees needs about 92682 x 92682 bytes. The size is refused
    // before any pixel is read, so the source only has to name that size: one real byte backs it.
    unsigned char byte = 1;
    QorPicBlock src;
    src.Attach(65536, 65536, &byte);
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateRotate(src, 45.0);
    EXPECT_TRUE(stSnapshot(p) == before);
}

TEST(QorPicBlockRotate, PictureCanRotateItself)
{
    QorPicBlock p = Numbered(4, 3);
    p.CreateRotate(p, 180.0);
    EXPECT_EQ(Row8(p, 0), (std::vector<int>{24, 23, 22, 21}));
    EXPECT_EQ(Row8(p, 2), (std::vector<int>{4, 3, 2, 1}));
}

// ---- CreateTransparent

TEST(QorPicBlockTransparent, HalfOnATenWidePictureKeepsOddThenEvenPixels)
{
    const QorPicBlock src = Opaque8(10, 3);
    QorPicBlock p;
    p.CreateTransparent(src, 0.5);
    EXPECT_EQ(KeptColumns(p, 0), (std::vector<long>{1, 3, 5, 7, 9}));
    EXPECT_EQ(KeptColumns(p, 1), (std::vector<long>{0, 2, 4, 6, 8}));
    EXPECT_EQ(KeptColumns(p, 2), (std::vector<long>{1, 3, 5, 7, 9}));
}

TEST(QorPicBlockTransparent, PointThreeIsLevelThree)
{
    const QorPicBlock src = Opaque8(10, 4);
    QorPicBlock p;
    p.CreateTransparent(src, 0.3);
    EXPECT_EQ(KeptColumns(p, 0), (std::vector<long>{2, 5, 8}));
    EXPECT_EQ(KeptColumns(p, 1), (std::vector<long>{1, 4, 7}));
    EXPECT_EQ(KeptColumns(p, 2), (std::vector<long>{0, 3, 6}));
    EXPECT_EQ(KeptColumns(p, 3), (std::vector<long>{2, 5, 8}));
}

TEST(QorPicBlockTransparent, RatioIsTruncatedToItsTenth)
{
    const QorPicBlock src = Opaque8(10, 2);
    QorPicBlock p;
    p.CreateTransparent(src, 0.29);
    EXPECT_EQ(KeptColumns(p, 0), (std::vector<long>{2, 7}));
    EXPECT_EQ(KeptColumns(p, 1), (std::vector<long>{0, 5}));
}

TEST(QorPicBlockTransparent, LowRatiosActAsOneTenth)
{
    const QorPicBlock src = Opaque8(12, 2);
    const double ratios[] = {0.1, 0.05, 0.0, -3.0, std::numeric_limits<double>::quiet_NaN()};
    for (double ratio : ratios)
    {
        QorPicBlock p;
        p.CreateTransparent(src, ratio);
        EXPECT_EQ(KeptColumns(p, 0), (std::vector<long>{4})) << ratio;
        EXPECT_EQ(KeptColumns(p, 1), (std::vector<long>{1, 11})) << ratio;
    }
}

TEST(QorPicBlockTransparent, HighRatiosActAsNineTenths)
{
    const QorPicBlock src = Opaque8(12, 2);
    const double ratios[] = {0.9, 0.95, 1.0, 7.5};
    for (double ratio : ratios)
    {
        QorPicBlock p;
        p.CreateTransparent(src, ratio);
        EXPECT_EQ(KeptColumns(p, 0), (std::vector<long>{0, 1, 2, 3, 5, 6, 7, 8, 9, 10, 11})) << ratio;
        EXPECT_EQ(KeptColumns(p, 1), (std::vector<long>{0, 2, 3, 4, 5, 6, 7, 8, 9, 10})) << ratio;
    }
}

TEST(QorPicBlockTransparent, EveryLevelFollowsItsScreenOnEveryRow)
{
    const QorPicBlock src = Opaque8(23, 7);
    for (int level = 1; level <= 9; ++level)
    {
        QorPicBlock p;
        p.CreateTransparent(src, (level + 0.5) / 10.0);
        long kept = 0;
        for (long y = 0; y < 7; ++y)
            for (long x = 0; x < 23; ++x)
            {
                EXPECT_EQ(*p.GetPixel(x, y) != 0, Kept(level, x, y)) << level << ": " << x << "," << y;
                kept += *p.GetPixel(x, y) != 0 ? 1 : 0;
            }
        // On a 20-pixel stretch of any row, level tenths keep their colour.
        long keptOfTwenty = 0;
        for (long x = 0; x < 20; ++x)
            keptOfTwenty += *p.GetPixel(x, 3) != 0 ? 1 : 0;
        EXPECT_EQ(keptOfTwenty, 2 * level) << level;
        EXPECT_GT(kept, 0);
    }
}

TEST(QorPicBlockTransparent, ResultIsACopyOfTheSourceWithItsMaskAndPalette)
{
    stPaletteEntry theirs[256];
    QorPicBlock src(QorPicBlock::Bit24, 10, 2);
    FillDistinct(src);
    unsigned char mask[3] = {7, 8, 9};
    src.SetMask(mask);
    src.SetPaletteEntryPtr(theirs);
    QorPicBlock p;
    p.CreateTransparent(src, 0.5);
    ASSERT_EQ(p.GetColorType(), QorPicBlock::Bit24);
    ASSERT_EQ(p.GetWidth(), 10);
    ASSERT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(std::memcmp(p.GetMask(), mask, 3), 0);
    EXPECT_EQ(p.GetPaletteEntryPtr(), theirs);
    for (long y = 0; y < 2; ++y)
        for (long x = 0; x < 10; ++x)
        {
            const unsigned char* expected = (x + y) % 2 == 1 ? src.GetPixel(x, y) : mask;
            EXPECT_EQ(std::memcmp(p.GetPixel(x, y), expected, 3), 0) << x << "," << y;
        }
}

TEST(QorPicBlockTransparent, ThirtyTwoBitMaskIsWrittenWhole)
{
    QorPicBlock src(QorPicBlock::Bit32, 4, 1);
    FillDistinct(src);
    unsigned char mask[4] = {1, 2, 3, 4};
    src.SetMask(mask);
    QorPicBlock p;
    p.CreateTransparent(src, 0.5);
    EXPECT_EQ(std::memcmp(p.GetPixel(0, 0), mask, 4), 0);
    EXPECT_EQ(std::memcmp(p.GetPixel(1, 0), src.GetPixel(1, 0), 4), 0);
    EXPECT_EQ(std::memcmp(p.GetPixel(2, 0), mask, 4), 0);
    EXPECT_EQ(std::memcmp(p.GetPixel(3, 0), src.GetPixel(3, 0), 4), 0);
}

TEST(QorPicBlockTransparent, EmptySourceGivesAnEmptyPictureOfItsType)
{
    QorPicBlock p = Numbered(3, 2);
    p.CreateTransparent(QorPicBlock(QorPicBlock::Bit16, 0, 0), 0.5);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
}

TEST(QorPicBlockTransparent, PictureCanScreenItself)
{
    QorPicBlock p = Opaque8(10, 2);
    p.CreateTransparent(p, 0.5);
    EXPECT_EQ(KeptColumns(p, 0), (std::vector<long>{1, 3, 5, 7, 9}));
    EXPECT_EQ(KeptColumns(p, 1), (std::vector<long>{0, 2, 4, 6, 8}));
}

// ---- CreateDeform

TEST(QorPicBlockDeform, BothFormsLeaveThePictureUnchanged)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Numbered(3, 2);
    const stSnapshot before(p);
    p.CreateDeform(src, Point<long>(0, 0), Point<long>(5, 0), Point<long>(5, 5), Point<long>(0, 5));
    p.CreateDeform(src, 0, 0, 5, 0, 5, 5, 0, 5);
    EXPECT_TRUE(stSnapshot(p) == before);
}
