// QorAnimSet's file side: the writer's layout, Open with each flag and its refusals in order, hostile files,
// FindIndex, Close and the destructor, the units and their frame tables.
#include "animation_util.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using qortest::AppendLE32;
using qortest::AppendQgb8;
using qortest::AppendUnit;
using qortest::GetLE32;
using qortest::Probe;
using qortest::PutLE32;
using qortest::ReadAll;
using qortest::SetHeader;
using qortest::SetProbe;
using qortest::TempPath;
using qortest::WriteAll;
using qortest::WriteTestSet;

// Offsets of the test set as the writer lays it out (tables end at 64, units then pictures).
const std::uint32_t kWalkAt = 64, kBlinkAt = 151, kEmptyAt = 226, kInertAt = 277;
const std::uint32_t kPic0At = 340, kPic1At = 365, kPic2At = 388, kTestSetSize = 410;

void ExpectEmpty(const QorAnimSet& set)
{
    EXPECT_EQ(set.GetPicCount(), 0);
    EXPECT_EQ(set.GetUnitCount(), 0);
    EXPECT_EQ(set.GetAnimCount(), 0u);
    EXPECT_EQ(set.GetActAnimNum(), 0);
}
} // namespace

// The writer.

TEST(QorAnimSetWriter, LaysOutHeaderTablesUnitsThenPictures)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    const auto bytes = ReadAll(path);
    ASSERT_EQ(bytes.size(), kTestSetSize);
    EXPECT_EQ(bytes[0], 0x00);
    EXPECT_EQ(bytes[1], 'S');
    EXPECT_EQ(bytes[2], 'A');
    EXPECT_EQ(bytes[3], 'Q');
    EXPECT_EQ(GetLE32(bytes, 4), 0x10000u);
    EXPECT_EQ(GetLE32(bytes, 8), 0u);
    EXPECT_EQ(GetLE32(bytes, 12), 2u);
    EXPECT_EQ(GetLE32(bytes, 28), 3u);
    EXPECT_EQ(GetLE32(bytes, 32), kPic0At);
    EXPECT_EQ(GetLE32(bytes, 36), kPic1At);
    EXPECT_EQ(GetLE32(bytes, 40), kPic2At);
    EXPECT_EQ(GetLE32(bytes, 44), 4u);
    EXPECT_EQ(GetLE32(bytes, 48), kWalkAt);
    EXPECT_EQ(GetLE32(bytes, 52), kBlinkAt);
    EXPECT_EQ(GetLE32(bytes, 56), kEmptyAt);
    EXPECT_EQ(GetLE32(bytes, 60), kInertAt);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&bytes[kWalkAt])), "walk");
    EXPECT_EQ(GetLE32(bytes, kWalkAt + 31), 1u);
    EXPECT_EQ(GetLE32(bytes, kWalkAt + 47), 3u);
    EXPECT_EQ(GetLE32(bytes, kWalkAt + 51 + 4 * 5), static_cast<std::uint32_t>(-3));
    // Picture 1 in the QGB layout: type 1, 2 x 5, ten pixels of 20, mask 0.
    EXPECT_EQ(GetLE32(bytes, kPic1At), 1u);
    EXPECT_EQ(GetLE32(bytes, kPic1At + 4), 2u);
    EXPECT_EQ(GetLE32(bytes, kPic1At + 8), 5u);
    EXPECT_EQ(bytes[kPic1At + 12], 20);
    EXPECT_EQ(bytes[kPic1At + 21], 20);
    EXPECT_EQ(bytes[kPic1At + 22], 0);
}

TEST(QorAnimSetWriter, WritesTheSameBytesAsASetMadeByHand)
{
    QorAnimSetWriter w;
    ASSERT_EQ(w.AddPicture(qortest::MakeSetPicture(1, 1, 9)), 0);
    const long pics[] = {0}, xs[] = {-2}, ys[] = {7};
    ASSERT_EQ(w.AddUnit("one", 1, 3, 4, 5, pics, xs, ys, 1), 0);
    w.SetDefaultOpenFlag(1);
    const std::string path = TempPath("writer.qas");
    ASSERT_EQ(w.Write(path.c_str()), 28u + 8 + 8 + 63 + 14);

    std::vector<std::uint8_t> expected = SetHeader(1);
    AppendLE32(expected, 1);
    AppendLE32(expected, 28 + 8 + 8 + 63);
    AppendLE32(expected, 1);
    AppendLE32(expected, 28 + 8 + 8);
    AppendUnit(expected, "one", 1, 3, 4, 5, {0}, {-2}, {7});
    AppendQgb8(expected, 1, 1, 9, 0);
    EXPECT_EQ(ReadAll(path), expected);
}

