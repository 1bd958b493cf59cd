// Flood fill with a colour and with a pattern, block mosaic, and the random paste (dissolve) pairs.
#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

namespace
{
// An 8-bit w x h picture whose pixels, row by row, are values.
QorPicBlock Picture8(long w, long h, const std::vector<int>& values)
{
    QorPicBlock p(QorPicBlock::Bit8, w, h);
    for (long i = 0; i < w * h; ++i)
        p.GetDataPtr()[i] = static_cast<unsigned char>(values[std::size_t(i)]);
    return p;
}

std::vector<int> Values8(const QorPicBlock& p)
{
    return std::vector<int>(p.GetDataPtr(), p.GetDataPtr() + p.GetSize());
}

std::vector<unsigned char> Bytes(const QorPicBlock& p)
{
    return std::vector<unsigned char>(p.GetDataPtr(), p.GetDataPtr() + p.GetSize());
}

// The values of a list from its head onwards.
std::vector<long> Listed(Cycle<long>& list)
{
    std::vector<long> out;
    if (!list.GotoAddress(Cycle<long>::kHead))
        return out;
    for (unsigned long i = 0; i < list.GetSize(); ++i, list.Next())
        out.push_back(*list.GetInfo());
    return out;
}

// An 8-bit w x h picture whose pixel (x, y) is 10 * y + x + 1.
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

std::vector<std::pair<long, long>> AsPairs(const Point<long>* pairs, unsigned long n)
{
    std::vector<std::pair<long, long>> out;
    for (unsigned long i = 0; i < n; ++i)
        out.emplace_back(pairs[i].x, pairs[i].y);
    return out;
}

std::vector<std::pair<long, long>> Sorted(std::vector<std::pair<long, long>> v)
{
    std::sort(v.begin(), v.end());
    return v;
}

// The dissolve's shuffle written out separately: 3n swaps, each index the product of two rand() values
// modulo n. The product is taken in 64 bits since two 31-bit values overflow int.
void ReferenceShuffle(std::vector<std::pair<long, long>>& v)
{
    const std::uint64_t n = v.size();
    for (std::uint64_t k = 0; k < 3 * n; ++k)
    {
        const std::uint64_t r1 = std::uint64_t(std::rand());
        const std::uint64_t r2 = std::uint64_t(std::rand());
        const std::uint64_t a = r1 * r2 % n;
        const std::uint64_t r3 = std::uint64_t(std::rand());
        const std::uint64_t r4 = std::uint64_t(std::rand());
        const std::uint64_t b = r3 * r4 % n;
        std::swap(v[a], v[b]);
    }
}

QorPicBlock::ColorType TypeOfBytes(int bpp)
{
    return QorPicBlock::ColorType(bpp);
}
} // namespace

// ---- FloodFill with a colour

TEST(QorPicBlockFloodFill, ColourEqualToTheSeedChangesNothingAndAppendsNothing)
{
    QorPicBlock p = Picture8(3, 2, {4, 4, 4, 4, 4, 4});
    unsigned char four = 4;
    Cycle<long> filled;
    p.FloodFill(1, 1, &four, &filled);
    EXPECT_EQ(Values8(p), std::vector<int>(6, 4));
    EXPECT_EQ(filled.GetSize(), 0u);
}

TEST(QorPicBlockFloodFill, OneColourPictureIsReplacedEverywhere)
{
    QorPicBlock p = Picture8(5, 4, std::vector<int>(20, 3));
    unsigned char nine = 9;
    Cycle<long> filled;
    p.FloodFill(2, 1, &nine, &filled);
    EXPECT_EQ(Values8(p), std::vector<int>(20, 9));
    const std::vector<long> listed = Listed(filled);
    const std::set<long> distinct(listed.begin(), listed.end());
    EXPECT_EQ(distinct.size(), 20u);
    EXPECT_EQ(*distinct.begin(), 0);
    EXPECT_EQ(*distinct.rbegin(), 19);
}

TEST(QorPicBlockFloodFill, PixelConnectedOnlyDiagonallyIsNotReached)
{
    QorPicBlock p = Picture8(3, 3, {5, 7, 5, 7, 5, 7, 5, 7, 5});
    unsigned char nine = 9;
    Cycle<long> filled;
    p.FloodFill(0, 0, &nine, &filled);
    EXPECT_EQ(Values8(p), (std::vector<int>{9, 7, 5, 7, 5, 7, 5, 7, 5}));
    EXPECT_EQ(Listed(filled), std::vector<long>{0});
}

TEST(QorPicBlockFloodFill, RegionStopsAtPixelsOfAnotherColour)
{
    QorPicBlock p = Picture8(5, 4, {1, 1, 2, 1, 1, //
                                    1, 2, 2, 1, 2, //
                                    1, 1, 2, 1, 1, //
                                    2, 1, 2, 2, 1});
    unsigned char nine = 9;
    p.FloodFill(0, 0, &nine, nullptr);
    EXPECT_EQ(Values8(p), (std::vector<int>{9, 9, 2, 1, 1, //
                                            9, 2, 2, 1, 2, //
                                            9, 9, 2, 1, 1, //
                                            2, 9, 2, 2, 1}));
}

