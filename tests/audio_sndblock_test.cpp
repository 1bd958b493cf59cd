// QorSndBlock and QorSndGroup: RIFF wave and QSG reading, conversions, groups of sounds.
#include "test_util.h"

#include "qor/audio.h"
#include "qor/pictures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace
{
using Bytes = std::vector<std::uint8_t>;
using qortest::ReadAll;
using qortest::TempPath;
using qortest::WriteAll;

const std::string kGolden = std::string(QOR_GOLDEN_DIR) + "/audio/";

Bytes Le16(unsigned v)
{
    return {std::uint8_t(v), std::uint8_t(v >> 8)};
}

Bytes Le32(std::uint32_t v)
{
    return {std::uint8_t(v), std::uint8_t(v >> 8), std::uint8_t(v >> 16), std::uint8_t(v >> 24)};
}

Bytes Cat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

Bytes Text(const char* s)
{
    return Bytes(s, s + std::strlen(s));
}

// A chunk: its four-character tag, the payload's size and the payload.
Bytes Chunk(const char* tag, const Bytes& payload)
{
    return Cat({Bytes(tag, tag + 4), Le32(static_cast<std::uint32_t>(payload.size())), payload});
}

Bytes FmtPayload(unsigned tag, unsigned channels, std::uint32_t rate, unsigned bits)
{
    const unsigned align = channels * bits / 8;
    return Cat({Le16(tag), Le16(channels), Le32(rate), Le32(rate * align), Le16(align), Le16(bits)});
}

// "RIFF", the size of what follows, "WAVE" and the chunks.
Bytes Riff(std::initializer_list<Bytes> chunks)
{
    Bytes body = Text("WAVE");
    for (const Bytes& c : chunks)
        body.insert(body.end(), c.begin(), c.end());
    return Cat({Text("RIFF"), Le32(static_cast<std::uint32_t>(body.size())), body});
}

const Bytes kSamples = {0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0x80};

// 16-bit stereo at 22050 Hz, two frames of samples: the file every reader test starts from.
Bytes PlainWav()
{
    return Riff({Chunk("fmt ", FmtPayload(1, 2, 22050, 16)), Chunk("data", kSamples)});
}

Bytes Data(const QorSndBlock& b)
{
    const unsigned char* d = b.GetDataPtr();
    return d ? Bytes(d, d + b.GetDataSize()) : Bytes();
}

void ExpectEmpty(const QorSndBlock& b)
{
    EXPECT_EQ(b.GetFormatTag(), 0);
    EXPECT_EQ(b.GetChannels(), 0);
    EXPECT_EQ(b.GetSamplesPerSec(), 0);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 0);
    EXPECT_EQ(b.GetBlockAlign(), 0);
    EXPECT_EQ(b.GetBitsPerSample(), 0);
    EXPECT_EQ(b.GetExtraSize(), 0);
    EXPECT_EQ(b.GetDataSize(), 0u);
    EXPECT_EQ(b.GetDataPtr(), nullptr);
}

// A block with samples in it, for the tests that check a failed load leaves nothing behind.
QorSndBlock Loaded()
{
    QorSndBlock b;
    const unsigned char samples[3] = {1, 2, 3};
    EXPECT_TRUE(b.SetSamples(1, 11025, 8, samples, 3));
    return b;
}

struct Opened
{
    std::string path;
    QorFile file;
};

// Writes bytes to a file of this test and opens it for reading.
void OpenBytes(Opened& o, const Bytes& bytes, const char* name = "input.wav")
{
    o.path = TempPath(name);
    WriteAll(o.path, bytes);
    ASSERT_TRUE(o.file.Open(o.path.c_str(), QorFile::kRead));
}

// LoadWAV over bytes must fail: 0, stream back where it started, block empty.
void ExpectWavRefused(const Bytes& bytes, unsigned long prefix = 0)
{
    Bytes content(prefix, 0xEE);
    content.insert(content.end(), bytes.begin(), bytes.end());
    Opened o;
    OpenBytes(o, content);
    if (prefix)
    {
        ASSERT_TRUE(o.file.Seek(prefix, 0, 1));
    }
    QorSndBlock b = Loaded();
    EXPECT_EQ(b.LoadWAV(o.file), 0u);
    EXPECT_EQ(o.file.GetPosition(), prefix);
    EXPECT_EQ(o.file.GetBytesLeft(), bytes.size());
    ExpectEmpty(b);
}

QorSndBlock LoadWavFile(const std::string& path, unsigned long* read = nullptr)
{
    QorFile file;
    EXPECT_TRUE(file.Open(path.c_str(), QorFile::kRead)) << path;
    QorSndBlock b;
    const unsigned long n = b.LoadWAV(file);
    EXPECT_EQ(file.GetPosition(), n);
    if (read)
        *read = n;
    return b;
}

// A block of the given format whose samples are 0, 1, 2, ... (mod 256).
QorSndBlock Counting(short channels, long rate, short bits, unsigned long size)
{
    Bytes samples(size);
    for (unsigned long i = 0; i < size; ++i)
        samples[i] = static_cast<std::uint8_t>(i);
    QorSndBlock b;
    EXPECT_TRUE(b.SetSamples(channels, rate, bits, samples.data(), size));
    return b;
}
} // namespace

