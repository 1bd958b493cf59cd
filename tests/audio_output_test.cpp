// QorAudio and the wave output device: device choice, the sound table, playing, volume. Each test runs
// in a process of its own (the port is chosen once per process): the headless tests play on the manual
// clock, the SDL tests on SDL's disk driver (which writes what it plays to a file) or its dummy driver.
#include "audio_util.h"
#include "test_util.h"

#include "qor/audio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace
{
using Bytes = std::vector<std::uint8_t>;
using qortest::ReadAll;
using qortest::Sound;
using qortest::TempPath;

// Exposes the protected table for the tests that need to reach a slot.
class TestAudio : public QorAudio
{
public:
    using QorAudio::CreateNewSnd;
    using QorAudio::KillSnd;
    stSoundSlot& Slot(unsigned long index) { return m_sounds[index]; }
    std::uint32_t GetNextSoundId() const { return m_nextSoundId; }
};


// size bytes: first, first + step, ... (mod 256).
Bytes Ramp(std::size_t size, unsigned first, unsigned step)
{
    Bytes out(size);
    for (std::size_t i = 0; i < size; ++i)
        out[i] = static_cast<std::uint8_t>(first + i * step);
    return out;
}

Bytes Data(const QorSndBlock* b)
{
    if (!b || !b->GetDataPtr())
        return Bytes();
    return Bytes(b->GetDataPtr(), b->GetDataPtr() + b->GetDataSize());
}

Bytes Cat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

// Writes a sound group of the named blocks into a file of this test and opens it.
void MakeGroup(QorSndGroup& group, std::vector<std::pair<const char*, QorSndBlock*>> blocks,
               const char* name = "sounds.qsg")
{
    QorDataGroupWriter writer(QorSndGroup::kMagic);
    for (auto& entry : blocks)
        ASSERT_TRUE(writer.Add(entry.first, entry.second));
    const std::string path = TempPath(name);
    ASSERT_GT(writer.Write(path.c_str()), 0u);
    ASSERT_TRUE(group.Open(path.c_str()));
}

std::uint32_t Bit(int rate, bool stereo, bool sixteen)
{
    return QorWaveFormatBit(rate, stereo, sixteen);
}

void ExpectFormat(const stWaveFormat& f, short channels, long rate, short bits)
{
    EXPECT_EQ(f.formatTag, 1);
    EXPECT_EQ(f.channels, channels);
    EXPECT_EQ(f.samplesPerSec, rate);
    EXPECT_EQ(f.bitsPerSample, bits);
    EXPECT_EQ(f.blockAlign, channels * bits / 8);
    EXPECT_EQ(f.avgBytesPerSec, channels * bits / 8 * rate);
}

// The headless device, brought back to its starting state (one device playing every format).
using HeadlessAudio = qortest::HeadlessAudioTest;

using QorAudioInit = HeadlessAudio;
using QorAudioTable = HeadlessAudio;
using QorAudioPlay = HeadlessAudio;
using QorAudioPortRules = HeadlessAudio;
} // namespace

TEST_F(QorAudioInit, FormatBitsFollowTheWaveApiOrder)
{
    EXPECT_EQ(Bit(0, false, false), 0x001u);
    EXPECT_EQ(Bit(0, true, false), 0x002u);
    EXPECT_EQ(Bit(0, false, true), 0x004u);
    EXPECT_EQ(Bit(0, true, true), 0x008u);
    EXPECT_EQ(Bit(1, false, false), 0x010u);
    EXPECT_EQ(Bit(2, true, true), 0x800u);
}

TEST_F(QorAudioInit, RatesChannelsAndWidthsOutsideTheTwelveFormatsAreRefused)
{
    QorAudio audio;
    EXPECT_EQ(audio.Initialize(1, 16000, 8, 0, 0), 0);
    EXPECT_EQ(audio.Initialize(1, 48000, 16, 0, 0), 0);
    EXPECT_EQ(audio.Initialize(3, 22050, 8, 0, 0), 0);
    EXPECT_EQ(audio.Initialize(0, 22050, 8, 0, 0), 0);
    EXPECT_EQ(audio.Initialize(2, 22050, 12, 0, 0), 0);
    EXPECT_EQ(audio.Initialize(2, 22050, 24, 1, 0), 0);
    EXPECT_EQ(audio.GetDevice(), 0u);
    EXPECT_EQ(port->GetOpenCount(), 0u);
    EXPECT_EQ(audio.GetDeviceCount(), 0u);
}

TEST_F(QorAudioInit, NoDeviceReturnsZeroAndOpensNothing)
{
    port->SetDeviceCount(0);
    QorAudio audio;
    EXPECT_EQ(audio.Initialize(1, 22050, 8, 0, 0), 0);
    EXPECT_EQ(audio.Initialize(1, 22050, 8, 1, 0), 0);
    EXPECT_EQ(port->GetOpenCount(), 0u);
    EXPECT_EQ(audio.GetDevice(), 0u);
}

TEST_F(QorAudioInit, OpensTheDeviceWithThePcmFormat)
{
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 22050, 16, 0, 0), 1);
    ExpectFormat(audio.GetFormat(), 2, 22050, 16);
    EXPECT_EQ(audio.GetFormat().avgBytesPerSec, 88200);
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    EXPECT_NE(audio.GetDevice(), 0u);
    EXPECT_EQ(audio.GetDeviceCount(), 1u);
    EXPECT_STREQ(audio.GetDeviceCaps().name, "Headless output 0");
    EXPECT_EQ(audio.IsDisabled(), 0);
    for (unsigned long i = 0; i < 12; ++i)
        EXPECT_EQ(audio.GetFormatSupport(i), 1) << i;
    EXPECT_EQ(audio.GetFormatSupport(12), 0);
    EXPECT_EQ(port->GetOpenCount(), 1u);
    EXPECT_EQ(port->GetLastOpenedDevice(), 0);
    ExpectFormat(port->GetLastOpenedFormat(), 2, 22050, 16);
}

