#pragma once

#include "core/QorExport.h"

// The wave output device: how many devices there are, which of the twelve PCM formats each plays, and
// an open device that plays one caller-owned buffer at a time, asynchronously, without copying it. The
// calls follow the wave API the library was written against: a result code per call, and a buffer
// header whose flags tell when the buffer is prepared, queued and done.
#include "platform/QorPlatform.h"

#include <cstdint>
#include <vector>

/// Results of the device calls (the wave API's values).
enum : unsigned long
{
    kWaveNoError = 0,
    kWaveError = 1,
    kWaveBadDeviceId = 2,
    /// The device is held: a stream is open while a wave device is asked for, or the other way round.
    kWaveAllocated = 4,
    kWaveInvalidHandle = 5,
    kWaveNoMemory = 7,
    kWaveInvalidParam = 11,
    kWaveBadFormat = 32,
    kWaveStillPlaying = 33,
    kWaveUnprepared = 34,
};

/// Flags of a stWaveHeader.
enum : std::uint32_t
{
    /// The device has finished with the buffer (played to the end, or reset).
    kWaveHeaderDone = 0x01,
    /// Prepare was called and Unprepare not yet.
    kWaveHeaderPrepared = 0x02,
    /// Written and not yet done.
    kWaveHeaderInQueue = 0x10,
};

/// The format bit of stWaveOutCaps for rate index (0 = 11025, 1 = 22050, 2 = 44100 Hz), stereo and 16 bits,
/// in the wave API's order: mono 8, stereo 8, mono 16, stereo 16 for each rate.
constexpr std::uint32_t QorWaveFormatBit(int rateIndex, bool stereo, bool sixteenBits)
{
    return std::uint32_t(1) << (rateIndex * 4 + (sixteenBits ? 2 : 0) + (stereo ? 1 : 0));
}
/// All twelve format bits.
constexpr std::uint32_t kWaveAllFormats = 0xFFF;

/// A PCM output format.
struct QOR_API stWaveFormat
{
    std::int16_t formatTag = 0;
    std::int16_t channels = 0;
    std::int32_t samplesPerSec = 0;
    std::int32_t avgBytesPerSec = 0;
    std::int16_t blockAlign = 0;
    std::int16_t bitsPerSample = 0;
};

/// What a device is and plays.
struct QOR_API stWaveOutCaps
{
    /// Zero-terminated within the 32 bytes.
    char name[32] = {};
    /// QorWaveFormatBit bits of the formats the device can be opened with.
    std::uint32_t formats = 0;
    std::uint16_t channels = 0;
};

/// A buffer handed to a device. The device reads data while the header is in the queue; the caller keeps
/// it alive and untouched until the header is done (or the device reset).
struct QOR_API stWaveHeader
{
    unsigned char* data = nullptr;
    std::uint32_t length = 0;
    std::uint32_t flags = 0;
};

/// What a stream device plays: the device asks it for samples whenever it needs them.
class QOR_API QorAudioSource
{
public:
    virtual ~QorAudioSource() = default;
    /// Fills all bytes of out (whole frames of the stream's format). Called with the stream locked: on the
    /// device's own thread for the SDL2 port, on the caller's thread for the headless one.
    virtual void Fill(unsigned char* out, unsigned long bytes) = 0;
};

/// Sample frames a stream device pulls at a time unless asked otherwise, at 44100 Hz (in proportion at
/// the lower rates): about 11.6 ms.
constexpr unsigned long kDefaultStreamFrames = 512;

/// The wave output device of a port. Device handles are non-zero; 0 names no device. A port supplies the
/// devices; the rules of the buffer header are kept here, the same for every port.
/// \note Header flags change only inside these calls, on the caller's thread: a buffer that has been
///       played to its end is marked done by the next IsPlaying, Unprepare or Write that sees its header.
class QOR_API QorAudioPort
{
public:
    virtual ~QorAudioPort() = default;

