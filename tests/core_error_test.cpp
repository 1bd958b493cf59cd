// QorGetLastError: the text every reader leaves when it refuses a file (missing, empty, truncated or
// forged), beside return values that stay what they were.
#include "test_util.h"

#include "qor/audio.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using Bytes = std::vector<std::uint8_t>;
using qortest::TempPath;
using qortest::WriteAll;

std::string LastError()
{
    return QorGetLastError();
}

void Put(Bytes& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

// A QBM file: tag, version, reserved words, type, 16-bit width and height, then pixels and mask colour.
Bytes Qbm(const char* tag, std::uint32_t type, std::uint32_t w, std::uint32_t h, std::size_t pixelBytes)
{
    Bytes out(tag, tag + 4);
    Put(out, 0x00010000, 4);
    out.resize(24, 0);
    Put(out, type, 4);
    Put(out, w, 2);
    Put(out, h, 2);
    out.resize(out.size() + pixelBytes, 7);
    return out;
}

// Writes bytes to a file of the test and opens it for reading.
std::string Written(const std::string& name, const Bytes& bytes)
{
    const std::string path = TempPath(name);
    WriteAll(path, bytes);
    return path;
}

unsigned long LoadQbm(const std::string& path)
{
    QorFile file;
    EXPECT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    QorPicBlock picture;
    return picture.LoadQBM(file);
}
} // namespace

TEST(QorLastError, StartsEmptyOnAThreadAndClears)
{
    QorSetError("%s %d", "set", 5);
    EXPECT_EQ(LastError(), "set 5");
    QorClearError();
    EXPECT_EQ(LastError(), "");
}

TEST(QorLastError, OpeningAMissingFileNamesItAndTheReason)
{
    QorFile file;
    EXPECT_EQ(file.Open("tmp/no-such-dir/missing.qbm", QorFile::kRead), 0);
    EXPECT_EQ(LastError(), "tmp/no-such-dir/missing.qbm: cannot open for reading: No such file or directory");
    EXPECT_EQ(file.Open("tmp/x", 7), 0);
    EXPECT_EQ(LastError(), "tmp/x: open mode 7 is not 1 (write), 2 (read) or 3 (append)");
}

TEST(QorLastError, OpenFileKeepsItsPathUntilClosed)
{
    const std::string path = Written("a.bin", Bytes{1, 2});
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    EXPECT_EQ(std::string(file.GetPath()), path);
    file.Close();
    EXPECT_EQ(std::string(file.GetPath()), "");
}

TEST(QorLastError, QbmRefusalsSayWhereAndWhat)
{
    const std::string empty = Written("empty.qbm", Bytes());
    EXPECT_EQ(LoadQbm(empty), 0u);
    EXPECT_EQ(LastError(), empty + ": byte 0: the file is empty");

    Bytes header = Qbm("BMPQ", 3, 2, 2, 0);
    header.resize(20);
    const std::string shortHeader = Written("short.qbm", header);
    EXPECT_EQ(LoadQbm(shortHeader), 0u);
    EXPECT_EQ(LastError(), shortHeader + ": byte 20: truncated: 20 of the 32 bytes of the QBM header");

    const std::string forged = Written("forged.qbm", Qbm("PNGX", 3, 2, 2, 15));
    EXPECT_EQ(LoadQbm(forged), 0u);
    EXPECT_EQ(LastError(), forged + ": byte 0: not a QBM picture: the tag is \"PNGX\", not \"BMPQ\"");

    const std::string pixels = Written("pixels.qbm", Qbm("BMPQ", 3, 4, 4, 10));
    EXPECT_EQ(LoadQbm(pixels), 0u);
    EXPECT_EQ(LastError(), pixels + ": byte 32: truncated: a 4 x 4 picture needs 48 pixel bytes, 10 left");

    const std::string type = Written("type.qbm", Qbm("BMPQ", 9, 1, 1, 8));
    EXPECT_EQ(LoadQbm(type), 0u);
    EXPECT_EQ(LastError(), type + ": byte 0: picture type 9 is not 1 to 4");
}

TEST(QorLastError, QgbAndFixRefusalsSayWhereAndWhat)
{
    Bytes qgb;
    Put(qgb, 2, 4);
    Put(qgb, 3, 4);
    const std::string truncated = Written("short.qgb", qgb);
    QorFile file;
    ASSERT_TRUE(file.Open(truncated.c_str(), QorFile::kRead));
    QorPicBlock picture;
    EXPECT_EQ(picture.LoadQGB(file), 0u);
    EXPECT_EQ(LastError(), truncated + ": byte 8: truncated: 8 of the 12 bytes of the QGB header");

    // A FIX picture's size comes from the caller; a short file is a short read, a size past 4 GiB a refusal.
    const std::string fix = Written("huge.fix", Bytes(5, 1));
    ASSERT_TRUE(file.Open(fix.c_str(), QorFile::kRead));
    QorString size("FIX  70000 70000");
    EXPECT_EQ(picture.LoadFix(file, size), 0u);
    EXPECT_EQ(LastError(), fix + ": byte 0: a 70000 x 70000 FIX picture is larger than any picture can be");
}