TEST(QorAnimSetWriter, RefusesNamesOverThirtyBytesWithoutTruncating)
{
    QorAnimSetWriter w;
    w.AddPicture(qortest::MakeSetPicture(1, 1, 9));
    const long pics[] = {0}, xs[] = {0}, ys[] = {0};
    const std::string thirty(30, 'a');
    const std::string thirtyOne(31, 'b');
    EXPECT_EQ(w.AddUnit(thirtyOne.c_str(), 1, 0, 0, 0, pics, xs, ys, 1), -1);
    EXPECT_EQ(w.AddUnit(thirty.c_str(), 1, 0, 0, 0, pics, xs, ys, 1), 0);
    EXPECT_EQ(w.GetUnitCount(), 1);

    const std::string path = TempPath("names.qas");
    ASSERT_GT(w.Write(path.c_str()), 0u);
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(set.FindIndex(thirty.c_str()), 0);
    EXPECT_EQ(set.FindIndex(thirtyOne.substr(0, 30).c_str()), -1);
}

TEST(QorAnimSetWriter, RefusesFramesOutsideThePoolNullTablesAndNegativeCounts)
{
    QorAnimSetWriter w;
    w.AddPicture(qortest::MakeSetPicture(1, 1, 9));
    const long bad[] = {1}, good[] = {0}, xs[] = {0}, ys[] = {0};
    EXPECT_EQ(w.AddUnit("a", 1, 0, 0, 0, bad, xs, ys, 1), -1);
    EXPECT_EQ(w.AddUnit("a", 1, 0, 0, 0, good, nullptr, ys, 1), -1);
    EXPECT_EQ(w.AddUnit("a", 1, 0, 0, 0, good, xs, ys, -1), -1);
    EXPECT_EQ(w.AddUnit(nullptr, 1, 0, 0, 0, good, xs, ys, 1), -1);
    EXPECT_EQ(w.GetUnitCount(), 0);
    EXPECT_EQ(w.Write(nullptr), 0u);
    EXPECT_EQ(w.Write("/nonexistent-dir/x.qas"), 0u);
}

// Open and its flags.

TEST(QorAnimSetOpen, FlagOneReadsEveryUnitWithItsFrames)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(set.GetOpenFlag(), 1);
    EXPECT_EQ(set.GetVersion(), 0x10000u);
    EXPECT_EQ(set.GetPicCount(), 3);
    ASSERT_EQ(set.GetUnitCount(), 4);
    const auto* walk = set.GetUnit(0);
    EXPECT_STREQ(walk->GetName(), "walk");
    EXPECT_EQ(walk->GetMode(), 1);
    EXPECT_EQ(walk->GetX(), 10);
    EXPECT_EQ(walk->GetY(), 20);
    EXPECT_EQ(walk->GetDepth(), 700);
    ASSERT_EQ(walk->GetFrameCount(), 3u);
    EXPECT_EQ(walk->GetFramePic(1), 1u);
    EXPECT_EQ(walk->GetFrameX(2), -3);
    EXPECT_EQ(walk->GetFrameY(2), 2);
    EXPECT_EQ(walk->GetOwner(), &set);
    EXPECT_EQ(set.GetUnit(1)->GetFrameCount(), 2u);
    EXPECT_EQ(set.GetUnit(2)->GetFrameCount(), 0u);
    EXPECT_STREQ(set.GetUnit(3)->GetName(), "inert");
    EXPECT_EQ(set.GetUnit(3)->GetMode(), 2);
    EXPECT_EQ(set.GetUnit(4), nullptr);
    for (long i = 0; i < 3; ++i)
    {
        EXPECT_EQ(set.GetPicUseCount(i), 0);
        EXPECT_FALSE(set.GetPicGuider(i).IsValid());
    }
}

TEST(QorAnimSetOpen, FlagTwoReadsOnlyTheUnitHeadersAtTheirOffsets)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    EXPECT_EQ(set.GetOpenFlag(), 2);
    ASSERT_EQ(set.GetUnitCount(), 4);
    EXPECT_STREQ(set.GetUnit(1)->GetName(), "blink");
    EXPECT_EQ(set.GetUnit(1)->GetMode(), 0);
    EXPECT_EQ(set.GetUnit(1)->GetX(), 30);
    EXPECT_EQ(set.GetUnit(1)->GetY(), 5);
    EXPECT_EQ(set.GetUnit(1)->GetDepth(), 400);
    for (long i = 0; i < 4; ++i)
        EXPECT_EQ(set.GetUnit(i)->GetFrameCount(), 0u);
}

