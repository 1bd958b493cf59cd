// QorMixer: voices mixed into one stream. The headless tests read what the device recorded: a stream
// pulls buffer k (of n frames at rate r) once the manual clock passes k x n / r seconds after the opening,
// so a voice started at the opening time is heard from frame 0. The SDL tests use the disk driver (which
// writes what it plays to a file) and the dummy driver (which pulls at the real rate).
#include "audio_util.h"
#include "test_util.h"

#include "qor/audio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace
{
using Bytes = std::vector<std::uint8_t>;
using qortest::ReadAll;
using qortest::Sound;
using qortest::TempPath;


// 16-bit samples as little-endian bytes.
Bytes S16(const std::vector<int>& values)
{
    Bytes out;
    for (int v : values)
    {
        const auto u = static_cast<std::uint16_t>(static_cast<std::int16_t>(v));
        out.push_back(static_cast<std::uint8_t>(u));
        out.push_back(static_cast<std::uint8_t>(u >> 8));
    }
    return out;
}

// frames stereo frames of (left, right).
Bytes Stereo16(std::size_t frames, int left, int right)
{
    std::vector<int> v;
    for (std::size_t i = 0; i < frames; ++i)
        v.insert(v.end(), {left, right});
    return S16(v);
}

int Sample16(const Bytes& b, std::size_t index)
{
    return static_cast<std::int16_t>(b[2 * index] | b[2 * index + 1] << 8);
}

class Mixer : public qortest::HeadlessAudioTest
{
protected:
    // What the device recorded since the test began.
    Bytes Played() { return port->GetPlayedBytes(); }
};

using QorMixerOpen = Mixer;
using QorMixerMix = Mixer;
using QorMixerVoices = Mixer;
using QorMixerConvert = Mixer;
using QorMixerShare = Mixer;
} // namespace

TEST_F(QorMixerOpen, DefaultBufferIs512FramesAt44100HzAndInProportionBelow)
{
    EXPECT_EQ(QorDefaultStreamFrames(44100), 512u);
    EXPECT_EQ(QorDefaultStreamFrames(22050), 256u);
    EXPECT_EQ(QorDefaultStreamFrames(11025), 128u);
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    EXPECT_EQ(mixer.GetBufferFrames(), 512u);
    EXPECT_EQ(mixer.GetVoiceCount(), 8u);
    EXPECT_EQ(mixer.GetLastResult(), kWaveNoError);
    const stWaveFormat& f = mixer.GetFormat();
    EXPECT_EQ(f.channels, 2);
    EXPECT_EQ(f.samplesPerSec, 44100);
    EXPECT_EQ(f.bitsPerSample, 16);
    EXPECT_EQ(f.blockAlign, 4);
    EXPECT_EQ(f.avgBytesPerSec, 176400);
    EXPECT_EQ(port->GetLastOpenedFormat().samplesPerSec, 44100);
    mixer.Close();
    EXPECT_EQ(mixer.IsOpen(), 0);
    ASSERT_EQ(mixer.Open(1, 11025, 8, 3, 100), 1);
    EXPECT_EQ(mixer.GetBufferFrames(), 100u);
    EXPECT_EQ(mixer.GetVoiceCount(), 3u);
}

TEST_F(QorMixerOpen, BadArgumentsASecondOpenAndAMissingFormatAreRefused)
{
    QorMixer mixer;
    EXPECT_EQ(mixer.Open(2, 48000, 16), 0);
    EXPECT_EQ(mixer.Open(3, 44100, 16), 0);
    EXPECT_EQ(mixer.Open(2, 44100, 24), 0);
    EXPECT_EQ(mixer.Open(2, 44100, 16, 0), 0);
    EXPECT_EQ(mixer.Open(2, 44100, 16, QorMixer::kMaxVoices + 1), 0);
    port->SetDeviceFormats(0, kWaveAllFormats & ~QorWaveFormatBit(2, true, true));
    EXPECT_EQ(mixer.Open(2, 44100, 16), 0);
    EXPECT_EQ(mixer.GetLastResult(), kWaveBadFormat);
    EXPECT_EQ(mixer.IsOpen(), 0);
    port->SetDeviceFormats(0, kWaveAllFormats);
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    EXPECT_EQ(mixer.Open(2, 44100, 16), 0);
    EXPECT_EQ(mixer.IsOpen(), 1);
}

