#include "QorAudioPort.h"

#include "headless/QorHeadlessAudio.h"
#include "sdl2/QorSdlAudio.h"

#include <cstring>
#include <memory>
#include <string>

namespace
{
// Set once the port has been made, and once it has been destroyed at exit: a QorAudio destroyed later
// (a static one) must not reach for it. Plain flags, so they stay valid during static destruction.
bool g_portMade = false;
bool g_portGone = false;

struct PortHolder
{
    std::unique_ptr<QorAudioPort> port;
    ~PortHolder()
    {
        port.reset();
        g_portGone = true;
    }
};

PortHolder& Holder()
{
    static PortHolder holder;
    return holder;
}

struct DeviceName
{
    bool set = false;
    std::string name;
};

DeviceName& ChosenDeviceName()
{
    static DeviceName name;
    return name;
}
} // namespace

QorAudioPort& QorGetAudioPort()
{
    PortHolder& holder = Holder();
    if (!holder.port)
    {
        // The clock fixes the choice of port; the headless device also plays by it.
        QorGetClock();
        if (QorGetPortKind() == QorPortKind::kSdl2)
            holder.port = qor::detail::MakeSdlAudioPort();
        else
            holder.port = qor::detail::MakeHeadlessAudioPort();
        g_portMade = true;
    }
    return *holder.port;
}

QorAudioPort* QorFindAudioPort()
{
    if (!g_portMade || g_portGone)
        return nullptr;
    return Holder().port.get();
}

QorHeadlessAudioPort* QorGetHeadlessAudioPort()
{
    return dynamic_cast<QorHeadlessAudioPort*>(&QorGetAudioPort());
}

void QorSetAudioDeviceName(const char* name)
{
    DeviceName& chosen = ChosenDeviceName();
    chosen.set = name != nullptr;
    chosen.name = name ? name : "";
}

unsigned long QorDefaultStreamFrames(long samplesPerSec)
{
    const std::uint64_t wanted =
        samplesPerSec > 0 ? std::uint64_t(kDefaultStreamFrames) * std::uint64_t(samplesPerSec) / 44100 : 0;
    unsigned long frames = 64;
    while (frames * 2 <= wanted && frames < 65536)
        frames *= 2;
    return frames;
}

namespace qor::detail
{
const char* GetChosenAudioDeviceName()
{
    const DeviceName& chosen = ChosenDeviceName();
    return chosen.set ? chosen.name.c_str() : nullptr;
}

bool IsPlayableFormat(const stWaveFormat& format)
{
    if (format.formatTag != 1 || (format.channels != 1 && format.channels != 2) ||
        (format.bitsPerSample != 8 && format.bitsPerSample != 16) || format.samplesPerSec < 1 ||
        format.samplesPerSec > 1000000)
        return false;
    const long blockAlign = format.channels * format.bitsPerSample / 8;
    return format.blockAlign == blockAlign && format.avgBytesPerSec == blockAlign * format.samplesPerSec;
}

void ScaleSamples(unsigned char* dst, const unsigned char* src, unsigned long n, unsigned long offset,
                  const stWaveFormat& format, std::uint32_t volume)
{
    if (n == 0)
        return;
    const bool stereo = format.channels == 2;
    const std::int64_t left = volume & 0xFFFF;
    const std::int64_t right = stereo ? volume >> 16 : left;
    if (left == 0xFFFF && right == 0xFFFF)
    {
        std::memcpy(dst, src, n);
        return;
    }
    const unsigned long width = format.bitsPerSample == 16 ? 2 : 1;
    unsigned long i = 0;
    for (; i + width <= n; i += width)
    {
        const std::int64_t v = stereo && ((offset + i) / width) % 2 ? right : left;
        if (width == 1)
        {
            dst[i] = static_cast<unsigned char>(128 + (std::int64_t(src[i]) - 128) * v / 0xFFFF);
        }
        else
        {
            const auto s = static_cast<std::int16_t>(src[i] | src[i + 1] << 8);
            const auto out = static_cast<std::uint16_t>(s * v / 0xFFFF);
            dst[i] = static_cast<unsigned char>(out);
            dst[i + 1] = static_cast<unsigned char>(out >> 8);
        }
    }
    if (i < n)
        std::memcpy(dst + i, src + i, n - i);
}
} // namespace qor::detail