TEST(QorAnimSetOpen, FlagTwoFollowsTheOffsetsNotTheOrderOfTheUnits)
{
    // Two units stored in the reverse order of their table entries.
    std::vector<std::uint8_t> bytes = SetHeader(2);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 2);
    const std::uint32_t first = 28 + 4 + 4 + 8;
    AppendLE32(bytes, first + 51);
    AppendLE32(bytes, first);
    AppendUnit(bytes, "second", 1, 0, 0, 2, {}, {}, {});
    AppendUnit(bytes, "first", 1, 0, 0, 1, {}, {}, {});
    const std::string path = TempPath("order.qas");
    WriteAll(path, bytes);

    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    EXPECT_EQ(set.FindIndex("first"), 0);
    EXPECT_EQ(set.FindIndex("second"), 1);
    // Flag 1 reads in file order, whatever the offsets say.
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(set.FindIndex("second"), 0);
    EXPECT_EQ(set.FindIndex("first"), 1);
}

TEST(QorAnimSetOpen, FlagZeroUsesTheFlagStoredAtOffsetTwelve)
{
    SetProbe set;
    const std::string all = WriteTestSet(TempPath("all.qas"), 1);
    ASSERT_EQ(set.Open(all.c_str(), QorAnimSet::kFileDefault), 1);
    EXPECT_EQ(set.GetOpenFlag(), 1);
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 3u);

    const std::string headers = WriteTestSet(TempPath("headers.qas"), 2);
    ASSERT_EQ(set.Open(headers.c_str(), QorAnimSet::kFileDefault), 1);
    EXPECT_EQ(set.GetOpenFlag(), 2);
    EXPECT_STREQ(set.GetUnit(0)->GetName(), "walk");
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 0u);
}

TEST(QorAnimSetOpen, AnotherFlagReadsNoUnitButTheAnimationsStillLoadFromTheOffsets)
{
    const std::string path = WriteTestSet(TempPath("set.qas"), 7);
    Probe buffer;
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kFileDefault), 1);
    EXPECT_EQ(set.GetOpenFlag(), 7);
    ASSERT_EQ(set.GetUnitCount(), 4);
    EXPECT_STREQ(set.GetUnit(0)->GetName(), "");
    EXPECT_EQ(set.GetUnit(0)->GetDepth(), 500000);
    EXPECT_EQ(set.FindIndex("walk"), -1);
    // Every unit is still nameless, so the empty name finds the first one, which is read from its offset.
    set.SetOffScreenBufferPtr(&buffer);
    QorGuider g = set.CreateAnim("");
    ASSERT_TRUE(g.IsValid());
    EXPECT_STREQ(set.GetUnit(0)->GetName(), "walk");
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 3u);
}

TEST(QorAnimSetOpen, EmptySetOpensAndYieldsNoAnimations)
{
    std::vector<std::uint8_t> bytes = SetHeader(1);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 0);
    const std::string path = TempPath("empty.qas");
    WriteAll(path, bytes);
    Probe buffer;
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    ExpectEmpty(set);
    EXPECT_EQ(set.FindIndex(""), -1);
    EXPECT_FALSE(set.CreateAnim("").IsValid());
    EXPECT_FALSE(set.CreateAnim("walk").IsValid());
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
}

TEST(QorAnimSetOpen, AShortHeaderIsNotDetectedAndReadsAsEmpty)
{
    const std::vector<std::uint8_t> bytes = {0x00, 'S', 'A', 'Q', 0x00, 0x00};
    const std::string path = TempPath("short.qas");
    WriteAll(path, bytes);
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    ExpectEmpty(set);
}

TEST(QorAnimSetOpen, KeepsTheHeaderValueAtOffsetEight)
{
    std::vector<std::uint8_t> bytes = SetHeader(1);
    PutLE32(bytes, 4, 0x20003);
    PutLE32(bytes, 8, 0xCAFE);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 0);
    const std::string path = TempPath("value.qas");
    WriteAll(path, bytes);
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(set.GetVersion(), 0x20003u);
    EXPECT_EQ(set.GetHeaderValue(), 0xCAFEu);
    EXPECT_EQ(set.GetFileName(), QorString(path.c_str()));
}

