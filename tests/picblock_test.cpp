// QorPicBlock core: colour types, storage, Reset and Attach, fills, copies and colour conversion.
#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

// Opens the protected members to the tests.
class TestPic : public QorPicBlock
{
public:
    using QorPicBlock::GetUsableRows;
    using QorPicBlock::QorPicBlock;
    using QorPicBlock::SetType;
    using QorPicBlock::TransferColor;
};

Bytes PixelBytes(const QorPicBlock& p)
{
    const unsigned char* d = p.GetDataPtr();
    return d ? Bytes(d, d + p.GetSize()) : Bytes();
}

Bytes MaskBytes(const QorPicBlock& p)
{
    return Bytes(p.GetMask(), p.GetMask() + p.GetBytesPerPixel());
}

Bytes Repeat(const Bytes& unit, std::size_t times)
{
    Bytes out;
    for (std::size_t i = 0; i < times; ++i)
        out.insert(out.end(), unit.begin(), unit.end());
    return out;
}

// Sets 8-bit pixel (x, y) to base + 10 * y + x.
void Number(QorPicBlock& p, unsigned char base = 1)
{
    for (long y = 0; y < p.GetHeight(); ++y)
        for (long x = 0; x < p.GetWidth(); ++x)
            *p.GetPixel(x, y) = static_cast<unsigned char>(base + 10 * y + x);
}

// Pixels (x, y) of an 8-bit picture set by the rectangle x1..x2, y1..y2 (inclusive), others 0.
Bytes Marked(long w, long h, long x1, long y1, long x2, long y2, unsigned char value)
{
    Bytes out(std::size_t(w * h), 0);
    for (long y = y1; y <= y2; ++y)
        for (long x = x1; x <= x2; ++x)
            out[std::size_t(y * w + x)] = value;
    return out;
}
} // namespace

// --- Palette entries -------------------------------------------------------------------------------

TEST(stPaletteEntry, DefaultIsBlackWithFlagsFour)
{
    const stPaletteEntry e;
    EXPECT_EQ(e.peRed, 0);
    EXPECT_EQ(e.peGreen, 0);
    EXPECT_EQ(e.peBlue, 0);
    EXPECT_EQ(e.peFlags, 4);
}

TEST(stPaletteEntry, AssignmentFromValueStoresItsBytesLowestFirst)
{
    stPaletteEntry e;
    e = 0x04332211u;
    EXPECT_EQ(e.peRed, 0x11);
    EXPECT_EQ(e.peGreen, 0x22);
    EXPECT_EQ(e.peBlue, 0x33);
    EXPECT_EQ(e.peFlags, 0x04);
    unsigned char raw[4];
    std::memcpy(raw, &e, 4);
    EXPECT_EQ(Bytes(raw, raw + 4), (Bytes{0x11, 0x22, 0x33, 0x04}));
}

// --- Colour types -----------------------------------------------------------------------------------

TEST(QorPicBlockType, SetTypeGivesBitsAndBytesPerPixelOfEachType)
{
    const struct
    {
        QorPicBlock::ColorType type;
        unsigned short bits, bytes;
    } cases[] = {{QorPicBlock::Bit16, 16, 2},
                 {QorPicBlock::Bit24, 24, 3},
                 {QorPicBlock::Bit32, 32, 4},
                 {QorPicBlock::Bit8, 8, 1}};
    TestPic p;
    for (const auto& c : cases)
    {
        p.SetType(c.type);
        EXPECT_EQ(p.GetColorType(), c.type);
        EXPECT_EQ(p.GetBitsPerPixel(), c.bits);
        EXPECT_EQ(p.GetBytesPerPixel(), c.bytes);
    }
}

TEST(QorPicBlockType, SetTypeReturnsThePreviousType)
{
    TestPic p;
    EXPECT_EQ(p.SetType(QorPicBlock::Bit24), QorPicBlock::Bit8);
    EXPECT_EQ(p.SetType(QorPicBlock::Bit32), QorPicBlock::Bit24);
    EXPECT_EQ(p.SetType(QorPicBlock::Bit16), QorPicBlock::Bit32);
}

TEST(QorPicBlockType, SetTypeToTheSameTypeKeepsTheMaskColour)
{
    TestPic p(QorPicBlock::Bit24);
    const unsigned char mask[3] = {1, 2, 3};
    p.SetMask(mask);
    const unsigned char* before = p.GetMask();
    EXPECT_EQ(p.SetType(QorPicBlock::Bit24), QorPicBlock::Bit24);
    EXPECT_EQ(p.GetMask(), before);
    EXPECT_EQ(MaskBytes(p), (Bytes{1, 2, 3}));
}

TEST(QorPicBlockType, ChangingTheTypeResetsTheMaskColourToZeros)
{
    TestPic p(QorPicBlock::Bit24);
    const unsigned char mask[4] = {1, 2, 3, 4};
    p.SetMask(mask);
    p.SetType(QorPicBlock::Bit32);
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0, 0, 0}));
    p.SetMask(mask);
    p.SetType(QorPicBlock::Bit24);
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0, 0}));
}

TEST(QorPicBlockType, SetTypeLeavesThePixelBufferAlone)
{
    unsigned char colour[3] = {1, 2, 3};
    TestPic p(QorPicBlock::Bit24, 2, 1, colour);
    const unsigned char* data = p.GetDataPtr();
    p.SetType(QorPicBlock::Bit8);
    EXPECT_EQ(p.GetDataPtr(), data);
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(p.GetHeight(), 1);
    EXPECT_EQ(p.GetSize(), 2u);
    EXPECT_EQ(Bytes(data, data + 6), (Bytes{1, 2, 3, 1, 2, 3}));
}