TEST(QorPicBlockFloodFill, TwoByTwoListsOffsetsInStackOrderWithOneTwice)
{
    // Taken (0,0): pushes right 1 and down 2. Taken 2: pushes right 3. Taken 3: pushes up 1 again.
    // Taken 1, then 1 once more.
    QorPicBlock p = Picture8(2, 2, {6, 6, 6, 6});
    unsigned char one = 1;
    Cycle<long> filled;
    p.FloodFill(0, 0, &one, &filled);
    EXPECT_EQ(Listed(filled), (std::vector<long>{0, 2, 3, 1, 1}));
    const std::vector<long> listed = Listed(filled);
    EXPECT_EQ(std::set<long>(listed.begin(), listed.end()), (std::set<long>{0, 1, 2, 3}));
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 1, 1, 1}));
}

TEST(QorPicBlockFloodFill, ThreeByOneFromTheMiddleTakesRightThenLeft)
{
    QorPicBlock p = Picture8(3, 1, {6, 6, 6});
    unsigned char one = 1;
    Cycle<long> filled;
    p.FloodFill(1, 0, &one, &filled);
    EXPECT_EQ(Listed(filled), (std::vector<long>{1, 2, 0}));
}

TEST(QorPicBlockFloodFill, ThreeByOneFromTheLeftListsEachPixelOnce)
{
    QorPicBlock p = Picture8(3, 1, {6, 6, 6});
    unsigned char one = 1;
    Cycle<long> filled;
    p.FloodFill(0, 0, &one, &filled);
    EXPECT_EQ(Listed(filled), (std::vector<long>{0, 1, 2}));
}

TEST(QorPicBlockFloodFill, OffsetsAreBytesAtSixteenAndTwentyFourBits)
{
    unsigned char grey16[2] = {3, 4};
    QorPicBlock p16(QorPicBlock::Bit16, 3, 1, grey16);
    unsigned char c16[2] = {9, 9};
    Cycle<long> filled16;
    p16.FloodFill(1, 0, c16, &filled16);
    EXPECT_EQ(Listed(filled16), (std::vector<long>{2, 4, 0}));

    unsigned char grey24[3] = {3, 4, 5};
    QorPicBlock p24(QorPicBlock::Bit24, 2, 2, grey24);
    unsigned char c24[3] = {9, 9, 9};
    Cycle<long> filled24;
    p24.FloodFill(0, 0, c24, &filled24);
    EXPECT_EQ(Listed(filled24), (std::vector<long>{0, 6, 9, 3, 3}));
}

TEST(QorPicBlockFloodFill, EveryDepthFillsAOneColourPicture)
{
    for (int bpp = 1; bpp <= 4; ++bpp)
    {
        unsigned char seed[4] = {1, 2, 3, 4};
        unsigned char colour[4] = {200, 201, 202, 203};
        QorPicBlock p(TypeOfBytes(bpp), 4, 3, seed);
        Cycle<long> filled;
        p.FloodFill(3, 2, colour, &filled);
        for (long y = 0; y < 3; ++y)
            for (long x = 0; x < 4; ++x)
                EXPECT_EQ(std::memcmp(p.GetPixel(x, y), colour, std::size_t(bpp)), 0) << bpp << " " << x << "," << y;
        const std::vector<long> listed = Listed(filled);
        std::set<long> expected;
        for (long i = 0; i < 12; ++i)
            expected.insert(i * bpp);
        EXPECT_EQ(std::set<long>(listed.begin(), listed.end()), expected) << bpp;
    }
}

TEST(QorPicBlockFloodFill, PixelDifferingOnlyInItsLastByteBoundsTheRegion)
{
    for (int bpp = 2; bpp <= 4; ++bpp)
    {
        unsigned char base[4] = {1, 2, 3, 4};
        QorPicBlock p(TypeOfBytes(bpp), 3, 1, base);
        p.GetPixel(1, 0)[bpp - 1] = 99;
        unsigned char colour[4] = {50, 50, 50, 50};
        Cycle<long> filled;
        p.FloodFill(0, 0, colour, &filled);
        EXPECT_EQ(Listed(filled), std::vector<long>{0}) << bpp;
        EXPECT_EQ(p.GetPixel(1, 0)[bpp - 1], 99) << bpp;
        EXPECT_EQ(std::memcmp(p.GetPixel(2, 0), base, std::size_t(bpp)), 0) << bpp;
    }
}