TEST_F(QorAudioInit, TwelveFlagsAreIndexedByRateTimesFourPlusStereoTimesTwoPlusSixteenBits)
{
    // Stereo 8-bit at 11025 Hz is flag 2; mono 16-bit at 44100 Hz is flag 9.
    port->SetDeviceFormats(0, Bit(0, true, false) | Bit(2, false, true));
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 11025, 8, 0, 0), 1);
    for (unsigned long i = 0; i < 12; ++i)
        EXPECT_EQ(audio.GetFormatSupport(i), i == 2 || i == 9 ? 1 : 0) << i;
    ExpectFormat(audio.GetFormat(), 2, 11025, 8);
    EXPECT_EQ(audio.GetFormat().avgBytesPerSec, 22050);
    EXPECT_NE(audio.GetDevice(), 0u);
}

TEST_F(QorAudioInit, LaterDeviceThatPlaysTheFormatIsChosen)
{
    port->SetDeviceCount(3);
    port->SetDeviceFormats(0, 0);
    port->SetDeviceFormats(1, Bit(0, false, false));
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 11025, 8, 0, 0), 1);
    EXPECT_EQ(port->GetLastOpenedDevice(), 1);
    EXPECT_STREQ(audio.GetDeviceCaps().name, "Headless output 1");
    EXPECT_EQ(audio.GetFormatSupport(0), 1);
    EXPECT_EQ(audio.GetFormatSupport(1), 0);
    EXPECT_EQ(audio.GetDeviceCount(), 3u);
}

TEST_F(QorAudioInit, WhenNoDevicePlaysTheFormatNothingIsOpened)
{
    port->SetDeviceCount(2);
    port->SetDeviceFormats(0, Bit(1, true, true));
    port->SetDeviceFormats(1, Bit(2, true, false));
    QorAudio audio;
    EXPECT_EQ(audio.Initialize(1, 22050, 16, 0, 0), 0);
    EXPECT_EQ(port->GetOpenCount(), 0u);
    // The flags and the capabilities are those of the last device examined.
    EXPECT_STREQ(audio.GetDeviceCaps().name, "Headless output 1");
    EXPECT_EQ(audio.GetFormatSupport(10), 1);
    EXPECT_EQ(audio.GetFormatSupport(7), 0);
}

TEST_F(QorAudioInit, FirstDeviceOnlyFallsBackToTheLowestRateTheDevicePlays)
{
    // Mono: 16 bits at 44100 and 22050 Hz, 8 bits only at 11025 Hz. The last word is 11025 Hz, 8 bits.
    port->SetDeviceCount(2);
    port->SetDeviceFormats(0, Bit(2, false, true) | Bit(1, false, true) | Bit(0, false, false));
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 44100, 8, 1, 0), 1);
    EXPECT_EQ(port->GetLastOpenedDevice(), 0);
    ExpectFormat(audio.GetFormat(), 1, 11025, 8);
    ExpectFormat(port->GetLastOpenedFormat(), 1, 11025, 8);
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
}

TEST_F(QorAudioInit, FallbackTakesSixteenBitsBeforeEightAtARate)
{
    port->SetDeviceFormats(0, Bit(2, false, true) | Bit(2, false, false));
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 22050, 8, 1, 0), 1);
    ExpectFormat(audio.GetFormat(), 1, 44100, 16);
}

TEST_F(QorAudioInit, FallbackKeepsTheRequestedChannels)
{
    // Mono 22050 Hz is played, but the request is stereo: only stereo formats count.
    port->SetDeviceFormats(0, Bit(0, true, true) | Bit(1, false, false) | Bit(2, false, true));
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 8, 1, 0), 1);
    ExpectFormat(audio.GetFormat(), 2, 11025, 16);
}

TEST_F(QorAudioInit, FallbackWithNothingPlayedKeepsTheRequestAndOnlyTheOpenFails)
{
    // Device 1 would play it, but only device 0 is examined.
    port->SetDeviceCount(2);
    port->SetDeviceFormats(0, 0);
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 22050, 16, 1, 0), 1);
    ExpectFormat(audio.GetFormat(), 1, 22050, 16);
    EXPECT_EQ(audio.GetLastResult(), kWaveBadFormat);
    EXPECT_EQ(audio.GetDevice(), 0u);
    EXPECT_EQ(port->GetOpenCount(), 0u);
}

TEST_F(QorAudioInit, FirstDeviceOnlyWithTheFormatPlayedOpensDeviceZero)
{
    port->SetDeviceCount(2);
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 16, 1, 0), 1);
    EXPECT_EQ(port->GetLastOpenedDevice(), 0);
    ExpectFormat(audio.GetFormat(), 2, 44100, 16);
}

TEST_F(QorAudioInit, DisabledLeavesTheFormatAsItWasAndRefusesToPlay)
{
    QorSndBlock tone = Sound(1, 22050, 16, Ramp(40, 1, 3));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 22050, 16, 0, 1), 1);
    EXPECT_EQ(audio.IsDisabled(), 1);
    EXPECT_EQ(audio.GetFormat().formatTag, 0);
    EXPECT_EQ(audio.GetFormat().samplesPerSec, 0);
    // The device is opened with the format as it was, which no device plays.
    EXPECT_EQ(audio.GetLastResult(), kWaveBadFormat);
    EXPECT_EQ(audio.GetDevice(), 0u);

    QorGuider g = audio.CreateSound(group, 0ul);
    ASSERT_TRUE(g.IsValid());
    const unsigned long resets = port->GetResetCount();
    EXPECT_EQ(audio.PlaySound(g), 0);
    EXPECT_EQ(audio.StopSound(), 0);
    EXPECT_EQ(audio.OnTimer(), 0);
    EXPECT_EQ(audio.GetPlaying().identifier, 0u);
    EXPECT_EQ(audio.GetHeader().data, nullptr);
    EXPECT_EQ(audio.GetHeader().flags, 0u);
    EXPECT_EQ(port->GetResetCount(), resets);
}

