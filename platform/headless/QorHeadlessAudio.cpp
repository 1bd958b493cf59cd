#include "QorHeadlessAudio.h"

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
    struct Device
    {
        stPlayback playback;
        /// Clock time of the Write that handed the buffer over.
        unsigned long start = 0;
    };

    std::vector<std::uint32_t> m_formats;
    std::map<unsigned long, Device> m_devices;
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