    /// Number of output devices.
    virtual unsigned long GetDeviceCount() = 0;
    /// Fills caps for device (0 to count - 1).
    virtual unsigned long GetDeviceCaps(unsigned long device, stWaveOutCaps& caps) = 0;
    /// Opens device to play PCM in format; handle becomes the open device, 0 on failure.
    virtual unsigned long Open(unsigned long& handle, unsigned long device, const stWaveFormat& format) = 0;

    /// Marks header prepared. kWaveInvalidParam for a length without data.
    virtual unsigned long Prepare(unsigned long handle, stWaveHeader& header);
    /// Starts playing header's buffer (it is not copied): done at once when empty. kWaveUnprepared unless
    /// prepared; kWaveStillPlaying while the device still plays a buffer (one buffer at a time).
    virtual unsigned long Write(unsigned long handle, stWaveHeader& header);
    /// True while the device plays header's buffer; marks header done once it no longer does.
    virtual char IsPlaying(unsigned long handle, stWaveHeader& header);
    /// Stops output at once; the device lets go of its buffer.
    virtual unsigned long Reset(unsigned long handle);
    /// Clears the prepared flag (marking a buffer the device has finished with done first).
    /// kWaveStillPlaying while the device still plays it.
    virtual unsigned long Unprepare(unsigned long handle, stWaveHeader& header);
    /// Closes the device; kWaveStillPlaying (device left open) while it still plays a buffer.
    virtual unsigned long Close(unsigned long handle);
    /// Sets the device's volume: low 16 bits the left channel, high 16 bits the right, 0 to 0xFFFF each
    /// (a mono device uses the low word). It scales the samples as they are played; 0xFFFFFFFF (the
    /// volume of a newly opened device) plays them unchanged.
    virtual unsigned long SetVolume(unsigned long handle, unsigned long volume);
    /// The device's volume in SetVolume's packing.
    virtual unsigned long GetVolume(unsigned long handle, unsigned long& volume);

    /// Opens device as a stream that plays what source gives, in format, pulling bufferFrames sample
    /// frames at a time (0 for QorDefaultStreamFrames of its rate). handle becomes the stream, 0 on failure.
    /// \note One holder at a time: kWaveAllocated while a wave device or another stream is open, and Open
    ///       answers kWaveAllocated while a stream is. source must outlive the stream.
    virtual unsigned long OpenStream(unsigned long& handle, unsigned long device, const stWaveFormat& format,
                                     unsigned long bufferFrames, QorAudioSource& source) = 0;
    /// Sample frames the stream pulls at a time, 0 when handle names no stream.
    virtual unsigned long GetStreamFrames(unsigned long handle) = 0;
    /// Holds the stream while what its source plays changes: the device first plays up to the present and
    /// then does not ask the source for samples until UnlockStream. Calls do not nest.
    virtual void LockStream(unsigned long handle) = 0;
    virtual void UnlockStream(unsigned long handle) = 0;
    /// Stops and closes the stream; once it returns the source is never asked again.
    virtual unsigned long CloseStream(unsigned long handle) = 0;

protected:
    /// The buffer an open device plays and where it has got to.
    struct stPlayback
    {
        stWaveFormat format;
        const unsigned char* data = nullptr;
        std::uint32_t length = 0;
        std::uint32_t played = 0;
        /// The device holds data (from Write until the next Reset, Write or Close).
        bool held = false;
        std::uint32_t volume = 0xFFFFFFFF;
    };

    /// The playback state of handle, null when it names no open device.
    virtual stPlayback* FindPlayback(unsigned long handle) = 0;
    /// Guard the playback state against a device that plays on a thread of its own.
    virtual void LockPlayback(unsigned long handle) { (void)handle; }
    virtual void UnlockPlayback(unsigned long handle) { (void)handle; }
    /// Brings the playback up to the present (a device that plays on the caller's thread does it here).
    virtual void CatchUp(unsigned long handle) { (void)handle; }
    /// Releases handle's device; it no longer plays anything.
    virtual void CloseDevice(unsigned long handle) = 0;

private:
    /// Whether handle's device still plays header's buffer (the lock is taken here).
    bool PlaysBuffer(unsigned long handle, const stPlayback& playback, const stWaveHeader& header);
    /// Marks a queued header done when its device no longer plays it.
    void Settle(unsigned long handle, stPlayback& playback, stWaveHeader& header);
};