TEST_F(QorMixerOpen, ClosedMixerPlaysNothingAndAnswersNullHandles)
{
    QorMixer mixer;
    QorSndBlock s = Sound(2, 44100, 16, Stereo16(10, 1, 1));
    EXPECT_FALSE(mixer.Play(s).IsValid());
    EXPECT_EQ(mixer.Prepare(s), 0);
    QorGuider none;
    EXPECT_EQ(mixer.Stop(none), 0);
    EXPECT_EQ(mixer.IsPlaying(none), 0);
    mixer.StopAll();
    EXPECT_EQ(mixer.GetPlayingCount(), 0u);
}

TEST_F(QorMixerOpen, StreamIsSilentUntilAVoicePlaysAndPullsWholeBuffersOnTheClock)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    EXPECT_TRUE(Played().empty());
    // 10 ms: 441 frames are due, so buffers 0 to 6 (448 frames) have started.
    clock->Advance(10);
    const Bytes b = Played();
    ASSERT_EQ(b.size(), 448u * 4);
    EXPECT_TRUE(std::all_of(b.begin(), b.end(), [](std::uint8_t v) { return v == 0; }));
}

TEST_F(QorMixerMix, TwoVoicesAddWithTheirVolumesAndPans)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock a = Sound(2, 44100, 16, Stereo16(64, 10000, 10000));
    QorSndBlock b = Sound(2, 44100, 16, Stereo16(64, 4000, -4000));
    ASSERT_TRUE(mixer.Play(a).IsValid());
    // Volume 128 panned half right: left gain 128 x 128 / 256 = 64, right gain 128.
    ASSERT_TRUE(mixer.Play(b, 0, 128, 128).IsValid());
    clock->Advance(1);
    const Bytes out = Played();
    ASSERT_EQ(out.size(), 64u * 4);
    for (std::size_t f = 0; f < 64; ++f)
    {
        // 10000 + 4000 x 64 / 256, 10000 - 4000 x 128 / 256.
        ASSERT_EQ(Sample16(out, 2 * f), 11000) << f;
        ASSERT_EQ(Sample16(out, 2 * f + 1), 8000) << f;
    }
}

TEST_F(QorMixerMix, ThreeVoicesRoundEachContributionDown)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock a = Sound(2, 44100, 16, S16({-3, 5, 7, -9}));
    QorSndBlock b = Sound(2, 44100, 16, S16({100, -100, 100, -100}));
    QorSndBlock c = Sound(2, 44100, 16, S16({-1001, 1001, 30, 31}));
    ASSERT_TRUE(mixer.Play(a, 0, 128).IsValid());
    ASSERT_TRUE(mixer.Play(b, 0, 256, QorMixer::kPanLeft).IsValid());
    ASSERT_TRUE(mixer.Play(c, 0, 64, 192).IsValid());
    clock->Advance(1);
    const Bytes out = Played();
    // a at 128: -3 -> -2 (floor of -1.5), 5 -> 2, 7 -> 3, -9 -> -5.
    // b hard left: left 100 at 256, right silenced.
    // c at 64 panned 192 right: left gain 64 x 64 / 256 = 16, right 64;
    //   -1001 x 16 >> 8 = -63, 1001 x 64 >> 8 = 250, 30 x 16 >> 8 = 1, 31 x 64 >> 8 = 7.
    EXPECT_EQ(Sample16(out, 0), -2 + 100 - 63);
    EXPECT_EQ(Sample16(out, 1), 2 + 0 + 250);
    EXPECT_EQ(Sample16(out, 2), 3 + 100 + 1);
    EXPECT_EQ(Sample16(out, 3), -5 + 0 + 7);
    for (std::size_t i = 4; i < 128; ++i)
        ASSERT_EQ(Sample16(out, i), 0) << i;
}