TEST_F(QorAudioInit, DisabledAfterAnEnabledStartKeepsThePreviousFormat)
{
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    ASSERT_EQ(audio.Initialize(1, 11025, 8, 0, 1), 1);
    ExpectFormat(audio.GetFormat(), 2, 44100, 16);
    // The first device was let go of; the same format opened again.
    EXPECT_EQ(port->GetOpenCount(), 1u);
    ExpectFormat(port->GetLastOpenedFormat(), 2, 44100, 16);
    EXPECT_EQ(audio.IsDisabled(), 1);
}

TEST_F(QorAudioInit, ChoosingTheAudioPortFixesTheChoiceOfPort)
{
    EXPECT_EQ(QorFindAudioPort(), port);
    EXPECT_EQ(&QorGetAudioPort(), port);
    EXPECT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 0);
    EXPECT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
}

TEST_F(QorAudioInit, BufferSizeInTimeAlsoGivesItsBytesInTheOutputFormat)
{
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    audio.SetBuferSizeInTime(250);
    EXPECT_EQ(audio.GetBuferSizeInTime(), 250);
    EXPECT_EQ(audio.GetBuferSizeInBytes(), 44100u);
    audio.SetBuferSizeInTime(10);
    EXPECT_EQ(audio.GetBuferSizeInBytes(), 1764u);
}

TEST_F(QorAudioInit, TimerClickIntegrationAndTheInertMembersAreKept)
{
    QorAudio audio;
    audio.SetTimerClick(55);
    EXPECT_EQ(audio.GetTimerClick(), 55u);
    auto* integration = reinterpret_cast<QorIntegration*>(&audio);
    audio.SetIntegrationPtr(integration);
    EXPECT_EQ(audio.GetIntegrationPtr(), integration);
    EXPECT_EQ(audio.CDOpen(), 0);
    EXPECT_EQ(audio.CDPlayTrack(3), 0);
    audio.CDStop();
    QorGuider any;
    any.identifier = 4;
    const QorGuider channel = audio.CreateChannel(any);
    EXPECT_EQ(channel.identifier, 0u);
    EXPECT_EQ(channel.object, nullptr);
    for (unsigned long i = 0; i < QorAudio::kChannelCount; ++i)
    {
        const QorAudio::SoundChannel& c = audio.GetChannel(i);
        EXPECT_EQ(c.sound, 0u);
        EXPECT_EQ(c.free, 1);
        EXPECT_EQ(c.playing, 0);
        EXPECT_EQ(c.looping, 0);
        EXPECT_EQ(c.position, 0u);
    }
}

TEST_F(QorAudioTable, FiveHundredSoundsFitAndThe501stCreationReturnsANullHandle)
{
    QorSndBlock tone = Sound(1, 11025, 8, {1, 2, 3});
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    std::vector<QorGuider> sounds;
    for (unsigned long i = 0; i < QorAudio::kSoundCount; ++i)
    {
        sounds.push_back(audio->CreateSound(group, 0ul));
        ASSERT_TRUE(sounds.back().IsValid()) << i;
        ASSERT_EQ(sounds.back().identifier, i + 1);
        ASSERT_EQ(sounds.back().tag, 0);
    }
    const QorGuider full = audio->CreateSound(group, 0ul);
    EXPECT_EQ(full.identifier, 0u);
    EXPECT_EQ(full.object, nullptr);
    const QorGuider fullByName = audio->CreateSound(group, "tone");
    EXPECT_EQ(fullByName.object, nullptr);
    EXPECT_EQ(Data(audio->GetSound(sounds[499])), (Bytes{1, 2, 3}));

    // A removed slot is reused with a new number; numbers are never given twice.
    QorGuider removed = sounds[136];
    void* slot = removed.object;
    EXPECT_EQ(audio->RemoveSound(removed), 1);
    EXPECT_EQ(removed.identifier, 0u);
    EXPECT_EQ(removed.object, nullptr);
    const QorGuider again = audio->CreateSound(group, 0ul);
    EXPECT_EQ(again.object, slot);
    EXPECT_EQ(again.identifier, 501u);
    EXPECT_EQ(audio->CreateSound(group, 0ul).object, nullptr);
}

TEST_F(QorAudioTable, RemoveSoundRefusesNullStaleAndInUseHandles)
{
    QorSndBlock tone = Sound(1, 11025, 8, {1, 2, 3});
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<TestAudio>();
    QorGuider none;
    EXPECT_EQ(audio->RemoveSound(none), 0);

    QorGuider g = audio->CreateSound(group, 0ul);
    QorGuider copy = g;
    EXPECT_EQ(audio->RemoveSound(g), 1);
    EXPECT_EQ(audio->RemoveSound(copy), 0);
    EXPECT_EQ(copy.identifier, 1u);

    QorGuider used = audio->CreateSound(group, 0ul);
    ASSERT_EQ(used.object, &audio->Slot(0));
    audio->Slot(0).useCount = 1;
    EXPECT_EQ(audio->RemoveSound(used), 0);
    EXPECT_TRUE(used.IsValid());
    EXPECT_EQ(audio->Slot(0).id, 2u);
    audio->Slot(0).useCount = 0;
    EXPECT_EQ(audio->RemoveSound(used), 1);

    // A handle of another audio object names none of this table's sounds.
    auto other = std::make_unique<QorAudio>();
    QorGuider foreign = other->CreateSound(group, 0ul);
    EXPECT_EQ(audio->RemoveSound(foreign), 0);
    EXPECT_EQ(audio->GetSound(foreign), nullptr);
}