TEST(QorPicBlockType, SetTypeOutsideTheFourTypesKeepsBitsPerPixel)
{
    TestPic p(QorPicBlock::Bit24);
    const unsigned char mask[3] = {5, 6, 7};
    p.SetMask(mask);
    EXPECT_EQ(p.SetType(QorPicBlock::ColorType(9)), QorPicBlock::Bit24);
    EXPECT_EQ(p.GetColorType(), 9);
    EXPECT_EQ(p.GetBitsPerPixel(), 24);
    EXPECT_EQ(p.GetBytesPerPixel(), 3);
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0, 0}));
}

// --- Construction -----------------------------------------------------------------------------------

TEST(QorPicBlockConstruct, DefaultIsAnEmptyEightBitPicture)
{
    const QorPicBlock p;
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetBitsPerPixel(), 8);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetSize(), 0u);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(p.GetPaletteEntryPtr(), nullptr);
    EXPECT_FALSE(p.IsAttached());
    ASSERT_NE(p.GetMask(), nullptr);
    EXPECT_EQ(MaskBytes(p), (Bytes{0}));
}

TEST(QorPicBlockConstruct, TypeConstructorGivesAnEmptyPictureOfThatType)
{
    const QorPicBlock p(QorPicBlock::Bit16);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(p.GetBytesPerPixel(), 2);
    EXPECT_EQ(p.GetSize(), 0u);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0}));
}

TEST(QorPicBlockConstruct, SizedConstructorAllocatesAZeroedBuffer)
{
    const QorPicBlock p(QorPicBlock::Bit24, 3, 2);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(p.GetSize(), 18u);
    ASSERT_NE(p.GetDataPtr(), nullptr);
    EXPECT_EQ(PixelBytes(p), Bytes(18, 0));
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0, 0}));
}

TEST(QorPicBlockConstruct, ColourConstructorSetsEveryPixel)
{
    unsigned char colour[3] = {10, 20, 30};
    const QorPicBlock p(QorPicBlock::Bit24, 3, 2, colour);
    EXPECT_EQ(PixelBytes(p), Repeat({10, 20, 30}, 6));
}

TEST(QorPicBlockConstruct, SizeIsBitsTimesWidthTimesHeightOverEight)
{
    EXPECT_EQ(QorPicBlock(QorPicBlock::Bit8, 5, 7).GetSize(), 35u);
    EXPECT_EQ(QorPicBlock(QorPicBlock::Bit16, 3, 3).GetSize(), 18u);
    EXPECT_EQ(QorPicBlock(QorPicBlock::Bit24, 5, 1).GetSize(), 15u);
    EXPECT_EQ(QorPicBlock(QorPicBlock::Bit32, 5, 7).GetSize(), 140u);
}

TEST(QorPicBlockConstruct, GetPixelAddressesRowsTopToBottomWithoutPadding)
{
    const QorPicBlock p(QorPicBlock::Bit24, 4, 3);
    EXPECT_EQ(p.GetPixel(0, 0), p.GetDataPtr());
    EXPECT_EQ(p.GetPixel(2, 1) - p.GetDataPtr(), (4 * 1 + 2) * 3);
    EXPECT_EQ(p.GetPixel(3, 2) - p.GetDataPtr(), 33);
}

// --- Reset ------------------------------------------------------------------------------------------

TEST(QorPicBlockReset, SameTypeAndSizeKeepsTheBufferAndItsContents)
{
    unsigned char colour[2] = {0x34, 0x12};
    QorPicBlock p(QorPicBlock::Bit16, 4, 3, colour);
    const unsigned char* data = p.GetDataPtr();
    p.Reset(QorPicBlock::Bit16, 4, 3);
    EXPECT_EQ(p.GetDataPtr(), data);
    EXPECT_EQ(PixelBytes(p), Repeat({0x34, 0x12}, 12));
}

TEST(QorPicBlockReset, DifferentSizeGivesANewZeroedBuffer)
{
    unsigned char colour[1] = {9};
    QorPicBlock p(QorPicBlock::Bit8, 4, 3, colour);
    p.Reset(QorPicBlock::Bit8, 3, 5);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetHeight(), 5);
    EXPECT_EQ(p.GetSize(), 15u);
    EXPECT_EQ(PixelBytes(p), Bytes(15, 0));
}

TEST(QorPicBlockReset, DifferentTypeOfTheSameSizeGivesABufferOfTheNewSize)
{
    unsigned char colour[1] = {9};
    QorPicBlock p(QorPicBlock::Bit8, 4, 4, colour);
    p.Reset(QorPicBlock::Bit32, 4, 4);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(p.GetSize(), 64u);
    EXPECT_EQ(PixelBytes(p), Bytes(64, 0));
}

TEST(QorPicBlockReset, NegativeSizesBecomeZero)
{
    QorPicBlock p(QorPicBlock::Bit8, 2, 2);
    p.Reset(QorPicBlock::Bit8, -3, 5);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 5);
    EXPECT_EQ(p.GetSize(), 0u);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    p.Reset(4, -1);
    EXPECT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
}

TEST(QorPicBlockReset, ZeroByZeroHasNullPixelData)
{
    QorPicBlock p(QorPicBlock::Bit24, 3, 3);
    p.Reset(0, 0);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(QorPicBlock(QorPicBlock::Bit32, 0, 0).GetDataPtr(), nullptr);
}

TEST(QorPicBlockReset, ResetWithoutTypeKeepsTheType)
{
    QorPicBlock p(QorPicBlock::Bit16);
    p.Reset(3, 2);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(p.GetSize(), 12u);
    EXPECT_EQ(PixelBytes(p), Bytes(12, 0));
}