TEST_F(QorMixerMix, EightVoicesSaturateAtBothEndsInsteadOfWrapping)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    std::vector<QorSndBlock> sounds;
    // Voice k: left 5000 + 1000 k, right -(6000 + 1000 k), volume 256 - 16 k, pan -64 + 16 k.
    for (int k = 0; k < 8; ++k)
        sounds.push_back(Sound(2, 44100, 16, Stereo16(2, 5000 + 1000 * k, -(6000 + 1000 * k))));
    for (int k = 0; k < 8; ++k)
        ASSERT_TRUE(mixer.Play(sounds[std::size_t(k)], 0, 256 - 16 * k, -64 + 16 * k).IsValid()) << k;
    EXPECT_EQ(mixer.GetPlayingCount(), 8u);
    clock->Advance(1);
    const Bytes out = Played();
    long left = 0, right = 0;
    for (int k = 0; k < 8; ++k)
    {
        const long volume = 256 - 16 * k, pan = -64 + 16 * k;
        const long gl = volume * (256 - std::max(pan, 0L)) / 256, gr = volume * (256 + std::min(pan, 0L)) / 256;
        left += ((5000 + 1000 * k) * gl) >> 8;
        right += (-(6000 + 1000 * k) * gr) >> 8;
    }
    // The sums lie far outside 16 bits: 47944 and -52690 (wrapped they would read -17592 and 12846).
    EXPECT_EQ(left, 47944);
    EXPECT_EQ(right, -52690);
    EXPECT_EQ(Sample16(out, 0), 32767);
    EXPECT_EQ(Sample16(out, 1), -32768);
    EXPECT_EQ(Sample16(out, 2), 32767);
    EXPECT_EQ(Sample16(out, 3), -32768);
    EXPECT_EQ(Sample16(out, 4), 0);
    EXPECT_EQ(mixer.GetPlayingCount(), 0u);
}

TEST_F(QorMixerMix, EightVoicesWithinRangeGiveTheExactSum)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    std::vector<QorSndBlock> sounds;
    for (int k = 0; k < 8; ++k)
        sounds.push_back(Sound(2, 44100, 16, S16({1000 * (k + 1), -500 * (k + 1), -777, 3333})));
    for (int k = 0; k < 8; ++k)
        ASSERT_TRUE(mixer.Play(sounds[std::size_t(k)], 0, 32 * (k + 1), (k % 3 - 1) * 128).IsValid());
    clock->Advance(1);
    const Bytes out = Played();
    // Left and right gains per voice (pan -128, 0, 128 by k mod 3):
    // k: 0 (32,16) 1 (64,64) 2 (48,96) 3 (128,64) 4 (160,160) 5 (96,192) 6 (224,112) 7 (256,256).
    const int gl[8] = {32, 64, 48, 128, 160, 96, 224, 256};
    const int gr[8] = {16, 64, 96, 64, 160, 192, 112, 256};
    int expected[4] = {0, 0, 0, 0};
    for (int k = 0; k < 8; ++k)
    {
        expected[0] += (1000 * (k + 1) * gl[k]) >> 8;
        expected[1] += (-500 * (k + 1) * gr[k]) >> 8;
        expected[2] += (-777 * gl[k]) >> 8;
        expected[3] += (3333 * gr[k]) >> 8;
    }
    EXPECT_EQ(expected[0], 22687);
    EXPECT_EQ(expected[1], -10690);
    EXPECT_EQ(expected[2], -3063);
    EXPECT_EQ(expected[3], 12496);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(Sample16(out, std::size_t(i)), expected[i]) << i;
}

TEST_F(QorMixerMix, EightBitOutputMixesAroundTheMidpointAndSaturates)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(1, 22050, 8, 8, 64), 1);
    QorSndBlock a = Sound(1, 22050, 8, Bytes{200, 250, 128, 10});
    QorSndBlock b = Sound(1, 22050, 8, Bytes{100, 250, 0, 10});
    QorSndBlock c = Sound(1, 22050, 8, Bytes{128, 250, 0, 10});
    ASSERT_TRUE(mixer.Play(a).IsValid());
    ASSERT_TRUE(mixer.Play(b).IsValid());
    // Mono output: the pan is not used.
    ASSERT_TRUE(mixer.Play(c, 0, 128, QorMixer::kPanRight).IsValid());
    clock->Advance(1);
    const Bytes out = Played();
    ASSERT_EQ(out.size(), 64u);
    // 72 - 28 + 0 = 44; 122 + 122 + 61 = 305 -> 127; 0 - 128 - 64 -> -128; -118 - 118 - 59 -> -128.
    EXPECT_EQ(out[0], 128 + 44);
    EXPECT_EQ(out[1], 255);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], 0);
    EXPECT_EQ(out[4], 128);
}

