// LoadQSG over arbitrary bytes, and the same bytes opened as a sound group. A record that loads is
// written back byte for byte; a refused one leaves the stream where it was and the block empty.
#include "FuzzInput.h"

#include "qor/audio.h"

#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("qsg");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    QorFile file;
    if (!file.Open(path.c_str(), QorFile::kRead))
        return 0;
    QorSndBlock block;
    const unsigned long read = block.LoadQSG(file);
    if (!read)
    {
        if (file.GetPosition() != 0 || block.GetDataPtr() || block.GetDataSize())
            __builtin_trap();
    }
    else
    {
        if (read != file.GetPosition() || read > size || read != block.GetDataSize() + QorSndBlock::kQsgHeaderSize)
            __builtin_trap();
        const std::string out = path + ".out";
        QorFile saved;
        if (saved.Open(out.c_str(), QorFile::kWrite))
        {
            if (block.SaveQSG(saved) != read)
                __builtin_trap();
            saved.Close();
            std::vector<unsigned char> bytes(read);
            if (!saved.Open(out.c_str(), QorFile::kRead) || saved.Read(bytes.data(), read) != read ||
                std::memcmp(bytes.data(), data, read) != 0)
                __builtin_trap();
        }
    }

    QorSndGroup group;
    if (!group.Open(path.c_str()))
        return 0;
    for (unsigned long i = 0; i < group.GetCount() && i < 16; ++i)
    {
        QorSndBlock sound;
        group.LoadData(&sound, i);
        if (sound.GetDataSize() > group.GetBlockSize(i))
            __builtin_trap();
        group.LoadData(&sound, group.GetName(i));
        QorSndBlock copy(sound);
        copy.ConvertSampleBits(copy.GetBitsPerSample() == 16 ? 8 : 16);
    }
    return 0;
}