TEST(QorSndBlock, NewBlockHasEveryFieldZeroAndNoData)
{
    QorSndBlock b;
    ExpectEmpty(b);
}

TEST(QorSndBlock, ResetFreesTheSamplesAndZeroesEveryField)
{
    QorSndBlock b = Loaded();
    ASSERT_NE(b.GetDataPtr(), nullptr);
    b.Reset();
    ExpectEmpty(b);
}

TEST(QorSndBlock, SetSamplesDescribesAPcmFormatAndCopiesTheSamples)
{
    const unsigned char samples[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    QorSndBlock b;
    ASSERT_TRUE(b.SetSamples(2, 22050, 16, samples, 8));
    EXPECT_EQ(b.GetFormatTag(), 1);
    EXPECT_EQ(b.GetChannels(), 2);
    EXPECT_EQ(b.GetSamplesPerSec(), 22050);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 88200);
    EXPECT_EQ(b.GetBlockAlign(), 4);
    EXPECT_EQ(b.GetBitsPerSample(), 16);
    EXPECT_EQ(b.GetExtraSize(), 0);
    EXPECT_EQ(Data(b), Bytes(samples, samples + 8));
    EXPECT_NE(b.GetDataPtr(), samples);
}

TEST(QorSndBlock, SetSamplesRefusesOtherWidthsChannelsAndRates)
{
    const unsigned char samples[4] = {1, 2, 3, 4};
    QorSndBlock b = Loaded();
    EXPECT_FALSE(b.SetSamples(3, 11025, 8, samples, 4));
    EXPECT_FALSE(b.SetSamples(1, 11025, 12, samples, 4));
    EXPECT_FALSE(b.SetSamples(1, 0, 8, samples, 4));
    EXPECT_FALSE(b.SetSamples(1, 11025, 8, nullptr, 4));
    EXPECT_EQ(Data(b), (Bytes{1, 2, 3}));
    EXPECT_EQ(b.GetSamplesPerSec(), 11025);
}

TEST(QorSndBlock, CopyConstructorAndAssignmentCopyTheSamplesDeeply)
{
    QorSndBlock a = Counting(2, 44100, 16, 12);
    QorSndBlock copy(a);
    EXPECT_NE(copy.GetDataPtr(), a.GetDataPtr());
    EXPECT_EQ(Data(copy), Data(a));
    EXPECT_EQ(copy.GetChannels(), 2);
    EXPECT_EQ(copy.GetSamplesPerSec(), 44100);
    EXPECT_EQ(copy.GetAvgBytesPerSec(), 176400);
    EXPECT_EQ(copy.GetBlockAlign(), 4);
    EXPECT_EQ(copy.GetBitsPerSample(), 16);

    QorSndBlock assigned = Loaded();
    assigned = a;
    EXPECT_NE(assigned.GetDataPtr(), a.GetDataPtr());
    EXPECT_EQ(Data(assigned), Data(a));
    a.GetDataPtr()[0] = 0xAB;
    EXPECT_EQ(copy.GetDataPtr()[0], 0);
    EXPECT_EQ(assigned.GetDataPtr()[0], 0);

    QorSndBlock empty;
    assigned = empty;
    ExpectEmpty(assigned);
}

TEST(QorSndBlock, SelfAssignmentKeepsTheSamples)
{
    QorSndBlock a = Counting(1, 11025, 8, 5);
    QorSndBlock& alias = a;
    a = alias;
    EXPECT_EQ(Data(a), (Bytes{0, 1, 2, 3, 4}));
}

TEST(QorSndBlockWav, PlainFileLoadsEveryFieldAndTheSamplesAndReturnsItsLength)
{
    Opened o;
    const Bytes wav = PlainWav();
    OpenBytes(o, wav);
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), wav.size());
    EXPECT_EQ(wav.size(), 52u);
    EXPECT_EQ(o.file.GetPosition(), 52u);
    EXPECT_EQ(b.GetFormatTag(), 1);
    EXPECT_EQ(b.GetChannels(), 2);
    EXPECT_EQ(b.GetSamplesPerSec(), 22050);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 88200);
    EXPECT_EQ(b.GetBlockAlign(), 4);
    EXPECT_EQ(b.GetBitsPerSample(), 16);
    EXPECT_EQ(b.GetExtraSize(), 0);
    EXPECT_EQ(Data(b), kSamples);
}

TEST(QorSndBlockWav, ReadsFromTheStreamsPositionAndReturnsOnlyTheBytesItMovedOver)
{
    const Bytes wav = PlainWav();
    Opened o;
    OpenBytes(o, Cat({Bytes(7, 0x55), wav, Bytes(5, 0x66)}));
    ASSERT_TRUE(o.file.Seek(7, 0, 1));
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), wav.size());
    EXPECT_EQ(o.file.GetPosition(), 7 + wav.size());
    EXPECT_EQ(o.file.GetBytesLeft(), 5u);
    EXPECT_EQ(Data(b), kSamples);
}

TEST(QorSndBlockWav, FieldsAreReadAsTheFileStatesThemEvenWhenTheyDisagree)
{
    // The reader describes what the file says: bytes per second and block align are not recomputed.
    const Bytes fmt = Cat({Le16(1), Le16(1), Le32(8000), Le32(12345), Le16(3), Le16(8)});
    Opened o;
    OpenBytes(o, Riff({Chunk("fmt ", fmt), Chunk("data", {9, 8, 7})}));
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), 47u);
    EXPECT_EQ(b.GetSamplesPerSec(), 8000);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 12345);
    EXPECT_EQ(b.GetBlockAlign(), 3);
    EXPECT_EQ(Data(b), (Bytes{9, 8, 7}));
}

