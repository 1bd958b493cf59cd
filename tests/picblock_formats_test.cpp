// QorPicBlock file formats: QBM, QGB, FIX, the tag dispatcher, LoadBMP and VerticalReverse.
#include "test_util.h"

#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;
using qortest::ReadAll;
using qortest::TempPath;

const std::string kGolden = std::string(QOR_GOLDEN_DIR) + "/pictures/";

void Put(Bytes& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

void Append(Bytes& out, const Bytes& more)
{
    out.insert(out.end(), more.begin(), more.end());
}

void SetLE(Bytes& b, std::size_t at, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        b[at + std::size_t(i)] = static_cast<unsigned char>(value >> (8 * i));
}

Bytes PixelBytes(const QorPicBlock& p)
{
    const unsigned char* d = p.GetDataPtr();
    return d ? Bytes(d, d + p.GetSize()) : Bytes();
}

Bytes MaskBytes(const QorPicBlock& p)
{
    return Bytes(p.GetMask(), p.GetMask() + p.GetBytesPerPixel());
}

Bytes Sequence(std::size_t n, unsigned char first = 1)
{
    Bytes out(n);
    for (std::size_t i = 0; i < n; ++i)
        out[i] = static_cast<unsigned char>(first + i);
    return out;
}

// A picture of type and size whose pixel bytes are 1, 2, 3, ... and whose mask colour is given.
QorPicBlock Picture(QorPicBlock::ColorType type, long w, long h, const Bytes& mask)
{
    QorPicBlock p(type, w, h);
    const Bytes pixels = Sequence(p.GetSize());
    if (!pixels.empty())
        std::memcpy(p.GetDataPtr(), pixels.data(), pixels.size());
    p.SetMask(mask.data());
    return p;
}

// Writes bytes to a file of this test and opens it for reading.
void OpenWith(QorFile& file, const std::string& name, const Bytes& bytes)
{
    const std::string path = TempPath(name);
    qortest::WriteAll(path, bytes);
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
}

enum class Format
{
    Qbm,
    Qgb,
    Data
};

// Saves p in format into a file of this test; returns the file's bytes and the count the call returned.
Bytes Saved(QorPicBlock& p, Format format, unsigned long* count)
{
    const std::string path = TempPath("saved");
    QorFile file;
    EXPECT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    *count = format == Format::Qbm ? p.SaveQBM(file) : format == Format::Qgb ? p.SaveQGB(file) : p.SaveData(file);
    file.Close();
    return ReadAll(path);
}

// The QBM bytes of a picture header: tag, version, reserved words, type, 16-bit width and height.
Bytes QbmHeader(std::uint32_t type, std::uint32_t w, std::uint32_t h)
{
    Bytes out{'B', 'M', 'P', 'Q'};
    Put(out, 0x00010000, 4);
    out.insert(out.end(), 16, 0);
    Put(out, type, 4);
    Put(out, w, 2);
    Put(out, h, 2);
    return out;
}

Bytes QgbHeader(std::uint32_t type, std::uint32_t w, std::uint32_t h)
{
    Bytes out;
    Put(out, type, 4);
    Put(out, w, 4);
    Put(out, h, 4);
    return out;
}

// Expects p to be exactly as Picture(Bit24, 2, 2, {9, 9, 9}) made it.
void ExpectUntouched(const QorPicBlock& p)
{
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit24);
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(PixelBytes(p), Sequence(12));
    EXPECT_EQ(MaskBytes(p), (Bytes{9, 9, 9}));
}
} // namespace

// --- QBM --------------------------------------------------------------------------------------------

