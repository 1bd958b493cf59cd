// Pasting: the clip adjustment, the per-depth kernels and the vector kernels against a per-pixel loop.
#include "paste_reference.h"
#include "pictures/PasteKernels.h"
#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace
{
using qor::detail::SimdLevel;

QorPicBlock::ColorType TypeOfBytes(int bpp)
{
    return QorPicBlock::ColorType(bpp);
}

// Fills a picture with random bytes, about keyShare of whose pixels equal key.
void RandomPicture(QorPicBlock& p, std::mt19937& rng, const unsigned char* key, double keyShare)
{
    std::uniform_int_distribution<int> byte(0, 255);
    std::bernoulli_distribution isKey(keyShare);
    const int bpp = p.GetBytesPerPixel();
    for (long y = 0; y < p.GetHeight(); ++y)
        for (long x = 0; x < p.GetWidth(); ++x)
        {
            unsigned char* px = p.GetPixel(x, y);
            for (int b = 0; b < bpp; ++b)
                px[b] = static_cast<unsigned char>(byte(rng));
            if (isKey(rng))
            {
                std::memcpy(px, key, std::size_t(bpp));
                if (bpp == 4)
                    px[3] = static_cast<unsigned char>(byte(rng)); // the fourth byte never counts
            }
        }
}

std::vector<unsigned char> Bytes(const QorPicBlock& p)
{
    return std::vector<unsigned char>(p.GetDataPtr(), p.GetDataPtr() + p.GetSize());
}

// Access to the protected clip adjustment.
class PasteProbe : public QorPicBlock
{
public:
    using QorPicBlock::AutoAlterCoordinate;
    using QorPicBlock::AutoFitInRegion;
    using QorPicBlock::QorPicBlock;
};

class SimdLevelGuard
{
public:
    explicit SimdLevelGuard(SimdLevel level) : m_saved(qor::detail::GetSimdLevel())
    {
        qor::detail::SetSimdLevel(level);
    }
    ~SimdLevelGuard() { qor::detail::SetSimdLevel(m_saved); }

private:
    SimdLevel m_saved;
};
} // namespace

TEST(QorPicBlockPaste, EightBitIntoSixteenBitReturnsFalseAndWritesNothing)
{
    unsigned char grey[2] = {7, 7};
    QorPicBlock dst(QorPicBlock::Bit16, 4, 4, grey);
    unsigned char one = 1;
    QorPicBlock src(QorPicBlock::Bit8, 2, 2, &one);
    const auto before = Bytes(dst);
    EXPECT_EQ(dst.Paste(src, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0), 0);
    EXPECT_EQ(Bytes(dst), before);
    EXPECT_FALSE(dst.IsValidPaste(src));
}

TEST(QorPicBlockPaste, ThirtyTwoBitPixelDifferingOnlyInFourthByteIsTransparent)
{
    unsigned char zero[4] = {0, 0, 0, 0};
    QorPicBlock dst(QorPicBlock::Bit32, 2, 1, zero);
    unsigned char key[4] = {10, 20, 30, 40};
    QorPicBlock src(QorPicBlock::Bit32, 2, 1, key);
    src.SetMask(key);
    src.GetPixel(0, 0)[3] = 99;             // only the fourth byte differs: still the key
    src.GetPixel(1, 0)[2] = 31;             // a colour byte differs: drawn
    EXPECT_EQ(dst.Paste(src, 0, 0, 1, 0, 0, 0, 0), 1);
    EXPECT_EQ(std::vector<unsigned char>(dst.GetPixel(0, 0), dst.GetPixel(0, 0) + 4),
              (std::vector<unsigned char>{0, 0, 0, 0}));
    EXPECT_EQ(std::vector<unsigned char>(dst.GetPixel(1, 0), dst.GetPixel(1, 0) + 4),
              (std::vector<unsigned char>{10, 20, 31, 40}));
}

