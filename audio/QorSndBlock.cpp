#include "QorSndBlock.h"

#include "core/QorError.h"
#include "files/FileError.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace
{
// Reads one little-endian field; false when the stream could not deliver all of its bytes.
template <typename T> bool ReadField(QorFile& file, T& value)
{
    const unsigned long before = file.GetPosition();
    file >> value;
    return file.GetPosition() - before == sizeof(T);
}

bool ReadTag(QorFile& file, char (&tag)[4])
{
    return file.Read(tag, sizeof tag) == sizeof tag;
}

bool IsTag(const char (&tag)[4], const char* expected)
{
    return std::memcmp(tag, expected, 4) == 0;
}

bool IsDeviceRate(long rate)
{
    return rate == 11025 || rate == 22050 || rate == 44100;
}
} // namespace

QorSndBlock::QorSndBlock(const QorSndBlock& other) : QorDataBlock(other)
{
    *this = other;
}

QorSndBlock& QorSndBlock::operator=(const QorSndBlock& other)
{
    if (this == &other)
        return *this;
    Reset();
    QorDataBlock::operator=(other);
    unsigned char* data = nullptr;
    if (other.m_dataSize)
    {
        data = new (std::nothrow) unsigned char[other.m_dataSize];
        if (!data)
            return *this;
        std::memcpy(data, other.m_data, other.m_dataSize);
    }
    m_formatTag = other.m_formatTag;
    m_channels = other.m_channels;
    m_samplesPerSec = other.m_samplesPerSec;
    m_avgBytesPerSec = other.m_avgBytesPerSec;
    m_blockAlign = other.m_blockAlign;
    m_bitsPerSample = other.m_bitsPerSample;
    m_extraSize = other.m_extraSize;
    m_dataSize = other.m_dataSize;
    m_data = data;
    return *this;
}

QorSndBlock::~QorSndBlock()
{
    delete[] m_data;
}

void QorSndBlock::Reset()
{
    delete[] m_data;
    m_data = nullptr;
    m_formatTag = 0;
    m_channels = 0;
    m_samplesPerSec = 0;
    m_avgBytesPerSec = 0;
    m_blockAlign = 0;
    m_bitsPerSample = 0;
    m_extraSize = 0;
    m_dataSize = 0;
}

void QorSndBlock::TakeData(unsigned char* data, unsigned long size)
{
    delete[] m_data;
    m_data = data;
    m_dataSize = static_cast<std::uint32_t>(size);
}

char QorSndBlock::SetSamples(short channels, long samplesPerSec, short bitsPerSample, const unsigned char* samples,
                             unsigned long size)
{
    if ((channels != 1 && channels != 2) || (bitsPerSample != 8 && bitsPerSample != 16) || samplesPerSec < 1 ||
        samplesPerSec > INT32_MAX / 4 || (size && !samples) || size > kMaxSoundBytes)
        return 0;
    unsigned char* data = nullptr;
    if (size)
    {
        data = new (std::nothrow) unsigned char[size];
        if (!data)
            return 0;
        std::memcpy(data, samples, size);
    }
    Reset();
    m_formatTag = 1;
    m_channels = channels;
    m_samplesPerSec = static_cast<std::int32_t>(samplesPerSec);
    m_blockAlign = static_cast<std::int16_t>(channels * bitsPerSample / 8);
    m_avgBytesPerSec = static_cast<std::int32_t>(m_blockAlign * samplesPerSec);
    m_bitsPerSample = bitsPerSample;
    TakeData(data, size);
    return 1;
}