TEST_F(QorMixerMix, PlayIsHeardFromTheFirstBufferThatStartsAfterIt)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock a = Sound(2, 44100, 16, Stereo16(10, 300, 400));
    // 5 ms after the opening, buffers 0 to 3 (starting before 5 ms) are already out.
    clock->Advance(5);
    QorGuider v = mixer.Play(a);
    ASSERT_TRUE(v.IsValid());
    EXPECT_EQ(mixer.GetFramesMixed(v), 0u);
    clock->Advance(1);
    const Bytes out = Played();
    ASSERT_EQ(out.size(), 5u * 64 * 4);
    for (std::size_t i = 0; i < 512; ++i)
        ASSERT_EQ(Sample16(out, i), 0) << i;
    EXPECT_EQ(Sample16(out, 512), 300);
    EXPECT_EQ(Sample16(out, 513), 400);
    EXPECT_EQ(Sample16(out, 512 + 19), 400);
    EXPECT_EQ(Sample16(out, 512 + 20), 0);
}

TEST_F(QorMixerVoices, LoopedVoiceRepeatsSeamlesslyAcrossManyBuffers)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    // 100 frames: a buffer of 64 never ends on a pass boundary until 1600 frames.
    std::vector<int> values;
    for (int f = 0; f < 100; ++f)
        values.insert(values.end(), {f * 100 - 5000, 7 - f});
    QorSndBlock loop = Sound(2, 44100, 16, S16(values));
    QorGuider v = mixer.Play(loop, 1);
    ASSERT_TRUE(v.IsValid());
    clock->Advance(1000);
    const Bytes out = Played();
    // 1 s: 44100 frames due, so 690 buffers of 64.
    ASSERT_EQ(out.size(), 690u * 64 * 4);
    for (std::size_t f = 0; f < 690u * 64; ++f)
    {
        ASSERT_EQ(Sample16(out, 2 * f), int(f % 100) * 100 - 5000) << f;
        ASSERT_EQ(Sample16(out, 2 * f + 1), 7 - int(f % 100)) << f;
    }
    EXPECT_EQ(mixer.IsPlaying(v), 1);
    EXPECT_EQ(mixer.GetFramesMixed(v), 690u * 64);
    EXPECT_EQ(mixer.Stop(v), 1);
    EXPECT_EQ(mixer.IsPlaying(v), 0);
}

TEST_F(QorMixerVoices, VoicePlayedOnceEndsByItselfAndFreesItsVoice)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 1, 64), 1);
    QorSndBlock a = Sound(2, 44100, 16, Stereo16(100, 1234, -1234));
    QorGuider v = mixer.Play(a);
    ASSERT_TRUE(v.IsValid());
    EXPECT_FALSE(mixer.Play(a).IsValid());
    clock->Advance(3);
    EXPECT_EQ(mixer.IsPlaying(v), 0);
    EXPECT_EQ(mixer.Stop(v), 0);
    // 3 ms: 132.3 frames due, three buffers.
    const Bytes out = Played();
    ASSERT_EQ(out.size(), 192u * 4);
    EXPECT_EQ(Sample16(out, 198), 1234);
    EXPECT_EQ(Sample16(out, 199), -1234);
    EXPECT_EQ(Sample16(out, 200), 0);
    EXPECT_TRUE(mixer.Play(a).IsValid());
}

TEST_F(QorMixerVoices, VoiceStoppedMidwayIsSilentFromTheNextBuffer)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock longSound = Sound(2, 44100, 16, Stereo16(44100, 2000, 3000));
    QorSndBlock other = Sound(2, 44100, 16, Stereo16(44100, 5, 6));
    QorGuider v = mixer.Play(longSound);
    QorGuider w = mixer.Play(other);
    // 5 ms: four buffers (256 frames) are out when the first voice stops.
    clock->Advance(5);
    EXPECT_EQ(mixer.GetFramesMixed(v), 256u);
    EXPECT_EQ(mixer.Stop(v), 1);
    EXPECT_EQ(mixer.Stop(v), 0);
    EXPECT_EQ(mixer.IsPlaying(v), 0);
    EXPECT_EQ(mixer.IsPlaying(w), 1);
    clock->Advance(15);
    const Bytes out = Played();
    ASSERT_EQ(out.size(), 14u * 64 * 4);
    for (std::size_t f = 0; f < 14u * 64; ++f)
    {
        ASSERT_EQ(Sample16(out, 2 * f), f < 256 ? 2005 : 5) << f;
        ASSERT_EQ(Sample16(out, 2 * f + 1), f < 256 ? 3006 : 6) << f;
    }
}