TEST(QorPicBlockPaste, EmptyRectangleReturnsTrueWithoutWriting)
{
    unsigned char a = 1, b = 2;
    QorPicBlock dst(QorPicBlock::Bit8, 4, 4, &a);
    QorPicBlock src(QorPicBlock::Bit8, 4, 4, &b);
    const auto before = Bytes(dst);
    EXPECT_EQ(dst.Paste0808(src, 0, 0, 0, 3, 3, 1, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(Bytes(dst), before);
}

TEST(QorPicBlockPaste, ClipAtNegativeDxStartsAtSourceColumnThree)
{
    QorPicBlock dst(QorPicBlock::Bit8, 10, 1);
    QorPicBlock src(QorPicBlock::Bit8, 8, 1);
    for (long x = 0; x < 8; ++x)
        src.GetPixel(x, 0)[0] = static_cast<unsigned char>(100 + x);
    ASSERT_EQ(dst.Paste(src, -3, 0, 0, 0, 0, 1, 0), 1);
    for (long x = 0; x < 5; ++x)
        EXPECT_EQ(dst.GetPixel(x, 0)[0], 103 + x) << "column " << x;
    EXPECT_EQ(dst.GetPixel(5, 0)[0], 0);

    PasteProbe probe(QorPicBlock::Bit8, 10, 1);
    long dx = -3, dy = 0, sx1 = 0, sy1 = 0, sx2 = 7, sy2 = 0;
    EXPECT_EQ(probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 0, 0), 0);
    EXPECT_EQ(dx, 0);
    EXPECT_EQ(sx1, 3);
    EXPECT_EQ(sx2, 7);
}

TEST(QorPicBlockPaste, ClipWithMirrorYAtSixteenBitsStartsAtRowSy2MinusOne)
{
    QorPicBlock dst(QorPicBlock::Bit16, 1, 4);
    QorPicBlock src(QorPicBlock::Bit16, 1, 4);
    for (long y = 0; y < 4; ++y)
    {
        src.GetPixel(0, y)[0] = static_cast<unsigned char>(y + 1);
        src.GetPixel(0, y)[1] = 0;
    }
    // Adjusted rectangle: sy1 = 4 - 3 = 1, sy2 = 4 - 0 = 4; rows read: 3, 2, 1, 0.
    PasteProbe probe(QorPicBlock::Bit16, 1, 4);
    long dx = 0, dy = 0, sx1 = 0, sy1 = 0, sx2 = 0, sy2 = 3;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 0, 1);
    EXPECT_EQ(sy1, 1);
    EXPECT_EQ(sy2, 4);
    ASSERT_EQ(dst.Paste(src, 0, 0, 0, 0, 1, 1, 0), 1);
    EXPECT_EQ(dst.GetPixel(0, 0)[0], 4);
    EXPECT_EQ(dst.GetPixel(0, 1)[0], 3);
    EXPECT_EQ(dst.GetPixel(0, 2)[0], 2);
    EXPECT_EQ(dst.GetPixel(0, 3)[0], 1);
}

TEST(QorPicBlockPaste, ClipOverhangingRightAndBottomCutsTheSourceRectangle)
{
    PasteProbe probe(QorPicBlock::Bit24, 10, 8);
    QorPicBlock src(QorPicBlock::Bit24, 6, 5);
    long dx = 7, dy = 6, sx1 = 0, sy1 = 0, sx2 = 5, sy2 = 4;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 0, 0);
    // 7 - 0 + 5 = 12 > 10: sx2 = 10 - 7 - 1 = 2; 6 - 0 + 4 = 10 is not > 8... it is: sy2 = 8 - 6 - 1 = 1.
    EXPECT_EQ(sx1, 0);
    EXPECT_EQ(sx2, 2);
    EXPECT_EQ(sy1, 0);
    EXPECT_EQ(sy2, 1);
    EXPECT_EQ(dx, 7);
    EXPECT_EQ(dy, 6);
}

