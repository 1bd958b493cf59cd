#include "platform/QorAudioPort.h"

#include <SDL.h>

#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace qor::detail
{
namespace
{
SDL_AudioFormat SdlFormat(const stWaveFormat& format)
{
    return format.bitsPerSample == 16 ? AUDIO_S16LSB : AUDIO_U8;
}

struct StreamDeleter
{
    void operator()(SDL_AudioStream* stream) const { SDL_FreeAudioStream(stream); }
};
} // namespace

bool ConvertWithAudioStream(const stWaveFormat& from, const unsigned char* data, unsigned long size,
                            const stWaveFormat& to, std::vector<unsigned char>& out)
{
    if (!IsPlayableFormat(from) || !IsPlayableFormat(to) || (!data && size))
        return false;
    const std::uint64_t inFrames = size / static_cast<unsigned long>(from.blockAlign);
    const std::uint64_t outFrames = inFrames * std::uint64_t(to.samplesPerSec) / std::uint64_t(from.samplesPerSec);
    const std::uint64_t outBytes = outFrames * std::uint64_t(to.blockAlign);
    if (inFrames * std::uint64_t(from.blockAlign) > 0x7FFFFFFF || outBytes > 0x7FFFFFFF)
        return false;
    std::unique_ptr<SDL_AudioStream, StreamDeleter> stream(
        SDL_NewAudioStream(SdlFormat(from), static_cast<Uint8>(from.channels), from.samplesPerSec, SdlFormat(to),
                           static_cast<Uint8>(to.channels), to.samplesPerSec));
    if (!stream)
        return false;
    try
    {
        out.assign(static_cast<std::size_t>(outBytes), 0);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    if (inFrames &&
        SDL_AudioStreamPut(stream.get(), data, static_cast<int>(inFrames * std::uint64_t(from.blockAlign))) != 0)
        return false;
    // SDL 2's resampler keeps back its last few hundred frames even when flushed, so silence follows the
    // sound until all of its frames have come out; what comes after them is dropped.
    const unsigned char silenceByte = from.bitsPerSample == 8 ? 0x80 : 0;
    const std::vector<unsigned char>::size_type padBytes = std::size_t(1024) * std::size_t(from.blockAlign);
    std::vector<unsigned char> silence;
    try
    {
        silence.assign(padBytes, silenceByte);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    std::uint64_t got = 0;
    for (int round = 0; got < outBytes && round < 64; ++round)
    {
        if (round > 0 && SDL_AudioStreamPut(stream.get(), silence.data(), static_cast<int>(padBytes)) != 0)
            return false;
        if (round > 0 && SDL_AudioStreamFlush(stream.get()) != 0)
            return false;
        for (;;)
        {
            const int n = SDL_AudioStreamGet(stream.get(), out.data() + got, static_cast<int>(outBytes - got));
            if (n < 0)
                return false;
            if (n == 0)
                break;
            got += static_cast<std::uint64_t>(n);
        }
    }
    return got == outBytes;
}
} // namespace qor::detail