bool QorAudioPort::PlaysBuffer(unsigned long handle, const stPlayback& playback, const stWaveHeader& header)
{
    LockPlayback(handle);
    const bool plays = playback.held && playback.data == header.data && playback.length == header.length &&
                       playback.played < playback.length;
    UnlockPlayback(handle);
    return plays;
}

void QorAudioPort::Settle(unsigned long handle, stPlayback& playback, stWaveHeader& header)
{
    if ((header.flags & kWaveHeaderInQueue) && !PlaysBuffer(handle, playback, header))
        header.flags = (header.flags & ~kWaveHeaderInQueue) | kWaveHeaderDone;
}

unsigned long QorAudioPort::Prepare(unsigned long handle, stWaveHeader& header)
{
    if (!FindPlayback(handle))
        return kWaveInvalidHandle;
    if (!header.data && header.length)
        return kWaveInvalidParam;
    header.flags |= kWaveHeaderPrepared;
    return kWaveNoError;
}

unsigned long QorAudioPort::Write(unsigned long handle, stWaveHeader& header)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return kWaveInvalidHandle;
    if (!(header.flags & kWaveHeaderPrepared))
        return kWaveUnprepared;
    CatchUp(handle);
    Settle(handle, *playback, header);
    LockPlayback(handle);
    const bool busy = playback->held && playback->played < playback->length;
    if (!busy)
    {
        playback->data = header.data;
        playback->length = header.length;
        playback->played = 0;
        playback->held = true;
    }
    UnlockPlayback(handle);
    if (busy)
        return kWaveStillPlaying;
    header.flags = (header.flags & ~kWaveHeaderDone) | kWaveHeaderInQueue;
    return kWaveNoError;
}

char QorAudioPort::IsPlaying(unsigned long handle, stWaveHeader& header)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return 0;
    CatchUp(handle);
    Settle(handle, *playback, header);
    return (header.flags & kWaveHeaderInQueue) ? 1 : 0;
}

unsigned long QorAudioPort::Reset(unsigned long handle)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return kWaveInvalidHandle;
    CatchUp(handle);
    LockPlayback(handle);
    playback->held = false;
    playback->data = nullptr;
    playback->length = 0;
    playback->played = 0;
    UnlockPlayback(handle);
    return kWaveNoError;
}

unsigned long QorAudioPort::Unprepare(unsigned long handle, stWaveHeader& header)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return kWaveInvalidHandle;
    if (!(header.flags & kWaveHeaderPrepared))
        return kWaveNoError;
    CatchUp(handle);
    Settle(handle, *playback, header);
    if (header.flags & kWaveHeaderInQueue)
        return kWaveStillPlaying;
    header.flags &= ~kWaveHeaderPrepared;
    return kWaveNoError;
}

unsigned long QorAudioPort::Close(unsigned long handle)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return kWaveInvalidHandle;
    CatchUp(handle);
    LockPlayback(handle);
    const bool busy = playback->held && playback->played < playback->length;
    UnlockPlayback(handle);
    if (busy)
        return kWaveStillPlaying;
    CloseDevice(handle);
    return kWaveNoError;
}

unsigned long QorAudioPort::SetVolume(unsigned long handle, unsigned long volume)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return kWaveInvalidHandle;
    // What was played before the change keeps the old volume.
    CatchUp(handle);
    LockPlayback(handle);
    playback->volume = static_cast<std::uint32_t>(volume);
    UnlockPlayback(handle);
    return kWaveNoError;
}

unsigned long QorAudioPort::GetVolume(unsigned long handle, unsigned long& volume)
{
    stPlayback* playback = FindPlayback(handle);
    if (!playback)
        return kWaveInvalidHandle;
    LockPlayback(handle);
    volume = playback->volume;
    UnlockPlayback(handle);
    return kWaveNoError;
}
