// QorPicGroup: group files of pictures in the QGB layout, loaded by name or index.
#include "test_util.h"

#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;
using qortest::ReadAll;
using qortest::TempPath;

Bytes PixelBytes(const QorPicBlock& p)
{
    const unsigned char* d = p.GetDataPtr();
    return d ? Bytes(d, d + p.GetSize()) : Bytes();
}

Bytes MaskBytes(const QorPicBlock& p)
{
    return Bytes(p.GetMask(), p.GetMask() + p.GetBytesPerPixel());
}

// A picture whose pixel bytes are first, first + 1, ... and whose mask colour is mask.
QorPicBlock Picture(QorPicBlock::ColorType type, long w, long h, unsigned char first, const Bytes& mask)
{
    QorPicBlock p(type, w, h);
    for (unsigned long i = 0; i < p.GetSize(); ++i)
        p.GetDataPtr()[i] = static_cast<unsigned char>(first + i);
    p.SetMask(mask.data());
    return p;
}

std::uint32_t GetLE32(const Bytes& b, std::size_t at)
{
    return std::uint32_t(b[at]) | std::uint32_t(b[at + 1]) << 8 | std::uint32_t(b[at + 2]) << 16 |
           std::uint32_t(b[at + 3]) << 24;
}

// Writes a group of the named pictures with magic into a file of this test; returns its path.
std::string WriteGroup(const std::vector<std::pair<const char*, QorPicBlock*>>& entries,
                       const char* magic = QorPicGroup::kMagic, const char* name = "group")
{
    QorDataGroupWriter writer(magic);
    for (const auto& entry : entries)
        EXPECT_TRUE(writer.Add(entry.first, entry.second));
    const std::string path = TempPath(name);
    EXPECT_GT(writer.Write(path.c_str()), 0u);
    return path;
}

// Three pictures of different types, written as "small", "deep" and "word".
struct ThreePictures
{
    QorPicBlock small = Picture(QorPicBlock::Bit8, 3, 2, 1, {9});
    QorPicBlock deep = Picture(QorPicBlock::Bit24, 2, 2, 50, {7, 8, 9});
    QorPicBlock word = Picture(QorPicBlock::Bit16, 1, 3, 100, {0x34, 0x12});

    std::string Write() { return WriteGroup({{"small", &small}, {"deep", &deep}, {"word", &word}}); }
};

void ExpectSame(const QorPicBlock& got, const QorPicBlock& want)
{
    EXPECT_EQ(got.GetColorType(), want.GetColorType());
    EXPECT_EQ(got.GetWidth(), want.GetWidth());
    EXPECT_EQ(got.GetHeight(), want.GetHeight());
    EXPECT_EQ(PixelBytes(got), PixelBytes(want));
    EXPECT_EQ(MaskBytes(got), MaskBytes(want));
}

// The picture every "unchanged" check starts from.
QorPicBlock Sentinel()
{
    return Picture(QorPicBlock::Bit32, 2, 1, 200, {1, 2, 3, 4});
}
} // namespace

TEST(QorPicGroup, MagicIsAZeroByteThenBGQ)
{
    const QorPicGroup group;
    EXPECT_EQ(Bytes(group.GetMagic(), group.GetMagic() + 4), (Bytes{0x00, 0x42, 0x47, 0x51}));
    EXPECT_EQ(Bytes(QorPicGroup::kMagic, QorPicGroup::kMagic + 4), (Bytes{0x00, 'B', 'G', 'Q'}));
    EXPECT_EQ(group.GetCount(), 0u);
}

TEST(QorPicGroup, WrittenFileHoldsTheTableAndEachPictureInTheQgbLayout)
{
    ThreePictures pictures;
    const Bytes file = ReadAll(pictures.Write());
    ASSERT_GT(file.size(), 28u + 3 * 35u);
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 4), (Bytes{0x00, 'B', 'G', 'Q'}));
    EXPECT_EQ(GetLE32(file, 4), 0x00010000u);
    EXPECT_EQ(GetLE32(file, 24), 3u);
    // Offsets, then 31-byte names, then the blocks: 19, 27 and 20 bytes.
    const std::uint32_t first = 28 + 3 * 35;
    EXPECT_EQ(GetLE32(file, 28), first);
    EXPECT_EQ(GetLE32(file, 32), first + 19);
    EXPECT_EQ(GetLE32(file, 36), first + 19 + 27);
    Bytes name(file.begin() + 40, file.begin() + 40 + 31);
    Bytes expectedName{'s', 'm', 'a', 'l', 'l'};
    expectedName.resize(31, 0);
    EXPECT_EQ(name, expectedName);
    EXPECT_EQ(Bytes(file.begin() + first, file.begin() + first + 19),
              (Bytes{1, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 2, 3, 4, 5, 6, 9}));
    EXPECT_EQ(file.size(), std::size_t(first + 19 + 27 + 20));
}