TEST(QorPicBlockPaste, StrictOverhangTestKeepsARectangleEndingOnePastTheEdge)
{
    PasteProbe probe(QorPicBlock::Bit8, 10, 10);
    QorPicBlock src(QorPicBlock::Bit8, 4, 4);
    long dx = 6, dy = 0, sx1 = 0, sy1 = 0, sx2 = 3, sy2 = 3;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 0, 0);
    // 6 - 0 + 3 = 9 is not > 10; the same for 7: 7 + 3 = 10 is not > 10 either.
    EXPECT_EQ(sx2, 3);
    dx = 7;
    sx1 = 0;
    sx2 = 3;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 0, 0);
    EXPECT_EQ(sx2, 3);
    // The column that would land at x = 10 is outside the picture and is skipped, not wrapped.
    unsigned char nine = 9;
    QorPicBlock dst(QorPicBlock::Bit8, 10, 2);
    QorPicBlock s2(QorPicBlock::Bit8, 4, 1, &nine);
    ASSERT_EQ(dst.Paste(s2, 7, 0, 0, 0, 0, 1, 0), 1);
    EXPECT_EQ(dst.GetPixel(9, 0)[0], 9);
    EXPECT_EQ(dst.GetPixel(0, 1)[0], 0);
}

TEST(QorPicBlockPaste, MirrorXClipFormulas)
{
    PasteProbe probe(QorPicBlock::Bit8, 10, 10);
    QorPicBlock src(QorPicBlock::Bit8, 4, 4);
    // No overhang: t = sx1 = 0; sx1 = 4 - 3 = 1, sx2 = 4 - 0 = 4.
    long dx = 2, dy = 0, sx1 = 0, sy1 = 0, sx2 = 3, sy2 = 3;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 1, 0);
    EXPECT_EQ(sx1, 1);
    EXPECT_EQ(sx2, 4);
    // Right overhang: 8 - 0 + 3 = 11 > 10: t = 8 - 10 + 3 = 1; sx1 = 4 - 3 = 1, sx2 = 4 - 1 = 3.
    dx = 8;
    sx1 = 0;
    sx2 = 3;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 1, 0);
    EXPECT_EQ(sx1, 1);
    EXPECT_EQ(sx2, 3);
    // Left overhang: dx = -2: t = 0, sx2 = 3 - 2 = 1; sx1 = 4 - 1 = 3, sx2 = 4 - 0 = 4; dx raised to 0.
    dx = -2;
    sx1 = 0;
    sx2 = 3;
    probe.AutoAlterCoordinate(src, dx, dy, sx1, sy1, sx2, sy2, 1, 0);
    EXPECT_EQ(sx1, 3);
    EXPECT_EQ(sx2, 4);
    EXPECT_EQ(dx, 0);
}

TEST(QorPicBlockPaste, MirroredEightBitPasteReadsLeftwardFromSx1AndSkipsPixelsBeforeTheBuffer)
{
    QorPicBlock src(QorPicBlock::Bit8, 4, 2);
    for (long i = 0; i < 8; ++i)
        src.GetDataPtr()[i] = static_cast<unsigned char>(10 + i);
    unsigned char blank = 0xEE;
    QorPicBlock dst(QorPicBlock::Bit8, 4, 2, &blank);
    // Clip turns (0..3) into (1..4); row 0 reads offsets 1, 0, then -1 and -2 (outside: untouched);
    // row 1 reads offsets 5, 4, 3, 2 (the last two are row 0's pixels: inside the buffer).
    ASSERT_EQ(dst.Paste(src, 0, 0, 0, 1, 0, 1, 0), 1);
    EXPECT_EQ(Bytes(dst), (std::vector<unsigned char>{11, 10, 0xEE, 0xEE, 15, 14, 13, 12}));
}

TEST(QorPicBlockPaste, SixteenBitSubtractClearsSourceBitsAndBitFifteen)
{
    unsigned char all[2] = {0xFF, 0xFF};
    QorPicBlock dst(QorPicBlock::Bit16, 2, 1, all);
    unsigned char bits[2] = {0x0F, 0x01};
    QorPicBlock src(QorPicBlock::Bit16, 2, 1, bits);
    src.SetMask(bits);
    src.GetPixel(1, 0)[0] = 0xF0;
    // Without transparent both pixels are combined; with it the key pixel is skipped.
    QorPicBlock both(dst);
    ASSERT_EQ(both.Paste(src, 0, 0, 0, 0, 0, 0, 1), 1);
    EXPECT_EQ(Bytes(both), (std::vector<unsigned char>{0xF0, 0x7E, 0x0F, 0x7E}));
    ASSERT_EQ(dst.Paste(src, 0, 0, 1, 0, 0, 0, 1), 1);
    EXPECT_EQ(Bytes(dst), (std::vector<unsigned char>{0xFF, 0xFF, 0x0F, 0x7E}));
}