TEST(QorPicBlockReset, ResetWithColourSetsEveryPixel)
{
    QorPicBlock p;
    unsigned char grey[1] = {7};
    p.Reset(3, 2, grey);
    EXPECT_EQ(PixelBytes(p), Bytes(6, 7));
    unsigned char colour[4] = {1, 2, 3, 4};
    p.Reset(QorPicBlock::Bit32, 2, 2, colour);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(PixelBytes(p), Repeat({1, 2, 3, 4}, 4));
}

TEST(QorPicBlockReset, SizeBeyondThirtyTwoBitsIsRefusedAndThePictureKept)
{
    unsigned char colour[1] = {3};
    QorPicBlock p(QorPicBlock::Bit8, 2, 2, colour);
    const unsigned char* data = p.GetDataPtr();
    p.Reset(70000, 70000); // 4.9e9 bytes
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(p.GetDataPtr(), data);
    p.Reset(QorPicBlock::Bit32, 40000, 40000); // 6.4e9 bytes
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(p.GetSize(), 4u);
    EXPECT_EQ(p.GetDataPtr(), data);
    EXPECT_EQ(PixelBytes(p), Bytes(4, 3));
}

TEST(QorPicBlockReset, ConstructorWithASizeBeyondThirtyTwoBitsGivesAnEmptyPictureOfTheType)
{
    const QorPicBlock p(QorPicBlock::Bit24, 60000, 60000);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit24);
    EXPECT_EQ(p.GetBytesPerPixel(), 3);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0, 0}));
}

// --- Attach -----------------------------------------------------------------------------------------

TEST(QorPicBlockAttach, AttachUsesTheCallersBuffer)
{
    Bytes buffer(12, 5);
    QorPicBlock p(QorPicBlock::Bit8, 2, 2);
    p.Attach(4, 3, buffer.data());
    EXPECT_TRUE(p.IsAttached());
    EXPECT_EQ(p.GetDataPtr(), buffer.data());
    EXPECT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(p.GetHeight(), 3);
    EXPECT_EQ(p.GetSize(), 12u);
    EXPECT_EQ(*p.GetPixel(3, 2), 5);
}

TEST(QorPicBlockAttach, ResetAfterAttachChangesNeitherSizeNorData)
{
    Bytes buffer(6, 1);
    QorPicBlock p;
    p.Attach(3, 2, buffer.data());
    p.Reset(20, 20);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(p.GetDataPtr(), buffer.data());
    p.Reset(QorPicBlock::Bit8, 20, 20);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetDataPtr(), buffer.data());
    EXPECT_EQ(buffer, Bytes(6, 1));
}

TEST(QorPicBlockAttach, SetTypeAfterAttachStillChangesTypeAndMaskColour)
{
    Bytes buffer(8, 0);
    TestPic p;
    p.Attach(4, 2, buffer.data());
    const unsigned char mask[1] = {7};
    p.SetMask(mask);
    EXPECT_EQ(p.SetType(QorPicBlock::Bit16), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(MaskBytes(p), (Bytes{0, 0}));
    EXPECT_EQ(p.GetDataPtr(), buffer.data());
    EXPECT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(p.GetHeight(), 2);
}

TEST(QorPicBlockAttach, AttachWithTypeSetsTheTypeFirst)
{
    Bytes buffer(12, 0);
    QorPicBlock p;
    p.Attach(QorPicBlock::Bit24, 2, 2, buffer.data());
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit24);
    EXPECT_EQ(p.GetSize(), 12u);
    EXPECT_EQ(p.GetPixel(1, 1) - buffer.data(), 9);
}

TEST(QorPicBlockAttach, NegativeSizesBecomeZero)
{
    unsigned char byte = 0;
    QorPicBlock p;
    p.Attach(-4, -2, &byte);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), &byte);
}

TEST(QorPicBlockAttach, DestroyingThePictureLeavesTheCallersBufferAlone)
{
    Bytes buffer(4, 2);
    {
        QorPicBlock p;
        p.Attach(2, 2, buffer.data());
        unsigned char colour[1] = {8};
        p.Fill(colour);
    }
    EXPECT_EQ(buffer, Bytes(4, 8));
}

TEST(QorPicBlockAttach, FillsAfterWideningTheTypeStayInsideTheBuffer)
{
    Bytes buffer(16, 0xEE); // 4 x 4 at 8 bits; at 24 bits only one 12-byte row fits
    TestPic p;
    p.Attach(4, 4, buffer.data());
    p.SetType(QorPicBlock::Bit24);
    EXPECT_EQ(p.GetUsableRows(), 1);
    unsigned char colour[3] = {1, 2, 3};
    p.Fill(colour);
    Bytes expected = Repeat({1, 2, 3}, 4);
    expected.insert(expected.end(), 4, 0xEE);
    EXPECT_EQ(buffer, expected);
    unsigned char grey[3] = {5, 5, 5};
    p.Fill(grey);
    expected = Bytes(12, 5);
    expected.insert(expected.end(), 4, 0xEE);
    EXPECT_EQ(buffer, expected);
}

// --- Palette pointer and mask colour ----------------------------------------------------------------

TEST(QorPicBlockPalette, SetPaletteEntryPtrReturnsThePreviousPointer)
{
    stPaletteEntry first[256], second[256];
    QorPicBlock p;
    EXPECT_EQ(p.SetPaletteEntryPtr(first), nullptr);
    EXPECT_EQ(p.GetPaletteEntryPtr(), first);
    EXPECT_EQ(p.SetPaletteEntryPtr(second), static_cast<void*>(first));
    EXPECT_EQ(p.SetPaletteEntryPtr(nullptr), static_cast<void*>(second));
    EXPECT_EQ(p.GetPaletteEntryPtr(), nullptr);
}