TEST(QorSndBlockWav, ChunkBetweenFormatAndDataIsSkipped)
{
    const Bytes list = Chunk("LIST", Cat({Text("INFO"), Chunk("ICMT", Text("a comment!"))}));
    const Bytes wav =
        Riff({Chunk("fmt ", FmtPayload(1, 2, 22050, 16)), list, Chunk("fact", Le32(2)), Chunk("data", kSamples)});
    Opened o;
    OpenBytes(o, wav);
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), wav.size());
    EXPECT_EQ(Data(b), kSamples);
    EXPECT_EQ(b.GetChannels(), 2);
}

TEST(QorSndBlockWav, ChunkBeforeFormatIsRefused)
{
    const Bytes list = Chunk("LIST", Cat({Text("INFO"), Chunk("ICMT", Text("a comment!"))}));
    ExpectWavRefused(Riff({list, Chunk("fmt ", FmtPayload(1, 2, 22050, 16)), Chunk("data", kSamples)}));
}

TEST(QorSndBlockWav, EighteenByteFormatChunkLoadsAndItsExtraSizeWordIsNotRead)
{
    // The extra-size word says 7; it is skipped with the rest of the chunk and extraSize stays 0.
    const Bytes wav =
        Riff({Chunk("fmt ", Cat({FmtPayload(1, 1, 11025, 8), Le16(7)})), Chunk("data", {0x80, 0x81, 0x7F})});
    Opened o;
    OpenBytes(o, wav);
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), wav.size());
    EXPECT_EQ(b.GetExtraSize(), 0);
    EXPECT_EQ(b.GetSamplesPerSec(), 11025);
    EXPECT_EQ(Data(b), (Bytes{0x80, 0x81, 0x7F}));
}

TEST(QorSndBlockWav, LongerFormatChunkIsSkippedToItsEnd)
{
    const Bytes wav =
        Riff({Chunk("fmt ", Cat({FmtPayload(1, 2, 44100, 16), Bytes(24, 0xCC)})), Chunk("data", kSamples)});
    Opened o;
    OpenBytes(o, wav);
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), wav.size());
    EXPECT_EQ(Data(b), kSamples);
}

TEST(QorSndBlockWav, FormatTagOtherThanOneIsRefused)
{
    for (unsigned tag : {0u, 2u, 3u, 6u, 0xFFFEu})
        ExpectWavRefused(Riff({Chunk("fmt ", FmtPayload(tag, 2, 22050, 16)), Chunk("data", kSamples)}));
}

TEST(QorSndBlockWav, MisspelledOrMissingTagsAreRefused)
{
    Bytes wav = PlainWav();
    for (std::size_t at : {0u, 3u, 8u, 11u, 12u, 13u, 36u})
    {
        Bytes bad = wav;
        bad[at] = static_cast<std::uint8_t>(bad[at] ^ 0x20);
        SCOPED_TRACE(at);
        ExpectWavRefused(bad);
    }
    // Tags are exact four-byte strings: "fmt" followed by a zero byte is not "fmt ". A misspelled "data"
    // is skipped as a chunk of its own, which then ends at the end of the file.
    Bytes zeroBlank = wav;
    zeroBlank[15] = 0;
    ExpectWavRefused(zeroBlank);
}

TEST(QorSndBlockWav, FileWithoutDataChunkIsRefusedAtItsEnd)
{
    ExpectWavRefused(Riff({Chunk("fmt ", FmtPayload(1, 2, 22050, 16)), Chunk("LIST", Bytes(6, 1))}));
    ExpectWavRefused(Riff({Chunk("fmt ", FmtPayload(1, 2, 22050, 16))}));
}

TEST(QorSndBlockWav, ChunkEndingAtTheEndOfTheFileIsRefused)
{
    // Nothing follows the skipped chunk, so no "data" tag can be read.
    ExpectWavRefused(Riff({Chunk("fmt ", FmtPayload(1, 1, 11025, 8)), Chunk("junk", Bytes(5, 2))}));
}

TEST(QorSndBlockWav, OddChunkSizeIsUsedAsItStands)
{
    // A 3-byte chunk directly followed by "data": no pad byte is expected after it.
    const Bytes wav =
        Riff({Chunk("fmt ", FmtPayload(1, 1, 11025, 8)), Chunk("odd ", {1, 2, 3}), Chunk("data", {4, 5})});
    Opened o;
    OpenBytes(o, wav);
    QorSndBlock b;
    EXPECT_EQ(b.LoadWAV(o.file), wav.size());
    EXPECT_EQ(Data(b), (Bytes{4, 5}));
}

TEST(QorSndBlockWav, PadByteAfterAnOddChunkIsTakenForTheNextTag)
{
    // With the pad byte the next tag is read one byte early ("\0dat") and its size runs past the file.
    ExpectWavRefused(
        Riff({Chunk("fmt ", FmtPayload(1, 1, 11025, 8)), Chunk("odd ", {1, 2, 3}), Bytes{0}, Chunk("data", {4, 5})}));
}