TEST(QorPicGroup, PicturesLoadByNameWithExactPixels)
{
    ThreePictures pictures;
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    EXPECT_EQ(group.GetCount(), 3u);
    QorPicBlock got;
    EXPECT_TRUE(group.LoadData(&got, "deep"));
    ExpectSame(got, pictures.deep);
    EXPECT_TRUE(group.LoadData(&got, "word"));
    ExpectSame(got, pictures.word);
    EXPECT_TRUE(group.LoadData(&got, "small"));
    ExpectSame(got, pictures.small);
}

TEST(QorPicGroup, PicturesLoadByIndexInTheOrderWritten)
{
    ThreePictures pictures;
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    const QorPicBlock* expected[] = {&pictures.small, &pictures.deep, &pictures.word};
    for (unsigned long i = 0; i < 3; ++i)
    {
        QorPicBlock got = Sentinel();
        EXPECT_TRUE(group.LoadData(&got, i)) << i;
        ExpectSame(got, *expected[i]);
    }
    EXPECT_EQ(group.FindData("word"), 2);
}

TEST(QorPicGroup, IndexPastTheTableReturnsFalseAndLeavesThePicture)
{
    ThreePictures pictures;
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    QorPicBlock got = Sentinel();
    EXPECT_FALSE(group.LoadData(&got, 3ul));
    EXPECT_FALSE(group.LoadData(&got, 0xFFFFFFFFul));
    ExpectSame(got, Sentinel());
}

TEST(QorPicGroup, UnknownNameReturnsFalseAndLeavesThePicture)
{
    ThreePictures pictures;
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    QorPicBlock got = Sentinel();
    EXPECT_FALSE(group.LoadData(&got, "missing"));
    EXPECT_FALSE(group.LoadData(&got, ""));
    EXPECT_EQ(group.FindData("missing"), -1);
    ExpectSame(got, Sentinel());
}

TEST(QorPicGroup, NamesAreComparedExactly)
{
    QorPicBlock upper = Picture(QorPicBlock::Bit8, 1, 1, 5, {0});
    QorPicGroup group;
    ASSERT_TRUE(group.Open(WriteGroup({{"BG", &upper}}).c_str()));
    QorPicBlock got = Sentinel();
    EXPECT_EQ(group.FindData("Bg"), -1);
    EXPECT_EQ(group.FindData("BG "), -1);
    EXPECT_FALSE(group.LoadData(&got, "Bg"));
    ExpectSame(got, Sentinel());
    EXPECT_TRUE(group.LoadData(&got, "BG"));
    ExpectSame(got, upper);
}

TEST(QorPicGroup, DuplicateNamesLoadTheLowerIndex)
{
    QorPicBlock first = Picture(QorPicBlock::Bit8, 2, 1, 10, {1});
    QorPicBlock second = Picture(QorPicBlock::Bit8, 2, 1, 20, {2});
    QorPicGroup group;
    ASSERT_TRUE(group.Open(WriteGroup({{"same", &first}, {"same", &second}}).c_str()));
    EXPECT_EQ(group.FindData("same"), 0);
    QorPicBlock got;
    EXPECT_TRUE(group.LoadData(&got, "same"));
    ExpectSame(got, first);
}

TEST(QorPicGroup, SoundGroupFileIsRefused)
{
    QorPicBlock p = Picture(QorPicBlock::Bit8, 1, 1, 5, {0});
    const std::string path = WriteGroup({{"p", &p}}, "QSG ");
    QorPicGroup group;
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    QorPicBlock got = Sentinel();
    EXPECT_FALSE(group.LoadData(&got, "p"));
    ExpectSame(got, Sentinel());
    // The file itself is sound: a group expecting that magic opens it.
    QorDataGroup soundGroup("QSG ");
    EXPECT_TRUE(soundGroup.Open(path.c_str()));
}