TEST(QorLastError, BmpRefusalsSayWhereAndWhat)
{
    BITMAPINFOHEADER header = {};
    unsigned char* bits = nullptr;
    EXPECT_EQ(LoadBMP("tmp/missing.bmp", &header, &bits), 0);
    EXPECT_EQ(LastError(), "tmp/missing.bmp: cannot open for reading: No such file or directory");

    const std::string empty = Written("empty.bmp", Bytes());
    EXPECT_EQ(LoadBMP(empty.c_str(), &header, &bits), 0);
    EXPECT_EQ(LastError(), empty + ": byte 0: the file is empty");

    Bytes forgedBytes = {'P', 'K'};
    forgedBytes.resize(60, 0);
    const std::string forged = Written("forged.bmp", forgedBytes);
    EXPECT_EQ(LoadBMP(forged.c_str(), &header, &bits), 0);
    EXPECT_EQ(LastError(), forged + ": byte 0: not a BMP file: the tag is \"PK\", not \"BM\"");

    // A 4 x 4, 24-bit header whose file ends after two of the rows.
    Bytes bmp = {'B', 'M'};
    Put(bmp, 54 + 48, 4);
    Put(bmp, 0, 4);
    Put(bmp, 54, 4);
    Put(bmp, 40, 4);
    Put(bmp, 4, 4);
    Put(bmp, 4, 4);
    Put(bmp, 1, 2);
    Put(bmp, 24, 2);
    bmp.resize(54 + 24, 0);
    const std::string truncated = Written("truncated.bmp", bmp);
    EXPECT_EQ(LoadBMP(truncated.c_str(), &header, &bits), 0);
    EXPECT_EQ(LastError(), truncated + ": byte 2: truncated: the header claims 102 bytes with pixels from byte 54, "
                                       "the file has 78");
    EXPECT_EQ(bits, nullptr);
}

TEST(QorLastError, GroupRefusalsSayWhereAndWhat)
{
    QorPicGroup group;
    EXPECT_EQ(group.Open("tmp/missing.qpg"), 0);
    EXPECT_EQ(LastError(), "tmp/missing.qpg: cannot open for reading: No such file or directory");

    const std::string empty = Written("empty.qpg", Bytes());
    EXPECT_EQ(group.Open(empty.c_str()), 0);
    EXPECT_EQ(LastError(), empty + ": byte 0: the file is empty");

    Bytes forgedBytes = {'R', 'I', 'F', 'F'};
    forgedBytes.resize(28, 0);
    const std::string forged = Written("forged.qpg", forgedBytes);
    EXPECT_EQ(group.Open(forged.c_str()), 0);
    EXPECT_EQ(LastError(), forged + ": byte 0: not this kind of group: the magic is 52 49 46 46, not 00 42 47 51");

    Bytes huge(QorPicGroup::kMagic, QorPicGroup::kMagic + 4);
    huge.resize(24, 0);
    Put(huge, 1000, 4);
    huge.resize(60, 0);
    const std::string truncated = Written("truncated.qpg", huge);
    EXPECT_EQ(group.Open(truncated.c_str()), 0);
    EXPECT_EQ(LastError(), truncated + ": byte 24: truncated: 1000 blocks need a 35000-byte table, the file has 32 "
                                       "bytes after the header");

    Bytes one(QorPicGroup::kMagic, QorPicGroup::kMagic + 4);
    one.resize(24, 0);
    Put(one, 0, 4);
    const std::string none = Written("none.qpg", one);
    ASSERT_EQ(group.Open(none.c_str()), 1);
    QorPicBlock picture;
    EXPECT_EQ(group.LoadData(&picture, "hero"), 0);
    EXPECT_EQ(LastError(), none + ": no block named \"hero\"");
}

TEST(QorLastError, SoundRefusalsSayWhereAndWhat)
{
    QorSndBlock sound;
    QorFile file;
    const std::string empty = Written("empty.wav", Bytes());
    ASSERT_TRUE(file.Open(empty.c_str(), QorFile::kRead));
    EXPECT_EQ(sound.LoadWAV(file), 0u);
    EXPECT_EQ(LastError(), empty + ": byte 0: the file is empty");

    const std::string forged = Written("forged.wav", Bytes{'R', 'I', 'F', 'X', 4, 0, 0, 0, 'W', 'A', 'V', 'E'});
    ASSERT_TRUE(file.Open(forged.c_str(), QorFile::kRead));
    EXPECT_EQ(sound.LoadWAV(file), 0u);
    EXPECT_EQ(LastError(), forged + ": byte 0: not a RIFF wave: the tag is \"RIFX\", not \"RIFF\"");

    Bytes wav = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    Put(wav, 16, 4);
    Put(wav, 1, 2);
    Put(wav, 1, 2);
    Put(wav, 11025, 4);
    Put(wav, 11025, 4);
    Put(wav, 1, 2);
    Put(wav, 8, 2);
    wav.insert(wav.end(), {'d', 'a', 't', 'a'});
    Put(wav, 100, 4);
    wav.resize(wav.size() + 10, 128);
    const std::string truncated = Written("truncated.wav", wav);
    ASSERT_TRUE(file.Open(truncated.c_str(), QorFile::kRead));
    EXPECT_EQ(sound.LoadWAV(file), 0u);
    EXPECT_EQ(LastError(),
              truncated + ": byte 44: truncated: the \"data\" chunk claims more bytes than the file holds");

    Bytes qsg;
    Put(qsg, 1, 2);
    Put(qsg, 1, 2);
    Put(qsg, 11025, 4);
    Put(qsg, 11025, 4);
    Put(qsg, 1, 2);
    Put(qsg, 8, 2);
    Put(qsg, 0, 2);
    Put(qsg, 50, 4);
    qsg.resize(qsg.size() + 20, 128);
    const std::string shortQsg = Written("short.qsg", qsg);
    ASSERT_TRUE(file.Open(shortQsg.c_str(), QorFile::kRead));
    EXPECT_EQ(sound.LoadQSG(file), 0u);
    EXPECT_EQ(LastError(), shortQsg + ": byte 22: truncated QSG sound: 50 sample bytes announced, 20 left");
}