TEST(QorSndBlockWav, DataSizeBeyondTheEndOfTheFileIsRefused)
{
    Bytes wav = Riff({Chunk("fmt ", FmtPayload(1, 1, 11025, 8)), Chunk("data", {1, 2, 3, 4})});
    for (std::uint32_t size : {5u, 0x7FFFFFFFu, 0xFFFFFFFFu})
    {
        Bytes bad = wav;
        const Bytes le = Le32(size);
        std::copy(le.begin(), le.end(), bad.end() - 8);
        SCOPED_TRACE(size);
        ExpectWavRefused(bad);
    }
}

TEST(QorSndBlockWav, ChunkSizeBeyondTheEndOfTheFileIsRefused)
{
    for (std::uint32_t size : {100u, 0x80000000u, 0xFFFFFFFFu})
    {
        const Bytes chunk = Cat({Text("LIST"), Le32(size), Bytes(4, 0)});
        SCOPED_TRACE(size);
        ExpectWavRefused(Riff({Chunk("fmt ", FmtPayload(1, 1, 11025, 8)), chunk, Chunk("data", {1})}));
    }
}

TEST(QorSndBlockWav, FormatChunkShorterThanSixteenBytesIsRefused)
{
    const Bytes shortFmt = Cat({Text("fmt "), Le32(14), FmtPayload(1, 1, 11025, 8)});
    ExpectWavRefused(Cat({Text("RIFF"), Le32(100), Text("WAVE"), shortFmt, Chunk("data", {1, 2})}));
}

TEST(QorSndBlockWav, FormatChunkLongerThanTheFileIsRefused)
{
    const Bytes longFmt = Cat({Text("fmt "), Le32(0xFFFFFFF0u), FmtPayload(1, 1, 11025, 8)});
    ExpectWavRefused(Cat({Text("RIFF"), Le32(100), Text("WAVE"), longFmt, Chunk("data", {1, 2})}));
}

TEST(QorSndBlockWav, EveryTruncationOfAValidFileIsRefusedAndRestoresThePosition)
{
    const Bytes wav = Riff({Chunk("fmt ", Cat({FmtPayload(1, 2, 22050, 16), Le16(0)})), Chunk("LIST", Bytes(6, 3)),
                            Chunk("data", kSamples)});
    for (std::size_t n = 0; n < wav.size(); ++n)
    {
        SCOPED_TRACE(n);
        ExpectWavRefused(Bytes(wav.begin(), wav.begin() + static_cast<long>(n)), 3);
    }
}

TEST(QorSndBlockWav, ZeroDataSizeLoadsASoundWithoutSamples)
{
    const Bytes wav = Riff({Chunk("fmt ", FmtPayload(1, 1, 44100, 16)), Chunk("data", {})});
    Opened o;
    OpenBytes(o, wav);
    QorSndBlock b = Loaded();
    EXPECT_EQ(b.LoadWAV(o.file), 44u);
    EXPECT_EQ(b.GetDataSize(), 0u);
    EXPECT_EQ(b.GetDataPtr(), nullptr);
    EXPECT_EQ(b.GetSamplesPerSec(), 44100);
}

TEST(QorSndBlockWav, ClosedStreamReadsNothingAndEmptiesTheBlock)
{
    QorFile closed;
    QorSndBlock b = Loaded();
    EXPECT_EQ(b.LoadWAV(closed), 0u);
    ExpectEmpty(b);
}

TEST(QorSndBlockSoxFiles, EightBitMono11025LoadsSoxsSamples)
{
    unsigned long read = 0;
    const QorSndBlock b = LoadWavFile(kGolden + "mono8-11025.wav", &read);
    // 551 samples: SoX pads the odd data chunk with one byte, which the reader leaves unread.
    EXPECT_EQ(read, 44u + 551u);
    EXPECT_EQ(ReadAll(kGolden + "mono8-11025.wav").size(), 596u);
    EXPECT_EQ(b.GetFormatTag(), 1);
    EXPECT_EQ(b.GetChannels(), 1);
    EXPECT_EQ(b.GetSamplesPerSec(), 11025);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 11025);
    EXPECT_EQ(b.GetBlockAlign(), 1);
    EXPECT_EQ(b.GetBitsPerSample(), 8);
    EXPECT_EQ(b.GetDataSize(), 551u);
    EXPECT_EQ(Data(b), ReadAll(kGolden + "mono8-11025.raw"));
}

TEST(QorSndBlockSoxFiles, SixteenBitStereo44100LoadsSoxsSamples)
{
    unsigned long read = 0;
    const QorSndBlock b = LoadWavFile(kGolden + "stereo16-44100.wav", &read);
    EXPECT_EQ(read, 1244u);
    EXPECT_EQ(b.GetChannels(), 2);
    EXPECT_EQ(b.GetSamplesPerSec(), 44100);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 176400);
    EXPECT_EQ(b.GetBlockAlign(), 4);
    EXPECT_EQ(b.GetBitsPerSample(), 16);
    EXPECT_EQ(b.GetDataSize(), 1200u);
    EXPECT_EQ(Data(b), ReadAll(kGolden + "stereo16-44100.raw"));
}

