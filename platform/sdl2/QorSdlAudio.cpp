#include "QorSdlAudio.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>

namespace qor::detail
{
namespace
{
const int kRates[3] = {11025, 22050, 44100};

SDL_AudioSpec MakeRequest(int rate, int channels, int bits, Uint16 samples)
{
    SDL_AudioSpec request;
    SDL_zero(request);
    request.freq = rate;
    request.format = bits == 16 ? AUDIO_S16LSB : AUDIO_U8;
    request.channels = static_cast<Uint8>(channels);
    request.samples = samples;
    return request;
}

// Devices play on SDL's audio thread: its callback reads the written buffer where it stands (the buffer
// is never copied), scales the samples by the volume into SDL's stream and fills the rest with silence.
// Every piece of state the callback sees is guarded by SDL's device lock.
class SdlAudioPort : public QorAudioPort
{
public:
    SdlAudioPort() : m_started(SDL_InitSubSystem(SDL_INIT_AUDIO) == 0) {}

    ~SdlAudioPort() override
    {
        for (auto& entry : m_devices)
            SDL_CloseAudioDevice(entry.second->id);
        m_devices.clear();
        for (auto& entry : m_streams)
            SDL_CloseAudioDevice(entry.second->id);
        m_streams.clear();
        if (m_started)
            SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }

    unsigned long GetDeviceCount() override
    {
        if (!m_started)
            return 0;
        // -1: SDL cannot list its devices, but its default device can still be opened.
        const int count = SDL_GetNumAudioDevices(0);
        return count < 0 ? 1 : static_cast<unsigned long>(count);
    }

    // SDL opens any of the twelve formats it is asked for on a working device and converts for the
    // hardware itself, so a format counts as playable when the device opens with it.
    unsigned long GetDeviceCaps(unsigned long device, stWaveOutCaps& caps) override
    {
        if (device >= GetDeviceCount())
            return kWaveBadDeviceId;
        caps = stWaveOutCaps();
        const std::string name = OpenName(device);
        const char* listed = SDL_GetAudioDeviceName(static_cast<int>(device), 0);
        std::snprintf(caps.name, sizeof caps.name, "%s", listed ? listed : "SDL default output");
        caps.channels = 2;
        // While a stream holds the device a trial open would disturb it (the disk driver would start its
        // file again); the device works, and a working device opens all twelve.
        if (!m_streams.empty())
        {
            caps.formats = kWaveAllFormats;
            return kWaveNoError;
        }
        for (int rate = 0; rate < 3; ++rate)
            for (int sixteen = 0; sixteen < 2; ++sixteen)
                for (int stereo = 0; stereo < 2; ++stereo)
                {
                    // A short buffer keeps the trial quick: closing waits for the device's current buffer.
                    SDL_AudioSpec want = MakeRequest(kRates[rate], stereo ? 2 : 1, sixteen ? 16 : 8, 64);
                    const SDL_AudioDeviceID id =
                        SDL_OpenAudioDevice(name.empty() ? nullptr : name.c_str(), 0, &want, nullptr, 0);
                    if (!id)
                        continue;
                    caps.formats |= QorWaveFormatBit(rate, stereo != 0, sixteen != 0);
                    SDL_CloseAudioDevice(id);
                }
        return kWaveNoError;
    }

    unsigned long Open(unsigned long& handle, unsigned long device, const stWaveFormat& format) override
    {
        handle = 0;
        if (device >= GetDeviceCount())
            return kWaveBadDeviceId;
        if (!IsPlayableFormat(format))
            return kWaveBadFormat;
        if (!m_streams.empty())
            return kWaveAllocated;
        std::unique_ptr<Device> opened(new (std::nothrow) Device);
        if (!opened)
            return kWaveNoMemory;
        opened->playback.format = format;
        opened->silence = format.bitsPerSample == 8 ? 0x80 : 0;
        SDL_AudioSpec want = MakeRequest(format.samplesPerSec, format.channels, format.bitsPerSample, 512);
        want.callback = &SdlAudioPort::Fill;
        want.userdata = opened.get();
        const std::string name = OpenName(device);
        opened->id = SDL_OpenAudioDevice(name.empty() ? nullptr : name.c_str(), 0, &want, nullptr, 0);
        if (!opened->id)
            return kWaveError;
        // From here on the callback plays silence until a buffer is written.
        return Keep(m_devices, std::move(opened), handle);
    }

    // The device asks the source for every buffer on SDL's audio thread, under SDL's device lock. The
    // format is SDL's to convert for the hardware, so the buffer size asked for is the one obtained.
    unsigned long OpenStream(unsigned long& handle, unsigned long device, const stWaveFormat& format,
                             unsigned long bufferFrames, QorAudioSource& source) override
    {
        handle = 0;
        if (device >= GetDeviceCount())
            return kWaveBadDeviceId;
        if (!IsPlayableFormat(format))
            return kWaveBadFormat;
        if (!m_devices.empty() || !m_streams.empty())
            return kWaveAllocated;
        const unsigned long frames = bufferFrames ? bufferFrames : QorDefaultStreamFrames(format.samplesPerSec);
        if (frames > 65535)
            return kWaveInvalidParam;
        std::unique_ptr<Stream> opened(new (std::nothrow) Stream);
        if (!opened)
            return kWaveNoMemory;
        opened->source = &source;
        SDL_AudioSpec want =
            MakeRequest(format.samplesPerSec, format.channels, format.bitsPerSample, static_cast<Uint16>(frames));
        want.callback = &SdlAudioPort::Pull;
        want.userdata = opened.get();
        SDL_AudioSpec got;
        SDL_zero(got);
        const std::string name = OpenName(device);
        opened->id = SDL_OpenAudioDevice(name.empty() ? nullptr : name.c_str(), 0, &want, &got, 0);
        if (!opened->id)
            return kWaveError;
        opened->frames = got.samples;
        return Keep(m_streams, std::move(opened), handle);
    }