TEST(QorPicBlockFloodFill, ColourDifferingFromTheSeedOnlyInTheFourthByteFills)
{
    unsigned char seed[4] = {1, 2, 3, 4};
    QorPicBlock p(QorPicBlock::Bit32, 2, 1, seed);
    unsigned char same[4] = {1, 2, 3, 4};
    Cycle<long> none;
    p.FloodFill(0, 0, same, &none);
    EXPECT_EQ(none.GetSize(), 0u);

    unsigned char fourth[4] = {1, 2, 3, 5};
    Cycle<long> filled;
    p.FloodFill(0, 0, fourth, &filled);
    EXPECT_EQ(Listed(filled), (std::vector<long>{0, 4}));
    EXPECT_EQ(p.GetPixel(1, 0)[3], 5);
}

TEST(QorPicBlockFloodFill, SeedOutsideThePictureDoesNothing)
{
    QorPicBlock p = Picture8(3, 2, std::vector<int>(6, 4));
    unsigned char nine = 9;
    const long seeds[4][2] = {{-1, 0}, {0, -1}, {3, 0}, {0, 2}};
    for (const auto& s : seeds)
    {
        Cycle<long> filled;
        p.FloodFill(s[0], s[1], &nine, &filled);
        EXPECT_EQ(filled.GetSize(), 0u);
    }
    EXPECT_EQ(Values8(p), std::vector<int>(6, 4));
}

TEST(QorPicBlockFloodFill, EmptyPictureDoesNothing)
{
    QorPicBlock p;
    unsigned char nine = 9;
    Cycle<long> filled;
    p.FloodFill(0, 0, &nine, &filled);
    EXPECT_EQ(filled.GetSize(), 0u);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
}

TEST(QorPicBlockFloodFill, OffsetsAreAddedAfterTheListsCurrentEntry)
{
    QorPicBlock p = Picture8(3, 1, {6, 6, 6});
    unsigned char one = 1;
    Cycle<long> filled;
    filled.Add(100);
    p.FloodFill(0, 0, &one, &filled);
    EXPECT_EQ(Listed(filled), (std::vector<long>{100, 0, 1, 2}));
}

TEST(QorPicBlockFloodFill, ListThatRefusesOffsetsEndsTheFillBeforeAnyPixelIsPainted)
{
    // A non-empty list without a current position refuses Add: no pixel may be painted unlisted.
    QorPicBlock p = Picture8(3, 1, {6, 6, 6});
    unsigned char one = 1;
    Cycle<long> filled;
    filled.Add(100);
    filled.ForgetAddress(Cycle<long>::kCurrent);
    p.FloodFill(0, 0, &one, &filled);
    EXPECT_EQ(Values8(p), (std::vector<int>{6, 6, 6}));
    EXPECT_EQ(filled.GetSize(), 1u);
}

TEST(QorPicBlockFloodFill, LargeRegionIsFilledWithoutRecursion)
{
    const long w = 300, h = 200;
    QorPicBlock p = Picture8(w, h, std::vector<int>(std::size_t(w * h), 0));
    unsigned char one = 1;
    Cycle<long> filled;
    p.FloodFill(150, 100, &one, &filled);
    EXPECT_EQ(Values8(p), std::vector<int>(std::size_t(w * h), 1));
    const std::vector<long> listed = Listed(filled);
    EXPECT_EQ(std::set<long>(listed.begin(), listed.end()).size(), std::size_t(w * h));
    // Each pixel is pushed at most once per neighbour.
    EXPECT_GE(listed.size(), std::size_t(w * h));
    EXPECT_LE(listed.size(), std::size_t(4 * w * h + 1));
}

// ---- FloodFill with a pattern

TEST(QorPicBlockFloodFill, PatternIsAnchoredAtTheTopLeftCornerNotAtTheSeed)
{
    QorPicBlock p = Picture8(5, 4, {1, 1, 2, 1, 1, //
                                    1, 2, 2, 1, 2, //
                                    1, 1, 2, 1, 1, //
                                    2, 1, 2, 2, 1});
    const QorPicBlock pattern = Picture8(2, 2, {10, 11, 12, 13});
    p.FloodFill(1, 3, pattern);
    EXPECT_EQ(Values8(p), (std::vector<int>{10, 11, 2, 1, 1, //
                                            12, 2,  2, 1, 2, //
                                            10, 11, 2, 1, 1, //
                                            2,  13, 2, 2, 1}));
}

TEST(QorPicBlockFloodFill, PatternFillOfTheRightRegionLeavesTheLeftOne)
{
    QorPicBlock p = Picture8(5, 4, {1, 1, 2, 1, 1, //
                                    1, 2, 2, 1, 2, //
                                    1, 1, 2, 1, 1, //
                                    2, 1, 2, 2, 1});
    const QorPicBlock pattern = Picture8(3, 1, {20, 21, 22});
    p.FloodFill(4, 3, pattern);
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 1, 2, 20, 21, //
                                            1, 2, 2, 20, 2,  //
                                            1, 1, 2, 20, 21, //
                                            2, 1, 2, 2,  21}));
}

