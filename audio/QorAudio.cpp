#include "QorAudio.h"

#include <cstdint>
#include <cstring>

namespace
{
const long kRates[3] = {11025, 22050, 44100};

int RateIndex(long samplesPerSec)
{
    for (int i = 0; i < 3; ++i)
        if (kRates[i] == samplesPerSec)
            return i;
    return -1;
}

// The formatSupport index of a format: rate x 4 + stereo x 2 + sixteen-bit.
int SupportIndex(int rateIndex, bool stereo, bool sixteenBits)
{
    return rateIndex * 4 + (stereo ? 2 : 0) + (sixteenBits ? 1 : 0);
}
} // namespace

QorAudio::QorAudio() = default;

QorAudio::QorAudio(const QorAudio& other)
{
    *this = other;
}

QorAudio& QorAudio::operator=(const QorAudio& other)
{
    if (this == &other)
        return *this;
    // The samples about to be replaced may be with the device.
    ReleaseDevice();
    for (unsigned long i = 0; i < kSoundCount; ++i)
    {
        m_sounds[i].id = other.m_sounds[i].id;
        m_sounds[i].sound = other.m_sounds[i].sound;
        m_sounds[i].useCount = other.m_sounds[i].useCount;
    }
    for (unsigned long i = 0; i < kChannelCount; ++i)
        m_channels[i] = other.m_channels[i];
    m_nextSoundId = other.m_nextSoundId;
    std::memcpy(m_formatSupport, other.m_formatSupport, sizeof m_formatSupport);
    m_disabled = other.m_disabled;
    m_timerClick = other.m_timerClick;
    m_bufferSizeInTime = other.m_bufferSizeInTime;
    m_bufferSizeInBytes = other.m_bufferSizeInBytes;
    m_playing = other.m_playing;
    m_integration = other.m_integration;
    m_deviceCount = other.m_deviceCount;
    m_deviceCaps = other.m_deviceCaps;
    m_device = other.m_device;
    m_format = other.m_format;
    m_header = other.m_header;
    m_lastResult = other.m_lastResult;
    m_ownsDevice = false;
    return *this;
}

QorAudio::~QorAudio()
{
    ReleaseDevice();
}

void QorAudio::ReleaseDevice()
{
    QorAudioPort* port = m_device ? QorFindAudioPort() : nullptr;
    if (!port)
        return;
    bool ownsBuffer = false;
    if (m_header.data && (m_header.flags & kWaveHeaderInQueue))
        for (const stSoundSlot& slot : m_sounds)
            ownsBuffer = ownsBuffer || slot.sound.GetDataPtr() == m_header.data;
    if (m_ownsDevice || ownsBuffer)
    {
        port->Reset(m_device);
        port->Unprepare(m_device, m_header);
    }
    if (m_ownsDevice)
    {
        port->Close(m_device);
        m_device = 0;
        m_ownsDevice = false;
    }
}

