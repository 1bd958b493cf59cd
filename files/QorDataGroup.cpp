#include "QorDataGroup.h"

#include "core/QorError.h"
#include "files/FileError.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace
{
std::uint32_t DecodeLE32(const unsigned char* p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
}

const unsigned long kVersion = 0x00010000;
} // namespace

QorDataGroup::QorDataGroup() = default;

QorDataGroup::QorDataGroup(const char* magic)
{
    SetMagic(magic);
    m_version = kVersion;
}

QorDataGroup::QorDataGroup(const QorDataGroup& other)
{
    *this = other;
}

QorDataGroup& QorDataGroup::operator=(const QorDataGroup& other)
{
    if (this == &other)
        return *this;
    CleanHeader();
    std::memcpy(m_magic, other.m_magic, sizeof m_magic);
    m_version = other.m_version;
    m_reserved = other.m_reserved;
    m_fileName = other.m_fileName;
    if (other.m_count == 0)
        return *this;
    std::unique_ptr<std::uint32_t[]> offsets(new (std::nothrow) std::uint32_t[other.m_count]);
    std::unique_ptr<char[][kNameSize]> names(new (std::nothrow) char[other.m_count][kNameSize]);
    if (!offsets || !names)
        return *this;
    std::copy(other.m_offsets.get(), other.m_offsets.get() + other.m_count, offsets.get());
    std::memcpy(names.get(), other.m_names.get(), std::size_t(other.m_count) * kNameSize);
    m_offsets = std::move(offsets);
    m_names = std::move(names);
    m_count = other.m_count;
    m_fileLength = other.m_fileLength;
    return *this;
}

QorDataGroup::~QorDataGroup()
{
    CleanHeader();
}

void QorDataGroup::SetMagic(const char* magic)
{
    if (magic)
        std::memcpy(m_magic, magic, sizeof m_magic);
}

void QorDataGroup::CleanHeader()
{
    m_offsets.reset();
    m_names.reset();
    m_count = 0;
    m_fileLength = 0;
}

char QorDataGroup::Open(const char* path)
{
    CleanHeader();
    if (!path)
        return QorSetError("opening a group file: no path");
    m_fileName = path;
    if (!m_file.Open(path, QorFile::kRead))
        return 0;

    // Every claim of the header is checked against the file's size before anything is allocated.
    const unsigned long length = m_file.GetFileLength();
    unsigned char header[kHeaderSize];
    if (length < kHeaderSize || m_file.Read(header, kHeaderSize) != kHeaderSize)
    {
        if (length == 0)
            qor::detail::FileError(m_file, 0, "the file is empty");
        else
            qor::detail::FileError(m_file, length, "truncated: %lu of the %lu bytes of the group header", length,
                                   static_cast<unsigned long>(kHeaderSize));
        m_file.Close();
        return 0;
    }
    if (std::memcmp(header, m_magic, sizeof m_magic) != 0)
    {
        // Printed as bytes: the picture group's magic starts with a zero byte.
        qor::detail::FileError(m_file, 0,
                               "not this kind of group: the magic is %02X %02X %02X %02X, not %02X %02X %02X %02X",
                               header[0], header[1], header[2], header[3], m_magic[0], m_magic[1], m_magic[2],
                               m_magic[3]);
        m_file.Close();
        return 0;
    }
    const std::uint32_t count = DecodeLE32(header + 24);
    if (count > (length - kHeaderSize) / kEntrySize)
    {
        qor::detail::FileError(m_file, 24, "truncated: %u blocks need a %llu-byte table, the file has %lu bytes after "
                               "the header", count, static_cast<unsigned long long>(count) * kEntrySize,
                               length - kHeaderSize);
        m_file.Close();
        return 0;
    }

    std::unique_ptr<std::uint32_t[]> offsets(new (std::nothrow) std::uint32_t[count ? count : 1]);
    std::unique_ptr<char[][kNameSize]> names(new (std::nothrow) char[count ? count : 1][kNameSize]);
    std::unique_ptr<unsigned char[]> table(new (std::nothrow) unsigned char[std::size_t(count) * 4 + 1]);
    bool ok = offsets && names && table;
    ok = ok && m_file.Read(table.get(), std::size_t(count) * 4) == std::size_t(count) * 4;
    if (!offsets || !names || !table)
        qor::detail::FileError(m_file, kHeaderSize, "no room for a table of %u blocks", count);
    for (std::uint32_t i = 0; ok && i < count; ++i)
    {
        offsets[i] = DecodeLE32(table.get() + 4 * i);
        ok = offsets[i] <= length;
        if (!ok)
            qor::detail::FileError(m_file, kHeaderSize + 4 * i, "block %u starts at byte %u, past the end (%lu)", i,
                                   offsets[i], length);
    }
    for (std::uint32_t i = 0; ok && i < count; ++i)
    {
        ok = m_file.Read(names[i], kNameSize) == kNameSize;
        names[i][kNameSize - 1] = '\0';
    }
    m_file.Close();
    if (!ok)
        return 0;

    m_offsets = std::move(offsets);
    m_names = std::move(names);
    m_count = count;
    m_fileLength = static_cast<std::uint32_t>(std::min<unsigned long>(length, UINT32_MAX));
    return 1;
}

