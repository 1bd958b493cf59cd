#include "QorMixer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace
{
bool IsOutputRate(long rate)
{
    return rate == 11025 || rate == 22050 || rate == 44100;
}

// One loop per output width and channel count; the gains are fixed for the whole run.
template <int Channels>
void Mix16(std::int32_t* acc, const std::int16_t* src, unsigned long frames, std::int32_t gainLeft,
           std::int32_t gainRight)
{
    if (Channels == 2)
    {
        for (unsigned long f = 0; f < frames; ++f)
        {
            acc[2 * f] += (std::int32_t(src[2 * f]) * gainLeft) >> 8;
            acc[2 * f + 1] += (std::int32_t(src[2 * f + 1]) * gainRight) >> 8;
        }
    }
    else
    {
        for (unsigned long f = 0; f < frames; ++f)
            acc[f] += (std::int32_t(src[f]) * gainLeft) >> 8;
    }
}

template <int Channels>
void Mix8(std::int32_t* acc, const std::uint8_t* src, unsigned long frames, std::int32_t gainLeft,
          std::int32_t gainRight)
{
    if (Channels == 2)
    {
        for (unsigned long f = 0; f < frames; ++f)
        {
            acc[2 * f] += ((std::int32_t(src[2 * f]) - 128) * gainLeft) >> 8;
            acc[2 * f + 1] += ((std::int32_t(src[2 * f + 1]) - 128) * gainRight) >> 8;
        }
    }
    else
    {
        for (unsigned long f = 0; f < frames; ++f)
            acc[f] += ((std::int32_t(src[f]) - 128) * gainLeft) >> 8;
    }
}

void Saturate16(unsigned char* out, const std::int32_t* acc, unsigned long samples)
{
    for (unsigned long i = 0; i < samples; ++i)
    {
        const std::int32_t v = std::min<std::int32_t>(std::max<std::int32_t>(acc[i], -32768), 32767);
        out[2 * i] = static_cast<unsigned char>(v);
        out[2 * i + 1] = static_cast<unsigned char>(static_cast<std::uint32_t>(v) >> 8);
    }
}

void Saturate8(unsigned char* out, const std::int32_t* acc, unsigned long samples)
{
    for (unsigned long i = 0; i < samples; ++i)
        out[i] = static_cast<unsigned char>(std::min<std::int32_t>(std::max<std::int32_t>(acc[i], -128), 127) + 128);
}
} // namespace

QorMixer::QorMixer() = default;

QorMixer::~QorMixer()
{
    Close();
}

char QorMixer::Open(short channels, long samplesPerSec, short bitsPerSample, unsigned long voices,
                    unsigned long bufferFrames)
{
    if (m_stream || (channels != 1 && channels != 2) || (bitsPerSample != 8 && bitsPerSample != 16) ||
        !IsOutputRate(samplesPerSec) || voices < 1 || voices > kMaxVoices || bufferFrames > 65535)
        return 0;
    stWaveFormat format;
    format.formatTag = 1;
    format.channels = channels;
    format.samplesPerSec = static_cast<std::int32_t>(samplesPerSec);
    format.bitsPerSample = bitsPerSample;
    format.blockAlign = static_cast<std::int16_t>(channels * bitsPerSample / 8);
    format.avgBytesPerSec = format.blockAlign * format.samplesPerSec;
    const unsigned long chunk = bufferFrames ? bufferFrames : QorDefaultStreamFrames(samplesPerSec);
    // Everything the device's thread reads is in place before the stream starts pulling.
    try
    {
        m_voices.assign(voices, stVoice());
        m_acc.assign(std::size_t(chunk) * std::size_t(channels), 0);
    }
    catch (const std::bad_alloc&)
    {
        SetException(1);
        m_voices.clear();
        m_acc.clear();
        return 0;
    }
    m_format = format;
    QorAudioPort& port = QorGetAudioPort();
    unsigned long stream = 0;
    m_lastResult = port.OpenStream(stream, 0, format, bufferFrames, *this);
    if (!stream)
    {
        m_voices.clear();
        m_acc.clear();
        m_format = stWaveFormat();
        return 0;
    }
    m_stream = stream;
    m_bufferFrames = port.GetStreamFrames(stream);
    m_conversions = 0;
    return 1;
}

