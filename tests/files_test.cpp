#include "qor/files.h"

#include "test_util.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace
{
using Bytes = std::vector<std::uint8_t>;

const char kPictureMagic[4] = {0x00, 'B', 'G', 'Q'};
const char kSoundMagic[4] = {'Q', 'S', 'G', ' '};

int OpenDescriptorCount()
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        (void)entry;
        ++count;
    }
    return count;
}

// Writes bytes to path and opens it for reading.
void OpenWith(QorFile& file, const std::string& path, const Bytes& bytes)
{
    qortest::WriteAll(path, bytes);
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
}

void Put32(Bytes& out, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

// A 31-byte name field: name's bytes (at most 31), zero-padded.
void PutName(Bytes& out, const std::string& name)
{
    for (std::size_t i = 0; i < 31; ++i)
        out.push_back(i < name.size() ? static_cast<std::uint8_t>(name[i]) : 0);
}

// The 28 bytes up to and including the count.
Bytes Header(const char* magic, std::uint32_t count)
{
    Bytes out(magic, magic + 4);
    Put32(out, 0x00010000);
    for (int i = 0; i < 4; ++i)
        Put32(out, 0);
    Put32(out, count);
    return out;
}

// A whole group file: header, offsets, names, then the raw tail.
Bytes GroupBytes(const char* magic, const std::vector<std::uint32_t>& offsets, const std::vector<std::string>& names,
                 const Bytes& tail)
{
    Bytes out = Header(magic, static_cast<std::uint32_t>(offsets.size()));
    for (std::uint32_t offset : offsets)
        Put32(out, offset);
    for (const std::string& name : names)
        PutName(out, name);
    out.insert(out.end(), tail.begin(), tail.end());
    return out;
}

// Raw bytes: saved as they are; loading takes everything the stream still gives.
class RawBlock : public QorDataBlock
{
public:
    RawBlock() = default;
    explicit RawBlock(Bytes bytes) : m_bytes(std::move(bytes)) {}

    unsigned long LoadData(QorFile& file) override
    {
        m_bytes.clear();
        ++m_loads;
        unsigned char chunk[16];
        unsigned long got;
        while ((got = file.Read(chunk, sizeof chunk)) != 0)
            m_bytes.insert(m_bytes.end(), chunk, chunk + got);
        return m_bytes.size();
    }
    unsigned long SaveData(QorFile& file) override { return file.Write(m_bytes.data(), m_bytes.size()); }

    Bytes m_bytes;
    int m_loads = 0;
};

// A block holding one persisted string.
class TextBlock : public QorDataBlock
{
public:
    TextBlock() = default;
    explicit TextBlock(const char* text) : m_text(text) {}

    unsigned long LoadData(QorFile& file) override { return m_text.Load(file); }
    unsigned long SaveData(QorFile& file) override { return m_text.Save(file); }

    QorString m_text;
};

std::string Str(const Bytes& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

std::string Str(const QorString& s)
{
    return std::string(static_cast<const char*>(s), s.GetLength());
}

// Writes a group of (name, raw bytes) blocks with the given magic; returns the file size.
unsigned long WriteGroup(const std::string& path, const char* magic,
                         const std::vector<std::pair<std::string, std::string>>& blocks)
{
    std::vector<std::unique_ptr<RawBlock>> owned;
    QorDataGroupWriter writer(magic);
    for (const auto& block : blocks)
    {
        owned.push_back(std::make_unique<RawBlock>(Bytes(block.second.begin(), block.second.end())));
        EXPECT_TRUE(writer.Add(block.first.c_str(), owned.back().get()));
    }
    return writer.Write(path.c_str());
}

QorDate LocalDate(std::time_t t)
{
    std::tm local{};
    localtime_r(&t, &local);
    QorDate date;
    date.Initialize(static_cast<short>(local.tm_year + 1900), static_cast<char>(local.tm_mon + 1),
                    static_cast<char>(local.tm_mday), local.tm_hour, local.tm_min, local.tm_sec, local.tm_wday);
    return date;
}

std::time_t LocalTime(int year, int month, int day, int hour, int minute, int second)
{
    std::tm local{};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    return std::mktime(&local);
}
} // namespace

// QorFile: opening and closing

TEST(QorFileOpen, NewStreamIsClosedAndAtTheEnd)
{
    QorFile file;
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(file.IsEnd());
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.GetFileLength(), 0u);
    EXPECT_EQ(file.GetBytesLeft(), 0u);
}

TEST(QorFileOpen, ModeOneCreatesAnEmptyFile)
{
    const std::string path = qortest::TempPath("new.bin");
    std::remove(path.c_str());
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.GetFileLength(), 0u);
    file.Close();
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
}

TEST(QorFileOpen, ModeOneTruncatesAnExistingFile)
{
    const std::string path = qortest::TempPath("old.bin");
    qortest::WriteAll(path, {1, 2, 3, 4, 5});
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 'x';
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{'x'}));
}

TEST(QorFileOpen, ModeTwoReadsAnExistingFileFromTheStart)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("read.bin"), {9, 8, 7});
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.GetFileLength(), 3u);
    char first = 0;
    file >> first;
    EXPECT_EQ(first, 9);
}

TEST(QorFileOpen, ModeTwoOnAMissingFileFailsAndStaysClosed)
{
    const std::string path = qortest::TempPath("missing.bin");
    std::remove(path.c_str());
    QorFile file;
    EXPECT_FALSE(file.Open(path.c_str(), 2));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(file.Open(static_cast<const char*>(nullptr), 2));
    EXPECT_FALSE(file.IsOpen());
}

TEST(QorFileOpen, ModeThreeAppendsAfterTheExistingBytes)
{
    const std::string path = qortest::TempPath("append.bin");
    qortest::WriteAll(path, {'a', 'b'});
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 3));
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.Write("cd", 2), 2u);
    EXPECT_EQ(file.GetPosition(), 2u);
    file.Close();
    EXPECT_EQ(Str(qortest::ReadAll(path)), "abcd");
}

TEST(QorFileOpen, ModeThreeAppendsEvenAfterASeekToTheStart)
{
    const std::string path = qortest::TempPath("append.bin");
    qortest::WriteAll(path, {'a', 'b'});
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 3));
    EXPECT_TRUE(file.Seek(0, 0, 1));
    file << 'c';
    file.Close();
    EXPECT_EQ(Str(qortest::ReadAll(path)), "abc");
}

TEST(QorFileOpen, ModeThreeCreatesAMissingFile)
{
    const std::string path = qortest::TempPath("created.bin");
    std::remove(path.c_str());
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 3));
    file << 'z';
    file.Close();
    EXPECT_EQ(Str(qortest::ReadAll(path)), "z");
}

TEST(QorFileOpen, ModeFourFailsAndLeavesTheStreamClosed)
{
    const std::string path = qortest::TempPath("four.bin");
    qortest::WriteAll(path, {1});
    QorFile file;
    EXPECT_FALSE(file.Open(path.c_str(), 4));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(file.IsEnd());
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{1}));
    EXPECT_FALSE(file.Open(path.c_str(), 0));
    EXPECT_FALSE(file.Open(path.c_str(), 7));
    EXPECT_FALSE(file.IsOpen());
}

TEST(QorFileOpen, OnlyTheLowThreeBitsSelectTheMode)
{
    const std::string path = qortest::TempPath("bits.bin");
    qortest::WriteAll(path, {0x42});
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 0x10 | 2));
    unsigned char v = 0;
    file >> v;
    EXPECT_EQ(v, 0x42);
    EXPECT_FALSE(file.Open(path.c_str(), 0x10 | 4));
    EXPECT_FALSE(file.IsOpen());
}