TEST(QorPicBlockFloodFill, PictureThatIsItsOwnPatternShowsTheMarkerColour)
{
    // The region is marked before the pattern is tiled, so tiling the picture itself brings the marker back:
    // seed byte plus one, the other bytes 0.
    QorPicBlock p = Picture8(3, 1, {7, 7, 3});
    p.FloodFill(0, 0, p);
    EXPECT_EQ(Values8(p), (std::vector<int>{8, 8, 3}));

    unsigned char seed32[4] = {9, 1, 2, 3};
    QorPicBlock p32(QorPicBlock::Bit32, 2, 1, seed32);
    p32.FloodFill(1, 0, p32);
    EXPECT_EQ(Bytes(p32), (std::vector<unsigned char>{10, 0, 0, 0, 10, 0, 0, 0}));
}

TEST(QorPicBlockFloodFill, MarkerOfSeedByte255Is254)
{
    QorPicBlock p = Picture8(3, 1, {255, 255, 3});
    p.FloodFill(1, 0, p);
    EXPECT_EQ(Values8(p), (std::vector<int>{254, 254, 3}));

    unsigned char seed16[2] = {255, 18};
    QorPicBlock p16(QorPicBlock::Bit16, 2, 1, seed16);
    p16.FloodFill(0, 0, p16);
    EXPECT_EQ(Bytes(p16), (std::vector<unsigned char>{254, 0, 254, 0}));
}

TEST(QorPicBlockFloodFill, PixelsWithTheMarkerColourOutsideTheRegionAreNotTouched)
{
    // 6 is the marker of seed 5; the pixel holding it is not part of the region.
    QorPicBlock p = Picture8(4, 1, {5, 5, 6, 5});
    const QorPicBlock pattern = Picture8(1, 1, {40});
    p.FloodFill(0, 0, pattern);
    EXPECT_EQ(Values8(p), (std::vector<int>{40, 40, 6, 5}));
}

TEST(QorPicBlockFloodFill, PatternRegionIsBoundedByAllBytesOfTheSeed)
{
    unsigned char base[3] = {1, 2, 3};
    QorPicBlock p(QorPicBlock::Bit24, 4, 1, base);
    p.GetPixel(2, 0)[2] = 4;
    unsigned char tile[3] = {50, 60, 70};
    const QorPicBlock pattern(QorPicBlock::Bit24, 1, 1, tile);
    p.FloodFill(0, 0, pattern);
    EXPECT_EQ(Bytes(p), (std::vector<unsigned char>{50, 60, 70, 50, 60, 70, 1, 2, 4, 1, 2, 3}));
}

TEST(QorPicBlockFloodFill, PatternOfAnotherTypeOrEmptyChangesNothing)
{
    QorPicBlock p = Picture8(3, 1, {5, 5, 5});
    unsigned char tile[2] = {1, 2};
    const QorPicBlock sixteen(QorPicBlock::Bit16, 1, 1, tile);
    p.FloodFill(0, 0, sixteen);
    EXPECT_EQ(Values8(p), (std::vector<int>{5, 5, 5}));
    const QorPicBlock empty(QorPicBlock::Bit8, 0, 3);
    p.FloodFill(0, 0, empty);
    EXPECT_EQ(Values8(p), (std::vector<int>{5, 5, 5}));
}

TEST(QorPicBlockFloodFill, PatternFillWithTheSeedOutsideDoesNothing)
{
    QorPicBlock p = Picture8(3, 1, {5, 5, 5});
    const QorPicBlock pattern = Picture8(1, 1, {40});
    p.FloodFill(3, 0, pattern);
    p.FloodFill(0, 1, pattern);
    p.FloodFill(-1, 0, pattern);
    EXPECT_EQ(Values8(p), (std::vector<int>{5, 5, 5}));
}

// ---- SetMosiac

TEST(QorPicBlockMosaic, TwoByTwoBlocksOfAFourByFourSourceTakeTheirTopLeftPixels)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 2, 2);
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 1, 3, 3,     //
                                            1, 1, 3, 3,     //
                                            21, 21, 23, 23, //
                                            21, 21, 23, 23}));
}

TEST(QorPicBlockMosaic, PartialBlocksAtTheEdgesKeepTheirTopLeftPixel)
{
    // 3 x 2 blocks of a 5 x 5 source: columns 0 0 0 3 3, rows 0 0 2 2 4.
    const QorPicBlock src = Numbered(5, 5);
    QorPicBlock p = Picture8(5, 5, std::vector<int>(25, 0));
    p.SetMosiac(src, 3, 2);
    const long columns[5] = {0, 0, 0, 3, 3};
    const long rows[5] = {0, 0, 2, 2, 4};
    for (long y = 0; y < 5; ++y)
        for (long x = 0; x < 5; ++x)
            EXPECT_EQ(*p.GetPixel(x, y), 10 * rows[y] + columns[x] + 1) << x << "," << y;
    EXPECT_EQ(*p.GetPixel(4, 4), 44);
}