void QorMixer::Close()
{
    // A Hold left open is let go of before the stream closes.
    if (m_lockDepth > 0)
    {
        m_lockDepth = 1;
        Unlock();
    }
    if (m_stream)
    {
        if (QorAudioPort* port = QorFindAudioPort())
            m_lastResult = port->CloseStream(m_stream);
        m_stream = 0;
    }
    m_voices.clear();
    m_acc.clear();
    m_kept.clear();
    m_format = stWaveFormat();
    m_bufferFrames = 0;
}

void QorMixer::Lock()
{
    if (m_lockDepth++ > 0)
        return;
    if (QorAudioPort* port = m_stream ? QorFindAudioPort() : nullptr)
        port->LockStream(m_stream);
}

void QorMixer::Unlock()
{
    if (m_lockDepth == 0 || --m_lockDepth > 0)
        return;
    if (QorAudioPort* port = m_stream ? QorFindAudioPort() : nullptr)
        port->UnlockStream(m_stream);
}

const QorMixer::stKept* QorMixer::Keep(const QorSndBlock& sound)
{
    const unsigned char* data = sound.GetDataPtr();
    const auto size = static_cast<std::uint32_t>(sound.GetDataSize());
    const short channels = sound.GetChannels();
    const short bits = sound.GetBitsPerSample();
    const long rate = sound.GetSamplesPerSec();
    for (const auto& kept : m_kept)
        if (kept->block == &sound && kept->blockData == data && kept->blockSize == size && kept->channels == channels &&
            kept->bits == bits && kept->rate == rate)
            return kept.get();
    if (sound.GetFormatTag() != 1 || (channels != 1 && channels != 2) || (bits != 8 && bits != 16) || rate < 1 || !data)
        return nullptr;
    const long frameBytes = channels * bits / 8;
    if (size < static_cast<unsigned long>(frameBytes))
        return nullptr;

    const long outRate = m_format.samplesPerSec;
    const short outBits = m_format.bitsPerSample;
    const short outChannels = m_format.channels;
    std::unique_ptr<stKept> kept(new (std::nothrow) stKept);
    if (!kept)
    {
        SetException(1);
        return nullptr;
    }
    std::vector<unsigned char> bytes;
    try
    {
        if (rate == outRate || outRate % rate == 0 || rate % outRate == 0)
        {
            // Whole-number rate factors: the block's own conversions (frames repeated or skipped), then
            // channels here.
            QorSndBlock copy;
            if (!copy.SetSamples(channels, rate, bits, data, size))
            {
                SetException(1);
                return nullptr;
            }
            if (!copy.ConvertFrequency(outRate) || !copy.ConvertSampleBits(outBits) || !copy.GetDataPtr())
                return nullptr;
            const unsigned char* converted = copy.GetDataPtr();
            const unsigned long width = outBits / 8;
            const unsigned long frames = copy.GetDataSize() / (width * static_cast<unsigned long>(channels));
            bytes.resize(frames * width * static_cast<unsigned long>(outChannels));
            for (unsigned long f = 0; f < frames; ++f)
            {
                const unsigned char* in = converted + f * width * static_cast<unsigned long>(channels);
                unsigned char* out = bytes.data() + f * width * static_cast<unsigned long>(outChannels);
                if (channels == outChannels)
                {
                    std::memcpy(out, in, width * static_cast<unsigned long>(channels));
                }
                else if (outChannels == 2)
                {
                    // Mono to stereo: the sample on both sides.
                    std::memcpy(out, in, width);
                    std::memcpy(out + width, in, width);
                }
                else if (width == 1)
                {
                    // Stereo to mono: the mean of the two sides, rounded down.
                    out[0] = static_cast<unsigned char>((in[0] + in[1]) >> 1);
                }
                else
                {
                    const auto l = static_cast<std::int16_t>(in[0] | in[1] << 8);
                    const auto r = static_cast<std::int16_t>(in[2] | in[3] << 8);
                    const auto mean = static_cast<std::uint16_t>((std::int32_t(l) + std::int32_t(r)) >> 1);
                    out[0] = static_cast<unsigned char>(mean);
                    out[1] = static_cast<unsigned char>(mean >> 8);
                }
            }
        }
        else
        {
            // Any other rate is resampled by SDL's audio stream, behind the platform layer.
            stWaveFormat from;
            from.formatTag = 1;
            from.channels = channels;
            from.samplesPerSec = static_cast<std::int32_t>(rate);
            from.bitsPerSample = bits;
            from.blockAlign = static_cast<std::int16_t>(frameBytes);
            from.avgBytesPerSec = static_cast<std::int32_t>(frameBytes * rate);
            if (!qor::detail::ConvertWithAudioStream(from, data, size, m_format, bytes))
                return nullptr;
        }
        const unsigned long frames =
            static_cast<unsigned long>(bytes.size()) / static_cast<unsigned long>(m_format.blockAlign);
        if (frames == 0)
            return nullptr;
        const unsigned long samples = frames * static_cast<unsigned long>(outChannels);
        if (outBits == 16)
        {
            kept->samples16.resize(samples);
            for (unsigned long i = 0; i < samples; ++i)
                kept->samples16[i] = static_cast<std::int16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
        }
        else
        {
            kept->samples8.assign(bytes.begin(), bytes.begin() + static_cast<long>(samples));
        }
        kept->frames = static_cast<std::uint32_t>(frames);
        kept->block = &sound;
        kept->blockData = data;
        kept->blockSize = size;
        kept->channels = channels;
        kept->bits = bits;
        kept->rate = static_cast<std::int32_t>(rate);
        m_kept.push_back(std::move(kept));
    }
    catch (const std::bad_alloc&)
    {
        SetException(1);
        return nullptr;
    }
    ++m_conversions;
    return m_kept.back().get();
}