TEST_F(QorAudioTable, CreateNewSndAndKillSndTakeAndFreeTheFirstFreeSlot)
{
    auto audio = std::make_unique<TestAudio>();
    const QorGuider a = audio->CreateNewSnd();
    const QorGuider b = audio->CreateNewSnd();
    EXPECT_EQ(a.object, &audio->Slot(0));
    EXPECT_EQ(b.object, &audio->Slot(1));
    const unsigned char samples[2] = {5, 6};
    ASSERT_TRUE(audio->Slot(0).sound.SetSamples(1, 11025, 8, samples, 2));
    audio->Slot(0).useCount = 3;
    audio->KillSnd(0);
    EXPECT_EQ(audio->Slot(0).id, 0u);
    EXPECT_EQ(audio->Slot(0).useCount, 0u);
    EXPECT_EQ(audio->Slot(0).sound.GetDataPtr(), nullptr);
    EXPECT_EQ(audio->Slot(0).sound.GetSamplesPerSec(), 0);
    const QorGuider c = audio->CreateNewSnd();
    EXPECT_EQ(c.object, &audio->Slot(0));
    EXPECT_EQ(c.identifier, 3u);
    EXPECT_EQ(audio->GetNextSoundId(), 4u);
}

TEST_F(QorAudioTable, SoundCreatedByNameIsConvertedAndOneCreatedByIndexIsNot)
{
    QorSndBlock tone = Sound(1, 22050, 8, {0x80, 0xFF, 0x00, 0x90});
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 44100, 16, 0, 0), 1);

    const QorGuider byName = audio->CreateSound(group, "tone");
    const QorSndBlock* converted = audio->GetSound(byName);
    ASSERT_NE(converted, nullptr);
    EXPECT_EQ(converted->GetSamplesPerSec(), 44100);
    // The width field keeps the file's value: only the data are 16-bit now.
    EXPECT_EQ(converted->GetBitsPerSample(), 8);
    EXPECT_EQ(Data(converted),
              (Bytes{0x00, 0x00, 0x00, 0x00, 0x00, 0x7F, 0x00, 0x7F, 0x00, 0x80, 0x00, 0x80, 0x00, 0x10, 0x00, 0x10}));

    const QorGuider byIndex = audio->CreateSound(group, 0ul);
    const QorSndBlock* kept = audio->GetSound(byIndex);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->GetSamplesPerSec(), 22050);
    EXPECT_EQ(kept->GetBitsPerSample(), 8);
    EXPECT_EQ(Data(kept), (Bytes{0x80, 0xFF, 0x00, 0x90}));
}

TEST_F(QorAudioTable, UnknownNameStillTakesASlotWithAnEmptyBlock)
{
    QorSndBlock tone = Sound(1, 22050, 8, {1, 2});
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 44100, 16, 0, 0), 1);
    const QorGuider missing = audio->CreateSound(group, "Tone");
    ASSERT_TRUE(missing.IsValid());
    EXPECT_EQ(missing.identifier, 1u);
    EXPECT_EQ(audio->GetSound(missing)->GetDataSize(), 0u);
    EXPECT_EQ(audio->GetSound(missing)->GetSamplesPerSec(), 0);
    const QorGuider pastEnd = audio->CreateSound(group, 5ul);
    ASSERT_TRUE(pastEnd.IsValid());
    EXPECT_EQ(pastEnd.identifier, 2u);
    EXPECT_EQ(audio->CreateSound(group, "tone").identifier, 3u);
}

TEST_F(QorAudioTable, CopiesDeepCopyTheSlotsAndShareTheDeviceWithoutClosingIt)
{
    QorSndBlock tone = Sound(2, 44100, 16, Ramp(16, 3, 5));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<TestAudio>();
    ASSERT_EQ(audio->Initialize(2, 44100, 16, 0, 0), 1);
    audio->SetTimerClick(20);
    audio->SetBuferSizeInTime(100);
    audio->CreateSound(group, "tone");
    audio->CreateSound(group, 0ul);
    {
        auto copy = std::make_unique<TestAudio>(*audio);
        EXPECT_EQ(copy->Slot(0).id, 1u);
        EXPECT_EQ(copy->Slot(1).id, 2u);
        EXPECT_NE(copy->Slot(0).sound.GetDataPtr(), audio->Slot(0).sound.GetDataPtr());
        EXPECT_EQ(Data(&copy->Slot(0).sound), Data(&audio->Slot(0).sound));
        EXPECT_EQ(copy->GetNextSoundId(), 3u);
        EXPECT_EQ(copy->GetDevice(), audio->GetDevice());
        ExpectFormat(copy->GetFormat(), 2, 44100, 16);
        EXPECT_EQ(copy->GetTimerClick(), 20u);
        EXPECT_EQ(copy->GetBuferSizeInBytes(), 17640u);

        auto assigned = std::make_unique<TestAudio>();
        *assigned = *audio;
        EXPECT_EQ(Data(&assigned->Slot(1).sound), Data(&audio->Slot(1).sound));
        EXPECT_EQ(assigned->GetDevice(), audio->GetDevice());
    }
    EXPECT_EQ(port->GetOpenCount(), 1u);
    audio.reset();
    EXPECT_EQ(port->GetOpenCount(), 0u);
}

TEST_F(QorAudioPlay, PlaySoundRefusesANullOrForeignHandle)
{
    QorSndBlock tone = Sound(1, 11025, 8, {1, 2});
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    auto other = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider none;
    EXPECT_EQ(audio->PlaySound(none), 0);
    QorGuider foreign = other->CreateSound(group, 0ul);
    EXPECT_EQ(audio->PlaySound(foreign), 0);
    EXPECT_EQ(audio->GetPlaying().object, nullptr);
    EXPECT_EQ(audio->GetHeader().flags, 0u);
}

TEST_F(QorAudioPlay, TheWholeSoundGoesToTheDeviceAsOneBufferWithoutACopy)
{
    QorSndBlock tone = Sound(1, 11025, 8, Ramp(300, 1, 1));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, "tone");
    ASSERT_EQ(audio->PlaySound(g), 1);
    EXPECT_EQ(audio->GetLastResult(), kWaveNoError);
    EXPECT_EQ(audio->GetHeader().data, audio->GetSound(g)->GetDataPtr());
    EXPECT_EQ(audio->GetHeader().length, 300u);
    EXPECT_EQ(audio->GetHeader().flags, kWaveHeaderPrepared | kWaveHeaderInQueue);
    EXPECT_EQ(audio->GetPlaying(), g);
    EXPECT_EQ(audio->IsPlaying(), 1);
}