// Refusals in order.

TEST(QorAnimSetOpen, AFileThatDoesNotOpenKeepsThePreviousContents)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    Probe buffer;
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    QorGuider g = set.CreateAnim("walk");
    ASSERT_TRUE(g.IsValid());
    ASSERT_EQ(set.ActiveAnim(g), 1);

    EXPECT_EQ(set.Open(TempPath("missing.qas").c_str(), QorAnimSet::kReadAll), 0);
    EXPECT_EQ(set.Open(nullptr, QorAnimSet::kReadAll), 0);
    EXPECT_EQ(set.GetUnitCount(), 4);
    EXPECT_EQ(set.GetPicCount(), 3);
    EXPECT_EQ(set.GetAnimCount(), 1u);
    EXPECT_EQ(set.GetActAnimNum(), 1);
    EXPECT_EQ(set.IsAnimActive(g), 1);
    EXPECT_EQ(buffer.GetSpriteNum(), 1u);
}

TEST(QorAnimSetOpen, AWrongMagicDropsThePreviousContentsAndReturnsZero)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    Probe buffer;
    const unsigned long pictures = buffer.GetPicNum();
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    QorGuider g = set.CreateAnim("walk");
    set.ActiveAnim(g);
    ASSERT_EQ(buffer.GetPicNum(), pictures + 3);

    auto bytes = ReadAll(path);
    bytes[1] = 's';
    const std::string bad = TempPath("bad.qas");
    WriteAll(bad, bytes);
    EXPECT_EQ(set.Open(bad.c_str(), QorAnimSet::kReadHeaders), 0);
    ExpectEmpty(set);
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
    EXPECT_EQ(buffer.GetPicNum(), pictures);
    EXPECT_EQ(set.IsAnimActive(g), 0xFF);
}

TEST(QorAnimSetOpen, ReopeningDropsEveryRunningAnimationAndPictureOfThePreviousFile)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    Probe buffer;
    const unsigned long pictures = buffer.GetPicNum();
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    QorGuider a = set.CreateAnim("walk");
    QorGuider b = set.CreateAnim("blink");
    set.ActiveAnim(a);
    set.ActiveAnim(b);
    ASSERT_EQ(buffer.GetSpriteNum(), 2u);
    ASSERT_EQ(buffer.GetPicNum(), pictures + 3);

    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
    EXPECT_EQ(buffer.GetPicNum(), pictures);
    EXPECT_EQ(set.GetAnimCount(), 0u);
    EXPECT_EQ(set.GetActAnimNum(), 0);
    EXPECT_EQ(set.IsAnimActive(a), 0xFF);
    EXPECT_EQ(set.GetUnitCount(), 4);
    for (long i = 0; i < 3; ++i)
        EXPECT_EQ(set.GetPicUseCount(i), 0);
}

TEST(QorAnimSetOpen, CloseAndTheDestructorTakeSpritesAndPicturesOutOfTheCompositor)
{
    const std::string path = WriteTestSet(TempPath("set.qas"));
    Probe buffer;
    const unsigned long pictures = buffer.GetPicNum();
    {
        SetProbe set;
        set.SetOffScreenBufferPtr(&buffer);
        ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
        set.CreateAnim("walk");
        set.Close();
        ExpectEmpty(set);
        EXPECT_EQ(buffer.GetSpriteNum(), 0u);
        EXPECT_EQ(buffer.GetPicNum(), pictures);

        ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
        set.CreateAnim("blink");
        EXPECT_EQ(buffer.GetSpriteNum(), 1u);
    }
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
    EXPECT_EQ(buffer.GetPicNum(), pictures);
}

TEST(QorAnimSetFindIndex, IsCaseSensitiveAndReturnsTheFirstMatch)
{
    std::vector<std::uint8_t> bytes = SetHeader(1);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 3);
    const std::uint32_t first = 28 + 4 + 4 + 12;
    AppendLE32(bytes, first);
    AppendLE32(bytes, first + 51);
    AppendLE32(bytes, first + 102);
    AppendUnit(bytes, "Run", 1, 0, 0, 0, {}, {}, {});
    AppendUnit(bytes, "run", 1, 0, 0, 0, {}, {}, {});
    AppendUnit(bytes, "run", 1, 0, 0, 0, {}, {}, {});
    const std::string path = TempPath("names.qas");
    WriteAll(path, bytes);
    SetProbe set;
    EXPECT_EQ(set.FindIndex("run"), -1);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(set.FindIndex("Run"), 0);
    EXPECT_EQ(set.FindIndex("run"), 1);
    EXPECT_EQ(set.FindIndex("RUN"), -1);
    EXPECT_EQ(set.FindIndex("ru"), -1);
    EXPECT_EQ(set.FindIndex(nullptr), -1);
}

