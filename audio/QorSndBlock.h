#pragma once

#include "core/QorExport.h"

#include "qor/core.h"
#include "qor/files.h"

#include <cstdint>

/// One sound as uncompressed PCM samples with the description of their format. 8-bit samples are
/// unsigned, 16-bit samples signed little-endian, interleaved by channel.
/// \note Stored in groups as a QSG record: 22 bytes of format fields and data size, then the samples.
class QOR_API QorSndBlock : public QorDataBlock
{
public:
    /// Bytes of a QSG record before its samples.
    static constexpr unsigned long kQsgHeaderSize = 22;
    /// The largest sample data a conversion makes (1 GiB, about 100 minutes of 44.1 kHz 16-bit stereo).
    static constexpr unsigned long kMaxSoundBytes = 0x40000000;

    /// An empty block: every field zero, no data.
    QorSndBlock() = default;
    /// A deep copy: the samples are copied too.
    QorSndBlock(const QorSndBlock& other);
    /// Copies the fields and the samples. When the samples cannot be allocated the block ends up empty.
    QorSndBlock& operator=(const QorSndBlock& other);
    ~QorSndBlock() override;

    short GetFormatTag() const { return m_formatTag; }
    short GetChannels() const { return m_channels; }
    short GetBlockAlign() const { return m_blockAlign; }
    short GetBitsPerSample() const { return m_bitsPerSample; }
    short GetExtraSize() const { return m_extraSize; }
    long GetSamplesPerSec() const { return m_samplesPerSec; }
    long GetAvgBytesPerSec() const { return m_avgBytesPerSec; }
    unsigned long GetDataSize() const { return m_dataSize; }
    /// The samples, null when the block is empty.
    unsigned char* GetDataPtr() const { return m_data; }

    /// Frees the samples and zeroes every field.
    void Reset();
    /// Makes the block a PCM sound of the given format holding a copy of size bytes of samples.
    /// Returns 0 (block unchanged) for channels other than 1 or 2, bits other than 8 or 16, a rate
    /// below 1, a null samples pointer with a size, or a failed allocation.
    char SetSamples(short channels, long samplesPerSec, short bitsPerSample, const unsigned char* samples,
                    unsigned long size);

    /// Reads a RIFF wave file from the stream's position: "RIFF", size, "WAVE", then the "fmt " chunk
    /// (which must come first and have format tag 1), then chunks are skipped up to "data". Returns the
    /// bytes the stream moved over, 0 on failure.
    /// \note On failure the stream stands where it stood and the block is empty. Chunk sizes are used as
    ///       they stand: no pad byte is skipped after an odd-sized chunk. A chunk or data size larger than
    ///       what is left of the stream is a failure.
    unsigned long LoadWAV(QorFile& file);
    /// Reads a QSG record (the previous samples are freed first). Returns dataSize + 22, or 0 with the
    /// stream restored and the block empty when the record is short or claims more data than is left.
    unsigned long LoadQSG(QorFile& file);
    /// Writes the QSG record. Returns the sample bytes written + 22, 0 when the stream is closed.
    unsigned long SaveQSG(QorFile& file);
    unsigned long LoadData(QorFile& file) override { return LoadQSG(file); }
    unsigned long SaveData(QorFile& file) override { return SaveQSG(file); }

    /// Resamples to rate (11025, 22050 or 44100 only) by an integer factor: raising repeats every frame
    /// factor times, lowering keeps one frame out of every factor. A rate that is not a whole multiple or
    /// divisor of the present one keeps the samples and only relabels them. Returns 1 when done or when
    /// the rate is already rate; 0, with the block unchanged, for another rate, for a block without a
    /// rate or frame size, or when the result would exceed kMaxSoundBytes or cannot be allocated.
    char ConvertFrequency(long rate);
    /// Converts the samples between 8 and 16 bits. Returns 1 when done or when bits is already the
    /// block's width; 0 (unchanged) for any other pair.
    /// \note Only the data and its size change: bitsPerSample, blockAlign and avgBytesPerSec keep their
    ///       old values, so callers that convert for a device take the format from the device.
    char ConvertSampleBits(short bits);

private:
    /// Replaces the samples with data (owned from now on) of size bytes.
    void TakeData(unsigned char* data, unsigned long size);

    std::int16_t m_formatTag = 0;
    std::int16_t m_channels = 0;
    std::int32_t m_samplesPerSec = 0;
    std::int32_t m_avgBytesPerSec = 0;
    std::int16_t m_blockAlign = 0;
    std::int16_t m_bitsPerSample = 0;
    std::int16_t m_extraSize = 0;
    std::uint32_t m_dataSize = 0;
    unsigned char* m_data = nullptr;
};
