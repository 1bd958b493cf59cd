#include "QorHeadlessAudio.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <new>
#include <vector>

namespace qor::detail
{
namespace
{
int RateIndex(long samplesPerSec)
{
    switch (samplesPerSec)
    {
    case 11025:
        return 0;
    case 22050:
        return 1;
    case 44100:
        return 2;
    default:
        return -1;
    }
}

// Devices play on the caller's thread: whenever a call looks at a device, it first plays what the clock
// says has been played since the buffer was written, at the format's bytes per second, whole frames at a
// time, and appends those bytes (volume applied) to the record.
class HeadlessAudioPort : public QorHeadlessAudioPort
{
public:
    HeadlessAudioPort() : m_formats(1, kWaveAllFormats) {}

    unsigned long GetDeviceCount() override { return static_cast<unsigned long>(m_formats.size()); }

    unsigned long GetDeviceCaps(unsigned long device, stWaveOutCaps& caps) override
    {
        if (device >= m_formats.size())
            return kWaveBadDeviceId;
        caps = stWaveOutCaps();
        std::snprintf(caps.name, sizeof caps.name, "Headless output %u", static_cast<unsigned>(device % 100000));
        caps.formats = m_formats[device];
        caps.channels = 2;
        return kWaveNoError;
    }

    unsigned long Open(unsigned long& handle, unsigned long device, const stWaveFormat& format) override
    {
        handle = 0;
        if (device >= m_formats.size())
            return kWaveBadDeviceId;
        const int rate = RateIndex(format.samplesPerSec);
        if (!IsPlayableFormat(format) || rate < 0 ||
            !(m_formats[device] & QorWaveFormatBit(rate, format.channels == 2, format.bitsPerSample == 16)))
            return kWaveBadFormat;
        if (!m_streams.empty())
            return kWaveAllocated;
        try
        {
            Device& opened = m_devices[m_nextHandle];
            opened.playback.format = format;
        }
        catch (const std::bad_alloc&)
        {
            return kWaveNoMemory;
        }
        handle = m_nextHandle++;
        m_lastDevice = static_cast<long>(device);
        m_lastFormat = format;
        return kWaveNoError;
    }

    unsigned long OpenStream(unsigned long& handle, unsigned long device, const stWaveFormat& format,
                             unsigned long bufferFrames, QorAudioSource& source) override
    {
        handle = 0;
        if (device >= m_formats.size())
            return kWaveBadDeviceId;
        const int rate = RateIndex(format.samplesPerSec);
        if (!IsPlayableFormat(format) || rate < 0 ||
            !(m_formats[device] & QorWaveFormatBit(rate, format.channels == 2, format.bitsPerSample == 16)))
            return kWaveBadFormat;
        if (!m_devices.empty() || !m_streams.empty())
            return kWaveAllocated;
        const unsigned long frames = bufferFrames ? bufferFrames : QorDefaultStreamFrames(format.samplesPerSec);
        if (frames > 65535)
            return kWaveInvalidParam;
        try
        {
            Stream& opened = m_streams[m_nextHandle];
            opened.source = &source;
            opened.format = format;
            opened.frames = frames;
            opened.start = QorGetClock().GetMillis();
        }
        catch (const std::bad_alloc&)
        {
            return kWaveNoMemory;
        }
        handle = m_nextHandle++;
        m_lastDevice = static_cast<long>(device);
        m_lastFormat = format;
        return kWaveNoError;
    }

    unsigned long GetStreamFrames(unsigned long handle) override
    {
        const auto it = m_streams.find(handle);
        return it == m_streams.end() ? 0 : it->second.frames;
    }

    void LockStream(unsigned long handle) override { PullStream(handle); }
    void UnlockStream(unsigned long handle) override { (void)handle; }

    unsigned long CloseStream(unsigned long handle) override
    {
        if (m_streams.find(handle) == m_streams.end())
            return kWaveInvalidHandle;
        PullStream(handle);
        m_streams.erase(handle);
        return kWaveNoError;
    }

    unsigned long Write(unsigned long handle, stWaveHeader& header) override
    {
        const unsigned long result = QorAudioPort::Write(handle, header);
        if (result == kWaveNoError)
            m_devices[handle].start = QorGetClock().GetMillis();
        return result;
    }