TEST(QorPicBlockPaste, KeyIsTheSourcesMaskNotTheDestinations)
{
    unsigned char five = 5, seven = 7;
    QorPicBlock dst(QorPicBlock::Bit8, 2, 1, &seven);
    dst.SetMask(&seven);
    QorPicBlock src(QorPicBlock::Bit8, 2, 1, &five);
    src.GetPixel(1, 0)[0] = 7;
    src.SetMask(&five);
    ASSERT_EQ(dst.Paste(src, 0, 0, 1, 0, 0, 0, 0), 1);
    EXPECT_EQ(Bytes(dst), (std::vector<unsigned char>{7, 7}));
}

TEST(QorPicBlockPaste, WithoutClipCoordinatesOutsideEitherPictureAreSkipped)
{
    unsigned char one[3] = {1, 1, 1};
    QorPicBlock dst(QorPicBlock::Bit24, 3, 3);
    QorPicBlock src(QorPicBlock::Bit24, 3, 3);
    src.Fill(one);
    ASSERT_EQ(dst.Paste(src, -2, -2, 0, 0, 5, 5, 0, 0, 0, 0, 0), 1);
    ASSERT_EQ(dst.Paste(src, 2, 2, -4, -4, 8, 8, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(dst.GetPixel(0, 0)[0], 1);
}

TEST(QorPicBlockPaste, AutoFitInRegionOrdersClipsAndReportsChange)
{
    PasteProbe p(QorPicBlock::Bit8, 10, 10);
    long x1 = 12, y1 = 5, x2 = -3, y2 = 2;
    EXPECT_EQ(p.AutoFitInRegion(x1, y1, x2, y2), 1);
    EXPECT_EQ(x1, 0);
    EXPECT_EQ(x2, 9);
    EXPECT_EQ(y1, 2);
    EXPECT_EQ(y2, 5);
    EXPECT_EQ(p.AutoFitInRegion(x1, y1, x2, y2), 0);
}

TEST(QorPicBlockPaste, PointFormAndWholeSourceFormMatchTheGeneralForm)
{
    std::mt19937 rng(7);
    unsigned char key = 3;
    QorPicBlock src(QorPicBlock::Bit8, 9, 7);
    src.SetMask(&key);
    RandomPicture(src, rng, &key, 0.4);
    QorPicBlock a(QorPicBlock::Bit8, 20, 20), b(a), c(a);
    a.Paste(src, 4, 5, 0, 0, 8, 6, 1, 0, 0, 1, 0);
    b.Paste(src, Point<long>(4, 5), Point<long>(0, 0), Point<long>(8, 6), 1, 0, 0, 1, 0);
    c.Paste(src, 4, 5, 1, 0, 0, 1, 0);
    EXPECT_EQ(Bytes(a), Bytes(b));
    EXPECT_EQ(Bytes(a), Bytes(c));
}

// Every depth x flag x clip combination, at every kernel level, against the per-pixel loop.
TEST(QorPicBlockPaste, KernelsMatchThePerPixelLoopOnRandomInputs)
{
    std::mt19937 rng(12345);
    std::uniform_int_distribution<long> size(1, 70), pos(-40, 80);
    std::uniform_int_distribution<int> byte(0, 255);
    const SimdLevel best = qor::detail::GetBestSimdLevel();
    int cases = 0;
    for (int level = 0; level <= static_cast<int>(best); ++level)
    {
        SimdLevelGuard guard(static_cast<SimdLevel>(level));
        for (int bpp = 1; bpp <= 4; ++bpp)
            for (int flags = 0; flags < 32; ++flags)
                for (int round = 0; round < 6; ++round)
                {
                    const bool transparent = flags & 1, mirrorX = flags & 2, mirrorY = flags & 4, clip = flags & 8,
                               subtract = flags & 16;
                    unsigned char key[4];
                    for (auto& k : key)
                        k = static_cast<unsigned char>(byte(rng));
                    QorPicBlock src(TypeOfBytes(bpp), size(rng), size(rng));
                    src.SetMask(key);
                    RandomPicture(src, rng, key, 0.5);
                    QorPicBlock dst(TypeOfBytes(bpp), size(rng) + 20, size(rng));
                    RandomPicture(dst, rng, key, 0.1);
                    QorPicBlock expected(dst);
                    long dx = pos(rng), dy = pos(rng);
                    long sx1 = pos(rng) / 2, sy1 = pos(rng) / 2, sx2 = pos(rng), sy2 = pos(rng);
                    if (!clip)
                    {
                        // Without clip, rectangles mostly inside the source, so that pixels are written.
                        sx1 = std::uniform_int_distribution<long>(0, src.GetWidth() - 1)(rng);
                        sx2 = std::uniform_int_distribution<long>(sx1, src.GetWidth() + 2)(rng);
                        sy1 = std::uniform_int_distribution<long>(0, src.GetHeight() - 1)(rng);
                        sy2 = std::uniform_int_distribution<long>(sy1, src.GetHeight() + 2)(rng);
                    }
                    ASSERT_TRUE(qortest::ReferencePaste(expected, src, dx, dy, sx1, sy1, sx2, sy2, transparent,
                                                        mirrorX, mirrorY, clip, subtract));
                    ASSERT_EQ(dst.Paste(src, dx, dy, sx1, sy1, sx2, sy2, transparent, mirrorX, mirrorY, clip,
                                        subtract),
                              1);
                    ASSERT_EQ(Bytes(dst), Bytes(expected))
                        << "level " << level << " bpp " << bpp << " flags " << flags << " at " << dx << "," << dy
                        << " rect " << sx1 << "," << sy1 << "-" << sx2 << "," << sy2;
                    ++cases;
                }
    }
    EXPECT_GE(cases, 4 * 32 * 6);
}

// Long rows exercise the vector loops and their tails at every length around the vector widths.
TEST(QorPicBlockPaste, VectorRowKernelsMatchScalarAtEveryLength)
{
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> byte(0, 255);
    const SimdLevel best = qor::detail::GetBestSimdLevel();
    for (int bpp = 1; bpp <= 4; ++bpp)
        for (int flags = 0; flags < 8; ++flags)
            for (long n = 0; n < 140; ++n)
            {
                const bool transparent = flags & 1, mirrorX = flags & 2, subtract = flags & 4;
                unsigned char key[4];
                for (auto& k : key)
                    k = static_cast<unsigned char>(byte(rng));
                std::vector<unsigned char> src(std::size_t(n + 1) * bpp), dst(src.size());
                for (std::size_t i = 0; i < src.size(); ++i)
                {
                    src[i] = static_cast<unsigned char>(byte(rng));
                    dst[i] = static_cast<unsigned char>(byte(rng));
                }
                for (long i = 0; i < n; i += 2)
                    std::memcpy(&src[std::size_t(i) * bpp], key, std::size_t(bpp));
                const std::uint32_t packed = qor::detail::PackKey(key, bpp);
                const unsigned char* start = mirrorX ? &src[std::size_t(n > 0 ? n - 1 : 0) * bpp] : src.data();
                std::vector<unsigned char> expected = dst;
                {
                    SimdLevelGuard guard(SimdLevel::kScalar);
                    qor::detail::GetPasteRowKernel(bpp, transparent, mirrorX, subtract)(expected.data(), start, n,
                                                                                        packed);
                }
                for (int level = 1; level <= static_cast<int>(best); ++level)
                {
                    SimdLevelGuard guard(static_cast<SimdLevel>(level));
                    std::vector<unsigned char> actual = dst;
                    qor::detail::GetPasteRowKernel(bpp, transparent, mirrorX, subtract)(actual.data(), start, n,
                                                                                        packed);
                    ASSERT_EQ(actual, expected) << "level " << level << " bpp " << bpp << " flags " << flags
                                                << " n " << n;
                }
            }
}

TEST(QorPicBlockPaste, FillPixelsMatchesPixelByPixelWriting)
{
    const unsigned char colour[4] = {1, 2, 3, 4};
    for (int level = 0; level <= static_cast<int>(qor::detail::GetBestSimdLevel()); ++level)
    for (int bpp = 1; bpp <= 4; ++bpp)
        for (long n = 0; n < 300; n += 7)
        {
            SimdLevelGuard guard(static_cast<SimdLevel>(level));
            std::vector<unsigned char> fast(std::size_t(n) * bpp + 1, 0xAA), slow(fast);
            qor::detail::FillPixels(fast.data(), n, colour, bpp);
            for (long i = 0; i < n; ++i)
                std::memcpy(&slow[std::size_t(i) * bpp], colour, std::size_t(bpp));
            ASSERT_EQ(fast, slow) << "bpp " << bpp << " n " << n;
        }
}

TEST(QorPicBlockPaste, PastingAPictureIntoItselfReadsThePictureAsItWas)
{
    QorPicBlock p(QorPicBlock::Bit24, 6, 1);
    for (long x = 0; x < 6; ++x)
        for (int b = 0; b < 3; ++b)
            p.GetPixel(x, 0)[b] = static_cast<unsigned char>(10 * x + b);
    QorPicBlock expected(p);
    ASSERT_TRUE(qortest::ReferencePaste(expected, QorPicBlock(p), 2, 0, 0, 0, 3, 0, false, false, false, true, false));
    ASSERT_EQ(p.Paste(p, 2, 0, 0, 0, 3, 0, 0, 0, 0, 1, 0), 1);
    EXPECT_EQ(Bytes(p), Bytes(expected));
    EXPECT_EQ(p.GetPixel(2, 0)[0], 0);
    EXPECT_EQ(p.GetPixel(5, 0)[0], 30);
}

// The vector fill aligns its stores: every start address and length around the alignment must match.
TEST(QorPicBlockPaste, FillPixelsMatchesAtEveryStartAlignment)
{
    const unsigned char colour[4] = {9, 8, 7, 6};
    for (int level = 0; level <= static_cast<int>(qor::detail::GetBestSimdLevel()); ++level)
        for (int bpp = 2; bpp <= 4; ++bpp)
            for (long offset = 0; offset < 34; ++offset)
                for (long n : {43L, 64L, 97L, 211L})
                {
                    SimdLevelGuard guard(static_cast<SimdLevel>(level));
                    std::vector<unsigned char> fast(std::size_t(n) * bpp + 80, 0xAA), slow(fast);
                    qor::detail::FillPixels(fast.data() + offset, n, colour, bpp);
                    for (long i = 0; i < n; ++i)
                        std::memcpy(&slow[std::size_t(offset + i * bpp)], colour, std::size_t(bpp));
                    ASSERT_EQ(fast, slow) << "level " << level << " bpp " << bpp << " offset " << offset << " n " << n;
                }
}

// Rows whose key pixels come in runs (none, all, long runs) take every branch of the vector steps.
TEST(QorPicBlockPaste, VectorRowKernelsMatchScalarOnKeyRuns)
{
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> byte(0, 255);
    const SimdLevel best = qor::detail::GetBestSimdLevel();
    const unsigned char key[4] = {0x10, 0x20, 0x30, 0x40};
    for (int bpp = 1; bpp <= 4; ++bpp)
        for (int flags = 0; flags < 4; ++flags)
            for (int pattern = 0; pattern < 4; ++pattern)
                for (long n : {31L, 64L, 65L, 100L, 257L})
                {
                    const bool transparent = flags & 1, mirrorX = flags & 2;
                    std::vector<unsigned char> src(std::size_t(n) * bpp), dst(src.size());
                    for (auto& b : dst)
                        b = static_cast<unsigned char>(byte(rng));
                    for (long i = 0, run = 0; i < n; ++i)
                    {
                        const bool isKey = pattern == 1 || (pattern == 2 && (i / 13) % 2 == 0) ||
                                           (pattern == 3 && (run = (run + byte(rng)) % 5) == 0);
                        for (int b = 0; b < bpp; ++b)
                            src[std::size_t(i) * bpp + b] =
                                isKey ? key[b] : static_cast<unsigned char>(0x80 | byte(rng));
                        if (isKey && bpp == 4)
                            src[std::size_t(i) * bpp + 3] = static_cast<unsigned char>(byte(rng));
                    }
                    const std::uint32_t packed = qor::detail::PackKey(key, bpp);
                    const unsigned char* start = mirrorX ? &src[std::size_t(n - 1) * bpp] : src.data();
                    std::vector<unsigned char> expected = dst;
                    {
                        SimdLevelGuard guard(SimdLevel::kScalar);
                        qor::detail::GetPasteRowKernel(bpp, transparent, mirrorX, false)(expected.data(), start, n,
                                                                                         packed);
                    }
                    for (int level = 1; level <= static_cast<int>(best); ++level)
                    {
                        SimdLevelGuard guard(static_cast<SimdLevel>(level));
                        std::vector<unsigned char> actual = dst;
                        qor::detail::GetPasteRowKernel(bpp, transparent, mirrorX, false)(actual.data(), start, n,
                                                                                         packed);
                        ASSERT_EQ(actual, expected) << "level " << level << " bpp " << bpp << " flags " << flags
                                                    << " pattern " << pattern << " n " << n;
                    }
                }
}

#if defined(__x86_64__)
namespace
{
// Whether the processor reports which register states are in use (XGETBV with ECX = 1).
bool CanReadStateInUse()
{
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_OSXSAVE))
        return false;
    __cpuid_count(0xD, 1, a, b, c, d);
    return (a & (1u << 2)) != 0;
}

// Bit 2 of the in-use states: the upper halves of the YMM registers hold data. Legacy-encoded SSE code run
// in that state pays the AVX-to-SSE transition on Intel cores.
bool UpperYmmDirty()
{
    unsigned lo = 0, hi = 0;
    asm volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(1));
    return (lo & (1u << 2)) != 0;
}