TEST_F(QorAudioPlay, TheDevicePlaysAtTheNominalRateOnTheClock)
{
    // 11025 bytes a second: 2205 bytes last 200 ms.
    const Bytes samples = Ramp(2205, 7, 3);
    QorSndBlock tone = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, "tone");
    ASSERT_EQ(audio->PlaySound(g), 1);
    EXPECT_TRUE(port->GetPlayedBytes().empty());
    clock->Advance(100);
    EXPECT_EQ(audio->IsPlaying(), 1);
    EXPECT_EQ(port->GetPlayedBytes(), Bytes(samples.begin(), samples.begin() + 1102));
    clock->Advance(100);
    EXPECT_EQ(audio->IsPlaying(), 0);
    EXPECT_EQ(port->GetPlayedBytes(), samples);
    EXPECT_EQ(audio->GetHeader().flags, kWaveHeaderDone | kWaveHeaderPrepared);
}

TEST_F(QorAudioPlay, OnTimerLeavesAFinishedBufferThatIsStillPrepared)
{
    QorSndBlock tone = Sound(2, 22050, 16, Ramp(400, 9, 1));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(2, 22050, 16, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, "tone");
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(50);
    const unsigned long resets = port->GetResetCount();
    EXPECT_EQ(audio->OnTimer(), 0);
    // Done and prepared is not exactly done: nothing is released.
    EXPECT_EQ(audio->GetHeader().flags, kWaveHeaderDone | kWaveHeaderPrepared);
    EXPECT_EQ(audio->GetPlaying(), g);
    EXPECT_EQ(port->GetResetCount(), resets);
    EXPECT_EQ(port->GetPlayedBytes().size(), 400u);
}

TEST_F(QorAudioPlay, OnTimerStopsWhenTheFlagsAreExactlyDone)
{
    QorSndBlock tone = Sound(1, 11025, 8, Ramp(100, 1, 1));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    unsigned long resets = port->GetResetCount();
    // Nothing handed over yet: flags 0.
    EXPECT_EQ(audio->OnTimer(), 0);
    EXPECT_EQ(port->GetResetCount(), resets);

    QorGuider g = audio->CreateSound(group, "tone");
    ASSERT_EQ(audio->PlaySound(g), 1);
    ASSERT_EQ(audio->StopSound(), 1);
    EXPECT_EQ(audio->GetHeader().flags, kWaveHeaderDone);
    resets = port->GetResetCount();
    EXPECT_EQ(audio->OnTimer(), 0);
    EXPECT_EQ(port->GetResetCount(), resets + 1);
    EXPECT_EQ(audio->GetHeader().flags, kWaveHeaderDone);
}

TEST_F(QorAudioPlay, StopSoundCutsTheSoundUnpreparesItAndClearsThePlayingHandle)
{
    const Bytes samples = Ramp(2205, 1, 1);
    QorSndBlock tone = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, "tone");
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(40);
    EXPECT_EQ(audio->StopSound(), 1);
    EXPECT_EQ(audio->GetLastResult(), kWaveNoError);
    EXPECT_EQ(audio->GetHeader().flags, kWaveHeaderDone);
    EXPECT_EQ(audio->GetPlaying().object, nullptr);
    EXPECT_EQ(audio->IsPlaying(), 0);
    clock->Advance(500);
    EXPECT_EQ(port->GetPlayedBytes(), Bytes(samples.begin(), samples.begin() + 441));
}

TEST_F(QorAudioPlay, SecondPlaySoundStopsTheFirstAndStartsTheSecond)
{
    const Bytes first = Ramp(2205, 1, 1);
    const Bytes second = Ramp(300, 200, 7);
    QorSndBlock a = Sound(1, 11025, 8, first);
    QorSndBlock b = Sound(1, 11025, 8, second);
    QorSndGroup group;
    MakeGroup(group, {{"a", &a}, {"b", &b}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider ga = audio->CreateSound(group, "a");
    QorGuider gb = audio->CreateSound(group, "b");
    ASSERT_EQ(audio->PlaySound(ga), 1);
    clock->Advance(50);
    const unsigned long resets = port->GetResetCount();
    ASSERT_EQ(audio->PlaySound(gb), 1);
    EXPECT_EQ(port->GetResetCount(), resets + 1);
    EXPECT_EQ(audio->GetPlaying(), gb);
    EXPECT_EQ(audio->GetHeader().data, audio->GetSound(gb)->GetDataPtr());
    clock->Advance(1000);
    EXPECT_EQ(audio->IsPlaying(), 0);
    EXPECT_EQ(port->GetPlayedBytes(), Cat({Bytes(first.begin(), first.begin() + 551), second}));
}

TEST_F(QorAudioPlay, PlayingTheSameSoundAgainStartsItFromTheBeginning)
{
    const Bytes samples = Ramp(1000, 3, 1);
    QorSndBlock a = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"a", &a}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, "a");
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(20);
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(1000);
    EXPECT_EQ(port->GetPlayedBytes(), Cat({Bytes(samples.begin(), samples.begin() + 220), samples}));
}

TEST_F(QorAudioPlay, RemovingThePlayingSoundStopsTheDeviceFirst)
{
    const Bytes samples = Ramp(2205, 1, 1);
    QorSndBlock a = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"a", &a}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, "a");
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(10);
    EXPECT_EQ(audio->RemoveSound(g), 1);
    EXPECT_EQ(audio->GetPlaying().object, nullptr);
    EXPECT_EQ(audio->IsPlaying(), 0);
    clock->Advance(1000);
    EXPECT_EQ(port->GetPlayedBytes(), Bytes(samples.begin(), samples.begin() + 110));
}