TEST(QorPicBlockPalette, SetMaskCopiesBytesPerPixelBytes)
{
    QorPicBlock p(QorPicBlock::Bit24);
    const unsigned char colour[4] = {9, 8, 7, 6};
    p.SetMask(colour);
    EXPECT_EQ(MaskBytes(p), (Bytes{9, 8, 7}));
}

// --- Colour fills -----------------------------------------------------------------------------------

TEST(QorPicBlockFill, GreyWholeFillGivesTheSameBytesAsThePerPixelFill)
{
    unsigned char grey[3] = {7, 7, 7};
    QorPicBlock whole(QorPicBlock::Bit24, 4, 3);
    QorPicBlock perPixel(QorPicBlock::Bit24, 4, 3);
    whole.Fill(grey);
    perPixel.Fill(0, 0, 3, 2, grey);
    EXPECT_EQ(PixelBytes(whole), Bytes(36, 7));
    EXPECT_EQ(PixelBytes(whole), PixelBytes(perPixel));
}

TEST(QorPicBlockFill, NonGreyWholeFillWritesEachPixelsBytesInOrder)
{
    unsigned char colour[3] = {1, 2, 3};
    QorPicBlock p(QorPicBlock::Bit24, 3, 2);
    p.Fill(colour);
    EXPECT_EQ(PixelBytes(p), Repeat({1, 2, 3}, 6));
    unsigned char word[2] = {0x34, 0x12};
    QorPicBlock q(QorPicBlock::Bit16, 2, 2);
    q.Fill(word);
    EXPECT_EQ(PixelBytes(q), Repeat({0x34, 0x12}, 4));
}

TEST(QorPicBlockFill, RectangleFromNegativeCornerFillsPixelsZeroToTwo)
{
    QorPicBlock p(QorPicBlock::Bit8, 10, 10);
    unsigned char c[1] = {9};
    p.Fill(-5, -5, 2, 2, c);
    EXPECT_EQ(PixelBytes(p), Marked(10, 10, 0, 0, 2, 2, 9));
}

TEST(QorPicBlockFill, RectangleRightOfThePictureFillsNothing)
{
    QorPicBlock p(QorPicBlock::Bit8, 10, 10);
    unsigned char c[1] = {9};
    p.Fill(12, 0, 15, 3, c);
    EXPECT_EQ(PixelBytes(p), Bytes(100, 0));
}

TEST(QorPicBlockFill, RectangleAboveOrBelowThePictureFillsNothing)
{
    QorPicBlock p(QorPicBlock::Bit8, 10, 10);
    unsigned char c[1] = {9};
    p.Fill(0, 10, 3, 12, c);
    p.Fill(0, -5, 3, -1, c);
    p.Fill(-4, 0, -1, 9, c);
    EXPECT_EQ(PixelBytes(p), Bytes(100, 0));
}

TEST(QorPicBlockFill, ReversedCornersAreOrdered)
{
    QorPicBlock p(QorPicBlock::Bit8, 6, 5);
    unsigned char c[1] = {4};
    p.Fill(4, 3, 1, 1, c);
    EXPECT_EQ(PixelBytes(p), Marked(6, 5, 1, 1, 4, 3, 4));
}

TEST(QorPicBlockFill, RectangleIsClippedAtTheRightAndBottom)
{
    QorPicBlock p(QorPicBlock::Bit8, 10, 10);
    unsigned char c[1] = {6};
    p.Fill(7, 8, 20, 20, c);
    EXPECT_EQ(PixelBytes(p), Marked(10, 10, 7, 8, 9, 9, 6));
}

TEST(QorPicBlockFill, SinglePixelRectangleFillsOnePixel)
{
    unsigned char colour[4] = {1, 2, 3, 4};
    QorPicBlock p(QorPicBlock::Bit32, 3, 3);
    p.Fill(1, 2, 1, 2, colour);
    Bytes expected(36, 0);
    std::memcpy(expected.data() + (3 * 2 + 1) * 4, colour, 4);
    EXPECT_EQ(PixelBytes(p), expected);
}

TEST(QorPicBlockFill, QorRectOfTheWholePictureSetsEveryPixel)
{
    unsigned char colour[3] = {1, 2, 3};
    QorPicBlock p(QorPicBlock::Bit24, 4, 3);
    p.Fill(QorRect(0, 0, 3, 2), colour);
    EXPECT_EQ(PixelBytes(p), Repeat({1, 2, 3}, 12));
    unsigned char grey[3] = {8, 8, 8};
    p.Fill(QorRect(0, 0, 3, 2), grey);
    EXPECT_EQ(PixelBytes(p), Bytes(36, 8));
}

TEST(QorPicBlockFill, QorRectFillUsesItsFourEdges)
{
    QorPicBlock p(QorPicBlock::Bit8, 6, 5);
    unsigned char c[1] = {3};
    p.Fill(QorRect(1, 2, 3, 4), c);
    EXPECT_EQ(PixelBytes(p), Marked(6, 5, 1, 2, 3, 4, 3));
    QorPicBlock q(QorPicBlock::Bit8, 6, 5);
    QorRect reversed;
    reversed.left = 4;
    reversed.top = 3;
    reversed.right = 2;
    reversed.bottom = 0;
    q.Fill(reversed, c);
    EXPECT_EQ(PixelBytes(q), Marked(6, 5, 2, 0, 4, 3, 3));
}