TEST(QorFileOpen, QorStringPathOverload)
{
    QorString path(qortest::TempPath("string.bin").c_str());
    QorFile file;
    ASSERT_TRUE(file.Open(path, 1));
    file << 'q';
    file.Close();
    ASSERT_TRUE(file.Open(path, 2));
    EXPECT_EQ(file.GetFileLength(), 1u);
}

TEST(QorFileOpen, ReopeningClosesTheOldFile)
{
    const std::string first = qortest::TempPath("first.bin");
    const std::string second = qortest::TempPath("second.bin");
    qortest::WriteAll(second, {5, 6});
    const int before = OpenDescriptorCount();
    QorFile file;
    ASSERT_TRUE(file.Open(first.c_str(), 1));
    file << 'a';
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
    ASSERT_TRUE(file.Open(second.c_str(), 2));
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.GetFileLength(), 2u);
    EXPECT_EQ(Str(qortest::ReadAll(first)), "a");
}

TEST(QorFileOpen, FailedReopenStillClosesTheOldFile)
{
    const std::string path = qortest::TempPath("old.bin");
    const int before = OpenDescriptorCount();
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    EXPECT_FALSE(file.Open(path.c_str(), 5));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(OpenDescriptorCount(), before);
}

TEST(QorFileOpen, CloseResetsThePositionAndMayBeRepeated)
{
    const std::string path = qortest::TempPath("close.bin");
    const int before = OpenDescriptorCount();
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 1;
    EXPECT_EQ(file.GetPosition(), 4u);
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.GetFileLength(), 0u);
    file.Close();
    EXPECT_EQ(OpenDescriptorCount(), before);
}

TEST(QorFileOpen, DestructionClosesTheDescriptor)
{
    const std::string path = qortest::TempPath("scoped.bin");
    const int before = OpenDescriptorCount();
    {
        QorFile file;
        ASSERT_TRUE(file.Open(path.c_str(), 1));
        EXPECT_EQ(OpenDescriptorCount(), before + 1);
    }
    EXPECT_EQ(OpenDescriptorCount(), before);
}

TEST(QorFileCopy, CopyConstructedStreamDoesNotCloseTheSharedDescriptor)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("shared.bin"), {1, 2, 3, 4});
    char v = 0;
    file >> v;
    {
        QorFile copy(file);
        EXPECT_TRUE(copy.IsOpen());
        EXPECT_EQ(copy.GetPosition(), 1u);
        copy >> v;
        EXPECT_EQ(v, 2);
    }
    // Each stream counts its own position; the shared descriptor moved on and is still open.
    EXPECT_EQ(file.GetPosition(), 1u);
    file >> v;
    EXPECT_EQ(v, 3);
}

TEST(QorFileCopy, AssignedCopyCopiesTheFieldsAndLeavesTheOriginalOpen)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("shared.bin"), {1, 2, 3, 4});
    char v = 0;
    file >> v >> v;
    QorFile copy;
    copy = file;
    EXPECT_TRUE(copy.IsOpen());
    EXPECT_EQ(copy.GetPosition(), 2u);
    EXPECT_EQ(copy.GetFileLength(), 4u);
    copy.Close();
    EXPECT_FALSE(copy.IsOpen());
    file >> v;
    EXPECT_EQ(v, 3);
}

TEST(QorFileCopy, AssignmentClosesTheTargetsOwnFileFirst)
{
    const std::string a = qortest::TempPath("a.bin");
    const std::string b = qortest::TempPath("b.bin");
    const int before = OpenDescriptorCount();
    QorFile source;
    ASSERT_TRUE(source.Open(a.c_str(), 1));
    QorFile target;
    ASSERT_TRUE(target.Open(b.c_str(), 1));
    EXPECT_EQ(OpenDescriptorCount(), before + 2);
    target = source;
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
}

// QorFile: reading and writing

TEST(QorFileReadWrite, FourBytesFromATwoByteFileReturnsTwoAndAdvancesTwo)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("two.bin"), {0x11, 0x22});
    unsigned char buffer[4] = {0, 0, 0, 0};
    EXPECT_EQ(file.Read(buffer, 4), 2u);
    EXPECT_EQ(file.GetPosition(), 2u);
    EXPECT_EQ(buffer[0], 0x11);
    EXPECT_EQ(buffer[1], 0x22);
    EXPECT_EQ(buffer[2], 0);
    // At the end nothing more comes and the position stays.
    EXPECT_EQ(file.Read(buffer, 4), 0u);
    EXPECT_EQ(file.GetPosition(), 2u);
}

TEST(QorFileReadWrite, ReadAndWriteOnAClosedStreamReturnZero)
{
    QorFile file;
    unsigned char buffer[4] = {1, 2, 3, 4};
    EXPECT_EQ(file.Read(buffer, 4), 0u);
    EXPECT_EQ(file.Write(buffer, 4), 0u);
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(buffer[0], 1);
}

TEST(QorFileReadWrite, WriteReturnsTheCountAndAdvances)
{
    const std::string path = qortest::TempPath("write.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    EXPECT_EQ(file.Write("hello", 5), 5u);
    EXPECT_EQ(file.GetPosition(), 5u);
    EXPECT_EQ(file.GetFileLength(), 5u);
    EXPECT_EQ(file.Write("!", 1), 1u);
    EXPECT_EQ(file.GetPosition(), 6u);
    file.Close();
    EXPECT_EQ(Str(qortest::ReadAll(path)), "hello!");
}

TEST(QorFileReadWrite, WriteOnAReadStreamWritesNothing)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("readonly.bin"), {1, 2});
    EXPECT_EQ(file.Write("xy", 2), 0u);
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.GetFileLength(), 2u);
}

TEST(QorFileReadWrite, ReadOnAWriteStreamReadsNothing)
{
    QorFile file;
    ASSERT_TRUE(file.Open(qortest::TempPath("writeonly.bin").c_str(), 1));
    file << 7;
    ASSERT_TRUE(file.Seek(0, 0, 1));
    unsigned char buffer[4];
    EXPECT_EQ(file.Read(buffer, 4), 0u);
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST(QorFileEnd, FalseBeforeTheLastByteTrueAfterIt)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("end.bin"), {1, 2});
    EXPECT_FALSE(file.IsEnd());
    char v;
    file >> v;
    EXPECT_FALSE(file.IsEnd());
    file >> v;
    EXPECT_TRUE(file.IsEnd());

    QorFile empty;
    OpenWith(empty, qortest::TempPath("empty.bin"), {});
    EXPECT_TRUE(empty.IsEnd());
}

TEST(QorFileEnd, WriteStreamIsAtTheEndAfterWriting)
{
    QorFile file;
    ASSERT_TRUE(file.Open(qortest::TempPath("w.bin").c_str(), 1));
    file << 'a' << 'b';
    EXPECT_TRUE(file.IsEnd());
    ASSERT_TRUE(file.Seek(1, 0, 1));
    EXPECT_FALSE(file.IsEnd());
}

TEST(QorFileLength, FollowsTheBytesWritten)
{
    QorFile file;
    ASSERT_TRUE(file.Open(qortest::TempPath("len.bin").c_str(), 1));
    EXPECT_EQ(file.GetFileLength(), 0u);
    file << 1.0;
    EXPECT_EQ(file.GetFileLength(), 8u);
    file.Close();
    EXPECT_EQ(file.GetFileLength(), 0u);
}