TEST(QorPicGroup, OpenOfAnotherFileDiscardsTheOldTable)
{
    ThreePictures pictures;
    QorPicBlock other = Picture(QorPicBlock::Bit8, 1, 1, 5, {0});
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    ASSERT_TRUE(group.Open(WriteGroup({{"other", &other}}, QorPicGroup::kMagic, "second").c_str()));
    EXPECT_EQ(group.GetCount(), 1u);
    EXPECT_EQ(group.FindData("deep"), -1);
    EXPECT_FALSE(group.Open(TempPath("absent").c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("other"), -1);
}

TEST(QorPicGroup, EmptyGroupOpensAndFindsNothing)
{
    QorPicGroup group;
    ASSERT_TRUE(group.Open(WriteGroup({}).c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("anything"), -1);
    QorPicBlock got = Sentinel();
    EXPECT_FALSE(group.LoadData(&got, 0ul));
    ExpectSame(got, Sentinel());
}

TEST(QorPicGroup, LoadingLeavesThePalettePointerAlone)
{
    ThreePictures pictures;
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    stPaletteEntry palette[256];
    QorPicBlock got;
    got.SetPaletteEntryPtr(palette);
    EXPECT_TRUE(group.LoadData(&got, "small"));
    EXPECT_EQ(got.GetPaletteEntryPtr(), palette);
}

TEST(QorPicGroup, CopiesKeepWorkingAfterTheOriginalIsDestroyed)
{
    ThreePictures pictures;
    auto original = std::make_unique<QorPicGroup>();
    ASSERT_TRUE(original->Open(pictures.Write().c_str()));
    const QorPicGroup constructed(*original);
    QorPicGroup assigned;
    assigned = *original;
    EXPECT_NE(constructed.GetName(0), original->GetName(0));
    EXPECT_NE(assigned.GetName(0), original->GetName(0));
    original.reset();

    for (const QorPicGroup* copy : {&constructed, static_cast<const QorPicGroup*>(&assigned)})
    {
        QorPicGroup group(*copy);
        EXPECT_EQ(Bytes(group.GetMagic(), group.GetMagic() + 4), (Bytes{0x00, 'B', 'G', 'Q'}));
        EXPECT_EQ(group.GetCount(), 3u);
        EXPECT_STREQ(group.GetName(1), "deep");
        QorPicBlock got;
        EXPECT_TRUE(group.LoadData(&got, "word"));
        ExpectSame(got, pictures.word);
    }
}

TEST(QorPicGroup, SelfAssignmentKeepsTheTable)
{
    ThreePictures pictures;
    QorPicGroup group;
    ASSERT_TRUE(group.Open(pictures.Write().c_str()));
    QorPicGroup& alias = group;
    group = alias;
    EXPECT_EQ(group.GetCount(), 3u);
    EXPECT_EQ(group.FindData("deep"), 1);
}

TEST(QorPicGroup, BlockClaimingMoreThanItHoldsLeavesThePictureUnchanged)
{
    ThreePictures pictures;
    const Bytes good = ReadAll(pictures.Write());
    const std::size_t first = 28 + 3 * 35;
    // Height 3 asks for 9 pixel bytes where the block holds 7 (the next block follows); 100000 asks for
    // more than the whole file.
    for (std::uint32_t height : {3u, 100000u})
    {
        Bytes bad = good;
        for (int i = 0; i < 4; ++i)
            bad[first + 8 + std::size_t(i)] = static_cast<unsigned char>(height >> (8 * i));
        const std::string path = TempPath("bad");
        qortest::WriteAll(path, bad);
        QorPicGroup group;
        ASSERT_TRUE(group.Open(path.c_str()));
        QorPicBlock got = Sentinel();
        EXPECT_TRUE(group.LoadData(&got, "small")); // the group found the block; the picture refused it
        ExpectSame(got, Sentinel());
        EXPECT_TRUE(group.LoadData(&got, "deep"));
        ExpectSame(got, pictures.deep);
    }
}

TEST(QorPicGroup, ZeroSizeTruncatedAndHugeCountFilesAreRefused)
{
    ThreePictures pictures;
    const Bytes good = ReadAll(pictures.Write());
    Bytes hugeCount = good;
    hugeCount[24] = hugeCount[25] = hugeCount[26] = hugeCount[27] = 0xFF;
    Bytes offsetPastEnd = good;
    offsetPastEnd[29] = 0x40; // block 0 at offset 0x4000 + ...
    const Bytes cases[] = {Bytes(), Bytes(good.begin(), good.begin() + 20),
                           Bytes(good.begin(), good.begin() + 28 + 3 * 4 + 40), hugeCount, offsetPastEnd};
    for (const Bytes& bytes : cases)
    {
        const std::string path = TempPath("bad");
        qortest::WriteAll(path, bytes);
        QorPicGroup group;
        EXPECT_FALSE(group.Open(path.c_str())) << bytes.size();
        EXPECT_EQ(group.GetCount(), 0u);
    }
}