char QorMixer::Prepare(const QorSndBlock& sound)
{
    return m_stream && Keep(sound) ? 1 : 0;
}

void QorMixer::UpdateGains(stVoice& voice)
{
    voice.gainLeft = voice.volume * (kFullVolume - std::max<std::int32_t>(voice.pan, 0)) / kFullVolume;
    voice.gainRight = voice.volume * (kFullVolume + std::min<std::int32_t>(voice.pan, 0)) / kFullVolume;
}

QorGuider QorMixer::Play(const QorSndBlock& sound, char loop, long volume, long pan)
{
    QorGuider handle;
    if (!m_stream)
        return handle;
    // Converting can take a while: it happens before the stream is held.
    const stKept* kept = Keep(sound);
    if (!kept)
        return handle;
    Lock();
    for (stVoice& voice : m_voices)
    {
        if (voice.serial != 0)
            continue;
        if (m_nextSerial == 0)
            m_nextSerial = 1;
        voice.serial = m_nextSerial++;
        voice.sound = kept;
        voice.position = 0;
        voice.mixed = 0;
        voice.volume = static_cast<std::int32_t>(std::clamp<long>(volume, 0, kFullVolume));
        voice.pan = static_cast<std::int32_t>(std::clamp<long>(pan, kPanLeft, kPanRight));
        voice.loop = loop != 0;
        UpdateGains(voice);
        handle.identifier = voice.serial;
        handle.object = &voice;
        handle.tag = 0;
        break;
    }
    Unlock();
    return handle;
}

QorMixer::stVoice* QorMixer::FindVoice(const QorGuider& voice)
{
    if (!voice.object || voice.identifier == 0 || m_voices.empty())
        return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(voice.object);
    const auto first = reinterpret_cast<std::uintptr_t>(m_voices.data());
    if (address < first)
        return nullptr;
    const std::uintptr_t offset = address - first;
    if (offset % sizeof(stVoice) != 0 || offset / sizeof(stVoice) >= m_voices.size())
        return nullptr;
    stVoice& found = m_voices[offset / sizeof(stVoice)];
    return found.serial == voice.identifier ? &found : nullptr;
}

char QorMixer::Stop(const QorGuider& voice)
{
    Lock();
    stVoice* found = FindVoice(voice);
    if (found)
    {
        found->serial = 0;
        found->sound = nullptr;
    }
    Unlock();
    return found ? 1 : 0;
}

void QorMixer::StopAll()
{
    Lock();
    for (stVoice& voice : m_voices)
    {
        voice.serial = 0;
        voice.sound = nullptr;
    }
    Unlock();
}

char QorMixer::SetVolume(const QorGuider& voice, long volume)
{
    Lock();
    stVoice* found = FindVoice(voice);
    if (found)
    {
        found->volume = static_cast<std::int32_t>(std::clamp<long>(volume, 0, kFullVolume));
        UpdateGains(*found);
    }
    Unlock();
    return found ? 1 : 0;
}

char QorMixer::SetPan(const QorGuider& voice, long pan)
{
    Lock();
    stVoice* found = FindVoice(voice);
    if (found)
    {
        found->pan = static_cast<std::int32_t>(std::clamp<long>(pan, kPanLeft, kPanRight));
        UpdateGains(*found);
    }
    Unlock();
    return found ? 1 : 0;
}

char QorMixer::IsPlaying(const QorGuider& voice)
{
    Lock();
    const bool playing = FindVoice(voice) != nullptr;
    Unlock();
    return playing ? 1 : 0;
}

