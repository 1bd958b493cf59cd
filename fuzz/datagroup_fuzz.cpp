// Opens arbitrary bytes as a group file and loads every block into a reader of mixed values.
// The group takes the input's first four bytes as its magic, so the fuzzer reaches the table at once.
#include "qor/files.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace
{
class MixedBlock : public QorDataBlock
{
public:
    unsigned long LoadData(QorFile& file) override
    {
        unsigned long bytes = m_text.Load(file);
        bytes += m_area.Load(file);
        m_date.Load(file);
        bytes += m_handle.Load(file);
        int count = 0;
        file >> count;
        for (int i = 0; i < count && !file.IsEnd(); ++i)
        {
            QorString item;
            bytes += item.Load(file);
            m_items.Append(item);
        }
        return bytes;
    }
    unsigned long SaveData(QorFile&) override { return 0; }

    QorString m_text;
    QorRect m_area;
    QorDate m_date;
    QorGuider m_handle;
    Array<QorString> m_items;
};

const std::string& InputPath()
{
    static const std::string path = "/tmp/qor-datagroup-fuzz-" + std::to_string(::getpid()) + ".grp";
    return path;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = InputPath();
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out)
        return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);

    char magic[4] = {};
    for (std::size_t i = 0; i < 4 && i < size; ++i)
        magic[i] = static_cast<char>(data[i]);
    QorDataGroup group(magic);
    if (group.Open(path.c_str()))
    {
        for (unsigned long i = 0; i < group.GetCount() && i < 64; ++i)
        {
            MixedBlock block;
            group.LoadData(&block, i);
            group.FindData(group.GetName(i));
        }
        MixedBlock missing;
        group.LoadData(&missing, group.GetCount());
    }
    return 0;
}