TEST_F(QorMixerVoices, VolumeAndPanChangeFromTheNextBufferAndStopAllSilencesEveryVoice)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock a = Sound(2, 44100, 16, Stereo16(44100, 8000, 8000));
    QorGuider v = mixer.Play(a, 1);
    QorGuider w = mixer.Play(a, 1, 64);
    clock->Advance(1);
    EXPECT_EQ(mixer.SetVolume(v, 128), 1);
    EXPECT_EQ(mixer.SetPan(w, QorMixer::kPanRight), 1);
    clock->Advance(1);
    // Clamped to the ranges.
    EXPECT_EQ(mixer.SetVolume(v, 1000), 1);
    EXPECT_EQ(mixer.SetPan(w, -1000), 1);
    clock->Advance(1);
    mixer.StopAll();
    EXPECT_EQ(mixer.GetPlayingCount(), 0u);
    EXPECT_EQ(mixer.SetVolume(v, 10), 0);
    EXPECT_EQ(mixer.SetPan(w, 10), 0);
    // Buffers 0, 1 and 2 came out at 1, 2 and 3 ms; buffer 3 starts at 4.35 ms.
    clock->Advance(2);
    const Bytes out = Played();
    ASSERT_EQ(out.size(), 4u * 64 * 4);
    // 8000 + 2000; 4000 + (0 | 2000); 8000 + (2000 | 0); silence.
    EXPECT_EQ(Sample16(out, 0), 10000);
    EXPECT_EQ(Sample16(out, 1), 10000);
    EXPECT_EQ(Sample16(out, 128), 4000);
    EXPECT_EQ(Sample16(out, 129), 6000);
    EXPECT_EQ(Sample16(out, 256), 10000);
    EXPECT_EQ(Sample16(out, 257), 8000);
    EXPECT_EQ(Sample16(out, 384), 0);
    EXPECT_EQ(Sample16(out, 385), 0);
}

TEST_F(QorMixerVoices, EveryVoiceBusyGivesANullHandleAndStaleHandlesNameNothing)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    QorSndBlock a = Sound(2, 44100, 16, Stereo16(44100, 1, 1));
    std::vector<QorGuider> voices;
    for (int i = 0; i < 8; ++i)
    {
        voices.push_back(mixer.Play(a));
        ASSERT_TRUE(voices.back().IsValid()) << i;
    }
    EXPECT_FALSE(mixer.Play(a).IsValid());
    ASSERT_EQ(mixer.Stop(voices[3]), 1);
    QorGuider again = mixer.Play(a);
    ASSERT_TRUE(again.IsValid());
    // The same voice, a new number: the old handle is stale.
    EXPECT_EQ(again.object, voices[3].object);
    EXPECT_NE(again.identifier, voices[3].identifier);
    EXPECT_EQ(mixer.IsPlaying(voices[3]), 0);
    EXPECT_EQ(mixer.Stop(voices[3]), 0);
    QorGuider foreign;
    int dummy = 0;
    foreign.identifier = again.identifier;
    foreign.object = &dummy;
    EXPECT_EQ(mixer.Stop(foreign), 0);
    EXPECT_EQ(mixer.IsPlaying(again), 1);
}

TEST_F(QorMixerVoices, HoldStartsSeveralVoicesOnTheSameFrame)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock a = Sound(2, 44100, 16, Stereo16(10, 100, 100));
    QorSndBlock b = Sound(2, 44100, 16, Stereo16(10, 20, 20));
    ASSERT_EQ(mixer.Prepare(a), 1);
    ASSERT_EQ(mixer.Prepare(b), 1);
    clock->Advance(1);
    mixer.Hold();
    QorGuider v = mixer.Play(a);
    // The clock moves while held: nothing is pulled until Release.
    clock->Advance(2);
    QorGuider w = mixer.Play(b);
    mixer.Release();
    EXPECT_EQ(mixer.GetFramesMixed(v), mixer.GetFramesMixed(w));
    clock->Advance(1);
    const Bytes out = Played();
    // Buffer 0 was out before the hold; buffers 1 and 2 were due at Release and carry both voices.
    ASSERT_EQ(out.size(), 3u * 64 * 4);
    EXPECT_EQ(Sample16(out, 127), 0);
    EXPECT_EQ(Sample16(out, 128), 120);
    EXPECT_EQ(Sample16(out, 128 + 19), 120);
    EXPECT_EQ(Sample16(out, 128 + 20), 0);
}

