#pragma once

#include "core/QorExport.h"

#include "qor/core.h"
#include "audio/QorSndBlock.h"
#include "audio/QorSndGroup.h"
#include "platform/QorAudioPort.h"

#include <cstdint>

class QorIntegration;

/// A fixed table of loaded sounds, played one at a time on a wave output device. The device and the
/// output format are chosen by Initialize; sounds loaded by name are converted to that format and handed
/// to the device whole, as one buffer. The integration object's timer calls OnTimer.
/// \note There is no mixing: the channel records and the CD members are inert parts of the interface.
class QOR_API QorAudio
{
public:
    enum : unsigned long
    {
        kSoundCount = 500,
        kChannelCount = 16,
    };

    /// Reserved for mixing; nothing reads it.
    struct SoundChannel
    {
        std::uint32_t sound = 0;
        char free = 1;
        char playing = 0;
        char looping = 0;
        std::uint32_t position = 0;
    };

    /// A slot of the sound table; id 0 marks it free.
    struct stSoundSlot
    {
        std::uint32_t id = 0;
        QorSndBlock sound;
        /// The slot can be removed only while this is 0; nothing in the library raises it.
        std::uint32_t useCount = 0;
    };

    /// Every slot free, the next sound number 1, no device.
    QorAudio();
    /// Copies every slot (samples deep-copied), the channels and all other fields, the device handle too.
    /// \note Only the object that opened the device closes it on destruction.
    QorAudio(const QorAudio& other);
    QorAudio& operator=(const QorAudio& other);
    /// Frees the samples. A device this object opened is stopped and closed first, so that it never reads
    /// freed samples; a device still playing a buffer this object wrote is stopped.
    ~QorAudio();

    /// Chooses a device playing channels x samplesPerSec x bitsPerSample (11025, 22050 or 44100 Hz; 1 or
    /// 2 channels; 8 or 16 bits) and opens it. Returns 0 for other arguments, when there is no device, or
    /// when no device plays the format. With firstDeviceOnly only device 0 is examined, and when it lacks
    /// the format the rate and width fall back (for the requested channels) to the lowest rate it plays,
    /// 16 bits before 8. With disabled set, playing is refused and the output format is left as it was.
    /// \note Returns 1 once a device is chosen, whether or not it opens: see GetLastResult (kWaveAllocated
    ///       while a QorMixer holds the device).
    char Initialize(short channels, long samplesPerSec, short bitsPerSample, char firstDeviceOnly, char disabled);
    /// Closes the device (refused, with kWaveStillPlaying in GetLastResult, while it plays: StopSound first).
    void Exit();

    /// Stores the buffer length in milliseconds and its size in bytes in the output format.
    void SetBuferSizeInTime(long ms);
    long GetBuferSizeInTime() const { return m_bufferSizeInTime; }
    unsigned long GetBuferSizeInBytes() const { return m_bufferSizeInBytes; }
    /// Sets the device's volume: low 16 bits the left channel, high 16 bits the right, 0 to 0xFFFF each.
    void SetVolumn(unsigned long volume);
    /// The device's volume in SetVolumn's packing; 0 without a device.
    unsigned long GetVolumn();

    /// Takes a free slot and loads the block named name into it, converting it to the output format's
    /// rate and width when it loads. The handle is returned even when loading fails (the slot then holds
    /// an empty block); null when all slots are taken.
    QorGuider CreateSound(QorSndGroup& group, const char* name);
    /// Takes a free slot and loads the block at index, keeping its file's rate and width.
    QorGuider CreateSound(QorSndGroup& group, unsigned long index);
    /// Frees the sound sound names (when its use count is 0) and clears the handle. 0 when it names none.
    /// \note A sound the device plays is stopped first.
    char RemoveSound(QorGuider& sound);
    /// Mixing channels are not offered: always a null handle.
    QorGuider CreateChannel(QorGuider& sound);

    /// Stops the sound playing, then hands sound's samples to the device. 0 when disabled or when sound
    /// names no sound of this table; 1 otherwise (device errors only reach GetLastResult).
    /// \note The samples must stay untouched until StopSound: do not remove or reload a playing sound.
    char PlaySound(QorGuider& sound);
    /// Stops the device and takes the buffer back; 0 when disabled.
    char StopSound();
    /// Releases a buffer whose header shows exactly the done flag. Always 0.
    /// \note A buffer that finished while prepared shows done and prepared, so it stays with the device
    ///       until the next PlaySound or StopSound.
    char OnTimer();
    /// Whether the device still plays the sound handed to it (its header is brought up to date).
    char IsPlaying();

    /// CD audio is not offered: 0.
    char CDOpen() { return 0; }
    /// CD audio is not offered: 0.
    char CDPlayTrack(long track)
    {
        (void)track;
        return 0;
    }
    /// CD audio is not offered: does nothing.
    void CDStop() {}

    void SetTimerClick(unsigned long click) { m_timerClick = static_cast<std::uint32_t>(click); }
    unsigned long GetTimerClick() const { return m_timerClick; }
    void SetIntegrationPtr(QorIntegration* integration) { m_integration = integration; }
    QorIntegration* GetIntegrationPtr() const { return m_integration; }

    /// The block of the sound sound names, null when it names none of this table.
    QorSndBlock* GetSound(const QorGuider& sound);
    /// The sound playing (null when none).
    const QorGuider& GetPlaying() const { return m_playing; }
    /// Flag index rate x 4 + stereo x 2 + sixteen-bit (rate 0 = 11025, 1 = 22050, 2 = 44100 Hz) of the
    /// device examined last; 0 for an index past 11.
    char GetFormatSupport(unsigned long index) const { return index < 12 ? m_formatSupport[index] : 0; }
    const stWaveFormat& GetFormat() const { return m_format; }
    char IsDisabled() const { return m_disabled; }
    unsigned long GetDeviceCount() const { return m_deviceCount; }
    const stWaveOutCaps& GetDeviceCaps() const { return m_deviceCaps; }
    /// The open device's handle, 0 when none.
    unsigned long GetDevice() const { return m_device; }
    const stWaveHeader& GetHeader() const { return m_header; }
    /// The result (a kWave... code) of the last device call.
    unsigned long GetLastResult() const { return m_lastResult; }
    const SoundChannel& GetChannel(unsigned long index) const { return m_channels[index % kChannelCount]; }

protected:
    /// The first free slot with the next sound number; a null handle when all slots are taken.
    QorGuider CreateNewSnd();
    /// Frees slot: id 0, block emptied, use count 0.
    void KillSnd(unsigned long slot);
    /// The slot sound names (its pointer is one of the table's slots and its number that slot's id), or -1.
    long FindSlot(const QorGuider& sound) const;
    /// Stops and takes back a buffer still with the device, and closes the device when this object
    /// opened it.
    void ReleaseDevice();

    stSoundSlot m_sounds[kSoundCount];
    SoundChannel m_channels[kChannelCount];
    std::uint32_t m_nextSoundId = 1;
    char m_formatSupport[12] = {};
    char m_disabled = 0;
    std::uint32_t m_timerClick = 0;
    std::int32_t m_bufferSizeInTime = 0;
    std::uint32_t m_bufferSizeInBytes = 0;
    QorGuider m_playing;
    QorIntegration* m_integration = nullptr;
    std::uint32_t m_deviceCount = 0;
    stWaveOutCaps m_deviceCaps;
    unsigned long m_device = 0;
    stWaveFormat m_format;
    stWaveHeader m_header;
    std::uint32_t m_lastResult = 0;

private:
    /// This object opened m_device (copies share the handle but do not own it).
    bool m_ownsDevice = false;
};