unsigned long QorSndBlock::LoadWAV(QorFile& file)
{
    Reset();
    if (!file.IsOpen())
        return QorSetError("reading a wave file: the stream is not open");
    const unsigned long start = file.GetPosition();
    // Nothing is stored before the samples are in: a failure only has to put the stream back. The error
    // names the byte where reading stopped.
    auto fail = [&](const char* what) -> unsigned long
    {
        if (file.GetFileLength() == 0)
            qor::detail::FileError(file, 0, "the file is empty");
        else
            qor::detail::FileError(file, file.GetPosition(), "%s", what);
        file.Seek(start, 0, 1);
        return 0;
    };

    char tag[4];
    unsigned int riffSize = 0;
    if (!ReadTag(file, tag))
        return fail("truncated: no RIFF tag");
    if (!IsTag(tag, "RIFF"))
    {
        qor::detail::FileError(file, start, "not a RIFF wave: the tag is \"%.4s\", not \"RIFF\"", tag);
        file.Seek(start, 0, 1);
        return 0;
    }
    if (!ReadField(file, riffSize) || !ReadTag(file, tag))
        return fail("truncated: RIFF header");
    if (!IsTag(tag, "WAVE"))
        return fail("not a wave: the RIFF form is not \"WAVE\"");
    if (!ReadTag(file, tag) || !IsTag(tag, "fmt "))
        return fail("the \"fmt \" chunk does not follow the RIFF header");

    // The chunk must hold the sixteen bytes of PCM fields, and its rest must lie within the file.
    unsigned int fmtSize = 0;
    short formatTag = 0, channels = 0, blockAlign = 0, bitsPerSample = 0;
    int samplesPerSec = 0, avgBytesPerSec = 0;
    if (!ReadField(file, fmtSize) || fmtSize < 16 || !ReadField(file, formatTag) || !ReadField(file, channels) ||
        !ReadField(file, samplesPerSec) || !ReadField(file, avgBytesPerSec) || !ReadField(file, blockAlign) ||
        !ReadField(file, bitsPerSample) || fmtSize - 16 > file.GetBytesLeft())
        return fail("truncated or short \"fmt \" chunk");
    // The extra-size word of a longer format chunk is skipped with the rest of the chunk, not read.
    if (fmtSize > 16 && !file.Seek(fmtSize - 16, 1, 1))
        return fail("cannot skip the rest of the \"fmt \" chunk");
    if (formatTag != 1)
        return fail("not PCM: the format tag is not 1");

    if (!ReadTag(file, tag))
        return fail("truncated: no chunk after \"fmt \"");
    while (!IsTag(tag, "data"))
    {
        unsigned int chunkSize = 0;
        if (!ReadField(file, chunkSize) || chunkSize > file.GetBytesLeft())
            return fail("truncated: a chunk runs past the end of the file");
        if (chunkSize && !file.Seek(chunkSize, 1, 1))
            return fail("cannot skip a chunk");
        if (file.GetBytesLeft() == 0 || !ReadTag(file, tag))
            return fail("truncated: no \"data\" chunk");
    }

    unsigned int dataSize = 0;
    if (!ReadField(file, dataSize) || dataSize > file.GetBytesLeft())
        return fail("truncated: the \"data\" chunk claims more bytes than the file holds");
    unsigned char* data = nullptr;
    if (dataSize)
    {
        data = new (std::nothrow) unsigned char[dataSize];
        if (!data)
            return fail("no room for the samples");
        if (file.Read(data, dataSize) != dataSize)
        {
            delete[] data;
            return fail("truncated: fewer sample bytes than announced");
        }
    }
    m_formatTag = formatTag;
    m_channels = channels;
    m_samplesPerSec = samplesPerSec;
    m_avgBytesPerSec = avgBytesPerSec;
    m_blockAlign = blockAlign;
    m_bitsPerSample = bitsPerSample;
    TakeData(data, dataSize);
    return file.GetPosition() - start;
}

unsigned long QorSndBlock::LoadQSG(QorFile& file)
{
    Reset();
    if (!file.IsOpen())
        return QorSetError("reading a QSG sound: the stream is not open");
    const unsigned long start = file.GetPosition();
    short formatTag = 0, channels = 0, blockAlign = 0, bitsPerSample = 0, extraSize = 0;
    int samplesPerSec = 0, avgBytesPerSec = 0;
    unsigned int dataSize = 0;
    const bool header = ReadField(file, formatTag) && ReadField(file, channels) && ReadField(file, samplesPerSec) &&
                        ReadField(file, avgBytesPerSec) && ReadField(file, blockAlign) &&
                        ReadField(file, bitsPerSample) && ReadField(file, extraSize) && ReadField(file, dataSize);
    bool ok = header && dataSize <= file.GetBytesLeft();
    unsigned char* data = nullptr;
    if (ok && dataSize)
    {
        data = new (std::nothrow) unsigned char[dataSize];
        ok = data && file.Read(data, dataSize) == dataSize;
    }
    if (!ok)
    {
        if (file.GetFileLength() == 0)
            qor::detail::FileError(file, 0, "the file is empty");
        else if (!header)
            qor::detail::FileError(file, file.GetPosition(), "truncated: the QSG header ends early");
        else if (data || dataSize > file.GetBytesLeft())
            qor::detail::FileError(file, file.GetPosition(), "truncated QSG sound: %u sample bytes announced, %lu left",
                                   dataSize, file.GetBytesLeft());
        else
            qor::detail::FileError(file, file.GetPosition(), "no room for %u sample bytes", dataSize);
        delete[] data;
        file.Seek(start, 0, 1);
        return 0;
    }
    m_formatTag = formatTag;
    m_channels = channels;
    m_samplesPerSec = samplesPerSec;
    m_avgBytesPerSec = avgBytesPerSec;
    m_blockAlign = blockAlign;
    m_bitsPerSample = bitsPerSample;
    m_extraSize = extraSize;
    TakeData(data, dataSize);
    return m_dataSize + kQsgHeaderSize;
}