TEST(QorFileLength, BytesLeftCountToTheEndOfTheFile)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("left.bin"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_EQ(file.GetBytesLeft(), 10u);
    unsigned char buffer[3];
    file.Read(buffer, 3);
    EXPECT_EQ(file.GetBytesLeft(), 7u);
    file.Close();
    EXPECT_EQ(file.GetBytesLeft(), 0u);
}

TEST(QorFileLength, ReadLimitStopsReadsAndEndsTheStream)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("limit.bin"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    file.SetReadLimit(5);
    EXPECT_EQ(file.GetBytesLeft(), 5u);
    unsigned char buffer[10] = {};
    EXPECT_EQ(file.Read(buffer, 10), 5u);
    EXPECT_EQ(buffer[4], 5);
    EXPECT_EQ(buffer[5], 0);
    EXPECT_TRUE(file.IsEnd());
    EXPECT_EQ(file.GetBytesLeft(), 0u);
    EXPECT_EQ(file.GetFileLength(), 10u);
    file.SetReadLimit(0);
    EXPECT_FALSE(file.IsEnd());
    EXPECT_EQ(file.Read(buffer, 10), 5u);
    EXPECT_EQ(buffer[0], 6);
}

TEST(QorFileLength, ReopeningLiftsTheReadLimit)
{
    const std::string path = qortest::TempPath("limit.bin");
    QorFile file;
    OpenWith(file, path, {1, 2, 3, 4});
    file.SetReadLimit(1);
    ASSERT_TRUE(file.Open(path.c_str(), 2));
    unsigned char buffer[4];
    EXPECT_EQ(file.Read(buffer, 4), 4u);
}

// QorFile: typed stream operators

TEST(QorFileOperators, CharAndUnsignedCharWriteOneByte)
{
    const std::string path = qortest::TempPath("char.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 'A' << static_cast<char>(-1) << static_cast<unsigned char>(0xA4);
    EXPECT_EQ(file.GetPosition(), 3u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0x41, 0xFF, 0xA4}));
}

TEST(QorFileOperators, ShortAndUnsignedShortAreTwoBytesLittleEndian)
{
    const std::string path = qortest::TempPath("short.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << static_cast<short>(0x1234) << static_cast<short>(-2) << static_cast<unsigned short>(0xABCD);
    EXPECT_EQ(file.GetPosition(), 6u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0x34, 0x12, 0xFE, 0xFF, 0xCD, 0xAB}));
}

TEST(QorFileOperators, IntAndUnsignedIntAreFourBytesLittleEndian)
{
    const std::string path = qortest::TempPath("int.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 0x12345678 << -1 << 0xDEADBEEFu;
    EXPECT_EQ(file.GetPosition(), 12u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path),
              (Bytes{0x78, 0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xEF, 0xBE, 0xAD, 0xDE}));
}

TEST(QorFileOperators, DoubleIsEightBytesLittleEndian)
{
    const std::string path = qortest::TempPath("double.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 1.0 << -2.5;
    EXPECT_EQ(file.GetPosition(), 16u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path),
              (Bytes{0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0x04, 0xC0}));
}

TEST(QorFileOperators, EveryWidthReadsBackFromLittleEndianBytes)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("mixed.bin"),
             {0x80, 0xFE, 0x34, 0x12, 0xCD, 0xAB, 0x78, 0x56, 0x34, 0x12, 0xEF, 0xBE, 0xAD, 0xDE, 0, 0, 0, 0, 0, 0,
              0x04, 0xC0});
    char c = 0;
    unsigned char uc = 0;
    short s = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned int ui = 0;
    double d = 0;
    file >> c;
    EXPECT_EQ(file.GetPosition(), 1u);
    file >> uc;
    EXPECT_EQ(file.GetPosition(), 2u);
    file >> s;
    EXPECT_EQ(file.GetPosition(), 4u);
    file >> us >> i >> ui;
    EXPECT_EQ(file.GetPosition(), 14u);
    file >> d;
    EXPECT_EQ(file.GetPosition(), 22u);
    EXPECT_EQ(c, static_cast<char>(0x80));
    EXPECT_EQ(uc, 0xFE);
    EXPECT_EQ(s, 0x1234);
    EXPECT_EQ(us, 0xABCD);
    EXPECT_EQ(i, 0x12345678);
    EXPECT_EQ(ui, 0xDEADBEEFu);
    EXPECT_EQ(d, -2.5);
}

TEST(QorFileOperators, NegativeValuesReadBackSigned)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("negative.bin"), {0xFE, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF});
    short s = 0;
    int i = 0;
    file >> s >> i;
    EXPECT_EQ(s, -2);
    EXPECT_EQ(i, -5);
}

TEST(QorFileOperators, ShortReadKeepsTheBytesItDidNotDeliver)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("short.bin"), {0x34, 0x12});
    int v = -1;
    file >> v;
    EXPECT_EQ(v, static_cast<int>(0xFFFF1234u));
    EXPECT_EQ(file.GetPosition(), 2u);
}

TEST(QorFileOperators, ReadingFromAClosedStreamLeavesTheValue)
{
    QorFile file;
    int i = 77;
    double d = 1.5;
    file >> i >> d;
    EXPECT_EQ(i, 77);
    EXPECT_EQ(d, 1.5);
}

TEST(QorFileOperators, StringIsWrittenAsLengthThenBytes)
{
    const std::string path = qortest::TempPath("abc.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << QorString("abc");
    EXPECT_EQ(file.GetPosition(), 7u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0x03, 0x00, 0x00, 0x00, 0x61, 0x62, 0x63}));
}

TEST(QorFileOperators, StringReadsBackThroughTheOperator)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("two.bin"), {0x02, 0, 0, 0, 'h', 'i', 0x00, 0, 0, 0, 0x01, 0, 0, 0, 'x'});
    QorString a, b, c;
    file >> a >> b >> c;
    EXPECT_EQ(Str(a), "hi");
    EXPECT_TRUE(b.IsEmpty());
    EXPECT_EQ(Str(c), "x");
    EXPECT_EQ(file.GetPosition(), 15u);
}

TEST(QorFileOperators, GuiderIsIdentifierThenTagWithoutThePointer)
{
    const std::string path = qortest::TempPath("guider.bin");
    int target = 0;
    QorGuider handle;
    handle.identifier = 0x01020304;
    handle.object = &target;
    handle.tag = 0x0506;
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << handle;
    EXPECT_EQ(file.GetPosition(), 6u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0x04, 0x03, 0x02, 0x01, 0x06, 0x05}));
    EXPECT_EQ(handle.GetSaveBytes(), 6u);
}

TEST(QorFileOperators, GuiderReadKeepsItsObjectPointer)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("guider.bin"), {0xFF, 0xFF, 0xFF, 0xFF, 0x34, 0x12});
    int target = 0;
    QorGuider handle;
    handle.object = &target;
    file >> handle;
    EXPECT_EQ(handle.identifier, 0xFFFFFFFFu);
    EXPECT_EQ(handle.tag, 0x1234);
    EXPECT_EQ(handle.object, &target);
    EXPECT_EQ(file.GetPosition(), 6u);

    QorGuider fresh;
    EXPECT_TRUE(file.Seek(6, 1, -1));
    EXPECT_EQ(fresh.Load(file), 6u);
    EXPECT_FALSE(fresh.IsValid());
    EXPECT_EQ(fresh.identifier, 0xFFFFFFFFu);
}