TEST(QorPicBlockQbm, SaveWritesEachFieldAtItsOffset)
{
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 1, {7, 8, 9});
    unsigned long count = 0;
    const Bytes file = Saved(p, Format::Qbm, &count);
    Bytes expected{'B', 'M', 'P', 'Q', 0x00, 0x00, 0x01, 0x00, 0, 0, 0, 0};
    expected.insert(expected.end(), 12, 0);
    Append(expected, {3, 0, 0, 0, 2, 0, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(count, 41u);
    EXPECT_EQ(file, expected);
}

TEST(QorPicBlockQbm, SixteenBitThreeByTwoIs46BytesAndReads46Back)
{
    QorPicBlock p = Picture(QorPicBlock::Bit16, 3, 2, {0x22, 0x11});
    unsigned long count = 0;
    const Bytes file = Saved(p, Format::Qbm, &count);
    EXPECT_EQ(count, 46u);
    EXPECT_EQ(file.size(), 46u);

    QorFile in;
    OpenWith(in, "in.qbm", file);
    QorPicBlock q;
    EXPECT_EQ(q.LoadQBM(in), 46u);
    EXPECT_EQ(in.GetPosition(), 46u);
    EXPECT_EQ(q.GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(q.GetWidth(), 3);
    EXPECT_EQ(q.GetHeight(), 2);
    EXPECT_EQ(PixelBytes(q), Sequence(12));
    EXPECT_EQ(MaskBytes(q), (Bytes{0x22, 0x11}));
}

TEST(QorPicBlockQbm, EveryColourTypeRoundTrips)
{
    const QorPicBlock::ColorType types[] = {QorPicBlock::Bit8, QorPicBlock::Bit16, QorPicBlock::Bit24,
                                            QorPicBlock::Bit32};
    for (auto type : types)
    {
        QorPicBlock p = Picture(type, 5, 3, {0xA1, 0xA2, 0xA3, 0xA4});
        unsigned long count = 0;
        const Bytes file = Saved(p, Format::Qbm, &count);
        const unsigned long bpp = p.GetBytesPerPixel();
        EXPECT_EQ(count, 32 + 15 * bpp + bpp) << type;
        QorFile in;
        OpenWith(in, "in.qbm", file);
        QorPicBlock q(QorPicBlock::Bit8, 1, 1);
        EXPECT_EQ(q.LoadQBM(in), count) << type;
        EXPECT_EQ(q.GetColorType(), type);
        EXPECT_EQ(PixelBytes(q), PixelBytes(p)) << type;
        EXPECT_EQ(MaskBytes(q), MaskBytes(p)) << type;
    }
}

TEST(QorPicBlockQbm, WidthAbove65535ComesBackModulo65536)
{
    QorPicBlock p(QorPicBlock::Bit8, 65538, 1);
    for (long x = 0; x < 65538; ++x)
        *p.GetPixel(x, 0) = static_cast<unsigned char>(x);
    const unsigned char mask[1] = {0x77};
    p.SetMask(mask);
    unsigned long count = 0;
    const Bytes file = Saved(p, Format::Qbm, &count);
    EXPECT_EQ(count, 32u + 65538u + 1u);
    EXPECT_EQ(file[28], 2);
    EXPECT_EQ(file[29], 0);

    QorFile in;
    OpenWith(in, "in.qbm", file);
    QorPicBlock q;
    // Two pixels are read, then the third pixel's byte as the mask colour.
    EXPECT_EQ(q.LoadQBM(in), 35u);
    EXPECT_EQ(q.GetWidth(), 2);
    EXPECT_EQ(q.GetHeight(), 1);
    EXPECT_EQ(PixelBytes(q), (Bytes{0, 1}));
    EXPECT_EQ(MaskBytes(q), (Bytes{2}));
}

TEST(QorPicBlockQbm, QgbTagIsRefusedAndTheStreamPositionRestored)
{
    Bytes bytes{'x', 'y', 'z', 'Q', 'G', 'B', ' '};
    Append(bytes, Bytes(40, 1));
    QorFile in;
    OpenWith(in, "in", bytes);
    char skip[3];
    ASSERT_EQ(in.Read(skip, 3), 3u);
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
    EXPECT_EQ(p.LoadQBM(in), 0u);
    EXPECT_EQ(in.GetPosition(), 3u);
    char tag[4];
    ASSERT_EQ(in.Read(tag, 4), 4u);
    EXPECT_EQ(std::string(tag, 4), "QGB ");
    ExpectUntouched(p);
}

TEST(QorPicBlockQbm, ZeroSizeAndTruncatedHeadersAreRefused)
{
    Bytes header = QbmHeader(1, 2, 2);
    for (std::size_t length : {std::size_t(0), std::size_t(3), std::size_t(20), std::size_t(31)})
    {
        QorFile in;
        OpenWith(in, "in.qbm", Bytes(header.begin(), header.begin() + long(length)));
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.LoadQBM(in), 0u) << length;
        EXPECT_EQ(in.GetPosition(), 0u) << length;
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockQbm, UnknownColourTypeIsRefused)
{
    for (std::uint32_t type : {0u, 5u, 0xFFFFFFFFu})
    {
        Bytes bytes = QbmHeader(type, 1, 1);
        Append(bytes, Bytes(8, 0));
        QorFile in;
        OpenWith(in, "in.qbm", bytes);
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.LoadQBM(in), 0u) << type;
        EXPECT_EQ(in.GetPosition(), 0u);
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockQbm, HugeOrTruncatedPixelDataIsRefused)
{
    const Bytes cases[] = {QbmHeader(4, 65535, 65535), QbmHeader(1, 1000, 1000), QbmHeader(3, 2, 2)};
    for (Bytes bytes : cases)
    {
        Append(bytes, Bytes(11, 5)); // one byte short of a 24-bit 2 x 2 picture
        QorFile in;
        OpenWith(in, "in.qbm", bytes);
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.LoadQBM(in), 0u);
        EXPECT_EQ(in.GetPosition(), 0u);
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockQbm, MaskColourCutShortStillLoadsWithTheSmallerCount)
{
    Bytes bytes = QbmHeader(3, 2, 1);
    Append(bytes, {1, 2, 3, 4, 5, 6, 7, 8}); // six pixel bytes, two of the three mask bytes
    QorFile in;
    OpenWith(in, "in.qbm", bytes);
    QorPicBlock p; // 8-bit: the type change gives a zeroed 3-byte mask colour
    EXPECT_EQ(p.LoadQBM(in), 32u + 6u + 2u);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(MaskBytes(p), (Bytes{7, 8, 0}));
}

TEST(QorPicBlockQbm, ReservedHeaderWordsAreIgnored)
{
    Bytes bytes = QbmHeader(1, 2, 1);
    std::fill(bytes.begin() + 4, bytes.begin() + 24, 0xFF);
    Append(bytes, {5, 6, 7});
    QorFile in;
    OpenWith(in, "in.qbm", bytes);
    QorPicBlock p;
    EXPECT_EQ(p.LoadQBM(in), 35u);
    EXPECT_EQ(PixelBytes(p), (Bytes{5, 6}));
    EXPECT_EQ(MaskBytes(p), (Bytes{7}));
}

TEST(QorPicBlockQbm, LoadingResizesAPictureOfAnotherTypeAndSize)
{
    Bytes bytes = QbmHeader(1, 2, 2);
    Append(bytes, {1, 2, 3, 4, 5});
    QorFile in;
    OpenWith(in, "in.qbm", bytes);
    QorPicBlock p = Picture(QorPicBlock::Bit32, 10, 10, {1, 1, 1, 1});
    EXPECT_EQ(p.LoadQBM(in), 37u);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetSize(), 4u);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(MaskBytes(p), (Bytes{5}));
}

TEST(QorPicBlockQbm, AttachedPictureTakesOnlyAFileOfItsOwnTypeAndSize)
{
    Bytes buffer(4, 0xEE);
    QorPicBlock p;
    p.Attach(2, 2, buffer.data());

    Bytes other = QbmHeader(1, 3, 3);
    Append(other, Bytes(10, 1));
    Bytes sameBytesOtherType = QbmHeader(2, 2, 1);
    Append(sameBytesOtherType, Bytes(6, 1));
    for (const Bytes& bytes : {other, sameBytesOtherType})
    {
        QorFile in;
        OpenWith(in, "in.qbm", bytes);
        EXPECT_EQ(p.LoadQBM(in), 0u);
        EXPECT_EQ(in.GetPosition(), 0u);
        EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
        EXPECT_EQ(p.GetWidth(), 2);
        EXPECT_EQ(buffer, Bytes(4, 0xEE));
    }

    Bytes same = QbmHeader(1, 2, 2);
    Append(same, {1, 2, 3, 4, 9});
    QorFile in;
    OpenWith(in, "same.qbm", same);
    EXPECT_EQ(p.LoadQBM(in), 37u);
    EXPECT_EQ(p.GetDataPtr(), buffer.data());
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4}));
}