TEST_F(QorMixerConvert, EightBitElevenKilohertzMonoIsConvertedOnceIntoTheDeviceFormat)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    QorSndBlock tone = Sound(1, 11025, 8, Bytes{0x80, 0xFF, 0x00, 0x90});
    ASSERT_TRUE(mixer.Play(tone).IsValid());
    ASSERT_TRUE(mixer.Play(tone, 0, 128).IsValid());
    EXPECT_EQ(mixer.Prepare(tone), 1);
    EXPECT_EQ(mixer.GetConversionCount(), 1u);
    EXPECT_EQ(mixer.GetKeptCount(), 1u);
    // Each sample s becomes (s - 128) << 8, four frames of it (11025 -> 44100), on both sides.
    Bytes kept;
    ASSERT_EQ(mixer.GetKeptSamples(tone, kept), 1);
    std::vector<int> expected;
    for (int s : {0x0000, 0x7F00, -0x8000, 0x1000})
        for (int i = 0; i < 8; ++i)
            expected.push_back(s);
    EXPECT_EQ(kept, S16(expected));
    // The block itself is left as it was.
    EXPECT_EQ(tone.GetDataSize(), 4u);
    EXPECT_EQ(tone.GetSamplesPerSec(), 11025);
    clock->Advance(1);
    const Bytes out = Played();
    // One voice at full volume, one at half: 0x7F00 + 0x3F80 saturates; -0x8000 - 0x4000 too.
    EXPECT_EQ(Sample16(out, 0), 0);
    EXPECT_EQ(Sample16(out, 8), 32767);
    EXPECT_EQ(Sample16(out, 16), -32768);
    EXPECT_EQ(Sample16(out, 24), 0x1000 + 0x800);
    EXPECT_EQ(Sample16(out, 32), 0);
}

TEST_F(QorMixerConvert, ABlockChangedOrForgottenIsConvertedAgain)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(1, 22050, 16, 8, 64), 1);
    QorSndBlock s = Sound(1, 22050, 16, S16({1, 2, 3}));
    QorGuider v = mixer.Play(s, 1);
    ASSERT_TRUE(v.IsValid());
    ASSERT_TRUE(s.SetSamples(1, 22050, 16, S16({4, 5}).data(), 4));
    ASSERT_TRUE(mixer.Play(s).IsValid());
    EXPECT_EQ(mixer.GetConversionCount(), 2u);
    mixer.Forget(s);
    EXPECT_EQ(mixer.GetKeptCount(), 0u);
    EXPECT_EQ(mixer.IsPlaying(v), 0);
    EXPECT_EQ(mixer.Prepare(s), 1);
    EXPECT_EQ(mixer.GetConversionCount(), 3u);
}

TEST_F(QorMixerConvert, StereoIntoAMonoDeviceTakesTheMeanOfTheSides)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(1, 44100, 16, 8, 64), 1);
    // 22050 -> 44100 repeats every frame twice; the mean rounds down.
    QorSndBlock s = Sound(2, 22050, 16, S16({1000, 3001, -7, 2}));
    ASSERT_EQ(mixer.Prepare(s), 1);
    Bytes kept;
    ASSERT_EQ(mixer.GetKeptSamples(s, kept), 1);
    EXPECT_EQ(kept, S16({2000, 2000, -3, -3}));
}

TEST_F(QorMixerConvert, SixteenBitIntoAnEightBitDeviceKeepsTheHighByte)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 11025, 8, 8, 64), 1);
    // 44100 -> 11025 keeps every fourth frame; mono goes to both sides.
    QorSndBlock s = Sound(1, 44100, 16, S16({0x1234, 1, 2, 3, -0x8000, 4, 5, 6}));
    ASSERT_EQ(mixer.Prepare(s), 1);
    Bytes kept;
    ASSERT_EQ(mixer.GetKeptSamples(s, kept), 1);
    EXPECT_EQ(kept, (Bytes{0x92, 0x92, 0x00, 0x00}));
}