TEST_F(QorAudioPlay, VolumeScalesEachChannelOfSixteenBitSamples)
{
    // Left 0xC000 (0.75), right 0x4000 (0.25), truncated toward zero.
    const Bytes samples = {0x00, 0x40, 0x00, 0xC0, 0xFF, 0x7F, 0x00, 0x80, 0x00, 0x00, 0x01, 0x00};
    QorSndBlock tone = Sound(2, 44100, 16, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(2, 44100, 16, 0, 0), 1);
    EXPECT_EQ(audio->GetVolumn(), 0xFFFFFFFFul);
    audio->SetVolumn(0x4000C000);
    EXPECT_EQ(audio->GetLastResult(), kWaveNoError);
    EXPECT_EQ(audio->GetVolumn(), 0x4000C000ul);
    QorGuider g = audio->CreateSound(group, 0ul);
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(10);
    // 0x4000 -> 0x3000, -0x4000 -> -0x1000, 0x7FFF -> 0x5FFF, -0x8000 -> -0x2000, 0 -> 0, 1 -> 0.
    EXPECT_EQ(port->GetPlayedBytes(), (Bytes{0x00, 0x30, 0x00, 0xF0, 0xFF, 0x5F, 0x00, 0xE0, 0x00, 0x00, 0x00, 0x00}));
}

TEST_F(QorAudioPlay, VolumeScalesEightBitSamplesAroundTheMidpointWithTheLowWordOnMono)
{
    const Bytes samples = {0xC0, 0x40, 0x80, 0xFF, 0x00};
    QorSndBlock tone = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    audio->SetVolumn(0x12348000);
    QorGuider g = audio->CreateSound(group, 0ul);
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(10);
    EXPECT_EQ(port->GetPlayedBytes(), (Bytes{0xA0, 0x60, 0x80, 0xBF, 0x40}));
}

TEST_F(QorAudioPlay, VolumeChangedMidwayScalesOnlyWhatIsPlayedAfterIt)
{
    const Bytes samples(2205, 0xC0);
    QorSndBlock tone = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, 0ul);
    ASSERT_EQ(audio->PlaySound(g), 1);
    clock->Advance(100);
    audio->SetVolumn(0);
    clock->Advance(100);
    EXPECT_EQ(port->GetPlayedBytes(), Cat({Bytes(1102, 0xC0), Bytes(2205 - 1102, 0x80)}));
    // The samples themselves are untouched.
    EXPECT_EQ(Data(audio->GetSound(g)), samples);
}

TEST_F(QorAudioPlay, WithoutADeviceTheVolumeIsZeroAndCallsOnlyReportTheBadHandle)
{
    QorAudio audio;
    EXPECT_EQ(audio.GetVolumn(), 0ul);
    EXPECT_EQ(audio.GetLastResult(), kWaveInvalidHandle);
    audio.SetVolumn(5);
    EXPECT_EQ(audio.GetLastResult(), kWaveInvalidHandle);
    EXPECT_EQ(audio.StopSound(), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveInvalidHandle);
}

TEST_F(QorAudioPlay, ExitClosesTheDeviceButNotWhileItPlays)
{
    QorSndBlock tone = Sound(1, 11025, 8, Ramp(2205, 1, 1));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    auto audio = std::make_unique<QorAudio>();
    ASSERT_EQ(audio->Initialize(1, 11025, 8, 0, 0), 1);
    QorGuider g = audio->CreateSound(group, 0ul);
    ASSERT_EQ(audio->PlaySound(g), 1);
    audio->Exit();
    EXPECT_EQ(audio->GetLastResult(), kWaveStillPlaying);
    EXPECT_EQ(port->GetOpenCount(), 1u);
    EXPECT_NE(audio->GetDevice(), 0u);
    ASSERT_EQ(audio->StopSound(), 1);
    audio->Exit();
    EXPECT_EQ(audio->GetLastResult(), kWaveNoError);
    EXPECT_EQ(port->GetOpenCount(), 0u);
    EXPECT_EQ(audio->GetDevice(), 0u);
}

TEST_F(QorAudioPlay, DestroyingThePlayingAudioStopsAndClosesItsDevice)
{
    QorSndBlock tone = Sound(1, 11025, 8, Ramp(2205, 1, 1));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    {
        QorAudio audio;
        ASSERT_EQ(audio.Initialize(1, 11025, 8, 0, 0), 1);
        QorGuider g = audio.CreateSound(group, 0ul);
        ASSERT_EQ(audio.PlaySound(g), 1);
        clock->Advance(20);
        EXPECT_EQ(port->GetOpenCount(), 1u);
    }
    EXPECT_EQ(port->GetOpenCount(), 0u);
    clock->Advance(1000);
    EXPECT_EQ(port->GetPlayedBytes().size(), 220u);
}

TEST_F(QorAudioPortRules, HeaderFlagsFollowPrepareWriteResetAndUnprepare)
{
    stWaveFormat format;
    format.formatTag = 1;
    format.channels = 1;
    format.samplesPerSec = 11025;
    format.avgBytesPerSec = 11025;
    format.blockAlign = 1;
    format.bitsPerSample = 8;
    unsigned long handle = 0;
    ASSERT_EQ(port->Open(handle, 0, format), kWaveNoError);
    ASSERT_NE(handle, 0u);

    unsigned char samples[100] = {};
    stWaveHeader header;
    header.data = samples;
    header.length = sizeof samples;
    EXPECT_EQ(port->Write(handle, header), kWaveUnprepared);
    EXPECT_EQ(port->Prepare(handle, header), kWaveNoError);
    EXPECT_EQ(header.flags, kWaveHeaderPrepared);
    EXPECT_EQ(port->Write(handle, header), kWaveNoError);
    EXPECT_EQ(header.flags, kWaveHeaderPrepared | kWaveHeaderInQueue);
    EXPECT_EQ(port->Write(handle, header), kWaveStillPlaying);
    EXPECT_EQ(port->Unprepare(handle, header), kWaveStillPlaying);
    EXPECT_EQ(port->Close(handle), kWaveStillPlaying);
    EXPECT_EQ(port->Reset(handle), kWaveNoError);
    EXPECT_EQ(port->Unprepare(handle, header), kWaveNoError);
    EXPECT_EQ(header.flags, kWaveHeaderDone);
    EXPECT_EQ(port->Unprepare(handle, header), kWaveNoError);
    EXPECT_EQ(header.flags, kWaveHeaderDone);

    stWaveHeader empty;
    EXPECT_EQ(port->Prepare(handle, empty), kWaveNoError);
    EXPECT_EQ(port->Write(handle, empty), kWaveNoError);
    EXPECT_EQ(port->IsPlaying(handle, empty), 0);
    EXPECT_EQ(empty.flags, kWaveHeaderDone | kWaveHeaderPrepared);

    stWaveHeader noData;
    noData.length = 4;
    EXPECT_EQ(port->Prepare(handle, noData), kWaveInvalidParam);
    EXPECT_EQ(port->Close(handle), kWaveNoError);
    EXPECT_EQ(port->Close(handle), kWaveInvalidHandle);
    EXPECT_EQ(port->Prepare(handle, header), kWaveInvalidHandle);
    EXPECT_EQ(port->Write(handle, header), kWaveInvalidHandle);
    EXPECT_EQ(port->Reset(handle), kWaveInvalidHandle);
    EXPECT_EQ(port->Unprepare(handle, header), kWaveInvalidHandle);
    unsigned long volume = 7;
    EXPECT_EQ(port->GetVolume(handle, volume), kWaveInvalidHandle);
    EXPECT_EQ(volume, 7u);
}