TEST(QorPicBlockMosaic, OneByOneBlocksPasteTheWholeSourceWithTransparency)
{
    const QorPicBlock src = Picture8(2, 2, {1, 0, 0, 2}); // mask colour 0
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 9));
    p.SetMosiac(src, 1, 1, 3, 3, 1, 1);
    EXPECT_EQ(Values8(p), (std::vector<int>{9, 9, 9, 9, //
                                            9, 1, 9, 9, //
                                            9, 9, 2, 9, //
                                            9, 9, 9, 9}));
}

TEST(QorPicBlockMosaic, OneByOneBlocksAreClippedToThePicture)
{
    const QorPicBlock src = Numbered(3, 3);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 1, 1, 3, 3, 5, 5);
    std::vector<int> expected(16, 0);
    expected[15] = 1;
    EXPECT_EQ(Values8(p), expected);
}

TEST(QorPicBlockMosaic, BlockSizeBelowOneDoesNothing)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 0, 2);
    p.SetMosiac(src, 2, 0);
    p.SetMosiac(src, -1, 1);
    p.SetMosiac(src, 1, -3);
    EXPECT_EQ(Values8(p), std::vector<int>(16, 0));
}

TEST(QorPicBlockMosaic, RectangleFormWritesAtItsCornerWithBlocksFromTheSourceOrigin)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(6, 6, std::vector<int>(36, 0));
    p.SetMosiac(src, 2, 2, QorRect(2, 1, 5, 4));
    for (long y = 0; y < 6; ++y)
        for (long x = 0; x < 6; ++x)
        {
            int expected = 0;
            if (x >= 2 && y >= 1 && y <= 4)
            {
                const long c = x - 2, r = y - 1;
                expected = int(10 * (r - r % 2) + (c - c % 2) + 1);
            }
            EXPECT_EQ(*p.GetPixel(x, y), expected) << x << "," << y;
        }
    EXPECT_EQ(*p.GetPixel(4, 3), 23);
}

TEST(QorPicBlockMosaic, NegativeStartIsRaisedToZero)
{
    // The rectangle (-1, -1)-(2, 2) is 4 wide: it is written from (0, 0) with blocks from the source origin.
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 2, 2, -1, -1, 2, 2);
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 1, 3, 3,     //
                                            1, 1, 3, 3,     //
                                            21, 21, 23, 23, //
                                            21, 21, 23, 23}));
}

TEST(QorPicBlockMosaic, ReversedCornersWriteNothing)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 2, 2, 3, 3, 0, 0);
    EXPECT_EQ(Values8(p), std::vector<int>(16, 0));
}

TEST(QorPicBlockMosaic, RectangleWiderThanTheSourceStopsAtTheSourceWidth)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(8, 2, std::vector<int>(16, 0));
    p.SetMosiac(src, 2, 2, 0, 0, 7, 1);
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 1, 3, 3, 0, 0, 0, 0, //
                                            1, 1, 3, 3, 0, 0, 0, 0}));
}

TEST(QorPicBlockMosaic, PixelsOutsideThisPictureAreSkipped)
{
    // One-pixel-wide, two-high blocks are not the paste case.
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 1, 2, 2, 2, 5, 5);
    EXPECT_EQ(Values8(p), (std::vector<int>{0, 0, 0, 0, //
                                            0, 0, 0, 0, //
                                            0, 0, 1, 2, //
                                            0, 0, 1, 2}));
}

TEST(QorPicBlockMosaic, SourceOfAnotherTypeDoesNothing)
{
    unsigned char grey[2] = {1, 2};
    const QorPicBlock src(QorPicBlock::Bit16, 4, 4, grey);
    QorPicBlock p = Picture8(4, 4, std::vector<int>(16, 0));
    p.SetMosiac(src, 2, 2);
    p.SetMosiac(src, 1, 1);
    EXPECT_EQ(Values8(p), std::vector<int>(16, 0));
}

TEST(QorPicBlockMosaic, WholePictureFormUsesThisPicturesSize)
{
    const QorPicBlock src = Numbered(4, 4);
    QorPicBlock p = Picture8(2, 3, std::vector<int>(6, 0));
    p.SetMosiac(src, 2, 2);
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 1, 1, 1, 21, 21}));
}

TEST(QorPicBlockMosaic, EveryDepthCopiesWholePixels)
{
    for (int bpp = 2; bpp <= 4; ++bpp)
    {
        QorPicBlock src(TypeOfBytes(bpp), 4, 4);
        FillDistinct(src);
        QorPicBlock p(TypeOfBytes(bpp), 4, 4);
        p.SetMosiac(src, 2, 2);
        for (long y = 0; y < 4; ++y)
            for (long x = 0; x < 4; ++x)
                EXPECT_EQ(std::memcmp(p.GetPixel(x, y), src.GetPixel(x - x % 2, y - y % 2), std::size_t(bpp)), 0)
                    << bpp << " " << x << "," << y;
    }
}