TEST(QorPicBlockQbm, AttachedBufferWhoseTypeWasWidenedIsNotOverrun)
{
    Bytes buffer(16, 0xEE); // 4 x 4 at 8 bits
    QorPicBlock p;
    p.Attach(4, 4, buffer.data());
    p.Reset(QorPicBlock::Bit24, 4, 4); // the type changes, the attached size does not
    ASSERT_EQ(p.GetColorType(), QorPicBlock::Bit24);
    Bytes bytes = QbmHeader(3, 4, 4);
    Append(bytes, Bytes(48 + 3, 1));
    QorFile in;
    OpenWith(in, "in.qbm", bytes);
    EXPECT_EQ(p.LoadQBM(in), 0u);
    EXPECT_EQ(in.GetPosition(), 0u);
    EXPECT_EQ(buffer, Bytes(16, 0xEE));
}

TEST(QorPicBlockQbm, ZeroWidePictureRoundTrips)
{
    QorPicBlock p(QorPicBlock::Bit8, 0, 5);
    const unsigned char mask[1] = {6};
    p.SetMask(mask);
    unsigned long count = 0;
    const Bytes file = Saved(p, Format::Qbm, &count);
    EXPECT_EQ(count, 33u);
    QorFile in;
    OpenWith(in, "in.qbm", file);
    QorPicBlock q(QorPicBlock::Bit24, 3, 3);
    EXPECT_EQ(q.LoadQBM(in), 33u);
    EXPECT_EQ(q.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(q.GetWidth(), 0);
    EXPECT_EQ(q.GetHeight(), 5);
    EXPECT_EQ(q.GetDataPtr(), nullptr);
    EXPECT_EQ(MaskBytes(q), (Bytes{6}));
}

// --- QGB --------------------------------------------------------------------------------------------

TEST(QorPicBlockQgb, SaveWritesTypeWidthHeightPixelsAndMask)
{
    QorPicBlock p = Picture(QorPicBlock::Bit8, 3, 2, {9});
    unsigned long count = 0;
    const Bytes file = Saved(p, Format::Qgb, &count);
    EXPECT_EQ(count, 19u);
    EXPECT_EQ(file, (Bytes{1, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 2, 3, 4, 5, 6, 9}));
}

TEST(QorPicBlockQgb, RoundTripKeepsAWidthAbove65535)
{
    QorPicBlock wide = Picture(QorPicBlock::Bit8, 70000, 1, {3});
    QorPicBlock deep = Picture(QorPicBlock::Bit32, 2, 3, {1, 2, 3, 4});
    for (QorPicBlock* p : {&wide, &deep})
    {
        unsigned long count = 0;
        const Bytes file = Saved(*p, Format::Qgb, &count);
        EXPECT_EQ(count, 12 + p->GetSize() + p->GetBytesPerPixel());
        QorFile in;
        OpenWith(in, "in.qgb", file);
        QorPicBlock q;
        EXPECT_EQ(q.LoadQGB(in), count);
        EXPECT_EQ(q.GetColorType(), p->GetColorType());
        EXPECT_EQ(q.GetWidth(), p->GetWidth());
        EXPECT_EQ(q.GetHeight(), p->GetHeight());
        EXPECT_EQ(PixelBytes(q), PixelBytes(*p));
        EXPECT_EQ(MaskBytes(q), MaskBytes(*p));
    }
}

TEST(QorPicBlockQgb, SaveDataAndLoadDataUseTheQgbLayout)
{
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {4, 5, 6});
    unsigned long qgbCount = 0, dataCount = 0;
    const Bytes qgb = Saved(p, Format::Qgb, &qgbCount);
    const Bytes data = Saved(p, Format::Data, &dataCount);
    EXPECT_EQ(data, qgb);
    EXPECT_EQ(dataCount, 27u);
    QorFile in;
    OpenWith(in, "in.qgb", data);
    QorPicBlock q;
    QorDataBlock& block = q;
    EXPECT_EQ(block.LoadData(in), 27u);
    EXPECT_EQ(PixelBytes(q), Sequence(12));
    EXPECT_EQ(MaskBytes(q), (Bytes{4, 5, 6}));
}