TEST_F(QorAudioPortRules, OpenRefusesBadDevicesAndFormats)
{
    stWaveFormat format;
    format.formatTag = 1;
    format.channels = 2;
    format.samplesPerSec = 22050;
    format.avgBytesPerSec = 88200;
    format.blockAlign = 4;
    format.bitsPerSample = 16;
    unsigned long handle = 99;
    EXPECT_EQ(port->Open(handle, 1, format), kWaveBadDeviceId);
    EXPECT_EQ(handle, 0u);
    stWaveFormat wrongAlign = format;
    wrongAlign.blockAlign = 2;
    EXPECT_EQ(port->Open(handle, 0, wrongAlign), kWaveBadFormat);
    stWaveFormat otherRate = format;
    otherRate.samplesPerSec = 32000;
    otherRate.avgBytesPerSec = 128000;
    EXPECT_EQ(port->Open(handle, 0, otherRate), kWaveBadFormat);
    port->SetDeviceFormats(0, Bit(1, true, false));
    EXPECT_EQ(port->Open(handle, 0, format), kWaveBadFormat);
    stWaveOutCaps caps;
    EXPECT_EQ(port->GetDeviceCaps(1, caps), kWaveBadDeviceId);
    EXPECT_EQ(port->GetDeviceCaps(0, caps), kWaveNoError);
    EXPECT_EQ(caps.formats, Bit(1, true, false));
    EXPECT_EQ(caps.channels, 2);
    EXPECT_EQ(port->GetOpenCount(), 0u);
}

// The SDL2 port. SDL's disk driver writes every buffer it plays, silence included, to the named file.
namespace
{
// Plays until the device is done, on SDL's clock; false after timeoutMs.
bool WaitUntilDone(QorAudio& audio, unsigned long timeoutMs)
{
    QorClock& clock = QorGetClock();
    const unsigned long start = clock.GetMillis();
    while (audio.IsPlaying())
    {
        if (clock.GetMillis() - start > timeoutMs)
            return false;
        clock.Delay(5);
    }
    return true;
}

// Where needle lies in hay, or npos.
std::size_t Find(const Bytes& hay, const Bytes& needle, std::size_t from = 0)
{
    const auto it = std::search(hay.begin() + static_cast<long>(from), hay.end(), needle.begin(), needle.end());
    return it == hay.end() ? std::string::npos : static_cast<std::size_t>(it - hay.begin());
}

bool AllBytesAre(const Bytes& b, std::size_t from, std::size_t to, std::uint8_t value)
{
    return std::all_of(b.begin() + static_cast<long>(from), b.begin() + static_cast<long>(to),
                       [value](std::uint8_t v) { return v == value; });
}

// Chooses the SDL port with the disk driver writing to a file of this test; returns the file's path.
std::string SelectDiskDriver()
{
    EXPECT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "disk"), 1);
    const std::string path = TempPath("played.raw");
    QorSetAudioDeviceName(path.c_str());
    return path;
}

// 16-bit samples whose two bytes are never zero, so silence (zero bytes) cannot be taken for them.
Bytes NonZero16(std::size_t size, unsigned first)
{
    Bytes out(size);
    for (std::size_t i = 0; i < size; ++i)
        out[i] = static_cast<std::uint8_t>(1 + (first + i * 37) % 255);
    return out;
}
} // namespace

TEST(QorAudioSdl, DiskDriverListsADeviceThatOpensEveryFormat)
{
    SelectDiskDriver();
    QorAudioPort& port = QorGetAudioPort();
    EXPECT_EQ(QorGetHeadlessAudioPort(), nullptr);
    ASSERT_GE(port.GetDeviceCount(), 1u);
    stWaveOutCaps caps;
    ASSERT_EQ(port.GetDeviceCaps(0, caps), kWaveNoError);
    EXPECT_EQ(caps.formats, kWaveAllFormats);
    EXPECT_GT(std::strlen(caps.name), 0u);

    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 22050, 16, 0, 0), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    EXPECT_NE(audio.GetDevice(), 0u);
    for (unsigned long i = 0; i < 12; ++i)
        EXPECT_EQ(audio.GetFormatSupport(i), 1) << i;
    audio.Exit();
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    EXPECT_EQ(audio.GetDevice(), 0u);
}