TEST(QorPicBlockFill, FillsOfAnEmptyPictureDoNothing)
{
    QorPicBlock p;
    unsigned char c[1] = {3};
    p.Fill(c);
    p.Fill(0, 0, 5, 5, c);
    p.Fill(QorRect(0, 0, -1, -1), c);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(p.GetSize(), 0u);
}

// --- Pattern fills ----------------------------------------------------------------------------------

TEST(QorPicBlockPattern, SevenColumnsOfAThreeWidePatternRepeatColumnsZeroOneTwo)
{
    QorPicBlock pattern(QorPicBlock::Bit8, 3, 2);
    Number(pattern); // row 0: 1 2 3, row 1: 11 12 13
    QorPicBlock p(QorPicBlock::Bit8, 7, 5);
    p.Fill(pattern);
    const Bytes row0{1, 2, 3, 1, 2, 3, 1};
    const Bytes row1{11, 12, 13, 11, 12, 13, 11};
    Bytes expected;
    for (const Bytes* row : {&row0, &row1, &row0, &row1, &row0})
        expected.insert(expected.end(), row->begin(), row->end());
    EXPECT_EQ(PixelBytes(p), expected);
}

TEST(QorPicBlockPattern, TilingIsAnchoredAtTheClippedTopLeftCorner)
{
    QorPicBlock pattern(QorPicBlock::Bit8, 3, 2);
    Number(pattern);
    QorPicBlock p(QorPicBlock::Bit8, 8, 6);
    p.Fill(-2, -1, 4, 3, pattern); // clipped to (0, 0)-(4, 3)
    QorPicBlock q(QorPicBlock::Bit8, 8, 6);
    q.Fill(6, 5, 2, 1, pattern); // ordered to (2, 1)-(6, 5)
    for (long y = 0; y < 6; ++y)
        for (long x = 0; x < 8; ++x)
        {
            const unsigned char inP = (x <= 4 && y <= 3) ? *pattern.GetPixel(x % 3, y % 2) : 0;
            const unsigned char inQ = (x >= 2 && x <= 6 && y >= 1) ? *pattern.GetPixel((x - 2) % 3, (y - 1) % 2) : 0;
            EXPECT_EQ(*p.GetPixel(x, y), inP) << x << "," << y;
            EXPECT_EQ(*q.GetPixel(x, y), inQ) << x << "," << y;
        }
}

TEST(QorPicBlockPattern, PatternNarrowerThanTheRectangleWritesItsFirstColumnsOnly)
{
    QorPicBlock pattern(QorPicBlock::Bit8, 5, 1);
    Number(pattern); // 1 2 3 4 5
    QorPicBlock p(QorPicBlock::Bit8, 6, 2);
    p.Fill(2, 0, 4, 1, pattern);
    EXPECT_EQ(PixelBytes(p), (Bytes{0, 0, 1, 2, 3, 0, 0, 0, 1, 2, 3, 0}));
}

TEST(QorPicBlockPattern, TwentyFourBitPatternCopiesWholePixels)
{
    unsigned char colour[3] = {0, 0, 0};
    QorPicBlock pattern(QorPicBlock::Bit24, 2, 1, colour);
    std::memcpy(pattern.GetDataPtr(), "\x01\x02\x03\x04\x05\x06", 6);
    QorPicBlock p(QorPicBlock::Bit24, 5, 1);
    p.Fill(pattern);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6, 1, 2, 3}));
}

TEST(QorPicBlockPattern, PatternOfAnotherTypeDoesNothing)
{
    unsigned char colour[2] = {1, 1};
    const QorPicBlock pattern(QorPicBlock::Bit16, 2, 2, colour);
    QorPicBlock p(QorPicBlock::Bit8, 4, 4);
    p.Fill(pattern);
    p.Fill(0, 0, 3, 3, pattern);
    EXPECT_EQ(PixelBytes(p), Bytes(16, 0));
}

TEST(QorPicBlockPattern, EmptyPatternIsIgnored)
{
    QorPicBlock p(QorPicBlock::Bit8, 4, 4);
    p.Fill(QorPicBlock(QorPicBlock::Bit8));
    p.Fill(QorPicBlock(QorPicBlock::Bit8, 3, 0));
    p.Fill(QorPicBlock(QorPicBlock::Bit8, 0, 3));
    EXPECT_EQ(PixelBytes(p), Bytes(16, 0));
}

TEST(QorPicBlockPattern, WholeAndQorRectOverloadsMatchTheCornerFill)
{
    QorPicBlock pattern(QorPicBlock::Bit8, 2, 3);
    Number(pattern);
    QorPicBlock whole(QorPicBlock::Bit8, 5, 4), corners(QorPicBlock::Bit8, 5, 4);
    whole.Fill(pattern);
    corners.Fill(0, 0, 4, 3, pattern);
    EXPECT_EQ(PixelBytes(whole), PixelBytes(corners));
    EXPECT_EQ(*whole.GetPixel(4, 3), *pattern.GetPixel(0, 0));
    QorPicBlock byRect(QorPicBlock::Bit8, 5, 4), byCorners(QorPicBlock::Bit8, 5, 4);
    byRect.Fill(QorRect(1, 1, 3, 2), pattern);
    byCorners.Fill(1, 1, 3, 2, pattern);
    EXPECT_EQ(PixelBytes(byRect), PixelBytes(byCorners));
    EXPECT_EQ(PixelBytes(byRect), (Bytes{0, 0, 0, 0, 0, 0, 1, 2, 1, 0, 0, 11, 12, 11, 0, 0, 0, 0, 0, 0}));
}