void ClearUpperYmm()
{
    asm volatile("vzeroupper" ::: "memory");
}

bool AvxProbeUsable()
{
    return qor::detail::GetBestSimdLevel() == SimdLevel::kAvx2 && CanReadStateInUse();
}
} // namespace

TEST(QorPicBlockPasteSimd, ProbeSeesTheUpperYmmHalvesDirtyAndCleared)
{
    if (!AvxProbeUsable())
        GTEST_SKIP() << "no AVX2 or no XGETBV in-use report on this processor";
    ClearUpperYmm();
    EXPECT_FALSE(UpperYmmDirty());
    asm volatile("vpcmpeqd %%ymm15, %%ymm15, %%ymm15" ::: "xmm15");
    const bool dirty = UpperYmmDirty();
    ClearUpperYmm();
    EXPECT_TRUE(dirty);
    EXPECT_FALSE(UpperYmmDirty());
}

// Every kernel of the AVX2 level, at every row length class, and the fill leave the upper halves clear, so
// the caller's legacy-encoded SSE code never runs with them dirty.
TEST(QorPicBlockPasteSimd, EveryAvx2KernelAndTheFillReturnWithTheUpperYmmHalvesClear)
{
    if (!AvxProbeUsable())
        GTEST_SKIP() << "no AVX2 or no XGETBV in-use report on this processor";
    SimdLevelGuard guard(SimdLevel::kAvx2);
    std::vector<unsigned char> src(4 * 300, 0x5A), dst(4 * 300, 0xA5);
    int checked = 0;
    for (int bpp = 1; bpp <= 4; ++bpp)
        for (int flags = 0; flags < 8; ++flags)
            for (long n : {0L, 3L, 9L, 17L, 40L, 100L, 299L})
            {
                const bool transparent = flags & 1, mirrorX = flags & 2, subtract = flags & 4;
                const unsigned char* start = mirrorX ? &src[std::size_t(n > 0 ? n - 1 : 0) * bpp] : src.data();
                const qor::detail::PasteRowKernel kernel =
                    qor::detail::GetPasteRowKernel(bpp, transparent, mirrorX, subtract);
                ClearUpperYmm();
                kernel(dst.data(), start, n, 0x5A5A5A5Au);
                const bool dirty = UpperYmmDirty();
                ASSERT_FALSE(dirty) << "bpp " << bpp << " flags " << flags << " n " << n;
                const qor::detail::PasteBlockKernel block =
                    qor::detail::GetPasteBlockKernel(bpp, transparent, mirrorX, subtract);
                ClearUpperYmm();
                block(dst.data(), 0, start, 0, n, 2, 0x5A5A5A5Au);
                const bool blockDirty = UpperYmmDirty();
                ASSERT_FALSE(blockDirty) << "block bpp " << bpp << " flags " << flags << " n " << n;
                ++checked;
            }
    const unsigned char colour[4] = {1, 2, 3, 4};
    for (int bpp = 1; bpp <= 4; ++bpp)
        for (long n : {1L, 50L, 299L})
        {
            ClearUpperYmm();
            qor::detail::FillPixels(dst.data(), n, colour, bpp);
            const bool dirty = UpperYmmDirty();
            ASSERT_FALSE(dirty) << "fill bpp " << bpp << " n " << n;
            ++checked;
        }
    EXPECT_EQ(checked, 4 * 8 * 7 + 4 * 3);
}
#endif