TEST(QorAudioSdl, DiskDriverPlaysExactlyTheSoundsConvertedSamples)
{
    const std::string played = SelectDiskDriver();
    // 11025 Hz 8-bit mono, converted for a 22050 Hz 16-bit device: 0.2 s.
    Bytes samples(2205);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::uint8_t>(0x81 + i % 100);
    QorSndBlock tone = Sound(1, 11025, 8, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 22050, 16, 0, 0), 1);
    ASSERT_NE(audio.GetDevice(), 0u);
    QorGuider g = audio.CreateSound(group, "tone");
    Bytes expected;
    for (std::uint8_t s : samples)
        for (int k = 0; k < 2; ++k)
            expected.insert(expected.end(), {0x00, static_cast<std::uint8_t>(s - 128)});
    ASSERT_EQ(Data(audio.GetSound(g)), expected);

    ASSERT_EQ(audio.PlaySound(g), 1);
    ASSERT_TRUE(WaitUntilDone(audio, 10000));
    audio.OnTimer();
    EXPECT_EQ(audio.GetHeader().flags, kWaveHeaderDone | kWaveHeaderPrepared);
    ASSERT_EQ(audio.StopSound(), 1);
    audio.Exit();
    ASSERT_EQ(audio.GetLastResult(), kWaveNoError);

    // Silence, the converted samples once, silence.
    const Bytes file = ReadAll(played);
    const std::size_t at = Find(file, expected);
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(Find(file, expected, at + 1), std::string::npos);
    EXPECT_TRUE(AllBytesAre(file, 0, at, 0));
    EXPECT_TRUE(AllBytesAre(file, at + expected.size(), file.size(), 0));
}

TEST(QorAudioSdl, DiskDriverShowsASecondPlaySoundCuttingTheFirst)
{
    const std::string played = SelectDiskDriver();
    // 22050 Hz 16-bit mono: the first sound lasts 1 s, the second 0.1 s.
    const Bytes first = NonZero16(44100, 0);
    const Bytes second = NonZero16(4410, 128);
    QorSndBlock a = Sound(1, 22050, 16, first);
    QorSndBlock b = Sound(1, 22050, 16, second);
    QorSndGroup group;
    MakeGroup(group, {{"a", &a}, {"b", &b}});
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(1, 22050, 16, 0, 0), 1);
    QorGuider ga = audio.CreateSound(group, "a");
    QorGuider gb = audio.CreateSound(group, "b");
    ASSERT_EQ(audio.PlaySound(ga), 1);
    QorGetClock().Delay(200);
    ASSERT_EQ(audio.IsPlaying(), 1);
    ASSERT_EQ(audio.PlaySound(gb), 1);
    ASSERT_TRUE(WaitUntilDone(audio, 10000));
    ASSERT_EQ(audio.StopSound(), 1);
    audio.Exit();
    ASSERT_EQ(audio.GetLastResult(), kWaveNoError);

    // Silence, a beginning of the first sound (not all of it), maybe silence, the whole second, silence.
    const Bytes file = ReadAll(played);
    const std::size_t start = static_cast<std::size_t>(
        std::find_if(file.begin(), file.end(), [](std::uint8_t v) { return v != 0; }) - file.begin());
    ASSERT_LT(start, file.size());
    std::size_t cut = 0;
    while (start + cut < file.size() && cut < first.size() && file[start + cut] == first[cut])
        ++cut;
    EXPECT_GT(cut, 0u);
    EXPECT_LT(cut, first.size());
    const std::size_t at = Find(file, second, start + cut);
    ASSERT_NE(at, std::string::npos);
    EXPECT_TRUE(AllBytesAre(file, start + cut, at, 0));
    EXPECT_TRUE(AllBytesAre(file, at + second.size(), file.size(), 0));
    EXPECT_EQ(Find(file, first), std::string::npos);
}

TEST(QorAudioSdl, DiskDriverShowsTheVolumeScalingTheSamples)
{
    const std::string played = SelectDiskDriver();
    // 22050 Hz 16-bit stereo: left 0x4000, right -0x4000 in every frame, at left 0.5, right 0.25.
    Bytes samples;
    for (int i = 0; i < 2205; ++i)
        samples.insert(samples.end(), {0x00, 0x40, 0x00, 0xC0});
    QorSndBlock tone = Sound(2, 22050, 16, samples);
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 22050, 16, 0, 0), 1);
    audio.SetVolumn(0x40008000);
    EXPECT_EQ(audio.GetVolumn(), 0x40008000ul);
    QorGuider g = audio.CreateSound(group, "tone");
    ASSERT_EQ(audio.PlaySound(g), 1);
    ASSERT_TRUE(WaitUntilDone(audio, 10000));
    ASSERT_EQ(audio.StopSound(), 1);
    audio.Exit();

    // 0x4000 x 0x8000 / 0xFFFF = 0x2000; -0x4000 x 0x4000 / 0xFFFF = -0x1000.
    Bytes expected;
    for (int i = 0; i < 2205; ++i)
        expected.insert(expected.end(), {0x00, 0x20, 0x00, 0xF0});
    const Bytes file = ReadAll(played);
    const std::size_t at = Find(file, expected);
    ASSERT_NE(at, std::string::npos);
    EXPECT_TRUE(AllBytesAre(file, 0, at, 0));
    EXPECT_TRUE(AllBytesAre(file, at + expected.size(), file.size(), 0));
    EXPECT_EQ(Find(file, samples), std::string::npos);
    EXPECT_EQ(Data(audio.GetSound(g)), samples);
}

TEST(QorAudioSdl, DummyDriverPlaysToTheEndAndReleasesOnStop)
{
    ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 1);
    QorSndBlock tone = Sound(2, 44100, 16, NonZero16(8820, 3));
    QorSndGroup group;
    MakeGroup(group, {{"tone", &tone}});
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    ASSERT_NE(audio.GetDevice(), 0u);
    QorGuider g = audio.CreateSound(group, "tone");
    ASSERT_EQ(audio.PlaySound(g), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    ASSERT_TRUE(WaitUntilDone(audio, 10000));
    EXPECT_EQ(audio.OnTimer(), 0);
    EXPECT_EQ(audio.GetPlaying(), g);
    EXPECT_EQ(audio.GetHeader().flags, kWaveHeaderDone | kWaveHeaderPrepared);
    EXPECT_EQ(audio.StopSound(), 1);
    EXPECT_EQ(audio.GetHeader().flags, kWaveHeaderDone);
    audio.Exit();
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    EXPECT_EQ(audio.GetDevice(), 0u);
}