/// Buffer frames for a stream at samplesPerSec when none are asked for: kDefaultStreamFrames at 44100 Hz,
/// in proportion below and above, rounded down to a power of two (at least 64).
QOR_API unsigned long QorDefaultStreamFrames(long samplesPerSec);

/// The port's wave output device, made on first use for the port QorGetPortKind names (which fixes the
/// choice of port, as QorGetClock does).
QOR_API QorAudioPort& QorGetAudioPort();
/// The wave output device if one was made and still exists (not yet destroyed at exit), else null.
QOR_API QorAudioPort* QorFindAudioPort();

/// Makes the SDL2 port open its output device by name instead of the names SDL lists (null returns to the
/// listed names). SDL's disk driver writes what it plays to the file of that name; the dummy driver takes
/// no name. Call it before QorAudio::Initialize; the headless port ignores it.
QOR_API void QorSetAudioDeviceName(const char* name);

/// The headless port's wave output device: devices that play at the nominal rate on the port's clock
/// (QorGetManualClock) and record every byte they play, volume applied.
class QOR_API QorHeadlessAudioPort : public QorAudioPort
{
public:
    /// Number of devices reported (1 at start). Devices added here play all twelve formats.
    virtual void SetDeviceCount(unsigned long count) = 0;
    /// The QorWaveFormatBit bits device reports and can be opened with.
    virtual void SetDeviceFormats(unsigned long device, std::uint32_t formats) = 0;
    /// Every byte played so far by any device or stream, in order, volume applied (brought up to the clock
    /// first). A stream pulls one buffer of frames as soon as the clock passes the time that buffer starts
    /// (buffer k of n frames at rate r starts k x n / r seconds after the stream opened).
    virtual std::vector<unsigned char> GetPlayedBytes() = 0;
    virtual void ClearPlayedBytes() = 0;
    /// Index of the device last opened, -1 before any.
    virtual long GetLastOpenedDevice() const = 0;
    /// The format of the last successful Open.
    virtual stWaveFormat GetLastOpenedFormat() const = 0;
    /// Devices open now.
    virtual unsigned long GetOpenCount() const = 0;
    /// Number of Reset calls on open devices so far.
    virtual unsigned long GetResetCount() const = 0;
};

/// The headless wave output device, or null when another port is in use.
QOR_API QorHeadlessAudioPort* QorGetHeadlessAudioPort();

namespace qor::detail
{
/// Copies n sample bytes from src to dst, scaled by volume (packed as for SetVolume), for a stream in
/// format that is offset bytes into its buffer. 8-bit samples scale around their midpoint 128. The bytes
/// of a trailing partial sample are copied as they are.
void ScaleSamples(unsigned char* dst, const unsigned char* src, unsigned long n, unsigned long offset,
                  const stWaveFormat& format, std::uint32_t volume);
/// Converts size bytes of PCM in from into to with SDL's audio stream (rate, width and channels at once;
/// the rate is resampled, not repeated). out receives size / from's frame x to's rate / from's rate frames
/// (rounded down). False when either format is not playable or memory runs out.
bool ConvertWithAudioStream(const stWaveFormat& from, const unsigned char* data, unsigned long size,
                            const stWaveFormat& to, std::vector<unsigned char>& out);
/// True for a PCM format either port can play: tag 1, 1 or 2 channels, 8 or 16 bits, a positive rate,
/// and block align and bytes per second that agree with them.
bool IsPlayableFormat(const stWaveFormat& format);
} // namespace qor::detail