TEST(QorSndBlockSoxFiles, ListChunkBeforeDataIsSkipped)
{
    unsigned long read = 0;
    const QorSndBlock b = LoadWavFile(kGolden + "list-22050.wav", &read);
    EXPECT_EQ(read, 876u);
    EXPECT_EQ(b.GetChannels(), 1);
    EXPECT_EQ(b.GetSamplesPerSec(), 22050);
    EXPECT_EQ(b.GetBitsPerSample(), 16);
    EXPECT_EQ(b.GetDataSize(), 800u);
    EXPECT_EQ(Data(b), ReadAll(kGolden + "list-22050.raw"));
}

TEST(QorSndBlockSoxFiles, EighteenByteFormatChunkLoadsWithExtraSizeZero)
{
    unsigned long read = 0;
    const QorSndBlock b = LoadWavFile(kGolden + "fmt18-22050.wav", &read);
    EXPECT_EQ(read, 846u);
    EXPECT_EQ(b.GetExtraSize(), 0);
    EXPECT_EQ(b.GetSamplesPerSec(), 22050);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 44100);
    EXPECT_EQ(b.GetBlockAlign(), 2);
    EXPECT_EQ(Data(b), ReadAll(kGolden + "fmt18-22050.raw"));
}

TEST(QorSndBlockSoxFiles, ALawFileIsRefusedForItsFormatTag)
{
    ExpectWavRefused(ReadAll(kGolden + "alaw-11025.wav"));
}

TEST(QorSndBlockSoxFiles, ConvertedToTheDeviceFormatTheSamplesMatchSoxsDecoding)
{
    // 11025 Hz 8-bit mono to 44100 Hz 16 bits: each sample s becomes four 16-bit samples (s - 128) << 8.
    QorSndBlock b = LoadWavFile(kGolden + "mono8-11025.wav");
    ASSERT_TRUE(b.ConvertFrequency(44100));
    ASSERT_TRUE(b.ConvertSampleBits(16));
    const Bytes raw = ReadAll(kGolden + "mono8-11025.raw");
    ASSERT_EQ(b.GetDataSize(), raw.size() * 8);
    for (std::size_t i = 0; i < raw.size(); ++i)
        for (std::size_t k = 0; k < 4; ++k)
        {
            ASSERT_EQ(b.GetDataPtr()[8 * i + 2 * k], 0) << i;
            ASSERT_EQ(b.GetDataPtr()[8 * i + 2 * k + 1], static_cast<std::uint8_t>(raw[i] - 128)) << i;
        }
}

TEST(QorSndBlockAlsaFiles, EveryInstalledWaveFileLoadsAsMono16Bit48000)
{
    const std::filesystem::path dir = "/usr/share/sounds/alsa";
    if (!std::filesystem::is_directory(dir))
        GTEST_SKIP() << "alsa-utils' sounds are not installed";
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir))
    {
        if (entry.path().extension() != ".wav")
            continue;
        ++files;
        SCOPED_TRACE(entry.path().string());
        const Bytes bytes = ReadAll(entry.path().string());
        ASSERT_GT(bytes.size(), 44u);
        unsigned long read = 0;
        QorSndBlock b = LoadWavFile(entry.path().string(), &read);
        // These files are a 44-byte header and the samples: the reader consumes all of it.
        EXPECT_EQ(read, bytes.size());
        EXPECT_EQ(b.GetFormatTag(), 1);
        EXPECT_EQ(b.GetChannels(), 1);
        EXPECT_EQ(b.GetSamplesPerSec(), 48000);
        EXPECT_EQ(b.GetAvgBytesPerSec(), 96000);
        EXPECT_EQ(b.GetBlockAlign(), 2);
        EXPECT_EQ(b.GetBitsPerSample(), 16);
        EXPECT_EQ(Data(b), Bytes(bytes.begin() + 44, bytes.end()));

        // 48000 is no multiple of 44100: relabelled only. 48000 / 11025 is 4: every fourth frame.
        const Bytes original = Data(b);
        QorSndBlock relabelled(b);
        EXPECT_TRUE(relabelled.ConvertFrequency(44100));
        EXPECT_EQ(Data(relabelled), original);
        EXPECT_EQ(relabelled.GetAvgBytesPerSec(), 88200);
        EXPECT_TRUE(b.ConvertFrequency(11025));
        ASSERT_EQ(b.GetDataSize(), original.size() / 4);
        for (std::size_t i = 0; i < b.GetDataSize(); ++i)
            ASSERT_EQ(b.GetDataPtr()[i], original[i / 2 * 8 + i % 2]) << i;
    }
    EXPECT_GE(files, 1);
}

TEST(QorSndBlockQsg, SaveWritesTheRecordByteForByte)
{
    const unsigned char samples[6] = {0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6};
    QorSndBlock b;
    ASSERT_TRUE(b.SetSamples(2, 22050, 8, samples, 6));
    const std::string path = TempPath("sound.qsg");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    EXPECT_EQ(b.SaveQSG(file), 28u);
    file.Close();
    const Bytes expected = Cat(
        {Le16(1), Le16(2), Le32(22050), Le32(44100), Le16(2), Le16(8), Le16(0), Le32(6), Bytes(samples, samples + 6)});
    EXPECT_EQ(ReadAll(path), expected);
}