    unsigned long Reset(unsigned long handle) override
    {
        if (FindPlayback(handle))
            ++m_resets;
        return QorAudioPort::Reset(handle);
    }

    void SetDeviceCount(unsigned long count) override
    {
        try
        {
            m_formats.resize(count, kWaveAllFormats);
        }
        catch (const std::bad_alloc&)
        {
        }
    }

    void SetDeviceFormats(unsigned long device, std::uint32_t formats) override
    {
        if (device < m_formats.size())
            m_formats[device] = formats & kWaveAllFormats;
    }

    std::vector<unsigned char> GetPlayedBytes() override
    {
        for (auto& entry : m_devices)
            CatchUp(entry.first);
        for (auto& entry : m_streams)
            PullStream(entry.first);
        return m_played;
    }

    void ClearPlayedBytes() override { m_played.clear(); }
    long GetLastOpenedDevice() const override { return m_lastDevice; }
    stWaveFormat GetLastOpenedFormat() const override { return m_lastFormat; }
    unsigned long GetOpenCount() const override { return static_cast<unsigned long>(m_devices.size()); }
    unsigned long GetResetCount() const override { return m_resets; }

protected:
    stPlayback* FindPlayback(unsigned long handle) override
    {
        const auto it = m_devices.find(handle);
        return it == m_devices.end() ? nullptr : &it->second.playback;
    }

    void CatchUp(unsigned long handle) override
    {
        const auto it = m_devices.find(handle);
        if (it == m_devices.end())
            return;
        Device& device = it->second;
        stPlayback& p = device.playback;
        if (!p.held || p.played >= p.length)
            return;
        const unsigned long elapsed = QorGetClock().GetMillis() - device.start;
        const std::uint64_t due = std::uint64_t(elapsed) * std::uint64_t(p.format.avgBytesPerSec) / 1000;
        const std::uint64_t frame = std::uint64_t(p.format.blockAlign);
        const std::uint32_t target = due >= p.length ? p.length : static_cast<std::uint32_t>(due - due % frame);
        if (target <= p.played)
            return;
        const std::size_t at = m_played.size();
        try
        {
            m_played.resize(at + (target - p.played));
        }
        catch (const std::bad_alloc&)
        {
            return;
        }
        ScaleSamples(m_played.data() + at, p.data + p.played, target - p.played, p.played, p.format, p.volume);
        p.played = target;
    }

    void CloseDevice(unsigned long handle) override { m_devices.erase(handle); }

private:
    struct Stream
    {
        QorAudioSource* source = nullptr;
        stWaveFormat format;
        unsigned long frames = 0;
        /// Clock time of the opening; buffers pulled since.
        unsigned long start = 0;
        std::uint64_t pulled = 0;
    };

    // Pulls, one buffer at a time, every buffer whose start time the clock has passed.
    void PullStream(unsigned long handle)
    {
        const auto it = m_streams.find(handle);
        if (it == m_streams.end())
            return;
        Stream& s = it->second;
        const std::uint64_t elapsed = QorGetClock().GetMillis() - s.start;
        const std::uint64_t perBuffer = std::uint64_t(s.frames) * 1000;
        const std::uint64_t due = (elapsed * std::uint64_t(s.format.samplesPerSec) + perBuffer - 1) / perBuffer;
        const std::size_t bytes = std::size_t(s.frames) * std::size_t(s.format.blockAlign);
        for (; s.pulled < due; ++s.pulled)
        {
            const std::size_t at = m_played.size();
            try
            {
                m_played.resize(at + bytes);
            }
            catch (const std::bad_alloc&)
            {
                return;
            }
            s.source->Fill(m_played.data() + at, bytes);
        }
    }

    struct Device
    {
        stPlayback playback;
        /// Clock time of the Write that handed the buffer over.
        unsigned long start = 0;
    };

    std::vector<std::uint32_t> m_formats;
    std::map<unsigned long, Device> m_devices;
    std::map<unsigned long, Stream> m_streams;
    unsigned long m_nextHandle = 1;
    std::vector<unsigned char> m_played;
    long m_lastDevice = -1;
    stWaveFormat m_lastFormat;
    unsigned long m_resets = 0;
};
} // namespace

std::unique_ptr<QorAudioPort> MakeHeadlessAudioPort()
{
    return std::make_unique<HeadlessAudioPort>();
}
} // namespace qor::detail
