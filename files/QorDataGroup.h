#pragma once

#include "core/QorExport.h"

#include "qor/core.h"
#include "QorFile.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Anything that can be stored as a block of a group file: it reads and writes itself on a stream.
class QOR_API QorDataBlock
{
public:
    QorDataBlock() = default;
    QorDataBlock(const QorDataBlock&) = default;
    QorDataBlock& operator=(const QorDataBlock&) = default;
    virtual ~QorDataBlock() = default;

    /// Reads the block at the stream's position; returns the bytes read.
    virtual unsigned long LoadData(QorFile& file) = 0;
    /// Writes the block at the stream's position; returns the bytes written.
    virtual unsigned long SaveData(QorFile& file) = 0;
};

/// A file of named blocks: a header with a table of offsets and 31-byte names, then the blocks.
/// Derived groups differ only in the magic of their first four bytes.
/// \note The file stays closed between loads; Open reads the whole table once.
class QOR_API QorDataGroup
{
public:
    enum : unsigned long { kNameSize = 31, kHeaderSize = 28, kEntrySize = 4 + kNameSize };

    /// An empty group whose magic is four zero bytes.
    QorDataGroup();
    /// An empty group for files beginning with the four bytes of magic.
    explicit QorDataGroup(const char* magic);
    /// Copies get their own tables.
    QorDataGroup(const QorDataGroup& other);
    QorDataGroup& operator=(const QorDataGroup& other);
    virtual ~QorDataGroup();

    /// Reads the header of path. False, with the group left empty, when the file cannot be read, its
    /// magic differs, or its table or an offset claims more than the file holds.
    char Open(const char* path);
    void Close() { CleanHeader(); }

    /// Index of the first block named exactly name (case-sensitive), -1 when absent.
    long FindData(const char* name) const;
    /// Loads the first block named name into block. False for an unknown name or a null block.
    char LoadData(QorDataBlock* block, const char* name);
    /// Loads block index into block. False for an index past the table or a null block.
    /// \note The block reads from its offset and sees the file end where the next block begins.
    char LoadData(QorDataBlock* block, unsigned long index);

    unsigned long GetCount() const { return m_count; }
    /// Name of block index (zero-terminated, at most 30 bytes), null past the table.
    const char* GetName(unsigned long index) const;
    /// Absolute offset of block index, 0 past the table.
    unsigned long GetOffset(unsigned long index) const;
    /// Bytes from block index's offset to the next block (or the end of the file), 0 past the table.
    unsigned long GetBlockSize(unsigned long index) const;
    const QorString& GetFileName() const { return m_fileName; }
    const unsigned char* GetMagic() const { return m_magic; }

protected:
    void SetMagic(const char* magic);
    void CleanHeader();
    /// The absolute offset where block index ends for its reader.
    unsigned long GetBlockEnd(unsigned long index) const;

    unsigned char m_magic[4] = {};
    std::uint32_t m_version = 0;
    std::uint32_t m_reserved = 0;
    std::uint32_t m_count = 0;
    std::unique_ptr<std::uint32_t[]> m_offsets;
    std::unique_ptr<char[][kNameSize]> m_names;
    QorString m_fileName;
    QorFile m_file;

private:
    std::uint32_t m_fileLength = 0;
};

/// Writes group files: collects named blocks, then lays them out after the header in the order added.
/// \note Blocks are not copied: each must stay alive until Write.
class QOR_API QorDataGroupWriter
{
public:
    /// A writer for groups whose first four bytes are magic (version 0x00010000, reserved words 0).
    explicit QorDataGroupWriter(const char* magic);

    /// Adds a block under name. Returns 0 (nothing added) for a null block or name, or a name longer
    /// than 30 bytes; names are never truncated.
    char Add(const char* name, QorDataBlock* block);
    unsigned long GetCount() const { return static_cast<unsigned long>(m_entries.size()); }
    /// Writes the group to path. Returns the file's size in bytes, 0 when it could not be written.
    unsigned long Write(const char* path);

private:
    struct Entry
    {
        char name[QorDataGroup::kNameSize];
        QorDataBlock* block;
    };

    unsigned char m_magic[4] = {};
    std::vector<Entry> m_entries;
};