TEST(QorPicBlockMosaic, PictureThatIsItsOwnSourceSamplesItsOldPixels)
{
    QorPicBlock p = Numbered(4, 4);
    p.SetMosiac(p, 2, 2, 1, 1, 4, 4);
    EXPECT_EQ(Values8(p), (std::vector<int>{1, 2, 3, 4,  //
                                            11, 1, 1, 3, //
                                            21, 1, 1, 3, //
                                            31, 21, 21, 23}));
}

// ---- GenerateRandomPasteArray and RandomPaste

TEST(QorPicBlockRandomPaste, PairsCoverTheWholeRectangleOnce)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    const QorPicBlock src = Numbered(4, 3);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 2, 5, 0, 0, 3, 2, 0);
    ASSERT_EQ(n, 12u);
    ASSERT_NE(pairs, nullptr);
    std::vector<std::pair<long, long>> expected;
    for (long r = 0; r < 3; ++r)
        for (long c = 0; c < 4; ++c)
            expected.emplace_back((5 + r) * 10 + 2 + c, r * 4 + c);
    EXPECT_EQ(Sorted(AsPairs(pairs, n)), Sorted(expected));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, SourceAtMinusOneCoversSourceColumnsOneAndTwoOnly)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    const QorPicBlock src = Numbered(3, 2);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, -1, 0, 0, 0, 2, 1, 0);
    ASSERT_EQ(n, 4u);
    EXPECT_EQ(Sorted(AsPairs(pairs, n)), (std::vector<std::pair<long, long>>{{0, 1}, {1, 2}, {10, 4}, {11, 5}}));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, SourceRectangleIsOrderedAndClippedToTheSource)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    const QorPicBlock src = Numbered(3, 2);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 4, 4, 9, 1, 1, -5, 0);
    ASSERT_EQ(n, 4u);
    EXPECT_EQ(Sorted(AsPairs(pairs, n)), (std::vector<std::pair<long, long>>{{44, 1}, {45, 2}, {54, 4}, {55, 5}}));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, ColumnPastTheRightEdgeLeftByTheStrictTestIsLeftOut)
{
    // 5 - 0 + 5 is not greater than 10, so the clip keeps source column 5, whose destination is column 10.
    QorPicBlock dst = Picture8(10, 2, std::vector<int>(20, 0));
    const QorPicBlock src = Numbered(6, 1);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 5, 0, 0);
    ASSERT_EQ(n, 5u);
    EXPECT_EQ(Sorted(AsPairs(pairs, n)), (std::vector<std::pair<long, long>>{{5, 0}, {6, 1}, {7, 2}, {8, 3}, {9, 4}}));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, RowsPastTheBottomAreClipped)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    const QorPicBlock src = Numbered(2, 4);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 0, 8, 0);
    ASSERT_EQ(n, 4u);
    EXPECT_EQ(Sorted(AsPairs(pairs, n)), (std::vector<std::pair<long, long>>{{80, 0}, {81, 1}, {90, 2}, {91, 3}}));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, OpaqueOnlyWithAnAllMaskSourceGivesZeroAndNoShuffle)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    QorPicBlock src = Picture8(3, 3, std::vector<int>(9, 7));
    unsigned char seven = 7;
    src.SetMask(&seven);
    std::srand(77);
    const int first = std::rand();
    std::srand(77);
    Point<long> sentinel;
    Point<long>* pairs = &sentinel;
    EXPECT_EQ(dst.GenerateRandomPasteArray(&pairs, src, 1, 1, 1), 0u);
    EXPECT_EQ(pairs, nullptr);
    EXPECT_EQ(std::rand(), first);
}