TEST_F(QorMixerConvert, RatesWithoutAWholeFactorAreResampledThroughTheAudioStream)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16, 8, 64), 1);
    // 0.1 s at 16000 Hz of a constant 1000: 4410 frames at 44100 Hz, still about 1000.
    std::vector<int> values(1600, 1000);
    QorSndBlock s = Sound(1, 16000, 16, S16(values));
    ASSERT_EQ(mixer.Prepare(s), 1);
    ASSERT_TRUE(mixer.Play(s).IsValid());
    EXPECT_EQ(mixer.GetConversionCount(), 1u);
    Bytes kept;
    ASSERT_EQ(mixer.GetKeptSamples(s, kept), 1);
    ASSERT_EQ(kept.size(), 4410u * 4);
    for (std::size_t i = 100; i < 2 * 4410 - 100; ++i)
        ASSERT_NEAR(Sample16(kept, i), 1000, 3) << i;
    // 8000 Hz 8-bit: 0xA0 is 0x20 above the midpoint, 0x2000 in 16 bits; 0.5 s gives 22050 frames.
    QorSndBlock low = Sound(1, 8000, 8, Bytes(4000, 0xA0));
    ASSERT_EQ(mixer.Prepare(low), 1);
    EXPECT_EQ(mixer.GetConversionCount(), 2u);
    ASSERT_EQ(mixer.GetKeptSamples(low, kept), 1);
    ASSERT_EQ(kept.size(), 22050u * 4);
    for (std::size_t i = 100; i < 2 * 22050 - 100; ++i)
        ASSERT_NEAR(Sample16(kept, i), 0x2000, 24) << i;
}

TEST_F(QorMixerConvert, EmptyAndNonPcmSoundsAreRefused)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    QorSndBlock empty;
    EXPECT_FALSE(mixer.Play(empty).IsValid());
    EXPECT_EQ(mixer.Prepare(empty), 0);
    // Half a frame of 16-bit stereo.
    QorSndBlock partial = Sound(2, 44100, 16, Bytes{1, 2});
    EXPECT_FALSE(mixer.Play(partial).IsValid());
    EXPECT_EQ(mixer.GetKeptCount(), 0u);
    EXPECT_EQ(mixer.GetException(), 0);
}

TEST_F(QorMixerShare, MixerIsRefusedWhileQorAudioHoldsTheDeviceAndOpensOnceItLetsGo)
{
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    ASSERT_NE(audio.GetDevice(), 0u);
    QorMixer mixer;
    EXPECT_EQ(mixer.Open(2, 44100, 16), 0);
    EXPECT_EQ(mixer.GetLastResult(), kWaveAllocated);
    audio.Exit();
    ASSERT_EQ(audio.GetDevice(), 0u);
    EXPECT_EQ(mixer.Open(2, 44100, 16), 1);
}

TEST_F(QorMixerShare, QorAudioOpensNothingWhileTheMixerHoldsTheDevice)
{
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    QorAudio audio;
    // The device is chosen, so Initialize answers 1; the open itself is refused.
    EXPECT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveAllocated);
    EXPECT_EQ(audio.GetDevice(), 0u);
    mixer.Close();
    EXPECT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    EXPECT_NE(audio.GetDevice(), 0u);
}

TEST_F(QorMixerShare, DestroyingOrClosingAHeldMixerLetsGoOfTheDevice)
{
    {
        QorMixer mixer;
        ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
        mixer.Hold();
    }
    QorMixer second;
    ASSERT_EQ(second.Open(1, 22050, 8, 2, 64), 1);
    second.Hold();
    second.Close();
    EXPECT_EQ(second.GetLastResult(), kWaveNoError);
    EXPECT_EQ(second.GetVoiceCount(), 0u);
    QorAudio audio;
    ASSERT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveNoError);
    EXPECT_NE(audio.GetDevice(), 0u);
}