long QorDataGroup::FindData(const char* name) const
{
    if (!name)
        return -1;
    for (std::uint32_t i = 0; i < m_count; ++i)
        if (std::strcmp(m_names[i], name) == 0)
            return static_cast<long>(i);
    return -1;
}

char QorDataGroup::LoadData(QorDataBlock* block, const char* name)
{
    const long index = FindData(name);
    if (index < 0)
        return QorSetError("%s: no block named \"%s\"", static_cast<const char*>(m_fileName), name ? name : "(null)");
    return LoadData(block, static_cast<unsigned long>(index));
}

char QorDataGroup::LoadData(QorDataBlock* block, unsigned long index)
{
    if (index >= m_count || !block)
        return 0;
    // A stream that fails to open hands the block nothing to read; the block sees that itself.
    m_file.Open(m_fileName, QorFile::kRead);
    m_file.Seek(m_offsets[index], 0, 1);
    m_file.SetReadLimit(GetBlockEnd(index));
    block->LoadData(m_file);
    m_file.Close();
    return 1;
}

const char* QorDataGroup::GetName(unsigned long index) const
{
    return index < m_count ? m_names[index] : nullptr;
}

unsigned long QorDataGroup::GetOffset(unsigned long index) const
{
    return index < m_count ? m_offsets[index] : 0;
}

unsigned long QorDataGroup::GetBlockEnd(unsigned long index) const
{
    const std::uint32_t start = m_offsets[index];
    std::uint32_t end = m_fileLength;
    for (std::uint32_t i = 0; i < m_count; ++i)
        if (m_offsets[i] > start && m_offsets[i] < end)
            end = m_offsets[i];
    return end;
}

unsigned long QorDataGroup::GetBlockSize(unsigned long index) const
{
    return index < m_count ? GetBlockEnd(index) - m_offsets[index] : 0;
}

QorDataGroupWriter::QorDataGroupWriter(const char* magic)
{
    if (magic)
        std::memcpy(m_magic, magic, sizeof m_magic);
}

char QorDataGroupWriter::Add(const char* name, QorDataBlock* block)
{
    if (!name || !block || std::strlen(name) >= QorDataGroup::kNameSize)
        return 0;
    if (m_entries.size() >= (UINT32_MAX - QorDataGroup::kHeaderSize) / QorDataGroup::kEntrySize)
        return 0;
    Entry entry{};
    std::strncpy(entry.name, name, QorDataGroup::kNameSize - 1);
    entry.block = block;
    try
    {
        m_entries.push_back(entry);
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
    return 1;
}

unsigned long QorDataGroupWriter::Write(const char* path)
{
    QorFile file;
    if (!file.Open(path, QorFile::kWrite))
        return 0;
    const auto count = static_cast<std::uint32_t>(m_entries.size());
    const unsigned long tableEnd = QorDataGroup::kHeaderSize + std::size_t(count) * QorDataGroup::kEntrySize;

    file.Write(m_magic, sizeof m_magic);
    file << static_cast<unsigned int>(kVersion) << 0u << 0u << 0u << 0u << static_cast<unsigned int>(count);
    // Offsets are patched once the blocks have been written and their positions are known.
    for (std::uint32_t i = 0; i < count; ++i)
        file << 0u;
    for (const Entry& entry : m_entries)
        file.Write(entry.name, QorDataGroup::kNameSize);
    if (file.GetPosition() != tableEnd)
        return 0;

    std::vector<std::uint32_t> offsets;
    try
    {
        offsets.reserve(count);
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
    for (const Entry& entry : m_entries)
    {
        offsets.push_back(static_cast<std::uint32_t>(file.GetPosition()));
        entry.block->SaveData(file);
    }
    const unsigned long total = file.GetPosition();
    if (total != file.GetFileLength())
        return 0;

    file.Seek(QorDataGroup::kHeaderSize, 0, 1);
    for (std::uint32_t offset : offsets)
        file << static_cast<unsigned int>(offset);
    if (file.GetPosition() != QorDataGroup::kHeaderSize + std::size_t(count) * 4)
        return 0;
    return total;
}