TEST(QorPicBlockRandomPaste, OpaqueOnlyLeavesOutMaskPixels)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    const QorPicBlock src = Picture8(3, 2, {0, 5, 0, 6, 0, 0}); // mask colour 0
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 2, 3, 1);
    ASSERT_EQ(n, 2u);
    EXPECT_EQ(Sorted(AsPairs(pairs, n)), (std::vector<std::pair<long, long>>{{33, 1}, {42, 3}}));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, OpaqueOnlyComparesAllFourBytesAtThirtyTwoBits)
{
    unsigned char mask[4] = {1, 2, 3, 4};
    QorPicBlock src(QorPicBlock::Bit32, 2, 1, mask);
    src.SetMask(mask);
    src.GetPixel(1, 0)[3] = 5;
    QorPicBlock dst(QorPicBlock::Bit32, 4, 4);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 0, 0, 1);
    ASSERT_EQ(n, 1u);
    EXPECT_EQ(pairs[0].x, 4);
    EXPECT_EQ(pairs[0].y, 4);
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, FixedSeedGivesTheReferenceShuffle)
{
    QorPicBlock dst = Picture8(8, 8, std::vector<int>(64, 0));
    const QorPicBlock src = Numbered(5, 4);
    std::vector<std::pair<long, long>> expected;
    for (long r = 0; r < 4; ++r)
        for (long c = 0; c < 5; ++c)
            expected.emplace_back((1 + r) * 8 + 2 + c, r * 5 + c);
    std::srand(12345);
    ReferenceShuffle(expected);
    const int nextAfterReference = std::rand();

    std::srand(12345);
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 2, 1, 0);
    ASSERT_EQ(n, 20u);
    EXPECT_EQ(AsPairs(pairs, n), expected);
    // 3n swaps of four rand() calls each, no more.
    EXPECT_EQ(std::rand(), nextAfterReference);
    EXPECT_NE(AsPairs(pairs, n), Sorted(expected));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, SinglePairStillDrawsTwelveNumbers)
{
    QorPicBlock dst = Picture8(4, 4, std::vector<int>(16, 0));
    const QorPicBlock src = Numbered(1, 1);
    std::srand(3);
    for (int i = 0; i < 12; ++i)
        std::rand();
    const int thirteenth = std::rand();
    std::srand(3);
    Point<long>* pairs = nullptr;
    ASSERT_EQ(dst.GenerateRandomPasteArray(&pairs, src, 3, 2, 0), 1u);
    EXPECT_EQ(pairs[0].x, 11);
    EXPECT_EQ(pairs[0].y, 0);
    EXPECT_EQ(std::rand(), thirteenth);
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, PointAndWholeSourceFormsMatchTheGeneralForm)
{
    QorPicBlock dst = Picture8(8, 8, std::vector<int>(64, 0));
    const QorPicBlock src = Numbered(3, 3);
    Point<long>* general = nullptr;
    Point<long>* points = nullptr;
    Point<long>* whole = nullptr;
    std::srand(9);
    const unsigned long n1 = dst.GenerateRandomPasteArray(&general, src, 1, 2, 0, 0, 2, 2, 0);
    std::srand(9);
    const unsigned long n2 =
        dst.GenerateRandomPasteArray(&points, src, Point<long>(1, 2), Point<long>(0, 0), Point<long>(2, 2), 0);
    std::srand(9);
    const unsigned long n3 = dst.GenerateRandomPasteArray(&whole, src, 1, 2, 0);
    ASSERT_EQ(n1, 9u);
    ASSERT_EQ(n2, 9u);
    ASSERT_EQ(n3, 9u);
    EXPECT_EQ(AsPairs(points, n2), AsPairs(general, n1));
    EXPECT_EQ(AsPairs(whole, n3), AsPairs(general, n1));
    delete[] general;
    delete[] points;
    delete[] whole;
}

TEST(QorPicBlockRandomPaste, MismatchedDepthsGiveNullAndZero)
{
    QorPicBlock dst = Picture8(8, 8, std::vector<int>(64, 0));
    unsigned char grey[2] = {1, 1};
    const QorPicBlock src(QorPicBlock::Bit16, 2, 2, grey);
    Point<long> sentinel;
    Point<long>* pairs = &sentinel;
    EXPECT_EQ(dst.GenerateRandomPasteArray(&pairs, src, 0, 0, 0), 0u);
    EXPECT_EQ(pairs, nullptr);
}

TEST(QorPicBlockRandomPaste, EmptyRectangleGivesNullAndZero)
{
    QorPicBlock dst = Picture8(10, 10, std::vector<int>(100, 0));
    const QorPicBlock src = Numbered(3, 3);
    std::srand(5);
    const int first = std::rand();
    std::srand(5);
    Point<long> sentinel;
    Point<long>* pairs = &sentinel;
    // Source columns 5..7 of a 3-wide source, then a destination past the right edge.
    EXPECT_EQ(dst.GenerateRandomPasteArray(&pairs, src, 0, 0, 5, 0, 7, 2, 0), 0u);
    EXPECT_EQ(pairs, nullptr);
    pairs = &sentinel;
    EXPECT_EQ(dst.GenerateRandomPasteArray(&pairs, src, 20, 0, 0), 0u);
    EXPECT_EQ(pairs, nullptr);
    const QorPicBlock empty(QorPicBlock::Bit8, 0, 0);
    pairs = &sentinel;
    EXPECT_EQ(dst.GenerateRandomPasteArray(&pairs, empty, 0, 0, 0), 0u);
    EXPECT_EQ(pairs, nullptr);
    EXPECT_EQ(std::rand(), first);
}

TEST(QorPicBlockRandomPaste, NullPairPointerGivesZero)
{
    QorPicBlock dst = Picture8(4, 4, std::vector<int>(16, 0));
    const QorPicBlock src = Numbered(2, 2);
    EXPECT_EQ(dst.GenerateRandomPasteArray(nullptr, src, 0, 0, 0), 0u);
}