TEST(QorPicBlockPattern, FillFromItselfTilesTheContentsItHadBefore)
{
    QorPicBlock p(QorPicBlock::Bit8, 6, 2);
    Number(p); // row 0: 1..6, row 1: 11..16
    p.Fill(2, 0, 5, 1, p);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 1, 2, 3, 4, 11, 12, 11, 12, 13, 14}));
}

// --- Copy -------------------------------------------------------------------------------------------

TEST(QorPicBlockCopy, CopyTakesTheRowsOfTheRectangle)
{
    QorPicBlock src(QorPicBlock::Bit8, 5, 4);
    Number(src);
    QorPicBlock p;
    p.Copy(src, 1, 1, 3, 2);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(PixelBytes(p), (Bytes{12, 13, 14, 22, 23, 24}));
}

TEST(QorPicBlockCopy, CopyTakesTypeAndMaskAndSharesThePalette)
{
    unsigned char colour[3] = {1, 2, 3};
    QorPicBlock src(QorPicBlock::Bit24, 2, 2, colour);
    const unsigned char mask[3] = {7, 8, 9};
    src.SetMask(mask);
    stPaletteEntry palette[256];
    src.SetPaletteEntryPtr(palette);
    QorPicBlock p(QorPicBlock::Bit8, 5, 5);
    p.Copy(src, 0, 0, 1, 1);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit24);
    EXPECT_EQ(MaskBytes(p), (Bytes{7, 8, 9}));
    EXPECT_EQ(p.GetPaletteEntryPtr(), palette);
    EXPECT_EQ(PixelBytes(p), Repeat({1, 2, 3}, 4));
}

TEST(QorPicBlockCopy, EmptyHeightStopsAfterTakingMaskAndPalette)
{
    QorPicBlock src(QorPicBlock::Bit16, 3, 3);
    const unsigned char mask[2] = {5, 6};
    src.SetMask(mask);
    stPaletteEntry palette[256];
    src.SetPaletteEntryPtr(palette);
    QorPicBlock p;
    p.Copy(src, 0, 2, 2, 1);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(MaskBytes(p), (Bytes{5, 6}));
    EXPECT_EQ(p.GetPaletteEntryPtr(), palette);
}

TEST(QorPicBlockCopy, PartOfTheRectangleOutsideTheSourceIsZero)
{
    QorPicBlock src(QorPicBlock::Bit8, 3, 3);
    Number(src);
    QorPicBlock p;
    p.Copy(src, -1, -1, 1, 1);
    EXPECT_EQ(PixelBytes(p), (Bytes{0, 0, 0, 0, 1, 2, 0, 11, 12}));
    QorPicBlock q;
    q.Copy(src, 2, 1, 4, 3);
    EXPECT_EQ(PixelBytes(q), (Bytes{13, 0, 0, 23, 0, 0, 0, 0, 0}));
}

TEST(QorPicBlockCopy, PartOutsideTheSourceIsZeroEvenWhenTheBufferIsReused)
{
    QorPicBlock src(QorPicBlock::Bit8, 3, 3);
    Number(src);
    unsigned char old[1] = {0xAA};
    QorPicBlock p(QorPicBlock::Bit8, 3, 3, old); // same type and size: Reset keeps this buffer
    p.Copy(src, -1, -1, 1, 1);
    EXPECT_EQ(PixelBytes(p), (Bytes{0, 0, 0, 0, 1, 2, 0, 11, 12}));
    p.Fill(old);
    p.Copy(src, 5, 5, 7, 7);
    EXPECT_EQ(PixelBytes(p), Bytes(9, 0));
}

TEST(QorPicBlockCopy, QorRectOverloadUsesLeftTopRightBottom)
{
    QorPicBlock src(QorPicBlock::Bit8, 5, 4);
    Number(src);
    QorPicBlock p;
    p.Copy(src, QorRect(2, 0, 4, 1));
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(PixelBytes(p), (Bytes{3, 4, 5, 13, 14, 15}));
}

TEST(QorPicBlockCopy, AttachedDestinationIsNeverWrittenPastItsBuffer)
{
    QorPicBlock src(QorPicBlock::Bit8, 5, 4);
    Number(src);
    Bytes small(4, 0xEE);
    QorPicBlock p;
    p.Attach(2, 2, small.data());
    p.Copy(src, 1, 1, 4, 3); // asks for 4 x 3, the buffer holds 2 x 2
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(small, (Bytes{12, 13, 22, 23}));

    unsigned char colour[3] = {1, 2, 3};
    const QorPicBlock deep(QorPicBlock::Bit24, 4, 4, colour);
    Bytes buffer(16, 0xEE); // 4 x 4 at 8 bits: one 24-bit row
    QorPicBlock q;
    q.Attach(4, 4, buffer.data());
    q.Copy(deep, 0, 0, 3, 3);
    EXPECT_EQ(q.GetColorType(), QorPicBlock::Bit24);
    Bytes expected = Repeat({1, 2, 3}, 4);
    expected.insert(expected.end(), 4, 0xEE);
    EXPECT_EQ(buffer, expected);
}