TEST(QorSndBlockQsg, RoundTripKeepsEveryFieldAndBothReportDataSizePlus22)
{
    // extraSize is carried by the record: a file-made record with extra size 5 comes back the same.
    const Bytes record = Cat({Le16(1), Le16(1), Le32(44100), Le32(88200), Le16(2), Le16(16), Le16(5), Le32(4),
                              Bytes{0x01, 0x80, 0xFF, 0x7F}});
    Opened o;
    OpenBytes(o, record, "in.qsg");
    QorSndBlock b;
    EXPECT_EQ(b.LoadQSG(o.file), 26u);
    EXPECT_EQ(o.file.GetPosition(), 26u);
    EXPECT_EQ(b.GetExtraSize(), 5);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 88200);

    const std::string out = TempPath("out.qsg");
    QorFile file;
    ASSERT_TRUE(file.Open(out.c_str(), QorFile::kWrite));
    EXPECT_EQ(b.SaveQSG(file), 26u);
    file.Close();
    EXPECT_EQ(ReadAll(out), record);

    QorFile again;
    ASSERT_TRUE(again.Open(out.c_str(), QorFile::kRead));
    QorSndBlock c;
    EXPECT_EQ(c.LoadQSG(again), 26u);
    EXPECT_EQ(c.GetFormatTag(), 1);
    EXPECT_EQ(c.GetChannels(), 1);
    EXPECT_EQ(c.GetSamplesPerSec(), 44100);
    EXPECT_EQ(c.GetBlockAlign(), 2);
    EXPECT_EQ(c.GetBitsPerSample(), 16);
    EXPECT_EQ(c.GetExtraSize(), 5);
    EXPECT_EQ(Data(c), (Bytes{0x01, 0x80, 0xFF, 0x7F}));
}

TEST(QorSndBlockQsg, EmptyBlockSavesA22ByteRecord)
{
    QorSndBlock b;
    const std::string path = TempPath("empty.qsg");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    EXPECT_EQ(b.SaveQSG(file), 22u);
    file.Close();
    EXPECT_EQ(ReadAll(path), Bytes(22, 0));
    QorFile closed;
    EXPECT_EQ(b.SaveQSG(closed), 0u);
}

TEST(QorSndBlockQsg, LoadDataAndSaveDataAreTheQsgRecord)
{
    QorSndBlock b = Counting(1, 22050, 16, 10);
    QorDataBlock& asBlock = b;
    const std::string path = TempPath("block.qsg");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    EXPECT_EQ(asBlock.SaveData(file), 32u);
    file.Close();
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    QorSndBlock c;
    QorDataBlock& cBlock = c;
    EXPECT_EQ(cBlock.LoadData(file), 32u);
    EXPECT_EQ(Data(c), Data(b));
}

TEST(QorSndBlockQsg, ShortRecordsAreRefusedAndRestoreThePosition)
{
    const Bytes record =
        Cat({Le16(1), Le16(1), Le32(11025), Le32(11025), Le16(1), Le16(8), Le16(0), Le32(3), Bytes{1, 2, 3}});
    for (std::size_t n = 0; n < record.size(); ++n)
    {
        SCOPED_TRACE(n);
        Opened o;
        OpenBytes(o, Cat({Bytes(2, 0), Bytes(record.begin(), record.begin() + static_cast<long>(n))}), "short.qsg");
        ASSERT_TRUE(o.file.Seek(2, 0, 1));
        QorSndBlock b = Loaded();
        EXPECT_EQ(b.LoadQSG(o.file), 0u);
        EXPECT_EQ(o.file.GetPosition(), 2u);
        ExpectEmpty(b);
    }
}

TEST(QorSndBlockQsg, HugeDataSizeIsRefusedWithoutAllocating)
{
    const Bytes record =
        Cat({Le16(1), Le16(1), Le32(11025), Le32(11025), Le16(1), Le16(8), Le16(0), Le32(0xFFFFFFF0u), Bytes(8, 1)});
    Opened o;
    OpenBytes(o, record, "huge.qsg");
    QorSndBlock b;
    EXPECT_EQ(b.LoadQSG(o.file), 0u);
    EXPECT_EQ(o.file.GetPosition(), 0u);
    ExpectEmpty(b);
}

TEST(QorSndBlockConvert, SameRateReturnsOneAndChangesNothing)
{
    QorSndBlock b = Counting(1, 16000, 8, 6);
    const unsigned char* before = b.GetDataPtr();
    EXPECT_TRUE(b.ConvertFrequency(16000));
    EXPECT_EQ(b.GetDataPtr(), before);
    EXPECT_EQ(b.GetSamplesPerSec(), 16000);
    EXPECT_EQ(b.GetDataSize(), 6u);
}

TEST(QorSndBlockConvert, RatesOtherThan11025_22050_44100AreRefused)
{
    QorSndBlock b = Counting(1, 11025, 8, 6);
    for (long rate : {0L, 8000L, 16000L, 32000L, 48000L, 88200L, -11025L})
    {
        EXPECT_FALSE(b.ConvertFrequency(rate)) << rate;
        EXPECT_EQ(b.GetSamplesPerSec(), 11025);
        EXPECT_EQ(b.GetDataSize(), 6u);
    }
}