char QorAudio::Initialize(short channels, long samplesPerSec, short bitsPerSample, char firstDeviceOnly, char disabled)
{
    const int wantedRate = RateIndex(samplesPerSec);
    if (wantedRate < 0 || (channels != 1 && channels != 2) || (bitsPerSample != 8 && bitsPerSample != 16))
        return 0;
    QorAudioPort& port = QorGetAudioPort();
    m_deviceCount = static_cast<std::uint32_t>(port.GetDeviceCount());
    if (m_deviceCount == 0)
        return 0;

    const bool stereo = channels == 2;
    const int wanted = SupportIndex(wantedRate, stereo, bitsPerSample == 16);
    unsigned long chosen = 0;
    bool found = false;
    for (unsigned long device = 0; device < m_deviceCount && !found; ++device)
    {
        m_deviceCaps = stWaveOutCaps();
        m_lastResult = static_cast<std::uint32_t>(port.GetDeviceCaps(device, m_deviceCaps));
        for (int rate = 0; rate < 3; ++rate)
            for (int st = 0; st < 2; ++st)
                for (int sixteen = 0; sixteen < 2; ++sixteen)
                    m_formatSupport[SupportIndex(rate, st, sixteen)] =
                        (m_deviceCaps.formats & QorWaveFormatBit(rate, st, sixteen)) ? 1 : 0;
        if (m_formatSupport[wanted])
        {
            chosen = device;
            found = true;
        }
        else if (firstDeviceOnly)
        {
            break;
        }
    }
    if (!found)
    {
        if (!firstDeviceOnly)
            return 0;
        // Rates from the highest down, so the lowest rate the device plays has the last word; at each
        // rate 16 bits are preferred to 8. Nothing played: the request stands.
        for (int rate = 2; rate >= 0; --rate)
        {
            if (m_formatSupport[SupportIndex(rate, stereo, true)])
            {
                samplesPerSec = kRates[rate];
                bitsPerSample = 16;
            }
            else if (m_formatSupport[SupportIndex(rate, stereo, false)])
            {
                samplesPerSec = kRates[rate];
                bitsPerSample = 8;
            }
        }
        chosen = 0;
    }

    m_disabled = disabled;
    if (!disabled)
    {
        m_format.formatTag = 1;
        m_format.channels = channels;
        m_format.samplesPerSec = static_cast<std::int32_t>(samplesPerSec);
        m_format.bitsPerSample = bitsPerSample;
        m_format.blockAlign = static_cast<std::int16_t>(channels * bitsPerSample / 8);
        m_format.avgBytesPerSec = static_cast<std::int32_t>(m_format.blockAlign * samplesPerSec);
    }
    // A device opened by an earlier Initialize is let go of first.
    ReleaseDevice();
    m_device = 0;
    m_lastResult = static_cast<std::uint32_t>(port.Open(m_device, chosen, m_format));
    m_ownsDevice = m_device != 0;
    return 1;
}

void QorAudio::Exit()
{
    m_lastResult = static_cast<std::uint32_t>(QorGetAudioPort().Close(m_device));
    if (m_lastResult == kWaveNoError)
    {
        m_device = 0;
        m_ownsDevice = false;
    }
}

void QorAudio::SetBuferSizeInTime(long ms)
{
    m_bufferSizeInTime = static_cast<std::int32_t>(ms);
    const std::int64_t bytes = std::int64_t(m_format.avgBytesPerSec) * m_bufferSizeInTime / 1000;
    m_bufferSizeInBytes = bytes > 0 ? static_cast<std::uint32_t>(bytes) : 0;
}

void QorAudio::SetVolumn(unsigned long volume)
{
    m_lastResult = static_cast<std::uint32_t>(QorGetAudioPort().SetVolume(m_device, volume));
}

unsigned long QorAudio::GetVolumn()
{
    unsigned long volume = 0;
    m_lastResult = static_cast<std::uint32_t>(QorGetAudioPort().GetVolume(m_device, volume));
    return volume;
}

QorGuider QorAudio::CreateNewSnd()
{
    QorGuider sound;
    for (stSoundSlot& slot : m_sounds)
    {
        if (slot.id != 0)
            continue;
        // Numbers are never reused; 0 would mark the slot free.
        if (m_nextSoundId == 0)
            m_nextSoundId = 1;
        slot.id = m_nextSoundId++;
        sound.identifier = slot.id;
        sound.object = &slot;
        sound.tag = 0;
        return sound;
    }
    return sound;
}

void QorAudio::KillSnd(unsigned long slot)
{
    if (slot >= kSoundCount)
        return;
    stSoundSlot& s = m_sounds[slot];
    // The device must let go of the samples before they are freed.
    if (m_device && s.sound.GetDataPtr() && m_header.data == s.sound.GetDataPtr() &&
        (m_header.flags & kWaveHeaderInQueue))
    {
        QorAudioPort& port = QorGetAudioPort();
        m_lastResult = static_cast<std::uint32_t>(port.Reset(m_device));
        m_lastResult = static_cast<std::uint32_t>(port.Unprepare(m_device, m_header));
    }
    if (FindSlot(m_playing) == static_cast<long>(slot))
        m_playing.Reset();
    s.id = 0;
    s.sound.Reset();
    s.useCount = 0;
}

