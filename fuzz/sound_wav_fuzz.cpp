// LoadWAV over arbitrary bytes. A refused file leaves the stream where it was and the block empty; a
// loaded one stays within the file, round-trips through a QSG record and converts for the device.
#include "FuzzInput.h"

#include "qor/audio.h"

#include <cstring>

namespace
{
bool SameSound(const QorSndBlock& a, const QorSndBlock& b)
{
    return a.GetFormatTag() == b.GetFormatTag() && a.GetChannels() == b.GetChannels() &&
           a.GetSamplesPerSec() == b.GetSamplesPerSec() && a.GetAvgBytesPerSec() == b.GetAvgBytesPerSec() &&
           a.GetBlockAlign() == b.GetBlockAlign() && a.GetBitsPerSample() == b.GetBitsPerSample() &&
           a.GetExtraSize() == b.GetExtraSize() && a.GetDataSize() == b.GetDataSize() &&
           (a.GetDataSize() == 0 || std::memcmp(a.GetDataPtr(), b.GetDataPtr(), a.GetDataSize()) == 0);
}

// The size ConvertFrequency must give, worked out apart from it.
unsigned long ConvertedSize(const QorSndBlock& b, long rate)
{
    const long old = b.GetSamplesPerSec();
    if (rate == old)
        return b.GetDataSize();
    return rate > old ? b.GetDataSize() * static_cast<unsigned long>(rate / old)
                      : b.GetDataSize() / static_cast<unsigned long>(old / rate);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("wav");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    QorFile file;
    if (!file.Open(path.c_str(), QorFile::kRead))
        return 0;
    QorSndBlock block;
    const unsigned long read = block.LoadWAV(file);
    if (!read)
    {
        if (file.GetPosition() != 0 || block.GetDataPtr() || block.GetDataSize() || block.GetFormatTag())
            __builtin_trap();
        return 0;
    }
    if (read != file.GetPosition() || read > size || block.GetDataSize() + 44 > read || block.GetFormatTag() != 1)
        __builtin_trap();

    const std::string qsgPath = path + ".qsg";
    QorFile qsg;
    if (!qsg.Open(qsgPath.c_str(), QorFile::kWrite))
        return 0;
    if (block.SaveQSG(qsg) != block.GetDataSize() + QorSndBlock::kQsgHeaderSize)
        __builtin_trap();
    qsg.Close();
    QorSndBlock back;
    if (!qsg.Open(qsgPath.c_str(), QorFile::kRead) ||
        back.LoadQSG(qsg) != block.GetDataSize() + QorSndBlock::kQsgHeaderSize || !SameSound(block, back))
        __builtin_trap();

    // Rates below 2000 Hz would make one small input ask for hundreds of megabytes.
    static const long kRates[3] = {11025, 22050, 44100};
    const long rate = kRates[size % 3];
    if (block.GetSamplesPerSec() >= 2000 && block.GetBlockAlign() > 0)
    {
        const unsigned long expected = ConvertedSize(block, rate);
        if (!block.ConvertFrequency(rate) || block.GetDataSize() != expected || block.GetSamplesPerSec() != rate)
            __builtin_trap();
    }
    QorSndBlock copy(block);
    const unsigned long before = copy.GetDataSize();
    const short bits = copy.GetBitsPerSample() == 8 ? 16 : 8;
    if (copy.ConvertSampleBits(bits) && copy.GetBitsPerSample() != bits &&
        copy.GetDataSize() != (bits == 16 ? before * 2 : before / 2))
        __builtin_trap();
    return 0;
}