TEST(QorSndBlockConvert, Raising22050To44100DoublesTheSizeAndRepeatsEachFrameTwice)
{
    // Stereo 16-bit: 4-byte frames 00-03, 04-07, 08-0B.
    QorSndBlock b = Counting(2, 22050, 16, 12);
    ASSERT_TRUE(b.ConvertFrequency(44100));
    EXPECT_EQ(b.GetDataSize(), 24u);
    EXPECT_EQ(b.GetSamplesPerSec(), 44100);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 176400);
    EXPECT_EQ(b.GetBlockAlign(), 4);
    EXPECT_EQ(Data(b), (Bytes{0, 1, 2, 3, 0, 1, 2, 3, 4, 5, 6, 7, 4, 5, 6, 7, 8, 9, 10, 11, 8, 9, 10, 11}));
}

TEST(QorSndBlockConvert, Lowering44100To11025KeepsEveryFourthFrame)
{
    // Mono 16-bit, 2-byte frames: frames 0, 4 and 8 of ten survive.
    QorSndBlock b = Counting(1, 44100, 16, 20);
    ASSERT_TRUE(b.ConvertFrequency(11025));
    EXPECT_EQ(b.GetDataSize(), 5u);
    EXPECT_EQ(b.GetSamplesPerSec(), 11025);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 22050);
    // Five bytes: two whole frames and the first byte of the third.
    EXPECT_EQ(Data(b), (Bytes{0, 1, 8, 9, 16}));
}

TEST(QorSndBlockConvert, Raising11025To44100RepeatsEachFrameFourTimes)
{
    QorSndBlock b = Counting(1, 11025, 8, 3);
    ASSERT_TRUE(b.ConvertFrequency(44100));
    EXPECT_EQ(Data(b), (Bytes{0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2}));
    EXPECT_EQ(b.GetAvgBytesPerSec(), 44100);
}

TEST(QorSndBlockConvert, Lowering44100To22050KeepsEverySecondFrame)
{
    QorSndBlock b = Counting(2, 44100, 8, 8);
    ASSERT_TRUE(b.ConvertFrequency(22050));
    EXPECT_EQ(Data(b), (Bytes{0, 1, 4, 5}));
}