// The SDL2 port.
namespace
{
std::size_t Find(const Bytes& hay, const Bytes& needle, std::size_t from = 0)
{
    const auto it = std::search(hay.begin() + static_cast<long>(from), hay.end(), needle.begin(), needle.end());
    return it == hay.end() ? std::string::npos : static_cast<std::size_t>(it - hay.begin());
}

bool WaitUntilSilent(QorMixer& mixer, unsigned long timeoutMs)
{
    const auto start = std::chrono::steady_clock::now();
    while (mixer.GetPlayingCount() > 0)
    {
        if (std::chrono::steady_clock::now() - start > std::chrono::milliseconds(timeoutMs))
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
} // namespace

TEST(QorMixerSdl, DiskDriverFileHoldsTheExpectedMix)
{
    ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "disk"), 1);
    const std::string path = TempPath("mixed.raw");
    QorSetAudioDeviceName(path.c_str());
    // 0.1 s each at 44100 Hz stereo; the second is 8-bit 11025 Hz mono, converted once.
    std::vector<int> first;
    for (int f = 0; f < 4410; ++f)
        first.insert(first.end(), {1 + f % 97 * 101, -(1 + f % 89 * 103)});
    Bytes second8(1103);
    for (std::size_t i = 0; i < second8.size(); ++i)
        second8[i] = static_cast<std::uint8_t>(0x90 + i % 50);
    QorSndBlock a = Sound(2, 44100, 16, S16(first));
    QorSndBlock b = Sound(1, 11025, 8, second8);
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    EXPECT_EQ(mixer.GetBufferFrames(), 512u);
    ASSERT_EQ(mixer.Prepare(a), 1);
    ASSERT_EQ(mixer.Prepare(b), 1);
    mixer.Hold();
    ASSERT_TRUE(mixer.Play(a, 0, 192, -64).IsValid());
    ASSERT_TRUE(mixer.Play(b, 0, 128, 128).IsValid());
    mixer.Release();
    // QorAudio is refused the device meanwhile, and its device check leaves the file alone.
    QorAudio audio;
    EXPECT_EQ(audio.Initialize(2, 44100, 16, 0, 0), 1);
    EXPECT_EQ(audio.GetLastResult(), kWaveAllocated);
    EXPECT_EQ(audio.GetDevice(), 0u);
    ASSERT_TRUE(WaitUntilSilent(mixer, 10000));
    mixer.Close();
    EXPECT_EQ(mixer.GetLastResult(), kWaveNoError);

    // a: gains 192 left, 192 x 192 / 256 = 144 right; b: 64 left, 128 right, (s - 128) << 8 four times.
    std::vector<int> mixed;
    for (std::size_t f = 0; f < 4412; ++f)
    {
        const int bs = (second8[f / 4] - 128) * 256;
        const int al = f < 4410 ? (first[2 * f] * 192) >> 8 : 0;
        const int ar = f < 4410 ? (first[2 * f + 1] * 144) >> 8 : 0;
        mixed.push_back(std::clamp(al + ((bs * 64) >> 8), -32768, 32767));
        mixed.push_back(std::clamp(ar + ((bs * 128) >> 8), -32768, 32767));
    }
    const Bytes expected = S16(mixed);
    const Bytes file = ReadAll(path);
    const std::size_t at = Find(file, expected);
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(at % 4, 0u);
    EXPECT_TRUE(std::all_of(file.begin(), file.begin() + static_cast<long>(at), [](std::uint8_t v) { return v == 0; }));
    EXPECT_TRUE(std::all_of(file.begin() + static_cast<long>(at + expected.size()), file.end(),
                            [](std::uint8_t v) { return v == 0; }));
}

// The device's own callback mixes what is played (how soon is measured by qor_mixer_latency, not here).
TEST(QorMixerSdl, DummyDriversCallbackMixesAPlayedVoice)
{
    ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 1);
    QorMixer mixer;
    ASSERT_EQ(mixer.Open(2, 44100, 16), 1);
    ASSERT_EQ(mixer.GetBufferFrames(), 512u);
    QorSndBlock click = Sound(2, 44100, 16, Stereo16(44100, 1000, 1000));
    ASSERT_EQ(mixer.Prepare(click), 1);
    QorGuider v = mixer.Play(click);
    ASSERT_TRUE(v.IsValid());
    // Bounded: the test's own timeout is never the way it ends.
    for (int i = 0; i < 5000 && mixer.GetFramesMixed(v) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_GT(mixer.GetFramesMixed(v), 0u);
    mixer.Stop(v);
    EXPECT_FALSE(mixer.IsPlaying(v));
}