TEST(QorFileOperators, OperatorsChainInOrder)
{
    const std::string path = qortest::TempPath("chain.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 'a' << static_cast<short>(2) << 3 << QorString("z");
    EXPECT_EQ(file.GetPosition(), 12u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{'a', 2, 0, 3, 0, 0, 0, 1, 0, 0, 0, 'z'}));
}

TEST(QorFileValues, RectIsFourLittleEndianInts)
{
    const std::string path = qortest::TempPath("rect.bin");
    QorRect rect(-1, 2, 300, 4);
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    EXPECT_EQ(rect.Save(file), 16u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path),
              (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 0x2C, 0x01, 0, 0, 4, 0, 0, 0}));

    ASSERT_TRUE(file.Open(path.c_str(), 2));
    QorRect back;
    EXPECT_EQ(back.Load(file), 16u);
    EXPECT_EQ(back, rect);
}

TEST(QorFileValues, DateIsThirtyBytesAndSaveReturnsZero)
{
    const std::string path = qortest::TempPath("date.bin");
    QorDate date;
    date.Initialize(2001, 9, 9, 13, 5, 7, 0);
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    EXPECT_EQ(date.Save(file), 0u);
    EXPECT_EQ(file.GetPosition(), 30u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0xD1, 0x07, 90, 0, 9, 9, 13, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0,
                                             7, 0, 0, 0, 0, 0, 0, 0}));

    ASSERT_TRUE(file.Open(path.c_str(), 2));
    QorDate back;
    EXPECT_EQ(back.Load(file), 0u);
    EXPECT_EQ(file.GetPosition(), 30u);
    EXPECT_TRUE(back == date);
    EXPECT_EQ(back.localYear, 90);
}

// QorFile: seeking and flushing

TEST(QorFileSeek, ClosedStreamRefuses)
{
    QorFile file;
    EXPECT_FALSE(file.Seek(0, 0, 1));
}

TEST(QorFileSeek, FromTheStart)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("seek.bin"), {10, 11, 12, 13, 14, 15});
    EXPECT_TRUE(file.Seek(3, 0, 1));
    EXPECT_EQ(file.GetPosition(), 3u);
    char v = 0;
    file >> v;
    EXPECT_EQ(v, 13);
}

TEST(QorFileSeek, FromTheCurrentPlaceBothWays)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("seek.bin"), {10, 11, 12, 13, 14, 15});
    char v = 0;
    file >> v;
    EXPECT_TRUE(file.Seek(3, 1, 1));
    EXPECT_EQ(file.GetPosition(), 4u);
    file >> v;
    EXPECT_EQ(v, 14);
    EXPECT_TRUE(file.Seek(4, 1, -1));
    EXPECT_EQ(file.GetPosition(), 1u);
    file >> v;
    EXPECT_EQ(v, 11);
}

TEST(QorFileSeek, StepBackFourAfterAnIntReturnsToWhereItBegan)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("int.bin"), {0xAA, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00});
    char skip;
    file >> skip;
    int v = 0;
    file >> v;
    ASSERT_EQ(v, 1);
    EXPECT_TRUE(file.Seek(4, 1, -1));
    EXPECT_EQ(file.GetPosition(), 1u);
    v = 0;
    file >> v;
    EXPECT_EQ(v, 1);
}

TEST(QorFileSeek, FromTheEndWithOffsetZeroReachesTheEnd)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("end.bin"), {1, 2, 3, 4, 5});
    EXPECT_TRUE(file.Seek(0, 2, 1));
    EXPECT_EQ(file.GetPosition(), 5u);
    EXPECT_TRUE(file.IsEnd());
}

// The position field counts length - d while the descriptor moves to length + d.
TEST(QorFileSeek, FromTheEndWithAnOffsetKeepsTheFieldRule)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("end.bin"), {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_TRUE(file.Seek(3, 2, -1));
    EXPECT_EQ(file.GetPosition(), 13u);
    char v = 0;
    file >> v;
    EXPECT_EQ(v, 7);
    EXPECT_EQ(file.GetPosition(), 14u);

    EXPECT_TRUE(file.Seek(3, 2, 1));
    EXPECT_EQ(file.GetPosition(), 7u);
    EXPECT_TRUE(file.IsEnd());
}

TEST(QorFileSeek, BeforeTheStartAnswersTrueAndLeavesTheDescriptor)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("before.bin"), {10, 11, 12, 13});
    char v = 0;
    file >> v >> v;
    EXPECT_TRUE(file.Seek(4, 0, -1));
    EXPECT_EQ(file.GetPosition(), 0xFFFFFFFCu);
    file >> v;
    EXPECT_EQ(v, 12);
}

TEST(QorFileSeek, DirectionZeroIsRefused)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("dir.bin"), {1, 2, 3});
    EXPECT_FALSE(file.Seek(2, 0, 0));
    EXPECT_EQ(file.GetPosition(), 0u);
    char v = 0;
    file >> v;
    EXPECT_EQ(v, 1);
}

TEST(QorFileSeek, OriginAboveTwoIsRefused)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("origin.bin"), {1, 2, 3});
    EXPECT_FALSE(file.Seek(1, 3, 1));
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST(QorFileSeek, OffsetAboveTheLargestLongIsRefused)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("offset.bin"), {1, 2, 3});
    EXPECT_FALSE(file.Seek(static_cast<unsigned long>(LONG_MAX) + 1, 0, 1));
    EXPECT_FALSE(file.Seek(ULONG_MAX, 1, -1));
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST(QorFileSeek, OnlyTheSignOfTheDirectionCounts)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("sign.bin"), {0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_TRUE(file.Seek(5, 0, 100));
    EXPECT_EQ(file.GetPosition(), 5u);
    EXPECT_TRUE(file.Seek(2, 1, -7));
    EXPECT_EQ(file.GetPosition(), 3u);
    char v = 0;
    file >> v;
    EXPECT_EQ(v, 3);
}

TEST(QorFileSeek, PatchingAWrittenFieldOverwritesInPlace)
{
    const std::string path = qortest::TempPath("patch.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 0 << 0x11111111;
    EXPECT_TRUE(file.Seek(0, 0, 1));
    file << 0x0A0B0C0D;
    EXPECT_EQ(file.GetPosition(), 4u);
    EXPECT_EQ(file.GetFileLength(), 8u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0x0D, 0x0C, 0x0B, 0x0A, 0x11, 0x11, 0x11, 0x11}));
}

TEST(QorFileSeek, WritingBeyondTheEndFillsTheGapWithZeros)
{
    const std::string path = qortest::TempPath("gap.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    EXPECT_TRUE(file.Seek(3, 0, 1));
    file << 'x';
    EXPECT_EQ(file.GetPosition(), 4u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{0, 0, 0, 'x'}));
}