TEST(QorAnimSetFindIndex, ANameWithoutTerminatorIsCutAtThirtyBytes)
{
    std::vector<std::uint8_t> bytes = SetHeader(1);
    AppendLE32(bytes, 0);
    AppendLE32(bytes, 1);
    AppendLE32(bytes, 28 + 4 + 4 + 4);
    const std::string full(31, 'x');
    AppendUnit(bytes, full, 1, 0, 0, 0, {}, {}, {});
    const std::string path = TempPath("unterminated.qas");
    WriteAll(path, bytes);
    SetProbe set;
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    EXPECT_EQ(set.FindIndex(std::string(30, 'x').c_str()), 0);
    EXPECT_EQ(set.FindIndex(full.c_str()), -1);
}

// Hostile files: each is refused with everything read of it released.

namespace
{
std::vector<std::uint8_t> TestSetBytes()
{
    return ReadAll(WriteTestSet(TempPath("base.qas")));
}

void ExpectRefused(const std::vector<std::uint8_t>& bytes, QorAnimSet::OpenFlag flag)
{
    const std::string path = TempPath("hostile.qas");
    WriteAll(path, bytes);
    SetProbe set;
    EXPECT_EQ(set.Open(path.c_str(), flag), 0);
    ExpectEmpty(set);
}
} // namespace

TEST(QorAnimSetHostile, APictureCountBeyondTheFileIsRefused)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, 28, 0xFFFFFFFF);
    ExpectRefused(bytes, QorAnimSet::kReadHeaders);
    PutLE32(bytes, 28, 100);
    ExpectRefused(bytes, QorAnimSet::kReadHeaders);
}

TEST(QorAnimSetHostile, AUnitCountBeyondTheFileIsRefused)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, 44, 0x40000000);
    ExpectRefused(bytes, QorAnimSet::kReadHeaders);
    PutLE32(bytes, 44, static_cast<std::uint32_t>((bytes.size() - 48) / 4 + 1));
    ExpectRefused(bytes, QorAnimSet::kReadHeaders);
}

TEST(QorAnimSetHostile, ATruncatedUnitTableIsRefused)
{
    auto bytes = TestSetBytes();
    bytes.resize(58);
    ExpectRefused(bytes, QorAnimSet::kReadHeaders);
    ExpectRefused(bytes, QorAnimSet::kReadAll);
}

TEST(QorAnimSetHostile, APictureOffsetPastTheEndIsRefused)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, 36, static_cast<std::uint32_t>(bytes.size() + 1));
    ExpectRefused(bytes, QorAnimSet::kReadHeaders);
}

TEST(QorAnimSetHostile, AUnitOffsetPastTheEndOrAHeaderRunningPastItIsRefused)
{
    for (QorAnimSet::OpenFlag flag : {QorAnimSet::kReadAll, QorAnimSet::kReadHeaders, QorAnimSet::kFileDefault})
    {
        auto bytes = TestSetBytes();
        PutLE32(bytes, 52, 0xFFFFFF00);
        ExpectRefused(bytes, flag);
        PutLE32(bytes, 52, static_cast<std::uint32_t>(bytes.size() - 50));
        ExpectRefused(bytes, flag);
    }
}

TEST(QorAnimSetHostile, AFrameTableRunningPastTheFileIsRefusedWithFlagOne)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, kWalkAt + 47, 0x20000000);
    ExpectRefused(bytes, QorAnimSet::kReadAll);
    PutLE32(bytes, kWalkAt + 47, static_cast<std::uint32_t>((bytes.size() - kWalkAt - 51) / 12 + 1));
    ExpectRefused(bytes, QorAnimSet::kReadAll);
}

TEST(QorAnimSetHostile, AFrameWhosePictureLiesOutsideThePoolIsRefusedWithFlagOne)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, kBlinkAt + 51 + 4, 3);
    ExpectRefused(bytes, QorAnimSet::kReadAll);
    PutLE32(bytes, kBlinkAt + 51 + 4, 0xFFFFFFFF);
    ExpectRefused(bytes, QorAnimSet::kReadAll);
}