unsigned long QorMixer::GetFramesMixed(const QorGuider& voice)
{
    Lock();
    const stVoice* found = FindVoice(voice);
    const unsigned long mixed = found ? static_cast<unsigned long>(found->mixed) : 0;
    Unlock();
    return mixed;
}

unsigned long QorMixer::GetPlayingCount()
{
    Lock();
    const auto count = static_cast<unsigned long>(
        std::count_if(m_voices.begin(), m_voices.end(), [](const stVoice& v) { return v.serial != 0; }));
    Unlock();
    return count;
}

void QorMixer::Forget(const QorSndBlock& sound)
{
    Lock();
    for (stVoice& voice : m_voices)
        if (voice.sound && voice.sound->block == &sound)
        {
            voice.serial = 0;
            voice.sound = nullptr;
        }
    Unlock();
    m_kept.erase(std::remove_if(m_kept.begin(), m_kept.end(),
                                [&sound](const std::unique_ptr<stKept>& k) { return k->block == &sound; }),
                 m_kept.end());
}

char QorMixer::GetKeptSamples(const QorSndBlock& sound, std::vector<unsigned char>& bytes) const
{
    for (const auto& kept : m_kept)
    {
        if (kept->block != &sound)
            continue;
        try
        {
            if (!kept->samples16.empty())
            {
                bytes.resize(kept->samples16.size() * 2);
                for (std::size_t i = 0; i < kept->samples16.size(); ++i)
                {
                    const auto v = static_cast<std::uint16_t>(kept->samples16[i]);
                    bytes[2 * i] = static_cast<unsigned char>(v);
                    bytes[2 * i + 1] = static_cast<unsigned char>(v >> 8);
                }
            }
            else
            {
                bytes.assign(kept->samples8.begin(), kept->samples8.end());
            }
        }
        catch (const std::bad_alloc&)
        {
            return 0;
        }
        return 1;
    }
    return 0;
}

void QorMixer::MixVoice(stVoice& voice, std::int32_t* acc, unsigned long frames)
{
    const stKept& sound = *voice.sound;
    const unsigned long channels = static_cast<unsigned long>(m_format.channels);
    unsigned long done = 0;
    while (done < frames)
    {
        const unsigned long run = std::min<unsigned long>(frames - done, sound.frames - voice.position);
        std::int32_t* at = acc + done * channels;
        const std::size_t from = std::size_t(voice.position) * channels;
        if (m_format.bitsPerSample == 16)
        {
            if (channels == 2)
                Mix16<2>(at, sound.samples16.data() + from, run, voice.gainLeft, voice.gainRight);
            else
                Mix16<1>(at, sound.samples16.data() + from, run, voice.gainLeft, voice.gainRight);
        }
        else
        {
            if (channels == 2)
                Mix8<2>(at, sound.samples8.data() + from, run, voice.gainLeft, voice.gainRight);
            else
                Mix8<1>(at, sound.samples8.data() + from, run, voice.gainLeft, voice.gainRight);
        }
        done += run;
        voice.mixed += run;
        voice.position += static_cast<std::uint32_t>(run);
        if (voice.position < sound.frames)
            continue;
        if (!voice.loop)
        {
            voice.serial = 0;
            voice.sound = nullptr;
            return;
        }
        voice.position = 0;
    }
}

void QorMixer::Fill(unsigned char* out, unsigned long bytes)
{
    const auto frameBytes = static_cast<unsigned long>(m_format.blockAlign);
    const auto channels = static_cast<unsigned long>(m_format.channels);
    const unsigned long chunk = channels ? static_cast<unsigned long>(m_acc.size()) / channels : 0;
    if (frameBytes == 0 || chunk == 0)
    {
        std::memset(out, 0, bytes);
        return;
    }
    unsigned long frames = bytes / frameBytes;
    while (frames > 0)
    {
        const unsigned long n = std::min(frames, chunk);
        std::int32_t* acc = m_acc.data();
        std::fill(acc, acc + n * channels, 0);
        for (stVoice& voice : m_voices)
            if (voice.serial != 0)
                MixVoice(voice, acc, n);
        if (m_format.bitsPerSample == 16)
            Saturate16(out, acc, n * channels);
        else
            Saturate8(out, acc, n * channels);
        out += n * frameBytes;
        frames -= n;
    }
    const unsigned long rest = bytes % frameBytes;
    if (rest)
        std::memset(out, m_format.bitsPerSample == 8 ? 0x80 : 0, rest);
}