TEST(QorFileFlush, OpenStreamCommitsAndReturnsZeroClosedOneReturnsMinusOne)
{
    const std::string path = qortest::TempPath("flush.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 1));
    file << 42;
    EXPECT_EQ(file.Flush(), 0);
    EXPECT_EQ(qortest::ReadAll(path), (Bytes{42, 0, 0, 0}));
    file.Close();
    EXPECT_EQ(file.Flush(), -1);
}

// QorFile::GetFileTime

TEST(QorFileTime, WrittenAndAccessedDatesAreTheLocalTimesOfTheStamps)
{
    const std::string path = qortest::TempPath("stamped.bin");
    qortest::WriteAll(path, {1});
    // A Sunday afternoon and a Saturday before midnight, both in local time.
    const std::time_t written = LocalTime(2001, 9, 9, 13, 5, 7);
    const std::time_t accessed = LocalTime(2020, 2, 29, 23, 59, 58);
    const struct timespec times[2] = {{accessed, 0}, {written, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);

    QorDate w, a;
    EXPECT_TRUE(QorFile::GetFileTime(path.c_str(), nullptr, &a, &w));
    EXPECT_EQ(w.year, 2001);
    EXPECT_EQ(w.localYear, 90);
    EXPECT_EQ(w.month, 9);
    EXPECT_EQ(w.day, 9);
    EXPECT_EQ(w.hour, 13);
    EXPECT_EQ(w.hour12, 1);
    EXPECT_EQ(w.afternoon, 1);
    EXPECT_EQ(w.minute, 5);
    EXPECT_EQ(w.second, 7);
    EXPECT_EQ(w.dayOfWeek, 0);

    EXPECT_EQ(a.year, 2020);
    EXPECT_EQ(a.month, 2);
    EXPECT_EQ(a.day, 29);
    EXPECT_EQ(a.hour, 23);
    EXPECT_EQ(a.minute, 59);
    EXPECT_EQ(a.second, 58);
    EXPECT_EQ(a.dayOfWeek, 6);
}

TEST(QorFileTime, WrittenDateMatchesLocaltimeOfTheModificationTime)
{
    const std::string path = qortest::TempPath("mtime.bin");
    qortest::WriteAll(path, {1, 2});
    struct stat st;
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    QorDate written;
    EXPECT_TRUE(QorFile::GetFileTime(path.c_str(), nullptr, nullptr, &written));
    EXPECT_TRUE(written == LocalDate(st.st_mtime));
}

TEST(QorFileTime, CreationDateLiesBetweenTheClockBeforeAndAfterCreating)
{
    const std::string path = qortest::TempPath("created.bin");
    std::remove(path.c_str());
    // File system stamps come from a coarse clock that may lag the wall clock slightly.
    const std::time_t before = std::time(nullptr) - 2;
    qortest::WriteAll(path, {1});
    QorDate created;
    EXPECT_TRUE(QorFile::GetFileTime(path.c_str(), &created, nullptr, nullptr));
    const std::time_t after = std::time(nullptr) + 1;
    EXPECT_FALSE(created.IsEmpty());
    EXPECT_FALSE(created < LocalDate(before));
    EXPECT_FALSE(created > LocalDate(after));
}

TEST(QorFileTime, MissingFileAnswersFalseAndLeavesTheDates)
{
    const std::string path = qortest::TempPath("missing.bin");
    std::remove(path.c_str());
    QorDate c, a, w;
    c.Initialize(1999, 5, 1, 12, 0, 0, 3);
    a = c;
    w = c;
    EXPECT_FALSE(QorFile::GetFileTime(path.c_str(), &c, &a, &w));
    EXPECT_EQ(c.year, 1999);
    EXPECT_EQ(a.month, 5);
    EXPECT_EQ(w.dayOfWeek, 3);
    EXPECT_FALSE(QorFile::GetFileTime(static_cast<const char*>(nullptr), &c, &a, &w));
    EXPECT_EQ(w.day, 1);
}

TEST(QorFileTime, NullDatePointersAreSkipped)
{
    const std::string path = qortest::TempPath("null.bin");
    qortest::WriteAll(path, {1});
    EXPECT_TRUE(QorFile::GetFileTime(path.c_str(), nullptr, nullptr, nullptr));
}

TEST(QorFileTime, QorStringPathOverload)
{
    const std::string path = qortest::TempPath("string.bin");
    qortest::WriteAll(path, {1});
    const std::time_t written = LocalTime(1995, 12, 31, 8, 30, 0);
    const struct timespec times[2] = {{written, 0}, {written, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    QorString name(path.c_str());
    QorDate w;
    EXPECT_TRUE(QorFile::GetFileTime(name, nullptr, nullptr, &w));
    EXPECT_EQ(w.year, 1995);
    EXPECT_EQ(w.month, 12);
    EXPECT_EQ(w.day, 31);
    EXPECT_EQ(w.hour, 8);
    EXPECT_EQ(w.afternoon, 0);
    EXPECT_EQ(w.dayOfWeek, 0);
}

// Data groups: writing

TEST(QorDataGroupWriter, SmallGroupIsLaidOutByteForByte)
{
    const std::string path = qortest::TempPath("small.grp");
    RawBlock first(Bytes{0x11, 0x22});
    RawBlock second(Bytes{0x33});
    QorDataGroupWriter writer(kSoundMagic);
    ASSERT_TRUE(writer.Add("ab", &first));
    ASSERT_TRUE(writer.Add("c", &second));
    EXPECT_EQ(writer.GetCount(), 2u);
    // 28 header bytes, 2 offsets, 2 names of 31 bytes, 3 bytes of blocks.
    EXPECT_EQ(writer.Write(path.c_str()), 101u);

    Bytes expected{'Q', 'S', 'G', ' ', 0x00, 0x00, 0x01, 0x00};
    expected.insert(expected.end(), 16, 0x00);
    Put32(expected, 2);
    Put32(expected, 98);
    Put32(expected, 100);
    PutName(expected, "ab");
    PutName(expected, "c");
    expected.insert(expected.end(), {0x11, 0x22, 0x33});
    EXPECT_EQ(qortest::ReadAll(path), expected);
}

TEST(QorDataGroupWriter, EmptyGroupIsTheHeaderAlone)
{
    const std::string path = qortest::TempPath("empty.grp");
    QorDataGroupWriter writer(kPictureMagic);
    EXPECT_EQ(writer.Write(path.c_str()), 28u);
    EXPECT_EQ(qortest::ReadAll(path), Header(kPictureMagic, 0));
}

TEST(QorDataGroupWriter, NameOfThirtyBytesIsAcceptedAndThirtyOneRefused)
{
    const std::string thirty(30, 'n');
    const std::string thirtyOne(31, 'n');
    RawBlock block(Bytes{1});
    QorDataGroupWriter writer(kSoundMagic);
    EXPECT_TRUE(writer.Add(thirty.c_str(), &block));
    EXPECT_FALSE(writer.Add(thirtyOne.c_str(), &block));
    EXPECT_EQ(writer.GetCount(), 1u);

    const std::string path = qortest::TempPath("thirty.grp");
    ASSERT_EQ(writer.Write(path.c_str()), 28u + 35u + 1u);
    const Bytes bytes = qortest::ReadAll(path);
    EXPECT_EQ(std::string(bytes.begin() + 32, bytes.begin() + 62), thirty);
    EXPECT_EQ(bytes[62], 0);
}

TEST(QorDataGroupWriter, NullBlockAndNullNameAreRefused)
{
    RawBlock block(Bytes{1});
    QorDataGroupWriter writer(kSoundMagic);
    EXPECT_FALSE(writer.Add("x", nullptr));
    EXPECT_FALSE(writer.Add(nullptr, &block));
    EXPECT_EQ(writer.GetCount(), 0u);
}

TEST(QorDataGroupWriter, UnwritablePathWritesNothing)
{
    RawBlock block(Bytes{1});
    QorDataGroupWriter writer(kSoundMagic);
    ASSERT_TRUE(writer.Add("x", &block));
    EXPECT_EQ(writer.Write(qortest::TempPath("no-such-dir/x.grp").c_str()), 0u);
}

TEST(QorDataGroupWriter, BlocksFollowTheTableInTheOrderAdded)
{
    const std::string path = qortest::TempPath("order.grp");
    ASSERT_EQ(WriteGroup(path, kSoundMagic, {{"z", "zzz"}, {"a", "a"}, {"m", "mm"}}), 28u + 3 * 35u + 6u);
    const Bytes bytes = qortest::ReadAll(path);
    EXPECT_EQ(Str(Bytes(bytes.end() - 6, bytes.end())), "zzzamm");
}

// Data groups: opening and finding

TEST(QorDataGroup, NewGroupIsEmpty)
{
    QorDataGroup group(kSoundMagic);
    RawBlock block;
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("x"), -1);
    EXPECT_FALSE(group.LoadData(&block, 0ul));
    EXPECT_FALSE(group.LoadData(&block, "x"));
    EXPECT_EQ(group.GetName(0), nullptr);
    EXPECT_EQ(block.m_loads, 0);
}

TEST(QorDataGroup, WrittenGroupOpensAndListsNamesAndOffsets)
{
    const std::string path = qortest::TempPath("three.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"one", "111"}, {"two", "22222"}, {"three", "3"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    ASSERT_EQ(group.GetCount(), 3u);
    EXPECT_STREQ(group.GetName(0), "one");
    EXPECT_STREQ(group.GetName(1), "two");
    EXPECT_STREQ(group.GetName(2), "three");
    EXPECT_EQ(group.GetOffset(0), 133u);
    EXPECT_EQ(group.GetOffset(1), 136u);
    EXPECT_EQ(group.GetOffset(2), 141u);
    EXPECT_EQ(group.GetOffset(3), 0u);
    EXPECT_EQ(group.GetBlockSize(0), 3u);
    EXPECT_EQ(group.GetBlockSize(1), 5u);
    EXPECT_EQ(group.GetBlockSize(2), 1u);
    EXPECT_EQ(group.GetBlockSize(3), 0u);
    EXPECT_EQ(group.FindData("two"), 1);
    EXPECT_EQ(Str(group.GetFileName()), path);
}

TEST(QorDataGroup, FindDataIsExactAndCaseSensitive)
{
    const std::string path = qortest::TempPath("case.grp");
    ASSERT_GT(WriteGroup(path, kPictureMagic, {{"BG", "1"}, {"bg", "2"}}), 0u);
    QorDataGroup group(kPictureMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.FindData("Bg"), -1);
    EXPECT_EQ(group.FindData("BG"), 0);
    EXPECT_EQ(group.FindData("bg"), 1);
    EXPECT_EQ(group.FindData("B"), -1);
    EXPECT_EQ(group.FindData("BGX"), -1);
    EXPECT_EQ(group.FindData(""), -1);
    EXPECT_EQ(group.FindData(nullptr), -1);
}

TEST(QorDataGroup, DuplicateNamesFindTheLowerIndex)
{
    const std::string path = qortest::TempPath("dup.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"other", "o"}, {"same", "first"}, {"same", "second"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.FindData("same"), 1);
    RawBlock block;
    EXPECT_TRUE(group.LoadData(&block, "same"));
    EXPECT_EQ(Str(block.m_bytes), "first");
    EXPECT_TRUE(group.LoadData(&block, 2ul));
    EXPECT_EQ(Str(block.m_bytes), "second");
}

TEST(QorDataGroup, CountZeroOpensFindsNothingAndRefusesIndexZero)
{
    const std::string path = qortest::TempPath("zero.grp");
    qortest::WriteAll(path, Header(kSoundMagic, 0));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("anything"), -1);
    RawBlock block;
    EXPECT_FALSE(group.LoadData(&block, 0ul));
    EXPECT_EQ(block.m_loads, 0);
}

TEST(QorDataGroup, SoundMagicFailsOnAPictureGroupAndLeavesItEmpty)
{
    const std::string sound = qortest::TempPath("sound.grp");
    const std::string picture = qortest::TempPath("picture.grp");
    ASSERT_GT(WriteGroup(sound, kSoundMagic, {{"boom", "b"}}), 0u);
    ASSERT_GT(WriteGroup(picture, kPictureMagic, {{"bg", "p"}, {"fg", "q"}}), 0u);
    QorDataGroup group(kPictureMagic);
    ASSERT_TRUE(group.Open(picture.c_str()));
    ASSERT_EQ(group.GetCount(), 2u);
    EXPECT_FALSE(group.Open(sound.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("bg"), -1);
    EXPECT_EQ(group.FindData("boom"), -1);
    RawBlock block;
    EXPECT_FALSE(group.LoadData(&block, 0ul));
}

TEST(QorDataGroup, PictureMagicWithALeadingZeroByteOpens)
{
    const std::string path = qortest::TempPath("picture.grp");
    ASSERT_GT(WriteGroup(path, kPictureMagic, {{"bg", "p"}}), 0u);
    const Bytes bytes = qortest::ReadAll(path);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 4), (Bytes{0x00, 'B', 'G', 'Q'}));
    QorDataGroup group(kPictureMagic);
    EXPECT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 1u);
}

TEST(QorDataGroup, MagicDifferingOnlyAfterTheZeroByteIsRefused)
{
    const char other[4] = {0x00, 'B', 'G', 'X'};
    const std::string path = qortest::TempPath("other.grp");
    ASSERT_GT(WriteGroup(path, other, {{"bg", "p"}}), 0u);
    QorDataGroup group(kPictureMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
}

TEST(QorDataGroup, VersionAndReservedWordsAreIgnored)
{
    Bytes bytes{'Q', 'S', 'G', ' '};
    for (std::uint32_t v : {0x12345678u, 0xFFFFFFFFu, 1u, 2u, 3u})
        Put32(bytes, v);
    Put32(bytes, 1);
    Put32(bytes, 63);
    PutName(bytes, "x");
    bytes.push_back('!');
    const std::string path = qortest::TempPath("version.grp");
    qortest::WriteAll(path, bytes);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block;
    EXPECT_TRUE(group.LoadData(&block, "x"));
    EXPECT_EQ(Str(block.m_bytes), "!");
}

TEST(QorDataGroup, DefaultGroupExpectsFourZeroBytes)
{
    const char zero[4] = {0, 0, 0, 0};
    const std::string path = qortest::TempPath("zero.grp");
    ASSERT_GT(WriteGroup(path, zero, {{"a", "1"}}), 0u);
    QorDataGroup group;
    EXPECT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 1u);
}

TEST(QorDataGroup, ReopenDiscardsTheOldTables)
{
    const std::string first = qortest::TempPath("first.grp");
    const std::string second = qortest::TempPath("second.grp");
    ASSERT_GT(WriteGroup(first, kSoundMagic, {{"a", "1"}, {"b", "2"}, {"c", "3"}}), 0u);
    ASSERT_GT(WriteGroup(second, kSoundMagic, {{"z", "9"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(first.c_str()));
    ASSERT_TRUE(group.Open(second.c_str()));
    EXPECT_EQ(group.GetCount(), 1u);
    EXPECT_EQ(group.FindData("a"), -1);
    EXPECT_EQ(group.FindData("z"), 0);
    RawBlock block;
    EXPECT_TRUE(group.LoadData(&block, 0ul));
    EXPECT_EQ(Str(block.m_bytes), "9");
}

TEST(QorDataGroup, FailedOpenOfAMissingFileDiscardsTheOldTables)
{
    const std::string path = qortest::TempPath("ok.grp");
    const std::string missing = qortest::TempPath("missing.grp");
    std::remove(missing.c_str());
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_FALSE(group.Open(missing.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("a"), -1);
}

TEST(QorDataGroup, CloseEmptiesTheGroup)
{
    const std::string path = qortest::TempPath("close.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    group.Close();
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("a"), -1);
    RawBlock block;
    EXPECT_FALSE(group.LoadData(&block, "a"));
    EXPECT_FALSE(group.LoadData(&block, 0ul));
    EXPECT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 1u);
}

TEST(QorDataGroup, TheFileStaysClosedBetweenLoads)
{
    const std::string path = qortest::TempPath("closed.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}}), 0u);
    const int before = OpenDescriptorCount();
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(OpenDescriptorCount(), before);
    RawBlock block;
    ASSERT_TRUE(group.LoadData(&block, 0ul));
    EXPECT_EQ(OpenDescriptorCount(), before);
}

TEST(QorDataGroup, CopyOwnsItsTablesAfterTheOriginalIsDestroyed)
{
    const std::string path = qortest::TempPath("copy.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "first"}, {"b", "second"}}), 0u);
    auto original = std::make_unique<QorDataGroup>(kSoundMagic);
    ASSERT_TRUE(original->Open(path.c_str()));
    QorDataGroup copy(*original);
    original.reset();
    EXPECT_EQ(copy.GetCount(), 2u);
    EXPECT_EQ(copy.FindData("b"), 1);
    EXPECT_EQ(copy.GetBlockSize(0), 5u);
    RawBlock block;
    EXPECT_TRUE(copy.LoadData(&block, "b"));
    EXPECT_EQ(Str(block.m_bytes), "second");
}

TEST(QorDataGroup, AssignedCopyOwnsItsTablesAndReplacesItsOwn)
{
    const std::string a = qortest::TempPath("a.grp");
    const std::string b = qortest::TempPath("b.grp");
    ASSERT_GT(WriteGroup(a, kSoundMagic, {{"a", "aaa"}}), 0u);
    ASSERT_GT(WriteGroup(b, kSoundMagic, {{"b1", "1"}, {"b2", "2"}}), 0u);
    QorDataGroup source(kSoundMagic);
    QorDataGroup target(kSoundMagic);
    ASSERT_TRUE(source.Open(a.c_str()));
    ASSERT_TRUE(target.Open(b.c_str()));
    target = source;
    source.Close();
    EXPECT_EQ(target.GetCount(), 1u);
    EXPECT_EQ(target.FindData("b1"), -1);
    RawBlock block;
    EXPECT_TRUE(target.LoadData(&block, "a"));
    EXPECT_EQ(Str(block.m_bytes), "aaa");
}

TEST(QorDataGroup, SelfAssignmentKeepsTheTables)
{
    const std::string path = qortest::TempPath("self.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    QorDataGroup& alias = group;
    group = alias;
    EXPECT_EQ(group.GetCount(), 1u);
    EXPECT_EQ(group.FindData("a"), 0);
}

// Data groups: loading

TEST(QorDataGroupLoad, ByNameAndByIndexReadTheBlockAtItsOffset)
{
    const std::string path = qortest::TempPath("load.grp");
    TextBlock hello("hello");
    TextBlock world("world!");
    QorDataGroupWriter writer(kSoundMagic);
    ASSERT_TRUE(writer.Add("hello", &hello));
    ASSERT_TRUE(writer.Add("world", &world));
    ASSERT_EQ(writer.Write(path.c_str()), 28u + 70u + 9u + 10u);

    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    TextBlock block;
    EXPECT_TRUE(group.LoadData(&block, "world"));
    EXPECT_EQ(Str(block.m_text), "world!");
    EXPECT_TRUE(group.LoadData(&block, 0ul));
    EXPECT_EQ(Str(block.m_text), "hello");
}

TEST(QorDataGroupLoad, UnknownNameIsFalseAndLoadsNothing)
{
    const std::string path = qortest::TempPath("unknown.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block;
    EXPECT_FALSE(group.LoadData(&block, "b"));
    EXPECT_EQ(block.m_loads, 0);
}

TEST(QorDataGroupLoad, IndexAtOrPastTheCountIsFalse)
{
    const std::string path = qortest::TempPath("index.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}, {"b", "2"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block;
    EXPECT_FALSE(group.LoadData(&block, 2ul));
    EXPECT_FALSE(group.LoadData(&block, ULONG_MAX));
    EXPECT_EQ(block.m_loads, 0);
    EXPECT_TRUE(group.LoadData(&block, 1ul));
    EXPECT_EQ(block.m_loads, 1);
}

TEST(QorDataGroupLoad, NullBlockIsFalse)
{
    const std::string path = qortest::TempPath("null.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "1"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_FALSE(group.LoadData(nullptr, "a"));
    EXPECT_FALSE(group.LoadData(nullptr, 0ul));
}

TEST(QorDataGroupLoad, LoadingNeverChangesTheTables)
{
    const std::string path = qortest::TempPath("tables.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "12"}, {"b", "345"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block;
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(group.LoadData(&block, "b"));
        ASSERT_TRUE(group.LoadData(&block, 0ul));
    }
    EXPECT_EQ(Str(block.m_bytes), "12");
    EXPECT_EQ(group.GetCount(), 2u);
    EXPECT_STREQ(group.GetName(1), "b");
    EXPECT_EQ(group.GetOffset(1), 28u + 70u + 2u);
}

TEST(QorDataGroupLoad, AGreedyReaderStopsWhereTheNextBlockBegins)
{
    const std::string path = qortest::TempPath("greedy.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "abc"}, {"b", "defgh"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block;
    ASSERT_TRUE(group.LoadData(&block, "a"));
    EXPECT_EQ(Str(block.m_bytes), "abc");
    ASSERT_TRUE(group.LoadData(&block, "b"));
    EXPECT_EQ(Str(block.m_bytes), "defgh");
}

TEST(QorDataGroupLoad, TheLimitIsTheNextHigherOffsetNotTheNextIndex)
{
    // Block 0 lies after block 1 in the file: block 1 ends where block 0 begins, block 0 at the end.
    const std::string path = qortest::TempPath("order.grp");
    const std::uint32_t base = 28 + 2 * 35;
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {base + 3, base}, {"late", "early"}, {'x', 'y', 'z', 'L', 'M'}));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetBlockSize(0), 2u);
    EXPECT_EQ(group.GetBlockSize(1), 3u);
    RawBlock block;
    ASSERT_TRUE(group.LoadData(&block, "early"));
    EXPECT_EQ(Str(block.m_bytes), "xyz");
    ASSERT_TRUE(group.LoadData(&block, "late"));
    EXPECT_EQ(Str(block.m_bytes), "LM");
}

TEST(QorDataGroupLoad, AStoredTextLengthBeyondItsBlockKeepsOnlyTheBlocksBytes)
{
    const std::string path = qortest::TempPath("overlong.grp");
    const std::uint32_t base = 28 + 2 * 35;
    Bytes tail{100, 0, 0, 0, 'a', 'b', 'c'};
    tail.insert(tail.end(), {3, 0, 0, 0, 'X', 'Y', 'Z'});
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {base, base + 7}, {"bad", "good"}, tail));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    TextBlock block;
    ASSERT_TRUE(group.LoadData(&block, "bad"));
    EXPECT_EQ(Str(block.m_text), "abc");
    ASSERT_TRUE(group.LoadData(&block, "good"));
    EXPECT_EQ(Str(block.m_text), "XYZ");
}

TEST(QorDataGroupLoad, BlocksSharingAnOffsetReadTheSameBytes)
{
    const std::string path = qortest::TempPath("shared.grp");
    const std::uint32_t base = 28 + 3 * 35;
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {base, base, base + 2}, {"a", "b", "c"}, {'1', '2', '3'}));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block;
    ASSERT_TRUE(group.LoadData(&block, "a"));
    EXPECT_EQ(Str(block.m_bytes), "12");
    ASSERT_TRUE(group.LoadData(&block, "b"));
    EXPECT_EQ(Str(block.m_bytes), "12");
    ASSERT_TRUE(group.LoadData(&block, "c"));
    EXPECT_EQ(Str(block.m_bytes), "3");
}

TEST(QorDataGroupLoad, OffsetAtTheEndOfTheFileIsAnEmptyBlock)
{
    const std::string path = qortest::TempPath("tailoffset.grp");
    const std::uint32_t end = 28 + 35;
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {end}, {"none"}, {}));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    RawBlock block(Bytes{'o', 'l', 'd'});
    EXPECT_TRUE(group.LoadData(&block, "none"));
    EXPECT_EQ(block.m_loads, 1);
    EXPECT_TRUE(block.m_bytes.empty());
}

TEST(QorDataGroupLoad, FileRemovedAfterOpenStillAnswersTrueAndTheBlockReadsNothing)
{
    const std::string path = qortest::TempPath("gone.grp");
    ASSERT_GT(WriteGroup(path, kSoundMagic, {{"a", "abc"}}), 0u);
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    ASSERT_EQ(std::remove(path.c_str()), 0);
    RawBlock block(Bytes{'o', 'l', 'd'});
    EXPECT_TRUE(group.LoadData(&block, "a"));
    EXPECT_EQ(block.m_loads, 1);
    EXPECT_TRUE(block.m_bytes.empty());
}

// Data groups: corrupt files

TEST(QorDataGroupCorrupt, ZeroSizeFileIsRefused)
{
    const std::string path = qortest::TempPath("zero.grp");
    qortest::WriteAll(path, {});
    QorDataGroup group(kSoundMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
}

TEST(QorDataGroupCorrupt, HeaderTruncatedBeforeTheCountIsRefused)
{
    const std::string path = qortest::TempPath("truncated.grp");
    Bytes bytes = Header(kSoundMagic, 0);
    bytes.pop_back();
    qortest::WriteAll(path, bytes);
    QorDataGroup group(kSoundMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    qortest::WriteAll(path, {'Q', 'S', 'G', ' '});
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
}

TEST(QorDataGroupCorrupt, HugeCountIsRefused)
{
    const std::string path = qortest::TempPath("huge.grp");
    for (std::uint32_t count : {0x7FFFFFFFu, 0xFFFFFFFFu, 0x10000000u})
    {
        Bytes bytes = Header(kSoundMagic, count);
        Put32(bytes, 63);
        PutName(bytes, "a");
        qortest::WriteAll(path, bytes);
        QorDataGroup group(kSoundMagic);
        EXPECT_FALSE(group.Open(path.c_str())) << "count " << count;
        EXPECT_EQ(group.GetCount(), 0u);
    }
}

TEST(QorDataGroupCorrupt, CountOneBeyondTheTableIsRefused)
{
    const std::string path = qortest::TempPath("onemore.grp");
    // Two entries claimed, one entry and some block bytes present: 28 + 35 + 34 < 28 + 70.
    Bytes bytes = Header(kSoundMagic, 2);
    Put32(bytes, 63);
    PutName(bytes, "a");
    bytes.insert(bytes.end(), 34, 'x');
    qortest::WriteAll(path, bytes);
    QorDataGroup group(kSoundMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
}

TEST(QorDataGroupCorrupt, HeaderTruncatedInsideTheNamesTableIsRefused)
{
    const std::string path = qortest::TempPath("names.grp");
    Bytes bytes = Header(kSoundMagic, 2);
    Put32(bytes, 98);
    Put32(bytes, 98);
    PutName(bytes, "first");
    bytes.insert(bytes.end(), {'s', 'e', 'c'});
    qortest::WriteAll(path, bytes);
    QorDataGroup group(kSoundMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("first"), -1);
}

TEST(QorDataGroupCorrupt, HeaderTruncatedInsideTheOffsetsIsRefused)
{
    const std::string path = qortest::TempPath("offsets.grp");
    Bytes bytes = Header(kSoundMagic, 1);
    bytes.insert(bytes.end(), {63, 0});
    qortest::WriteAll(path, bytes);
    QorDataGroup group(kSoundMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
}

TEST(QorDataGroupCorrupt, OffsetBeyondTheFileIsRefused)
{
    const std::string path = qortest::TempPath("offset.grp");
    const std::uint32_t end = 28 + 2 * 35 + 2;
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {end - 2, end + 1}, {"a", "b"}, {'1', '2'}));
    QorDataGroup group(kSoundMagic);
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {0xFFFFFFFFu}, {"a"}, {'1'}));
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
}

TEST(QorDataGroupCorrupt, NameWithoutTerminatorKeepsItsFirstThirtyBytes)
{
    const std::string path = qortest::TempPath("unterminated.grp");
    const std::string full(31, 'k');
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {28 + 35}, {full}, {'v'}));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(std::string(group.GetName(0)), std::string(30, 'k'));
    EXPECT_EQ(group.FindData(full.c_str()), -1);
    EXPECT_EQ(group.FindData(std::string(30, 'k').c_str()), 0);
    RawBlock block;
    EXPECT_TRUE(group.LoadData(&block, std::string(30, 'k').c_str()));
    EXPECT_EQ(Str(block.m_bytes), "v");
}

TEST(QorDataGroupCorrupt, BytesAfterANameTerminatorAreNotPartOfTheName)
{
    const std::string path = qortest::TempPath("garbage.grp");
    std::string field = "ab";
    field += '\0';
    field += "garbage";
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {28 + 35}, {field}, {'v'}));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.FindData("ab"), 0);
    EXPECT_EQ(group.FindData("abgarbage"), -1);
}

TEST(QorDataGroupCorrupt, FailedOpenAfterASuccessLeavesTheGroupEmpty)
{
    const std::string good = qortest::TempPath("good.grp");
    const std::string bad = qortest::TempPath("bad.grp");
    ASSERT_GT(WriteGroup(good, kSoundMagic, {{"a", "1"}}), 0u);
    qortest::WriteAll(bad, Header(kSoundMagic, 0x7FFFFFFF));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(good.c_str()));
    EXPECT_FALSE(group.Open(bad.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
    EXPECT_EQ(group.FindData("a"), -1);
    RawBlock block;
    EXPECT_FALSE(group.LoadData(&block, 0ul));
}

TEST(QorDataGroupCorrupt, CountFillingTheFileExactlyOpens)
{
    const std::string path = qortest::TempPath("exact.grp");
    const std::uint32_t end = 28 + 2 * 35;
    qortest::WriteAll(path, GroupBytes(kSoundMagic, {end, end}, {"a", "b"}, {}));
    QorDataGroup group(kSoundMagic);
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 2u);
    EXPECT_EQ(group.GetBlockSize(0), 0u);
}