TEST(QorSndBlockConvert, RateThatIsNotAMultipleIsOnlyRelabelled)
{
    QorSndBlock b = Counting(1, 8000, 8, 7);
    ASSERT_TRUE(b.ConvertFrequency(11025));
    EXPECT_EQ(Data(b), (Bytes{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(b.GetSamplesPerSec(), 11025);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 11025);

    // 8000 to 22050 is a factor of 2 in integer division.
    QorSndBlock c = Counting(1, 8000, 8, 2);
    ASSERT_TRUE(c.ConvertFrequency(22050));
    EXPECT_EQ(Data(c), (Bytes{0, 0, 1, 1}));
}

TEST(QorSndBlockConvert, PartialTrailingFrameIsRepeatedLikeTheOthers)
{
    // Five bytes of 2-byte frames: frames 00-01, 02-03 and a lone byte 04.
    QorSndBlock b = Counting(1, 22050, 16, 5);
    ASSERT_TRUE(b.ConvertFrequency(44100));
    EXPECT_EQ(Data(b), (Bytes{0, 1, 0, 1, 2, 3, 2, 3, 4, 4}));
}

TEST(QorSndBlockConvert, BlockWithoutRateOrFrameSizeIsRefused)
{
    QorSndBlock empty;
    EXPECT_FALSE(empty.ConvertFrequency(44100));
    ExpectEmpty(empty);

    // A QSG record may state any fields; a zero block align gives no frame to repeat.
    const Bytes record =
        Cat({Le16(1), Le16(1), Le32(11025), Le32(11025), Le16(0), Le16(8), Le16(0), Le32(2), Bytes{1, 2}});
    Opened o;
    OpenBytes(o, record, "noalign.qsg");
    QorSndBlock b;
    ASSERT_EQ(b.LoadQSG(o.file), 24u);
    EXPECT_FALSE(b.ConvertFrequency(44100));
    EXPECT_EQ(b.GetSamplesPerSec(), 11025);
    EXPECT_EQ(Data(b), (Bytes{1, 2}));
}

TEST(QorSndBlockBits, EightToSixteenPutsTheSampleMinus128InTheHighByte)
{
    const unsigned char samples[4] = {0x80, 0xFF, 0x00, 0x81};
    QorSndBlock b;
    ASSERT_TRUE(b.SetSamples(1, 11025, 8, samples, 4));
    ASSERT_TRUE(b.ConvertSampleBits(16));
    EXPECT_EQ(b.GetDataSize(), 8u);
    // 0x80 -> 0x0000, 0xFF -> 0x7F00, 0x00 -> 0x8000, 0x81 -> 0x0100 (little-endian).
    EXPECT_EQ(Data(b), (Bytes{0x00, 0x00, 0x00, 0x7F, 0x00, 0x80, 0x00, 0x01}));
}

TEST(QorSndBlockBits, SixteenToEightKeepsTheHighBytePlus128)
{
    // 0x8000 -> 0x00, 0x7FFF -> 0xFF, 0x0000 -> 0x80, 0x01FF -> 0x81; the odd last byte is dropped.
    const unsigned char samples[9] = {0x00, 0x80, 0xFF, 0x7F, 0x00, 0x00, 0xFF, 0x01, 0x55};
    QorSndBlock b;
    ASSERT_TRUE(b.SetSamples(1, 11025, 16, samples, 9));
    ASSERT_TRUE(b.ConvertSampleBits(8));
    EXPECT_EQ(b.GetDataSize(), 4u);
    EXPECT_EQ(Data(b), (Bytes{0x00, 0xFF, 0x80, 0x81}));
}

TEST(QorSndBlockBits, OnlyTheDataChangesTheFormatFieldsKeepTheirOldValues)
{
    QorSndBlock b = Counting(2, 22050, 8, 4);
    ASSERT_TRUE(b.ConvertSampleBits(16));
    EXPECT_EQ(b.GetBitsPerSample(), 8);
    EXPECT_EQ(b.GetBlockAlign(), 2);
    EXPECT_EQ(b.GetAvgBytesPerSec(), 44100);
    EXPECT_EQ(b.GetDataSize(), 8u);
    // The field still says 8 bits, so asking for 8 bits now changes nothing.
    EXPECT_TRUE(b.ConvertSampleBits(8));
    EXPECT_EQ(b.GetDataSize(), 8u);
}

TEST(QorSndBlockBits, SameWidthReturnsOneAndOtherPairsAreRefused)
{
    QorSndBlock b = Counting(1, 11025, 8, 4);
    EXPECT_TRUE(b.ConvertSampleBits(8));
    EXPECT_FALSE(b.ConvertSampleBits(24));
    EXPECT_FALSE(b.ConvertSampleBits(4));
    EXPECT_EQ(Data(b), (Bytes{0, 1, 2, 3}));

    const Bytes record =
        Cat({Le16(1), Le16(1), Le32(11025), Le32(33075), Le16(3), Le16(24), Le16(0), Le32(3), Bytes{1, 2, 3}});
    Opened o;
    OpenBytes(o, record, "24bit.qsg");
    QorSndBlock deep;
    ASSERT_EQ(deep.LoadQSG(o.file), 25u);
    EXPECT_FALSE(deep.ConvertSampleBits(8));
    EXPECT_FALSE(deep.ConvertSampleBits(16));
    EXPECT_EQ(Data(deep), (Bytes{1, 2, 3}));
}

TEST(QorSndGroup, MagicIsQsgAndABlank)
{
    EXPECT_EQ(std::memcmp(QorSndGroup().GetMagic(), "QSG ", 4), 0);
}

TEST(QorSndGroup, SoundsLoadByNameAndByIndex)
{
    QorSndBlock a = Counting(1, 11025, 8, 5);
    QorSndBlock c = Counting(2, 44100, 16, 8);
    QorDataGroupWriter writer(QorSndGroup::kMagic);
    ASSERT_TRUE(writer.Add("click", &a));
    ASSERT_TRUE(writer.Add("Bell", &c));
    const std::string path = TempPath("sounds.qsg");
    ASSERT_EQ(writer.Write(path.c_str()), 28u + 2 * 35 + 27 + 30);
    EXPECT_EQ(std::memcmp(ReadAll(path).data(), "QSG ", 4), 0);

    QorSndGroup group;
    ASSERT_TRUE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 2u);
    QorSndBlock byName;
    ASSERT_TRUE(group.LoadData(&byName, "Bell"));
    EXPECT_EQ(Data(byName), Data(c));
    EXPECT_EQ(byName.GetSamplesPerSec(), 44100);
    QorSndBlock byIndex;
    ASSERT_TRUE(group.LoadData(&byIndex, 0ul));
    EXPECT_EQ(Data(byIndex), Data(a));
    EXPECT_FALSE(group.LoadData(&byIndex, "bell"));
    EXPECT_FALSE(group.LoadData(&byIndex, 2ul));
}

TEST(QorSndGroup, PictureGroupFileDoesNotOpenAsASoundGroup)
{
    QorPicBlock picture(QorPicBlock::Bit8, 2, 2);
    QorDataGroupWriter writer(QorPicGroup::kMagic);
    ASSERT_TRUE(writer.Add("pic", &picture));
    const std::string path = TempPath("pictures.grp");
    ASSERT_GT(writer.Write(path.c_str()), 0u);
    QorSndGroup group;
    EXPECT_FALSE(group.Open(path.c_str()));
    EXPECT_EQ(group.GetCount(), 0u);
}

TEST(QorSndGroup, RecordClaimingMoreThanItsBlockLeavesTheSoundEmpty)
{
    // The first record's data size reaches into the second block: the group hands it only its own bytes.
    QorSndBlock a = Counting(1, 11025, 8, 4);
    QorSndBlock b = Counting(1, 11025, 8, 40);
    QorDataGroupWriter writer(QorSndGroup::kMagic);
    ASSERT_TRUE(writer.Add("a", &a));
    ASSERT_TRUE(writer.Add("b", &b));
    const std::string path = TempPath("overlap.qsg");
    ASSERT_GT(writer.Write(path.c_str()), 0u);
    Bytes bytes = ReadAll(path);
    const std::size_t first = 28 + 2 * 35;
    const Bytes size = Le32(30);
    std::copy(size.begin(), size.end(), bytes.begin() + static_cast<long>(first + 18));
    WriteAll(path, bytes);

    QorSndGroup group;
    ASSERT_TRUE(group.Open(path.c_str()));
    QorSndBlock loaded = Loaded();
    EXPECT_TRUE(group.LoadData(&loaded, "a"));
    ExpectEmpty(loaded);
    EXPECT_TRUE(group.LoadData(&loaded, "b"));
    EXPECT_EQ(Data(loaded), Data(b));
}
