#pragma once

#include "core/QorExport.h"

#include "qor/core.h"

#include <cstdint>
#include <string>

/// Little-endian binary file stream over a POSIX descriptor, keeping its own byte position.
/// Modes: 1 write a new file, 2 read, 3 append. The stream operators do not report short reads;
/// compare GetPosition or a Load result when it matters.
class QOR_API QorFile : public QorObj
{
public:
    enum : unsigned int { kWrite = 1, kRead = 2, kAppend = 3 };

    QorFile() = default;
    ~QorFile();
    /// Copies the fields: both streams then share the descriptor, and only the original closes it.
    QorFile(const QorFile& other);
    QorFile& operator=(const QorFile& other);

    /// Closes a file still open, then opens path in the mode's low three bits. False (and closed) when
    /// the file cannot be opened or the mode is not 1, 2 or 3.
    char Open(const char* path, unsigned int mode);
    char Open(QorString& path, unsigned int mode);
    void Close();
    /// The path the stream was opened with, "" when closed; readers name it in QorGetLastError's text.
    const char* GetPath() const { return m_path.c_str(); }
    /// Commits the written data to disk; 0 on success, -1 on failure.
    int Flush();
    char IsOpen() const { return m_descriptor != -1; }
    /// True when closed, at the end, or when the descriptor cannot tell.
    char IsEnd();
    /// The stream's byte position, 0 when closed.
    unsigned long GetPosition() const;
    /// The file's length in bytes, 0 when closed.
    unsigned long GetFileLength();
    /// Bytes between the descriptor's place and the end of the file (or of the block being read when a
    /// group limited the stream); 0 when closed. Readers check sizes against it before allocating.
    unsigned long GetBytesLeft();

    /// Reads up to n bytes; returns the count read (0 when closed) and advances the position by it.
    unsigned long Read(void* buffer, unsigned long n);
    /// Writes n bytes; returns the count written (0 when closed) and advances the position by it.
    unsigned long Write(const void* buffer, unsigned long n);

    /// Moves by offset in direction's sign from the start (origin 0), the current place (1) or the end (2).
    /// False when closed, for direction 0 or for another origin. For origin 2 the position becomes
    /// length - offset while the descriptor moves to length + offset: seek from the end with offset 0.
    char Seek(unsigned long offset, unsigned int origin, char direction);

    QorFile& operator>>(char& v);
    QorFile& operator>>(unsigned char& v);
    QorFile& operator>>(short& v);
    QorFile& operator>>(unsigned short& v);
    QorFile& operator>>(int& v);
    QorFile& operator>>(unsigned int& v);
    QorFile& operator>>(double& v);
    QorFile& operator>>(QorGuider& v);
    QorFile& operator>>(QorString& v);

    QorFile& operator<<(char v);
    QorFile& operator<<(unsigned char v);
    QorFile& operator<<(short v);
    QorFile& operator<<(unsigned short v);
    QorFile& operator<<(int v);
    QorFile& operator<<(unsigned int v);
    QorFile& operator<<(double v);
    QorFile& operator<<(const QorGuider& v);
    QorFile& operator<<(const QorString& v);

    /// Reads the creation (birth time where the file system keeps one, else the status-change time),
    /// last-access and last-write times in local time. Null pointers are skipped. False when the file
    /// cannot be opened for reading; the dates are then untouched. Day of week counts from Sunday = 0.
    static char GetFileTime(const char* path, QorDate* created, QorDate* accessed, QorDate* written);
    static char GetFileTime(QorString& path, QorDate* created, QorDate* accessed, QorDate* written);

    /// Makes the stream end at the absolute offset end for reading (0 lifts the limit): reads stop
    /// there and GetBytesLeft counts to it. Groups use it to hand a block exactly its own bytes.
    void SetReadLimit(unsigned long end) { m_readLimit = end; }

private:
    template <typename T>
    QorFile& ReadLE(T& v);
    template <typename T>
    QorFile& WriteLE(T v);

    std::int32_t m_descriptor = -1;
    std::uint32_t m_mode = 1;
    std::uint32_t m_position = 0;
    bool m_ownsDescriptor = true;
    unsigned long m_readLimit = 0;
    std::string m_path;
};
