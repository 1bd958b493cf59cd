// Mixing beside SDL2 doing the same work: eight voices of 16-bit stereo at 44100 Hz into one second of
// output, in the device's 512-frame buffers. Ours sums in 32 bits and saturates once per buffer; SDL clears
// the buffer and adds each voice with SDL_MixAudioFormat, which saturates after every voice.
#include "BenchRatios.h"

#include "qor/audio.h"

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace
{
const int kVoices = 8;
const unsigned long kFrames = 44100;
const unsigned long kBuffer = 512;

// One second of noise per voice, at about a quarter of full scale so that the sums rarely saturate.
std::vector<std::vector<unsigned char>> Voices()
{
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> sample(-8192, 8191);
    std::vector<std::vector<unsigned char>> voices(kVoices, std::vector<unsigned char>(kFrames * 4));
    for (auto& v : voices)
        for (std::size_t i = 0; i < v.size(); i += 2)
        {
            const auto s = static_cast<std::uint16_t>(sample(rng));
            v[i] = static_cast<unsigned char>(s);
            v[i + 1] = static_cast<unsigned char>(s >> 8);
        }
    return voices;
}

void OurMixer(benchmark::State& state)
{
    const auto voices = Voices();
    std::vector<QorSndBlock> sounds(kVoices);
    QorMixer mixer;
    // The headless port's stream only pulls when its clock moves, which it does not here: every
    // buffer below is mixed by the calls of this loop.
    if (!mixer.Open(2, 44100, 16, kVoices, kBuffer))
    {
        state.SkipWithError("mixer did not open");
        return;
    }
    for (int k = 0; k < kVoices; ++k)
    {
        sounds[std::size_t(k)].SetSamples(2, 44100, 16, voices[std::size_t(k)].data(), kFrames * 4);
        mixer.Play(sounds[std::size_t(k)], 1, 160, 0);
    }
    std::vector<unsigned char> out(kBuffer * 4);
    for (auto _ : state)
    {
        for (unsigned long done = 0; done < kFrames; done += kBuffer)
        {
            const unsigned long n = std::min(kBuffer, kFrames - done);
            mixer.Fill(out.data(), n * 4);
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(state.iterations() * long(kFrames * 4 * kVoices));
}

void SdlMixer(benchmark::State& state)
{
    const auto voices = Voices();
    std::vector<unsigned char> out(kBuffer * 4);
    for (auto _ : state)
    {
        for (unsigned long done = 0; done < kFrames; done += kBuffer)
        {
            const unsigned long n = std::min(kBuffer, kFrames - done);
            std::memset(out.data(), 0, n * 4);
            // Volume 80 of SDL_MIX_MAXVOLUME (128) is our 160 of 256.
            for (int k = 0; k < kVoices; ++k)
                SDL_MixAudioFormat(out.data(), voices[std::size_t(k)].data() + done * 4, AUDIO_S16LSB,
                                   static_cast<Uint32>(n * 4), 80);
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(state.iterations() * long(kFrames * 4 * kVoices));
}

[[maybe_unused]] const bool kRegistered = []
{
    benchmark::RegisterBenchmark("mixer8_s16_1s/ours_mixer", OurMixer)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("mixer8_s16_1s/sdl_mixaudioformat", SdlMixer)->Unit(benchmark::kMicrosecond);
    qorbench::AddRatio("ours_mixer", "sdl_mixaudioformat");
    return true;
}();
} // namespace