TEST(QorAnimSetHostile, WithFlagTwoBadFramesMakeCreateAnimReturnAnEmptyGuider)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, kBlinkAt + 51 + 4, 3);
    PutLE32(bytes, kWalkAt + 47, 0x7FFFFFFF);
    const std::string path = TempPath("frames.qas");
    WriteAll(path, bytes);
    Probe buffer;
    const unsigned long pictures = buffer.GetPicNum();
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    EXPECT_FALSE(set.CreateAnim("blink").IsValid());
    EXPECT_FALSE(set.CreateAnim("walk").IsValid());
    EXPECT_EQ(set.GetUnit(0)->GetFrameCount(), 0u);
    EXPECT_EQ(set.GetUnit(1)->GetFrameCount(), 0u);
    EXPECT_EQ(set.GetAnimCount(), 0u);
    EXPECT_EQ(buffer.GetSpriteNum(), 0u);
    EXPECT_EQ(buffer.GetPicNum(), pictures);
    // The intact unit still runs.
    EXPECT_TRUE(set.CreateAnim("inert").IsValid());
}

TEST(QorAnimSetHostile, APoolPictureThatDoesNotLoadLeavesItsFramesWithoutAPicture)
{
    // Picture 1 points at the end of the file: nothing to read there.
    auto bytes = TestSetBytes();
    PutLE32(bytes, 36, static_cast<std::uint32_t>(bytes.size()));
    const std::string path = TempPath("nopic.qas");
    WriteAll(path, bytes);
    Probe buffer;
    const unsigned long pictures = buffer.GetPicNum();
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadHeaders), 1);
    QorGuider g = set.CreateAnim("inert");
    ASSERT_TRUE(g.IsValid());
    EXPECT_FALSE(set.GetPicGuider(1).IsValid());
    EXPECT_EQ(set.GetPicUseCount(1), 1);
    EXPECT_EQ(buffer.GetPicNum(), pictures);
    QorSprite* sprite = buffer.Sprite(*set.GetSprite(g));
    ASSERT_NE(sprite, nullptr);
    EXPECT_EQ(sprite->GetPicBlock(), nullptr);
    EXPECT_EQ(set.ActiveAnim(g), 1);
    EXPECT_EQ(set.DestroyAnim(g), 1);
    EXPECT_EQ(set.GetPicUseCount(1), 0);
}

TEST(QorAnimSetHostile, APictureWithAHugeSizeDoesNotLoad)
{
    auto bytes = TestSetBytes();
    PutLE32(bytes, kPic2At + 4, 0x7FFFFFFF);
    PutLE32(bytes, kPic2At + 8, 0x7FFFFFFF);
    const std::string path = TempPath("hugepic.qas");
    WriteAll(path, bytes);
    Probe buffer;
    SetProbe set;
    set.SetOffScreenBufferPtr(&buffer);
    ASSERT_EQ(set.Open(path.c_str(), QorAnimSet::kReadAll), 1);
    QorGuider g = set.CreateAnim("blink");
    ASSERT_TRUE(g.IsValid());
    EXPECT_FALSE(set.GetPicGuider(2).IsValid());
    EXPECT_EQ(set.GetPicUseCount(2), 2);
}

// Units.

TEST(QorAnimUnit, CreateRefusesFewerBytesThanAHeaderAndLoadKeepsLoadedFrames)
{
    std::vector<std::uint8_t> bytes;
    AppendUnit(bytes, "u", 1, 1, 2, 3, {0}, {4}, {5});
    const std::string path = TempPath("unit.bin");
    WriteAll(path, std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 50));
    QorFile file;
    ASSERT_EQ(file.Open(path.c_str(), QorFile::kRead), 1);
    QorAnimSet::QorAnimUnit unit;
    EXPECT_EQ(unit.Create(file), 0);
    EXPECT_STREQ(unit.GetName(), "");
    EXPECT_EQ(unit.GetDepth(), 500000);
    file.Close();

    WriteAll(path, bytes);
    ASSERT_EQ(file.Open(path.c_str(), QorFile::kRead), 1);
    SetProbe owner;
    unit.SetOwner(&owner);
    EXPECT_EQ(unit.Create(file), 1);
    EXPECT_EQ(unit.GetDepth(), 3);
    // An owner without pictures: frame 0's picture lies outside its pool.
    EXPECT_EQ(unit.Load(file), 0);
    EXPECT_EQ(unit.GetFrameCount(), 0u);
    unit.Destroy();
    EXPECT_EQ(unit.GetFrameCount(), 0u);
}