unsigned long QorSndBlock::SaveQSG(QorFile& file)
{
    if (!file.IsOpen())
        return 0;
    file << m_formatTag << m_channels << static_cast<int>(m_samplesPerSec) << static_cast<int>(m_avgBytesPerSec)
         << m_blockAlign << m_bitsPerSample << m_extraSize << static_cast<unsigned int>(m_dataSize);
    const unsigned long written = m_dataSize ? file.Write(m_data, m_dataSize) : 0;
    return written + kQsgHeaderSize;
}

char QorSndBlock::ConvertFrequency(long rate)
{
    if (rate == m_samplesPerSec)
        return 1;
    if (!IsDeviceRate(rate) || m_samplesPerSec <= 0 || m_blockAlign <= 0)
        return 0;
    const unsigned long frame = static_cast<unsigned long>(m_blockAlign);
    const unsigned long oldRate = static_cast<unsigned long>(m_samplesPerSec);
    const unsigned long newRate = static_cast<unsigned long>(rate);
    const bool raising = newRate > oldRate;
    const unsigned long factor = raising ? newRate / oldRate : oldRate / newRate;
    if (factor > 1)
    {
        const std::uint64_t size = raising ? std::uint64_t(m_dataSize) * factor : m_dataSize / factor;
        if (size > kMaxSoundBytes)
            return 0;
        unsigned char* data = nullptr;
        if (size)
        {
            data = new (std::nothrow) unsigned char[size];
            if (!data)
                return 0;
        }
        const unsigned long frames = m_dataSize / frame;
        if (raising)
        {
            // Each frame factor times in a row; a partial frame at the end is repeated the same way.
            unsigned char* out = data;
            for (unsigned long f = 0; f < frames; ++f)
                for (unsigned long k = 0; k < factor; ++k, out += frame)
                    std::memcpy(out, m_data + f * frame, frame);
            const unsigned long tail = m_dataSize % frame;
            for (unsigned long k = 0; k < factor && tail; ++k, out += tail)
                std::memcpy(out, m_data + frames * frame, tail);
        }
        else
        {
            // Frames 0, factor, 2 x factor, ...; the last output frame may be partial.
            const unsigned long whole = size / frame;
            for (unsigned long f = 0; f < whole; ++f)
                std::memcpy(data + f * frame, m_data + f * factor * frame, frame);
            if (size > whole * frame)
                std::memcpy(data + whole * frame, m_data + whole * factor * frame, size - whole * frame);
        }
        TakeData(data, static_cast<unsigned long>(size));
    }
    m_samplesPerSec = static_cast<std::int32_t>(rate);
    m_avgBytesPerSec = static_cast<std::int32_t>(m_blockAlign * rate);
    return 1;
}

char QorSndBlock::ConvertSampleBits(short bits)
{
    if (bits == m_bitsPerSample)
        return 1;
    if (m_bitsPerSample == 8 && bits == 16)
    {
        const std::uint64_t size = std::uint64_t(m_dataSize) * 2;
        if (size > kMaxSoundBytes)
            return 0;
        unsigned char* data = nullptr;
        if (size)
        {
            data = new (std::nothrow) unsigned char[size];
            if (!data)
                return 0;
        }
        // Unsigned 8-bit s becomes signed 16-bit (s - 128) << 8: low byte 0, high byte s + 128.
        for (unsigned long i = 0; i < m_dataSize; ++i)
        {
            data[2 * i] = 0;
            data[2 * i + 1] = static_cast<unsigned char>(m_data[i] + 128);
        }
        TakeData(data, static_cast<unsigned long>(size));
        return 1;
    }
    if (m_bitsPerSample == 16 && bits == 8)
    {
        const unsigned long size = m_dataSize / 2;
        unsigned char* data = nullptr;
        if (size)
        {
            data = new (std::nothrow) unsigned char[size];
            if (!data)
                return 0;
        }
        for (unsigned long i = 0; i < size; ++i)
            data[i] = static_cast<unsigned char>(m_data[2 * i + 1] + 128);
        TakeData(data, size);
        return 1;
    }
    return 0;
}
