#include "QorAnimSet.h"

#include <cstring>
#include <new>

long QorAnimSetWriter::AddPicture(const QorPicBlock& picture)
{
    if (m_pictures.size() >= UINT32_MAX / 4)
        return -1;
    try
    {
        m_pictures.push_back(picture);
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
    const QorPicBlock& kept = m_pictures.back();
    if (kept.GetWidth() != picture.GetWidth() || kept.GetHeight() != picture.GetHeight())
    {
        m_pictures.pop_back();
        return -1;
    }
    return static_cast<long>(m_pictures.size() - 1);
}

long QorAnimSetWriter::AddUnit(const char* name, long mode, long x, long y, long depth, const long* pics,
                               const long* xs, const long* ys, long frames)
{
    if (!name || std::strlen(name) >= QorAnimSet::kNameSize || frames < 0 || m_units.size() >= UINT32_MAX / 4)
        return -1;
    if (frames > 0 && (!pics || !xs || !ys))
        return -1;
    if (static_cast<unsigned long long>(frames) > (UINT32_MAX - QorAnimSet::kUnitHeaderSize) / 12)
        return -1;
    for (long i = 0; i < frames; ++i)
        if (pics[i] < 0 || static_cast<unsigned long>(pics[i]) >= m_pictures.size())
            return -1;
    try
    {
        Unit unit{};
        std::strncpy(unit.name, name, QorAnimSet::kNameSize - 1);
        unit.mode = static_cast<std::int32_t>(mode);
        unit.x = static_cast<std::int32_t>(x);
        unit.y = static_cast<std::int32_t>(y);
        unit.depth = static_cast<std::int32_t>(depth);
        for (long i = 0; i < frames; ++i)
        {
            unit.pics.push_back(static_cast<std::uint32_t>(pics[i]));
            unit.xs.push_back(static_cast<std::int32_t>(xs[i]));
            unit.ys.push_back(static_cast<std::int32_t>(ys[i]));
        }
        m_units.push_back(std::move(unit));
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
    return static_cast<long>(m_units.size() - 1);
}

unsigned long QorAnimSetWriter::Write(const char* path)
{
    QorFile file;
    if (!path || !file.Open(path, QorFile::kWrite))
        return 0;
    const auto pictures = static_cast<std::uint32_t>(m_pictures.size());
    const auto units = static_cast<std::uint32_t>(m_units.size());

    file << static_cast<unsigned int>(QorAnimSet::kMagic) << static_cast<unsigned int>(QorAnimSet::kVersion) << 0u
         << static_cast<unsigned int>(m_defaultFlag) << 0u << 0u << 0u;
    // The offset tables are patched once the units and pictures have been written and their places are known.
    file << static_cast<unsigned int>(pictures);
    for (std::uint32_t i = 0; i < pictures; ++i)
        file << 0u;
    file << static_cast<unsigned int>(units);
    for (std::uint32_t i = 0; i < units; ++i)
        file << 0u;
    const unsigned long tablesEnd = QorAnimSet::kHeaderSize + 4 + 4ul * pictures + 4 + 4ul * units;
    if (file.GetPosition() != tablesEnd)
        return 0;

    std::vector<std::uint32_t> unitOffsets, picOffsets;
    try
    {
        unitOffsets.reserve(units);
        picOffsets.reserve(pictures);
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
    for (const Unit& unit : m_units)
    {
        unitOffsets.push_back(static_cast<std::uint32_t>(file.GetPosition()));
        file.Write(unit.name, QorAnimSet::kNameSize);
        file << static_cast<int>(unit.mode) << static_cast<int>(unit.x) << static_cast<int>(unit.y)
             << static_cast<int>(unit.depth) << static_cast<unsigned int>(unit.pics.size());
        for (std::uint32_t v : unit.pics)
            file << static_cast<unsigned int>(v);
        for (std::int32_t v : unit.xs)
            file << static_cast<int>(v);
        for (std::int32_t v : unit.ys)
            file << static_cast<int>(v);
    }
    for (QorPicBlock& picture : m_pictures)
    {
        picOffsets.push_back(static_cast<std::uint32_t>(file.GetPosition()));
        picture.SaveQGB(file);
    }
    const unsigned long total = file.GetPosition();
    if (total != file.GetFileLength() || total > UINT32_MAX)
        return 0;

    file.Seek(QorAnimSet::kHeaderSize + 4, 0, 1);
    for (std::uint32_t offset : picOffsets)
        file << static_cast<unsigned int>(offset);
    file.Seek(QorAnimSet::kHeaderSize + 4 + 4ul * pictures + 4, 0, 1);
    for (std::uint32_t offset : unitOffsets)
        file << static_cast<unsigned int>(offset);
    if (file.GetPosition() != tablesEnd)
        return 0;
    return total;
}