TEST(QorPicBlockQgb, ZeroSizeAndTruncatedHeadersAreRefused)
{
    const Bytes header = QgbHeader(1, 2, 2);
    for (std::size_t length : {std::size_t(0), std::size_t(4), std::size_t(11)})
    {
        QorFile in;
        OpenWith(in, "in.qgb", Bytes(header.begin(), header.begin() + long(length)));
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.LoadQGB(in), 0u) << length;
        EXPECT_EQ(in.GetPosition(), 0u);
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockQgb, HugeSizesUnknownTypesAndShortPixelsAreRefused)
{
    const Bytes cases[] = {QgbHeader(1, 0x7FFFFFFF, 0x7FFFFFFF),
                           QgbHeader(4, 100000, 100000),
                           QgbHeader(1, 1000, 1000),
                           QgbHeader(0, 1, 1),
                           QgbHeader(7, 1, 1),
                           QgbHeader(3, 2, 2)};
    for (Bytes bytes : cases)
    {
        Append(bytes, Bytes(11, 5));
        QorFile in;
        OpenWith(in, "in.qgb", bytes);
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.LoadQGB(in), 0u);
        EXPECT_EQ(in.GetPosition(), 0u);
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockQgb, NegativeWidthLoadsAsZeroWide)
{
    Bytes bytes = QgbHeader(1, static_cast<std::uint32_t>(-5), 3);
    bytes.push_back(8);
    QorFile in;
    OpenWith(in, "in.qgb", bytes);
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
    EXPECT_EQ(p.LoadQGB(in), 13u);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 3);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(MaskBytes(p), (Bytes{8}));
}

// --- FIX --------------------------------------------------------------------------------------------

namespace
{
Bytes FixPixels(std::size_t n)
{
    Bytes out(n);
    for (std::size_t i = 0; i < n; ++i)
        out[i] = static_cast<unsigned char>(i * 7 + i / 640);
    return out;
}
} // namespace

TEST(QorPicBlockFix, LoadFixReads640By480Bytes)
{
    const Bytes pixels = FixPixels(640 * 480);
    QorFile in;
    OpenWith(in, "in.fix", pixels);
    QorString sizeText("FIX  640 480");
    QorPicBlock p(QorPicBlock::Bit8, 2, 2);
    EXPECT_EQ(p.LoadFix(in, sizeText), 307200u);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetWidth(), 640);
    EXPECT_EQ(p.GetHeight(), 480);
    EXPECT_EQ(PixelBytes(p), pixels);
}

TEST(QorPicBlockFix, DispatcherSkipsFiveCharactersAfterTheTag)
{
    const Bytes pixels = FixPixels(640 * 480);
    QorFile in;
    OpenWith(in, "in.fix", pixels);
    QorString tag("FIX  xy z!640 480");
    QorPicBlock p;
    EXPECT_EQ(p.Load(tag, in), 307200u);
    EXPECT_EQ(p.GetWidth(), 640);
    EXPECT_EQ(p.GetHeight(), 480);
    EXPECT_EQ(PixelBytes(p), pixels);
}

TEST(QorPicBlockFix, DispatcherReadsLeadingZerosAsTheIgnoredCharacters)
{
    QorFile in;
    OpenWith(in, "in.fix", FixPixels(320 * 200));
    QorString tag("FIX  00000320 200");
    QorPicBlock p;
    EXPECT_EQ(p.Load(tag, in), 64000u);
    EXPECT_EQ(p.GetWidth(), 320);
    EXPECT_EQ(p.GetHeight(), 200);
}

TEST(QorPicBlockFix, WidthWithoutDigitsGivesAnEmptyPictureAndReadsNothing)
{
    QorFile in;
    OpenWith(in, "in.fix", FixPixels(100));
    QorString sizeText("FIX  abc 480");
    QorPicBlock p(QorPicBlock::Bit8, 3, 3);
    EXPECT_EQ(p.LoadFix(in, sizeText), 0u);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 480);
    EXPECT_EQ(p.GetSize(), 0u);
    EXPECT_EQ(p.GetDataPtr(), nullptr);
    EXPECT_EQ(in.GetPosition(), 0u);
}

TEST(QorPicBlockFix, NeitherMaskColourNorPaletteIsRead)
{
    QorFile in;
    OpenWith(in, "in.fix", {1, 2, 3, 4, 5, 6, 7, 8, 9});
    stPaletteEntry palette[256];
    QorPicBlock p;
    const unsigned char mask[1] = {0x55};
    p.SetMask(mask);
    p.SetPaletteEntryPtr(palette);
    QorString sizeText("FIX  3 2 trailing words");
    EXPECT_EQ(p.LoadFix(in, sizeText), 6u);
    EXPECT_EQ(in.GetPosition(), 6u);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(p.GetHeight(), 2);
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(MaskBytes(p), (Bytes{0x55}));
    EXPECT_EQ(p.GetPaletteEntryPtr(), palette);
}

TEST(QorPicBlockFix, PictureOfAnotherTypeGetsAZeroedMaskColour)
{
    QorFile in;
    OpenWith(in, "in.fix", {1, 2});
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
    QorString sizeText("FIX  2 1");
    EXPECT_EQ(p.LoadFix(in, sizeText), 2u);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(MaskBytes(p), (Bytes{0}));
    EXPECT_EQ(PixelBytes(p), (Bytes{1, 2}));
}