TEST(QorPicBlockRandomPaste, EachPairCopiesExactlyOnePixelAtEveryDepth)
{
    for (int bpp = 1; bpp <= 4; ++bpp)
    {
        unsigned char fill[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        QorPicBlock dst(TypeOfBytes(bpp), 4, 1, fill);
        QorPicBlock src(TypeOfBytes(bpp), 4, 1);
        for (int i = 0; i < 4 * bpp; ++i)
            src.GetDataPtr()[i] = static_cast<unsigned char>(i + 1);
        const Point<long> pair(bpp * 1, bpp * 2);
        dst.RandomPaste(src, &pair, 1);
        std::vector<unsigned char> expected(std::size_t(4 * bpp), 0xEE);
        for (int b = 0; b < bpp; ++b)
            expected[std::size_t(bpp + b)] = static_cast<unsigned char>(2 * bpp + b + 1);
        EXPECT_EQ(Bytes(dst), expected) << bpp;
    }
}

TEST(QorPicBlockRandomPaste, BytesCopiedFollowThisPicturesDepth)
{
    QorPicBlock dst = Picture8(4, 1, {0, 0, 0, 0});
    QorPicBlock src(QorPicBlock::Bit32, 2, 1);
    for (int i = 0; i < 8; ++i)
        src.GetDataPtr()[i] = static_cast<unsigned char>(10 + i);
    const Point<long> pairs[2] = {Point<long>(1, 5), Point<long>(3, 7)};
    dst.RandomPaste(src, pairs, 2);
    EXPECT_EQ(Values8(dst), (std::vector<int>{0, 15, 0, 17}));
}

TEST(QorPicBlockRandomPaste, SlicesOfTheShuffledPairsDissolveTheWholeSourceIn)
{
    QorPicBlock dst(QorPicBlock::Bit24, 6, 5);
    QorPicBlock src(QorPicBlock::Bit24, 3, 3);
    FillDistinct(src);
    Point<long>* pairs = nullptr;
    std::srand(21);
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 2, 1, 0);
    ASSERT_EQ(n, 9u);
    dst.RandomPaste(src, pairs, 4);
    long written = 0;
    for (long y = 0; y < 5; ++y)
        for (long x = 0; x < 6; ++x)
            written += dst.GetPixel(x, y)[0] != 0 ? 1 : 0;
    EXPECT_EQ(written, 4);
    dst.RandomPaste(src, pairs + 4, 4);
    dst.RandomPaste(src, pairs + 8, 1);
    for (long y = 0; y < 5; ++y)
        for (long x = 0; x < 6; ++x)
        {
            const bool inside = x >= 2 && x <= 4 && y >= 1 && y <= 3;
            const unsigned char zero[3] = {0, 0, 0};
            const unsigned char* expected = inside ? src.GetPixel(x - 2, y - 1) : zero;
            EXPECT_EQ(std::memcmp(dst.GetPixel(x, y), expected, 3), 0) << x << "," << y;
        }
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, OpaqueOnlyDissolveKeepsTheBackgroundBehindMaskPixels)
{
    QorPicBlock dst = Picture8(3, 2, std::vector<int>(6, 9));
    const QorPicBlock src = Picture8(3, 2, {0, 5, 0, 6, 0, 7}); // mask colour 0
    Point<long>* pairs = nullptr;
    const unsigned long n = dst.GenerateRandomPasteArray(&pairs, src, 0, 0, 1);
    ASSERT_EQ(n, 3u);
    dst.RandomPaste(src, pairs, long(n));
    EXPECT_EQ(Values8(dst), (std::vector<int>{9, 5, 9, 6, 9, 7}));
    delete[] pairs;
}

TEST(QorPicBlockRandomPaste, PairsOutsideEitherBufferAreSkipped)
{
    unsigned char fill[2] = {0xEE, 0xEE};
    QorPicBlock dst(QorPicBlock::Bit16, 2, 2, fill);
    QorPicBlock src(QorPicBlock::Bit16, 2, 2);
    for (int i = 0; i < 8; ++i)
        src.GetDataPtr()[i] = static_cast<unsigned char>(i + 1);
    const Point<long> pairs[] = {
        Point<long>(-2, 0),       // before the destination
        Point<long>(7, 0),        // its second byte past the destination's end
        Point<long>(8, 0),        // at the destination's end
        Point<long>(6, 7),        // its second byte past the source's end
        Point<long>(6, -1),       // before the source
        Point<long>(LONG_MAX, 0), // far past the destination
        Point<long>(0, LONG_MAX), // far past the source
        Point<long>(2, 6),        // the only pair inside both
    };
    dst.RandomPaste(src, pairs, long(sizeof pairs / sizeof pairs[0]));
    EXPECT_EQ(Bytes(dst), (std::vector<unsigned char>{0xEE, 0xEE, 7, 8, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST(QorPicBlockRandomPaste, NoPairsCopyNothing)
{
    QorPicBlock dst = Picture8(2, 1, {1, 2});
    const QorPicBlock src = Picture8(2, 1, {8, 9});
    const Point<long> pair(0, 1);
    dst.RandomPaste(src, &pair, 0);
    dst.RandomPaste(src, &pair, -4);
    dst.RandomPaste(src, nullptr, 3);
    EXPECT_EQ(Values8(dst), (std::vector<int>{1, 2}));
    dst.RandomPaste(src, &pair, 1);
    EXPECT_EQ(Values8(dst), (std::vector<int>{9, 2}));
}