TEST(QorPicBlockCopy, RectangleTooLargeForResetLeavesThePictureUnchanged)
{
    QorPicBlock src(QorPicBlock::Bit8, 3, 3);
    Number(src);
    stPaletteEntry palette[256];
    src.SetPaletteEntryPtr(palette);
    unsigned char colour[4] = {1, 2, 3, 4};
    QorPicBlock p(QorPicBlock::Bit32, 2, 2, colour);
    const unsigned char mask[4] = {5, 6, 7, 8};
    p.SetMask(mask);
    p.Copy(src, 0, 0, 99999, 99999); // 1e10 bytes
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(PixelBytes(p), Repeat({1, 2, 3, 4}, 4));
    EXPECT_EQ(MaskBytes(p), (Bytes{5, 6, 7, 8}));
    EXPECT_EQ(p.GetPaletteEntryPtr(), nullptr);

    const QorPicBlock q(src, 0, 0, 99999, 99999);
    EXPECT_EQ(q.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(q.GetWidth(), 0);
    EXPECT_EQ(q.GetDataPtr(), nullptr);
    ASSERT_NE(q.GetMask(), nullptr);
    EXPECT_EQ(MaskBytes(q), (Bytes{0}));
}

TEST(QorPicBlockCopy, CopyConstructorCopiesTheWholePictureIntoItsOwnBuffer)
{
    QorPicBlock src(QorPicBlock::Bit8, 4, 3);
    Number(src);
    const unsigned char mask[1] = {42};
    src.SetMask(mask);
    stPaletteEntry palette[256];
    src.SetPaletteEntryPtr(palette);
    const QorPicBlock p(src);
    EXPECT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(p.GetHeight(), 3);
    EXPECT_NE(p.GetDataPtr(), src.GetDataPtr());
    EXPECT_EQ(PixelBytes(p), PixelBytes(src));
    EXPECT_EQ(MaskBytes(p), (Bytes{42}));
    EXPECT_EQ(p.GetPaletteEntryPtr(), palette);
    EXPECT_FALSE(p.IsAttached());
}

TEST(QorPicBlockCopy, CopyOfAnAttachedPictureOwnsItsPixels)
{
    Bytes buffer{1, 2, 3, 4};
    QorPicBlock src;
    src.Attach(2, 2, buffer.data());
    QorPicBlock p(src);
    EXPECT_FALSE(p.IsAttached());
    EXPECT_NE(p.GetDataPtr(), buffer.data());
    p.Reset(3, 3);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
}

TEST(QorPicBlockCopy, RectangleConstructorCopiesTheRectangle)
{
    QorPicBlock src(QorPicBlock::Bit8, 5, 4);
    Number(src);
    const QorPicBlock p(src, 3, 2, 4, 3);
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(PixelBytes(p), (Bytes{24, 25, 34, 35}));
}

TEST(QorPicBlockCopy, CopyConstructorOfAnEmptyPictureIsEmpty)
{
    const QorPicBlock src(QorPicBlock::Bit32);
    const QorPicBlock p(src);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
}

TEST(QorPicBlockCopy, AssignmentCopiesTheWholePictureAndReturnsItself)
{
    QorPicBlock src(QorPicBlock::Bit8, 3, 2);
    Number(src);
    QorPicBlock p(QorPicBlock::Bit32, 9, 9);
    QorPicBlock& result = (p = src);
    EXPECT_EQ(&result, &p);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 3, 11, 12, 13}));
}

TEST(QorPicBlockCopy, SelfAssignmentKeepsPixelsMaskAndPalette)
{
    QorPicBlock p(QorPicBlock::Bit8, 3, 2);
    Number(p);
    const unsigned char mask[1] = {4};
    p.SetMask(mask);
    stPaletteEntry palette[256];
    p.SetPaletteEntryPtr(palette);
    QorPicBlock& alias = p;
    p = alias;
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 3, 11, 12, 13}));
    EXPECT_EQ(MaskBytes(p), (Bytes{4}));
    EXPECT_EQ(p.GetPaletteEntryPtr(), palette);
}

// --- Colour conversion ------------------------------------------------------------------------------

namespace
{
const QorPicBlock::ColorType kTypes[] = {QorPicBlock::Bit8, QorPicBlock::Bit16, QorPicBlock::Bit24, QorPicBlock::Bit32};

// A palette whose entry i is (i, 255 - i, i / 2).
struct Palette
{
    Palette()
    {
        for (unsigned i = 0; i < 256; ++i)
            entries[i] = std::uint32_t(i) | std::uint32_t(255 - i) << 8 | std::uint32_t(i / 2) << 16;
    }
    stPaletteEntry entries[256];
};
} // namespace