TEST(QorPicBlockFix, ShortFileGivesTheTagsSizeAndCountsTheBytesDelivered)
{
    QorFile in;
    OpenWith(in, "in.fix", Bytes(10, 7));
    QorString sizeText("FIX  4 4");
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
    EXPECT_EQ(p.LoadFix(in, sizeText), 10u);
    EXPECT_EQ(in.GetPosition(), 10u);
    EXPECT_EQ(p.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(p.GetWidth(), 4);
    EXPECT_EQ(p.GetHeight(), 4);
    ASSERT_EQ(p.GetSize(), 16u);
    const Bytes pixels = PixelBytes(p);
    EXPECT_EQ(Bytes(pixels.begin(), pixels.begin() + 10), Bytes(10, 7));
}

TEST(QorPicBlockFix, SizeBeyondThirtyTwoBitsIsRefused)
{
    for (const char* text : {"FIX  100000 100000", "FIX  99999999999999999999 2"})
    {
        QorFile in;
        OpenWith(in, "in.fix", Bytes(10, 1));
        QorString sizeText(text);
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.LoadFix(in, sizeText), 0u) << text;
        EXPECT_EQ(in.GetPosition(), 0u) << text;
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockFix, TextShorterThanFiveCharactersGivesAnEmptyPicture)
{
    QorFile in;
    OpenWith(in, "in.fix", Bytes(4, 1));
    QorString sizeText("FIX");
    QorPicBlock p(QorPicBlock::Bit8, 2, 2);
    EXPECT_EQ(p.LoadFix(in, sizeText), 0u);
    EXPECT_EQ(p.GetWidth(), 0);
    EXPECT_EQ(p.GetHeight(), 0);
}

TEST(QorPicBlockFix, AttachedPictureTakesOnlyItsOwnSize)
{
    Bytes buffer(6, 0xEE);
    QorPicBlock p;
    p.Attach(3, 2, buffer.data());
    QorFile in;
    OpenWith(in, "in.fix", {1, 2, 3, 4, 5, 6});
    QorString other("FIX  2 3");
    EXPECT_EQ(p.LoadFix(in, other), 0u);
    EXPECT_EQ(buffer, Bytes(6, 0xEE));
    QorString same("FIX  3 2");
    EXPECT_EQ(p.LoadFix(in, same), 6u);
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4, 5, 6}));
}

// --- Tag dispatcher and closed streams --------------------------------------------------------------

TEST(QorPicBlockLoad, BmpqTagReadsQbmAndQgbTagReadsQgb)
{
    Bytes qbm = QbmHeader(1, 2, 1);
    Append(qbm, {4, 5, 6});
    Bytes qgb = QgbHeader(1, 1, 2);
    Append(qgb, {7, 8, 9});
    QorFile a, b;
    OpenWith(a, "in.qbm", qbm);
    OpenWith(b, "in.qgb", qgb);
    QorString bmpq("BMPQ"), qgbTag("QGB ");
    QorPicBlock p, q;
    EXPECT_EQ(p.Load(bmpq, a), 35u);
    EXPECT_EQ(p.GetWidth(), 2);
    EXPECT_EQ(PixelBytes(p), (Bytes{4, 5}));
    EXPECT_EQ(q.Load(qgbTag, b), 15u);
    EXPECT_EQ(q.GetHeight(), 2);
    EXPECT_EQ(PixelBytes(q), (Bytes{7, 8}));
    EXPECT_EQ(MaskBytes(q), (Bytes{9}));
}

TEST(QorPicBlockLoad, BmpAndPcxTagsReturnZeroAndLeaveThePicture)
{
    for (const char* text : {"BMP ", "PCX "})
    {
        Bytes bmp = ReadAll(kGolden + "rgb5x3-info.bmp");
        QorFile in;
        OpenWith(in, "in", bmp);
        QorString tag(text);
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.Load(tag, in), 0u) << text;
        EXPECT_EQ(p.Load(in), 0u) << text;
        EXPECT_EQ(in.GetPosition(), 0u) << text;
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockLoad, TagsAreComparedWhole)
{
    Bytes qbm = QbmHeader(1, 2, 1);
    Append(qbm, {4, 5, 6});
    for (const char* text : {"BMPQ ", "bmpq", "BMP", "QGB", "FIX ", "FIX", "", "XFIX  00000640 480"})
    {
        QorFile in;
        OpenWith(in, "in", qbm);
        QorString tag(text);
        QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
        EXPECT_EQ(p.Load(tag, in), 0u) << '"' << text << '"';
        EXPECT_EQ(in.GetPosition(), 0u);
        ExpectUntouched(p);
    }
}

TEST(QorPicBlockLoad, ClosedStreamReturnsZeroForEveryMember)
{
    QorPicBlock p = Picture(QorPicBlock::Bit24, 2, 2, {9, 9, 9});
    QorFile closed;
    QorString bmpq("BMPQ"), qgb("QGB "), fix("FIX  00000002 2"), fixSize("FIX  2 2");
    EXPECT_EQ(p.SaveQBM(closed), 0u);
    EXPECT_EQ(p.SaveQGB(closed), 0u);
    EXPECT_EQ(p.SaveData(closed), 0u);
    EXPECT_EQ(p.LoadQBM(closed), 0u);
    EXPECT_EQ(p.LoadQGB(closed), 0u);
    EXPECT_EQ(p.LoadData(closed), 0u);
    EXPECT_EQ(p.LoadFix(closed, fixSize), 0u);
    EXPECT_EQ(p.Load(bmpq, closed), 0u);
    EXPECT_EQ(p.Load(qgb, closed), 0u);
    EXPECT_EQ(p.Load(fix, closed), 0u);
    EXPECT_EQ(p.Load(closed), 0u);
    ExpectUntouched(p);
}