    unsigned long GetStreamFrames(unsigned long handle) override
    {
        const auto it = m_streams.find(handle);
        return it == m_streams.end() ? 0 : it->second->frames;
    }

    void LockStream(unsigned long handle) override
    {
        const auto it = m_streams.find(handle);
        if (it != m_streams.end())
            SDL_LockAudioDevice(it->second->id);
    }

    void UnlockStream(unsigned long handle) override
    {
        const auto it = m_streams.find(handle);
        if (it != m_streams.end())
            SDL_UnlockAudioDevice(it->second->id);
    }

    unsigned long CloseStream(unsigned long handle) override
    {
        const auto it = m_streams.find(handle);
        if (it == m_streams.end())
            return kWaveInvalidHandle;
        // Closing waits for SDL's audio thread: the source is not asked again.
        SDL_CloseAudioDevice(it->second->id);
        m_streams.erase(it);
        return kWaveNoError;
    }

protected:
    stPlayback* FindPlayback(unsigned long handle) override
    {
        Device* device = Find(handle);
        return device ? &device->playback : nullptr;
    }

    void LockPlayback(unsigned long handle) override
    {
        if (Device* device = Find(handle))
            SDL_LockAudioDevice(device->id);
    }

    void UnlockPlayback(unsigned long handle) override
    {
        if (Device* device = Find(handle))
            SDL_UnlockAudioDevice(device->id);
    }

    void CloseDevice(unsigned long handle) override
    {
        const auto it = m_devices.find(handle);
        if (it == m_devices.end())
            return;
        // Closing waits for SDL's audio thread, so the callback no longer runs when the state goes.
        SDL_CloseAudioDevice(it->second->id);
        m_devices.erase(it);
    }

private:
    struct Device
    {
        SDL_AudioDeviceID id = 0;
        Uint8 silence = 0;
        stPlayback playback;
    };

    struct Stream
    {
        SDL_AudioDeviceID id = 0;
        QorAudioSource* source = nullptr;
        unsigned long frames = 0;
    };

    static void SDLCALL Pull(void* userdata, Uint8* stream, int len)
    {
        if (len > 0)
            static_cast<Stream*>(userdata)->source->Fill(stream, static_cast<unsigned long>(len));
    }

    static void SDLCALL Fill(void* userdata, Uint8* stream, int len)
    {
        auto* device = static_cast<Device*>(userdata);
        stPlayback& p = device->playback;
        const auto room = static_cast<unsigned long>(std::max(len, 0));
        unsigned long n = 0;
        if (p.held && p.played < p.length)
        {
            n = std::min<unsigned long>(room, p.length - p.played);
            ScaleSamples(stream, p.data + p.played, n, p.played, p.format, p.volume);
            p.played += static_cast<std::uint32_t>(n);
        }
        if (room > n)
            std::memset(stream + n, device->silence, room - n);
    }

    Device* Find(unsigned long handle)
    {
        const auto it = m_devices.find(handle);
        return it == m_devices.end() ? nullptr : it->second.get();
    }

    // The name to open device by: the one chosen by call, else SDL's listed name; empty for SDL's default.
    static std::string OpenName(unsigned long device)
    {
        if (const char* chosen = GetChosenAudioDeviceName())
            return chosen;
        const char* listed = SDL_GetAudioDeviceName(static_cast<int>(device), 0);
        return listed ? listed : "";
    }

    bool m_started;
    // Keeps an opened SDL device under a new handle and starts it (SDL opens devices paused); without memory
    // for the table entry the device is closed again.
    template <class Opened>
    unsigned long Keep(std::map<unsigned long, std::unique_ptr<Opened>>& table, std::unique_ptr<Opened> opened,
                       unsigned long& handle)
    {
        const SDL_AudioDeviceID id = opened->id;
        try
        {
            table[m_nextHandle] = std::move(opened);
        }
        catch (const std::bad_alloc&)
        {
            SDL_CloseAudioDevice(id);
            return kWaveNoMemory;
        }
        handle = m_nextHandle++;
        SDL_PauseAudioDevice(id, 0);
        return kWaveNoError;
    }

    std::map<unsigned long, std::unique_ptr<Device>> m_devices;
    std::map<unsigned long, std::unique_ptr<Stream>> m_streams;
    unsigned long m_nextHandle = 1;
};
} // namespace

std::unique_ptr<QorAudioPort> MakeSdlAudioPort()
{
    return std::make_unique<SdlAudioPort>();
}
} // namespace qor::detail