// A row of 8k + 9 pixels leaves nine after the vector loop: each of them is still written.
TEST(QorPicBlockPaste, TwentyFourBitKeyedRowsWithNineLeftOverWriteEveryPixel)
{
    const unsigned char key[3] = {1, 2, 3};
    for (int level = 0; level <= static_cast<int>(qor::detail::GetBestSimdLevel()); ++level)
        for (bool mirrorX : {false, true})
            for (long n : {17L, 25L, 65L, 641L})
            {
                SimdLevelGuard guard(static_cast<SimdLevel>(level));
                std::vector<unsigned char> src(std::size_t(n) * 3), dst(src.size(), 0);
                for (std::size_t i = 0; i < src.size(); ++i)
                    src[i] = static_cast<unsigned char>(0x80 | (i * 7));
                const unsigned char* start = mirrorX ? &src[std::size_t(n - 1) * 3] : src.data();
                qor::detail::GetPasteRowKernel(3, true, mirrorX, false)(dst.data(), start, n,
                                                                         qor::detail::PackKey(key, 3));
                for (long x = 0; x < n; ++x)
                {
                    const long from = mirrorX ? n - 1 - x : x;
                    ASSERT_EQ(0, std::memcmp(&dst[std::size_t(x) * 3], &src[std::size_t(from) * 3], 3))
                        << "level " << level << " mirror " << mirrorX << " n " << n << " pixel " << x;
                }
            }
}