// --- LoadBMP on ImageMagick fixtures ----------------------------------------------------------------

namespace
{
struct Ppm
{
    long width = 0;
    long height = 0;
    Bytes rgb; // red, green, blue per pixel, rows top to bottom
};

// Reads a plain-text (P3) PPM with maximum value 255.
Ppm ReadPpm(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    std::string line;
    while (std::getline(in, line))
        text << line.substr(0, line.find('#')) << '\n';
    std::string magic;
    int maxValue = 0;
    Ppm ppm;
    text >> magic >> ppm.width >> ppm.height >> maxValue;
    EXPECT_EQ(magic, "P3") << path;
    EXPECT_EQ(maxValue, 255) << path;
    int value;
    while (text >> value)
    {
        EXPECT_TRUE(value >= 0 && value <= 255) << path << ": " << value;
        ppm.rgb.push_back(static_cast<unsigned char>(value));
    }
    EXPECT_EQ(ppm.rgb.size(), std::size_t(ppm.width * ppm.height * 3)) << path;
    return ppm;
}

std::uint32_t GetLE(const Bytes& b, std::size_t at, int bytes)
{
    std::uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v |= std::uint32_t(b[at + std::size_t(i)]) << (8 * i);
    return v;
}

// Compares bits that VerticalReverse has turned top row first with the source picture: 24-bit bytes are
// blue, green, red; 8-bit indices go through the file's colour table (3-byte entries after a core header,
// 4-byte entries after an information header, blue first either way).
void ExpectSameAsSource(const unsigned char* bits, int bitCount, const Bytes& file, unsigned headerSize,
                        const Ppm& source)
{
    const std::size_t row = (std::size_t(bitCount) * std::size_t(source.width) / 8 + 3) / 4 * 4;
    const std::size_t table = 14 + headerSize;
    const std::size_t entry = headerSize == 12 ? 3 : 4;
    for (long y = 0; y < source.height; ++y)
        for (long x = 0; x < source.width; ++x)
        {
            const unsigned char* want = &source.rgb[std::size_t(y * source.width + x) * 3];
            unsigned char blue, green, red;
            if (bitCount == 24)
            {
                const unsigned char* px = bits + std::size_t(y) * row + std::size_t(x) * 3;
                blue = px[0], green = px[1], red = px[2];
            }
            else
            {
                const std::size_t at = table + bits[std::size_t(y) * row + std::size_t(x)] * entry;
                blue = file[at], green = file[at + 1], red = file[at + 2];
            }
            EXPECT_EQ(red, want[0]) << "pixel " << x << "," << y;
            EXPECT_EQ(green, want[1]) << "pixel " << x << "," << y;
            EXPECT_EQ(blue, want[2]) << "pixel " << x << "," << y;
        }
}

// Loads golden NAME-info.bmp, checks its header against the source NAME.ppm, reverses and compares.
void CheckInfoFixture(const std::string& name, int bitCount)
{
    const Ppm source = ReadPpm(kGolden + name + ".ppm");
    const std::string path = kGolden + name + "-info.bmp";
    const Bytes file = ReadAll(path);
    ASSERT_GT(file.size(), 54u);
    BITMAPINFOHEADER header{};
    unsigned char* bits = nullptr;
    ASSERT_TRUE(LoadBMP(path.c_str(), &header, &bits));
    ASSERT_NE(bits, nullptr);
    EXPECT_EQ(header.biSize, 40u);
    EXPECT_EQ(header.biWidth, source.width);
    EXPECT_EQ(header.biHeight, source.height);
    EXPECT_EQ(header.biPlanes, 1);
    EXPECT_EQ(header.biBitCount, bitCount);
    EXPECT_EQ(header.biCompression, std::uint32_t(BI_RGB));
    // The bits are the file's bytes from the bits offset on, bottom row first.
    const std::size_t offBits = GetLE(file, 10, 4);
    const std::size_t row = (std::size_t(bitCount) * std::size_t(source.width) / 8 + 3) / 4 * 4;
    ASSERT_EQ(GetLE(file, 2, 4) - offBits, row * std::size_t(source.height));
    EXPECT_EQ(Bytes(bits, bits + row * std::size_t(source.height)), Bytes(file.begin() + long(offBits), file.end()));
    VerticalReverse(bits, &header);
    ExpectSameAsSource(bits, bitCount, file, 40, source);
    delete[] bits;
}

void CheckCoreFixture(const std::string& name, int bitCount)
{
    const Ppm source = ReadPpm(kGolden + name + ".ppm");
    const std::string path = kGolden + name + "-core.bmp";
    const Bytes file = ReadAll(path);
    ASSERT_GT(file.size(), 26u);
    BITMAPCOREHEADER header{};
    unsigned char* bits = nullptr;
    ASSERT_TRUE(LoadBMP(path.c_str(), &header, &bits));
    ASSERT_NE(bits, nullptr);
    EXPECT_EQ(header.bcSize, 12u);
    EXPECT_EQ(header.bcWidth, source.width);
    EXPECT_EQ(header.bcHeight, source.height);
    EXPECT_EQ(header.bcPlanes, 1);
    EXPECT_EQ(header.bcBitCount, bitCount);
    const std::size_t offBits = GetLE(file, 10, 4);
    const std::size_t row = (std::size_t(bitCount) * std::size_t(source.width) / 8 + 3) / 4 * 4;
    ASSERT_EQ(GetLE(file, 2, 4) - offBits, row * std::size_t(source.height));
    EXPECT_EQ(Bytes(bits, bits + row * std::size_t(source.height)), Bytes(file.begin() + long(offBits), file.end()));
    BITMAPINFOHEADER info{};
    info.biSize = 40;
    info.biWidth = header.bcWidth;
    info.biHeight = header.bcHeight;
    info.biBitCount = header.bcBitCount;
    VerticalReverse(bits, &info);
    ExpectSameAsSource(bits, bitCount, file, 12, source);
    delete[] bits;
}
} // namespace