long QorAudio::FindSlot(const QorGuider& sound) const
{
    if (!sound.object)
        return -1;
    const auto address = reinterpret_cast<std::uintptr_t>(sound.object);
    const auto first = reinterpret_cast<std::uintptr_t>(&m_sounds[0]);
    if (address < first)
        return -1;
    const std::uintptr_t offset = address - first;
    if (offset % sizeof(stSoundSlot) != 0 || offset / sizeof(stSoundSlot) >= kSoundCount)
        return -1;
    const auto slot = static_cast<long>(offset / sizeof(stSoundSlot));
    if (m_sounds[slot].id == 0 || m_sounds[slot].id != sound.identifier)
        return -1;
    return slot;
}

QorGuider QorAudio::CreateSound(QorSndGroup& group, const char* name)
{
    QorGuider sound = CreateNewSnd();
    if (!sound.IsValid())
        return sound;
    QorSndBlock& block = static_cast<stSoundSlot*>(sound.object)->sound;
    if (group.LoadData(&block, name))
    {
        block.ConvertFrequency(m_format.samplesPerSec);
        block.ConvertSampleBits(m_format.bitsPerSample);
    }
    return sound;
}

QorGuider QorAudio::CreateSound(QorSndGroup& group, unsigned long index)
{
    QorGuider sound = CreateNewSnd();
    if (sound.IsValid())
        group.LoadData(&static_cast<stSoundSlot*>(sound.object)->sound, index);
    return sound;
}

char QorAudio::RemoveSound(QorGuider& sound)
{
    const long slot = FindSlot(sound);
    if (slot < 0 || m_sounds[slot].useCount != 0)
        return 0;
    KillSnd(static_cast<unsigned long>(slot));
    sound.Reset();
    return 1;
}

QorGuider QorAudio::CreateChannel(QorGuider& sound)
{
    (void)sound;
    return QorGuider();
}

QorSndBlock* QorAudio::GetSound(const QorGuider& sound)
{
    const long slot = FindSlot(sound);
    return slot < 0 ? nullptr : &m_sounds[slot].sound;
}

char QorAudio::PlaySound(QorGuider& sound)
{
    if (m_disabled)
        return 0;
    const long slot = FindSlot(sound);
    if (slot < 0)
        return 0;
    StopSound();
    m_playing = sound;
    const QorSndBlock& block = m_sounds[slot].sound;
    m_header.data = block.GetDataPtr();
    m_header.length = static_cast<std::uint32_t>(block.GetDataSize());
    m_header.flags = 0;
    QorAudioPort& port = QorGetAudioPort();
    m_lastResult = static_cast<std::uint32_t>(port.Prepare(m_device, m_header));
    m_lastResult = static_cast<std::uint32_t>(port.Write(m_device, m_header));
    return 1;
}

char QorAudio::StopSound()
{
    if (m_disabled)
        return 0;
    QorAudioPort& port = QorGetAudioPort();
    m_lastResult = static_cast<std::uint32_t>(port.Reset(m_device));
    m_lastResult = static_cast<std::uint32_t>(port.Unprepare(m_device, m_header));
    m_playing.Reset();
    return 1;
}

char QorAudio::OnTimer()
{
    if (m_disabled)
        return 0;
    // The device marks a finished buffer done when asked; then the flags are compared exactly.
    if (m_device)
        QorGetAudioPort().IsPlaying(m_device, m_header);
    if (m_header.flags == kWaveHeaderDone)
        StopSound();
    return 0;
}

char QorAudio::IsPlaying()
{
    if (!m_device)
        return 0;
    return QorGetAudioPort().IsPlaying(m_device, m_header);
}