// A block kernel is its row kernel over each row, the pointers stepping by their pitches (negative too).
TEST(QorPicBlockPaste, BlockKernelsMatchTheirRowKernelRowByRow)
{
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> byte(0, 255);
    const long n = 37, rows = 5, dstPitch = 45, srcPitch = 41;
    for (int level = 0; level <= static_cast<int>(qor::detail::GetBestSimdLevel()); ++level)
        for (int bpp = 1; bpp <= 4; ++bpp)
            for (int flags = 0; flags < 8; ++flags)
            {
                SimdLevelGuard guard(static_cast<SimdLevel>(level));
                const bool transparent = flags & 1, mirrorX = flags & 2, subtract = flags & 4;
                std::vector<unsigned char> src(std::size_t(srcPitch * rows) * bpp), dst(std::size_t(dstPitch * rows) * bpp);
                for (auto& b : src)
                    b = static_cast<unsigned char>(byte(rng) % 3 == 0 ? 7 : byte(rng));
                for (auto& b : dst)
                    b = static_cast<unsigned char>(byte(rng));
                const unsigned char key[4] = {7, 7, 7, 7};
                const std::uint32_t packed = qor::detail::PackKey(key, bpp);
                std::vector<unsigned char> expected = dst, actual = dst;
                // Source rows bottom-up, as a vertically mirrored paste reads them.
                const std::ptrdiff_t srcStep = -std::ptrdiff_t(srcPitch) * bpp;
                const unsigned char* s0 = &src[std::size_t((rows - 1) * srcPitch + (mirrorX ? n - 1 : 0)) * bpp];
                for (long r = 0; r < rows; ++r)
                    qor::detail::GetPasteRowKernel(bpp, transparent, mirrorX, subtract)(
                        &expected[std::size_t(r * dstPitch) * bpp], s0 + r * srcStep, n, packed);
                qor::detail::GetPasteBlockKernel(bpp, transparent, mirrorX, subtract)(
                    actual.data(), std::ptrdiff_t(dstPitch) * bpp, s0, srcStep, n, rows, packed);
                ASSERT_EQ(actual, expected) << "level " << level << " bpp " << bpp << " flags " << flags;
            }
}