TEST(LoadBmpFixture, InfoHeader24BitFiveByThreeMatchesTheSource)
{
    CheckInfoFixture("rgb5x3", 24);
}

TEST(LoadBmpFixture, InfoHeader24BitSevenByFourMatchesTheSource)
{
    CheckInfoFixture("rgb7x4", 24);
}

TEST(LoadBmpFixture, CoreHeader24BitFiveByThreeMatchesTheSource)
{
    CheckCoreFixture("rgb5x3", 24);
}

TEST(LoadBmpFixture, CoreHeader24BitSevenByFourMatchesTheSource)
{
    CheckCoreFixture("rgb7x4", 24);
}

TEST(LoadBmpFixture, InfoHeader8BitSevenByThreeMatchesTheSourceThroughTheColourTable)
{
    CheckInfoFixture("pal7x3", 8);
}

TEST(LoadBmpFixture, InfoHeader8BitFiveByFourMatchesTheSourceThroughTheColourTable)
{
    CheckInfoFixture("pal5x4", 8);
}

TEST(LoadBmpFixture, CoreHeader8BitSevenByThreeMatchesTheSourceThroughTheColourTable)
{
    CheckCoreFixture("pal7x3", 8);
}

TEST(LoadBmpFixture, CoreHeader8BitFiveByFourMatchesTheSourceThroughTheColourTable)
{
    CheckCoreFixture("pal5x4", 8);
}

TEST(LoadBmpFixture, BitsStartWithTheBottomRowAndKeepTheRowPadding)
{
    const std::string path = kGolden + "rgb5x3-info.bmp";
    BITMAPINFOHEADER header{};
    unsigned char* bits = nullptr;
    ASSERT_TRUE(LoadBMP(path.c_str(), &header, &bits));
    // Bottom-left source pixel (0, 2) is red 45, green 180, blue 235; rows are 15 bytes padded to 16.
    EXPECT_EQ(Bytes(bits, bits + 3), (Bytes{235, 180, 45}));
    EXPECT_EQ(bits[15], 0);
    // Top-left source pixel (0, 0) is red 5, green 40, blue 255: the third row of the bits.
    EXPECT_EQ(Bytes(bits + 32, bits + 35), (Bytes{255, 40, 5}));
    delete[] bits;
}

// --- LoadBMP on damaged files -----------------------------------------------------------------------

namespace
{
unsigned char* const kUntouched = reinterpret_cast<unsigned char*>(0x1234);

// Writes bytes to a file of this test and reads it with the information-header LoadBMP.
char LoadInfo(const Bytes& bytes, BITMAPINFOHEADER* header, unsigned char** bits)
{
    const std::string path = TempPath("in.bmp");
    qortest::WriteAll(path, bytes);
    return LoadBMP(path.c_str(), header, bits);
}
} // namespace

TEST(LoadBmp, WrongTypeWordIsRefusedAndBitsAreUntouched)
{
    Bytes bytes = ReadAll(kGolden + "rgb5x3-info.bmp");
    bytes[1] = 'A';
    BITMAPINFOHEADER header{};
    unsigned char* bits = kUntouched;
    EXPECT_FALSE(LoadInfo(bytes, &header, &bits));
    EXPECT_EQ(bits, kUntouched);
}

TEST(LoadBmp, InformationReaderRefusesACoreHeaderFile)
{
    const std::string path = kGolden + "rgb5x3-core.bmp";
    BITMAPINFOHEADER header{};
    unsigned char* bits = kUntouched;
    EXPECT_FALSE(LoadBMP(path.c_str(), &header, &bits));
    EXPECT_EQ(header.biSize, 12u);
    EXPECT_EQ(bits, kUntouched);
}

TEST(LoadBmp, CoreReaderRefusesAnInformationHeaderFile)
{
    const std::string path = kGolden + "rgb5x3-info.bmp";
    BITMAPCOREHEADER header{};
    unsigned char* bits = kUntouched;
    EXPECT_FALSE(LoadBMP(path.c_str(), &header, &bits));
    EXPECT_EQ(header.bcSize, 40u);
    EXPECT_EQ(bits, kUntouched);
}

TEST(LoadBmp, MissingFileIsRefused)
{
    BITMAPINFOHEADER info{};
    BITMAPCOREHEADER core{};
    unsigned char* bits = kUntouched;
    const std::string path = TempPath("absent.bmp");
    EXPECT_FALSE(LoadBMP(path.c_str(), &info, &bits));
    EXPECT_FALSE(LoadBMP(path.c_str(), &core, &bits));
    EXPECT_EQ(bits, kUntouched);
}