TEST(QorPicBlockTransfer, IntoEightBitOnlyAnEightBitIndexIsCopied)
{
    TestPic p(QorPicBlock::Bit8);
    const unsigned char src[4] = {77, 1, 2, 3};
    unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_TRUE(p.TransferColor(dst, QorPicBlock::Bit8, src));
    EXPECT_EQ(Bytes(dst, dst + 4), (Bytes{77, 0xEE, 0xEE, 0xEE}));
    for (auto type : {QorPicBlock::Bit16, QorPicBlock::Bit24, QorPicBlock::Bit32})
    {
        unsigned char untouched[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        EXPECT_FALSE(p.TransferColor(untouched, type, src)) << type;
        EXPECT_EQ(Bytes(untouched, untouched + 4), Bytes(4, 0xEE)) << type;
    }
}

TEST(QorPicBlockTransfer, IntoSixteenBitNothingConverts)
{
    Palette palette;
    TestPic p(QorPicBlock::Bit16);
    p.SetPaletteEntryPtr(palette.entries);
    const unsigned char src[4] = {5, 6, 7, 8};
    for (auto type : kTypes)
    {
        unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        EXPECT_FALSE(p.TransferColor(dst, type, src)) << type;
        EXPECT_EQ(Bytes(dst, dst + 4), Bytes(4, 0xEE)) << type;
    }
}

TEST(QorPicBlockTransfer, IntoTwentyFourBitAnIndexBecomesItsPaletteEntrysBytes)
{
    Palette palette;
    TestPic p(QorPicBlock::Bit24);
    p.SetPaletteEntryPtr(palette.entries);
    const unsigned char src[1] = {100};
    unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_TRUE(p.TransferColor(dst, QorPicBlock::Bit8, src));
    EXPECT_EQ(Bytes(dst, dst + 4), (Bytes{100, 155, 50, 0xEE}));
}

TEST(QorPicBlockTransfer, IntoTwentyFourBitDeeperPixelsGiveTheirFirstThreeBytes)
{
    TestPic p(QorPicBlock::Bit24);
    const unsigned char src[4] = {1, 2, 3, 4};
    for (auto type : {QorPicBlock::Bit24, QorPicBlock::Bit32})
    {
        unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        EXPECT_TRUE(p.TransferColor(dst, type, src)) << type;
        EXPECT_EQ(Bytes(dst, dst + 4), (Bytes{1, 2, 3, 0xEE})) << type;
    }
    unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_FALSE(p.TransferColor(dst, QorPicBlock::Bit16, src));
    EXPECT_EQ(Bytes(dst, dst + 4), Bytes(4, 0xEE));
}

TEST(QorPicBlockTransfer, IntoThirtyTwoBitAnIndexSetsTheFourthByteToZero)
{
    Palette palette;
    TestPic p(QorPicBlock::Bit32);
    p.SetPaletteEntryPtr(palette.entries);
    const unsigned char src[1] = {7};
    unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_TRUE(p.TransferColor(dst, QorPicBlock::Bit8, src));
    EXPECT_EQ(Bytes(dst, dst + 4), (Bytes{7, 248, 3, 0}));
}

TEST(QorPicBlockTransfer, IntoThirtyTwoBitDeeperPixelsSetTheFourthByteToZero)
{
    TestPic p(QorPicBlock::Bit32);
    const unsigned char src[4] = {9, 8, 7, 6};
    for (auto type : {QorPicBlock::Bit24, QorPicBlock::Bit32})
    {
        unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        EXPECT_TRUE(p.TransferColor(dst, type, src)) << type;
        EXPECT_EQ(Bytes(dst, dst + 4), (Bytes{9, 8, 7, 0})) << type;
    }
    unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_FALSE(p.TransferColor(dst, QorPicBlock::Bit16, src));
    EXPECT_EQ(Bytes(dst, dst + 4), Bytes(4, 0xEE));
}

TEST(QorPicBlockTransfer, EightBitSourceWithoutAPaletteIsFalse)
{
    const unsigned char src[1] = {7};
    for (auto type : {QorPicBlock::Bit24, QorPicBlock::Bit32})
    {
        TestPic p(type);
        unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        EXPECT_FALSE(p.TransferColor(dst, QorPicBlock::Bit8, src)) << type;
        EXPECT_EQ(Bytes(dst, dst + 4), Bytes(4, 0xEE)) << type;
    }
}

TEST(QorPicBlockTransfer, UnknownSourceTypeIsFalse)
{
    Palette palette;
    const unsigned char src[4] = {1, 2, 3, 4};
    for (auto type : kTypes)
    {
        TestPic p(type);
        p.SetPaletteEntryPtr(palette.entries);
        unsigned char dst[4] = {0xEE, 0xEE, 0xEE, 0xEE};
        EXPECT_FALSE(p.TransferColor(dst, QorPicBlock::ColorType(0), src)) << type;
        EXPECT_FALSE(p.TransferColor(dst, QorPicBlock::ColorType(5), src)) << type;
        EXPECT_EQ(Bytes(dst, dst + 4), Bytes(4, 0xEE)) << type;
    }
}

TEST(QorPicBlockGray, PureBlueIs28AndPureRedIs76)
{
    EXPECT_EQ(QorPicBlock::ColorToGray(0, 0, 255), 28);  // 28.05
    EXPECT_EQ(QorPicBlock::ColorToGray(255, 0, 0), 76);  // 76.5
    EXPECT_EQ(QorPicBlock::ColorToGray(0, 255, 0), 150); // 150.45
}

TEST(QorPicBlockGray, WhiteIs255AndBlackIs0)
{
    EXPECT_EQ(QorPicBlock::ColorToGray(255, 255, 255), 255);
    EXPECT_EQ(QorPicBlock::ColorToGray(0, 0, 0), 0);
}

TEST(QorPicBlockGray, MixedColoursAreTruncated)
{
    EXPECT_EQ(QorPicBlock::ColorToGray(10, 20, 30), 18);     // 3.3 + 11.8 + 3 = 18.1
    EXPECT_EQ(QorPicBlock::ColorToGray(100, 150, 200), 140); // 22 + 88.5 + 30 = 140.5
    EXPECT_EQ(QorPicBlock::ColorToGray(0, 0, 9), 0);         // 0.99
    EXPECT_EQ(QorPicBlock::ColorToGray(3, 0, 0), 0);         // 0.9
}

TEST(QorPicBlockCopy, CornersWhoseDistanceOverflowsLeaveThePictureUnchanged)
{
    unsigned char five = 5, nine = 9;
    QorPicBlock src(QorPicBlock::Bit8, 4, 4, &five);
    QorPicBlock dst(QorPicBlock::Bit8, 2, 2, &nine);
    dst.Copy(src, LONG_MIN, 0, LONG_MAX, 1);
    dst.Copy(src, 0, LONG_MAX, 1, LONG_MIN + 1);
    EXPECT_EQ(dst.GetWidth(), 2);
    EXPECT_EQ(dst.GetHeight(), 2);
    EXPECT_EQ(dst.GetPixel(1, 1)[0], 9);
}
