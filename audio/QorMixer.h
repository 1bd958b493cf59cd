#pragma once

#include "audio/QorSndBlock.h"
#include "platform/QorAudioPort.h"
#include "qor/core.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Several sounds at once on the platform's output device: a fixed number of voices, each playing a sound
/// at its own volume and pan, once or looped, mixed into one stream that the device pulls in small buffers.
/// Sounds are converted to the output format when first played (or prepared) and the conversion is kept.
///
/// Mixing rule, per voice and channel: gain = volume x (kFullVolume - pan towards the other side) /
/// kFullVolume (so a centred voice plays at its volume on both sides), contribution = sample x gain >> 8
/// (rounding down; 8-bit samples are taken as sample - 128). Contributions are summed in 32 bits and the
/// sum saturates at the output's range; it never wraps.
/// \note The device is held by one owner at a time: while a QorAudio has its wave device open, Open
///       returns 0 with kWaveAllocated in GetLastResult, and while a mixer is open QorAudio::Initialize
///       gets kWaveAllocated and opens nothing.
class QOR_API QorMixer : public QorObj, public QorAudioSource
{
public:
    enum : unsigned long
    {
        kDefaultVoices = 8,
        kMaxVoices = 256,
    };
    enum : long
    {
        /// Volumes run from 0 (silent) to kFullVolume (the samples as they are).
        kFullVolume = 256,
        /// Pans run from kPanLeft (right side silent) through kPanCentre to kPanRight (left side silent).
        kPanLeft = -256,
        kPanCentre = 0,
        kPanRight = 256,
    };

    QorMixer();
    /// Closes the stream (the device stops asking for samples before the voices go).
    ~QorMixer() override;
    QorMixer(const QorMixer&) = delete;
    QorMixer& operator=(const QorMixer&) = delete;

    /// Opens the port's device 0 as a stream of channels x samplesPerSec x bitsPerSample (1 or 2 channels;
    /// 11025, 22050 or 44100 Hz; 8 or 16 bits) with voices voices (1 to kMaxVoices) and a buffer of
    /// bufferFrames sample frames (0: QorDefaultStreamFrames, 512 at 44100 Hz). Returns 0 for other
    /// arguments, when already open, when memory runs out (code 1) or when the device refuses
    /// (GetLastResult tells why, kWaveAllocated while QorAudio holds it).
    char Open(short channels, long samplesPerSec, short bitsPerSample, unsigned long voices = kDefaultVoices,
              unsigned long bufferFrames = 0);
    /// Stops every voice, closes the stream and lets go of the kept conversions.
    void Close();
    char IsOpen() const { return m_stream != 0; }

    /// Starts sound on a free voice at volume (0 to kFullVolume) and pan (kPanLeft to kPanRight), from its
    /// first frame, once or, with loop, until stopped. Returns the voice's handle; a null handle when the
    /// mixer is closed, every voice is busy, the sound is empty or not PCM, or its conversion fails.
    /// \note The mixer plays its own converted copy: the block may change or go once Play returns, but a
    ///       block changed in place under the same address and format is not converted again (see Forget).
    QorGuider Play(const QorSndBlock& sound, char loop = 0, long volume = kFullVolume, long pan = kPanCentre);
    /// Converts sound to the output format now, so that its first Play does no conversion. 0 as Play fails.
    char Prepare(const QorSndBlock& sound);
    /// Stops the voice voice names. 0 when it names no playing voice (it ended, was stopped or is stale).
    char Stop(const QorGuider& voice);
    void StopAll();
    /// Sets the volume (0 to kFullVolume) of a playing voice; 0 when the handle names none.
    char SetVolume(const QorGuider& voice, long volume);
    /// Sets the pan (kPanLeft to kPanRight) of a playing voice; 0 when the handle names none.
    char SetPan(const QorGuider& voice, long pan);
    /// Whether the voice still plays (a sound played once ends by itself).
    char IsPlaying(const QorGuider& voice);
    /// Frames of the voice mixed into the output so far, every pass of a loop counted; 0 when the handle
    /// names no playing voice.
    unsigned long GetFramesMixed(const QorGuider& voice);
    /// Holds the device from Hold to Release: it takes no samples in between, so the voices started or
    /// stopped in between change on the same frame. Pairs nest.
    /// \note Prepare the sounds first: a conversion made while held keeps the device waiting.
    void Hold() { Lock(); }
    void Release() { Unlock(); }
    /// Drops the kept conversion of sound, stopping the voices that play it.
    void Forget(const QorSndBlock& sound);

    /// Voices busy now.
    unsigned long GetPlayingCount();
    unsigned long GetVoiceCount() const { return static_cast<unsigned long>(m_voices.size()); }
    /// The output format (all zero while closed).
    const stWaveFormat& GetFormat() const { return m_format; }
    /// Sample frames the device pulls at a time.
    unsigned long GetBufferFrames() const { return m_bufferFrames; }
    /// The result (a kWave... code) of the last device call.
    unsigned long GetLastResult() const { return m_lastResult; }
    /// Conversions kept now, and conversions made since Open.
    unsigned long GetKeptCount() const { return static_cast<unsigned long>(m_kept.size()); }
    unsigned long GetConversionCount() const { return m_conversions; }
    /// The kept conversion of sound in the output format's bytes; 0 when there is none.
    char GetKeptSamples(const QorSndBlock& sound, std::vector<unsigned char>& bytes) const;

    /// Mixes the next bytes of output (whole frames) from the playing voices into out. The device calls it
    /// with the stream locked; call it directly only on a mixer whose stream does not play on its own.
    void Fill(unsigned char* out, unsigned long bytes) override;

private:
    /// A sound converted to the output format, with what it was converted from.
    struct stKept
    {
        const QorSndBlock* block = nullptr;
        const unsigned char* blockData = nullptr;
        std::uint32_t blockSize = 0;
        std::int16_t channels = 0;
        std::int16_t bits = 0;
        std::int32_t rate = 0;
        /// Output samples: 16-bit ones here, 8-bit ones (unsigned) in samples8.
        std::vector<std::int16_t> samples16;
        std::vector<std::uint8_t> samples8;
        std::uint32_t frames = 0;
    };

    struct stVoice
    {
        /// 0 while the voice is free; the number in its handle otherwise.
        std::uint32_t serial = 0;
        const stKept* sound = nullptr;
        std::uint32_t position = 0;
        std::uint64_t mixed = 0;
        std::int32_t volume = kFullVolume;
        std::int32_t pan = kPanCentre;
        std::int32_t gainLeft = 0;
        std::int32_t gainRight = 0;
        bool loop = false;
    };

    /// The kept conversion of sound, made now when there is none; null on failure.
    const stKept* Keep(const QorSndBlock& sound);
    /// The voice a handle names while it plays, else null. Call with the stream locked.
    stVoice* FindVoice(const QorGuider& voice);
    static void UpdateGains(stVoice& voice);
    void MixVoice(stVoice& voice, std::int32_t* acc, unsigned long frames);
    void Lock();
    void Unlock();

    std::vector<std::unique_ptr<stKept>> m_kept;
    std::vector<stVoice> m_voices;
    /// Sums of one buffer, m_bufferFrames x channels.
    std::vector<std::int32_t> m_acc;
    std::uint32_t m_nextSerial = 1;
    unsigned long m_stream = 0;
    /// Depth of Lock calls; the stream is locked on the way in and unlocked on the way out.
    unsigned long m_lockDepth = 0;
    stWaveFormat m_format;
    unsigned long m_bufferFrames = 0;
    unsigned long m_lastResult = 0;
    unsigned long m_conversions = 0;
};