TEST(LoadBmp, ZeroSizeAndTruncatedFilesAreRefused)
{
    const Bytes whole = ReadAll(kGolden + "rgb5x3-info.bmp");
    ASSERT_EQ(whole.size(), 102u);
    for (std::size_t length : {std::size_t(0), std::size_t(10), std::size_t(30), std::size_t(60), std::size_t(101)})
    {
        BITMAPINFOHEADER header{};
        unsigned char* bits = kUntouched;
        EXPECT_FALSE(LoadInfo(Bytes(whole.begin(), whole.begin() + long(length)), &header, &bits)) << length;
        EXPECT_EQ(bits, kUntouched) << length;
    }
}

TEST(LoadBmp, FileSizeBelowTheBitsOffsetOrBitsBeyondTheFileAreRefused)
{
    const Bytes whole = ReadAll(kGolden + "rgb5x3-info.bmp");
    Bytes smallSize = whole;
    SetLE(smallSize, 2, 20, 4);
    Bytes farBits = whole;
    SetLE(farBits, 10, 5000, 4);
    Bytes hugeSize = whole;
    SetLE(hugeSize, 2, 0xFFFFFFFF, 4);
    for (const Bytes* bytes : {&smallSize, &farBits, &hugeSize})
    {
        BITMAPINFOHEADER header{};
        unsigned char* bits = kUntouched;
        EXPECT_FALSE(LoadInfo(*bytes, &header, &bits));
        EXPECT_EQ(bits, kUntouched);
    }
}

TEST(LoadBmp, RowsThatDoNotFitInThePixelBytesAreRefused)
{
    const Bytes whole = ReadAll(kGolden + "rgb5x3-info.bmp");
    Bytes taller = whole;
    SetLE(taller, 22, 4, 4); // four 16-byte rows in 48 bytes
    Bytes huge = whole;
    SetLE(huge, 18, 100000, 4);
    SetLE(huge, 22, 100000, 4);
    Bytes deeper = whole;
    SetLE(deeper, 28, 32, 2); // 20-byte rows
    for (const Bytes* bytes : {&taller, &huge, &deeper})
    {
        BITMAPINFOHEADER header{};
        unsigned char* bits = kUntouched;
        EXPECT_FALSE(LoadInfo(*bytes, &header, &bits));
        EXPECT_EQ(bits, kUntouched);
    }

    Bytes core = ReadAll(kGolden + "rgb5x3-core.bmp");
    SetLE(core, 18, 65535, 2);
    SetLE(core, 20, 65535, 2);
    const std::string path = TempPath("core.bmp");
    qortest::WriteAll(path, core);
    BITMAPCOREHEADER header{};
    unsigned char* bits = kUntouched;
    EXPECT_FALSE(LoadBMP(path.c_str(), &header, &bits));
    EXPECT_EQ(header.bcWidth, 65535);
    EXPECT_EQ(bits, kUntouched);
}

TEST(LoadBmp, RleCompressedFileIsRefused)
{
    const std::string path = kGolden + "runs80x1-rle8.bmp";
    BITMAPINFOHEADER header{};
    unsigned char* bits = kUntouched;
    EXPECT_FALSE(LoadBMP(path.c_str(), &header, &bits));
    EXPECT_EQ(header.biCompression, std::uint32_t(BI_RLE8));
    EXPECT_EQ(header.biWidth, 80);
    EXPECT_EQ(bits, kUntouched);
}

// --- VerticalReverse --------------------------------------------------------------------------------

TEST(VerticalReverse, TwentyFourBitThreeWideUsesTwelveByteRows)
{
    Bytes bits = Sequence(36, 0); // exactly three 12-byte rows
    BITMAPINFOHEADER header{};
    header.biWidth = 3;
    header.biHeight = 3;
    header.biBitCount = 24;
    VerticalReverse(bits.data(), &header);
    Bytes expected = Sequence(12, 24);
    Append(expected, Sequence(12, 12));
    Append(expected, Sequence(12, 0));
    EXPECT_EQ(bits, expected);
}

TEST(VerticalReverse, EightBitFiveWideUsesEightByteRows)
{
    Bytes bits = Sequence(16, 0);
    BITMAPINFOHEADER header{};
    header.biWidth = 5;
    header.biHeight = 2;
    header.biBitCount = 8;
    VerticalReverse(bits.data(), &header);
    Bytes expected = Sequence(8, 8);
    Append(expected, Sequence(8, 0));
    EXPECT_EQ(bits, expected);
}

TEST(VerticalReverse, PartialBytesRoundTheRowUp)
{
    Bytes bits = Sequence(16, 0); // 1-bit, 33 wide: 5 bytes, padded to 8
    BITMAPINFOHEADER header{};
    header.biWidth = 33;
    header.biHeight = 2;
    header.biBitCount = 1;
    VerticalReverse(bits.data(), &header);
    Bytes expected = Sequence(8, 8);
    Append(expected, Sequence(8, 0));
    EXPECT_EQ(bits, expected);
}

TEST(VerticalReverse, HeightBelowOneChangesNothing)
{
    for (LONG height : {0, -2})
    {
        Bytes bits = Sequence(24, 0);
        BITMAPINFOHEADER header{};
        header.biWidth = 3;
        header.biHeight = height;
        header.biBitCount = 24;
        VerticalReverse(bits.data(), &header);
        EXPECT_EQ(bits, Sequence(24, 0)) << height;
    }
}
