#include "QorFile.h"

#include "core/QorError.h"
#include "files/FileError.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <climits>
#include <cstring>
#include <ctime>
#include <type_traits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

QorFile::~QorFile()
{
    Close();
}

QorFile::QorFile(const QorFile& other)
    : QorObj(other),
      m_descriptor(other.m_descriptor),
      m_mode(other.m_mode),
      m_position(other.m_position),
      m_ownsDescriptor(false),
      m_readLimit(other.m_readLimit),
      m_path(other.m_path)
{
}

QorFile& QorFile::operator=(const QorFile& other)
{
    if (this == &other)
        return *this;
    Close();
    QorObj::operator=(other);
    m_descriptor = other.m_descriptor;
    m_mode = other.m_mode;
    m_position = other.m_position;
    m_readLimit = other.m_readLimit;
    m_path = other.m_path;
    m_ownsDescriptor = false;
    return *this;
}

char QorFile::Open(const char* path, unsigned int mode)
{
    Close();
    m_mode = mode;
    if (!path)
        return QorSetError("opening a file: no path");
    int flags = 0;
    switch (mode & 7)
    {
    case kWrite:
        flags = O_WRONLY | O_CREAT | O_TRUNC;
        break;
    case kRead:
        flags = O_RDONLY;
        break;
    case kAppend:
        flags = O_WRONLY | O_CREAT | O_APPEND;
        break;
    default:
        return QorSetError("%s: open mode %u is not 1 (write), 2 (read) or 3 (append)", path, mode & 7);
    }
    int fd;
    do
        fd = ::open(path, flags | O_CLOEXEC, 0666);
    while (fd == -1 && errno == EINTR);
    if (fd == -1)
        return QorSetError("%s: cannot open for %s: %s", path, (mode & 7) == kRead ? "reading" : "writing",
                           std::strerror(errno));
    m_descriptor = fd;
    m_path = path;
    m_position = 0;
    m_ownsDescriptor = true;
    m_readLimit = 0;
    return 1;
}

char QorFile::Open(QorString& path, unsigned int mode)
{
    return Open(static_cast<const char*>(path), mode);
}

void QorFile::Close()
{
    if (m_descriptor == -1)
        return;
    if (m_ownsDescriptor)
        ::close(m_descriptor);
    m_descriptor = -1;
    m_position = 0;
    m_ownsDescriptor = true;
    m_readLimit = 0;
    m_path.clear();
}

int QorFile::Flush()
{
    if (m_descriptor == -1)
        return -1;
    return ::fsync(m_descriptor) == 0 ? 0 : -1;
}

char QorFile::IsEnd()
{
    if (m_descriptor == -1)
        return 1;
    const off_t here = ::lseek(m_descriptor, 0, SEEK_CUR);
    struct stat st;
    if (here < 0 || ::fstat(m_descriptor, &st) != 0)
        return 1;
    unsigned long end = static_cast<unsigned long>(st.st_size);
    if (m_readLimit)
        end = std::min(end, m_readLimit);
    return static_cast<unsigned long>(here) >= end;
}

unsigned long QorFile::GetPosition() const
{
    return m_descriptor == -1 ? 0 : m_position;
}

unsigned long QorFile::GetFileLength()
{
    struct stat st;
    if (m_descriptor == -1 || ::fstat(m_descriptor, &st) != 0 || st.st_size < 0)
        return 0;
    return static_cast<unsigned long>(st.st_size);
}

unsigned long QorFile::GetBytesLeft()
{
    if (m_descriptor == -1)
        return 0;
    const off_t here = ::lseek(m_descriptor, 0, SEEK_CUR);
    if (here < 0)
        return 0;
    unsigned long end = GetFileLength();
    if (m_readLimit)
        end = std::min(end, m_readLimit);
    return end > static_cast<unsigned long>(here) ? end - static_cast<unsigned long>(here) : 0;
}

unsigned long QorFile::Read(void* buffer, unsigned long n)
{
    if (m_descriptor == -1 || !buffer)
        return 0;
    if (m_readLimit)
        n = std::min(n, GetBytesLeft());
    auto* bytes = static_cast<unsigned char*>(buffer);
    unsigned long total = 0;
    while (total < n)
    {
        const ssize_t got = ::read(m_descriptor, bytes + total, std::min<unsigned long>(n - total, SSIZE_MAX));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        total += static_cast<unsigned long>(got);
    }
    m_position += static_cast<std::uint32_t>(total);
    return total;
}

unsigned long QorFile::Write(const void* buffer, unsigned long n)
{
    if (m_descriptor == -1 || !buffer)
        return 0;
    const auto* bytes = static_cast<const unsigned char*>(buffer);
    unsigned long total = 0;
    while (total < n)
    {
        const ssize_t put = ::write(m_descriptor, bytes + total, std::min<unsigned long>(n - total, SSIZE_MAX));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            break;
        total += static_cast<unsigned long>(put);
    }
    m_position += static_cast<std::uint32_t>(total);
    return total;
}

char QorFile::Seek(unsigned long offset, unsigned int origin, char direction)
{
    if (m_descriptor == -1 || direction == 0 || origin > 2 || offset > static_cast<unsigned long>(LONG_MAX))
        return 0;
    const long distance = direction > 0 ? static_cast<long>(offset) : -static_cast<long>(offset);
    switch (origin)
    {
    case 0:
        m_position = static_cast<std::uint32_t>(distance);
        break;
    case 1:
        m_position = static_cast<std::uint32_t>(m_position + distance);
        break;
    default:
        m_position = static_cast<std::uint32_t>(GetFileLength() - distance);
        break;
    }
    // The descriptor's result is not checked: a seek before the start leaves it where it was.
    static const int kWhence[3] = {SEEK_SET, SEEK_CUR, SEEK_END};
    ::lseek(m_descriptor, distance, kWhence[origin]);
    return 1;
}

// Fields are little-endian on disk whatever the host. A short read leaves the bytes it did not
// deliver as they were in the value.
template <typename T>
QorFile& QorFile::ReadLE(T& v)
{
    using U = std::make_unsigned_t<T>;
    U bits = static_cast<U>(v);
    unsigned char bytes[sizeof(T)];
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
    Read(bytes, sizeof(T));
    bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bits = static_cast<U>(bits | static_cast<U>(static_cast<U>(bytes[i]) << (8 * i)));
    v = static_cast<T>(bits);
    return *this;
}

template <typename T>
QorFile& QorFile::WriteLE(T v)
{
    using U = std::make_unsigned_t<T>;
    const U bits = static_cast<U>(v);
    unsigned char bytes[sizeof(T)];
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
    Write(bytes, sizeof(T));
    return *this;
}

QorFile& QorFile::operator>>(char& v) { return ReadLE(v); }
QorFile& QorFile::operator>>(unsigned char& v) { return ReadLE(v); }
QorFile& QorFile::operator>>(short& v) { return ReadLE(v); }
QorFile& QorFile::operator>>(unsigned short& v) { return ReadLE(v); }
QorFile& QorFile::operator>>(int& v) { return ReadLE(v); }
QorFile& QorFile::operator>>(unsigned int& v) { return ReadLE(v); }

QorFile& QorFile::operator>>(double& v)
{
    std::uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    ReadLE(bits);
    std::memcpy(&v, &bits, sizeof bits);
    return *this;
}

QorFile& QorFile::operator>>(QorGuider& v)
{
    v.Load(*this);
    return *this;
}

QorFile& QorFile::operator>>(QorString& v)
{
    v.Load(*this);
    return *this;
}

QorFile& QorFile::operator<<(char v) { return WriteLE(v); }
QorFile& QorFile::operator<<(unsigned char v) { return WriteLE(v); }
QorFile& QorFile::operator<<(short v) { return WriteLE(v); }
QorFile& QorFile::operator<<(unsigned short v) { return WriteLE(v); }
QorFile& QorFile::operator<<(int v) { return WriteLE(v); }
QorFile& QorFile::operator<<(unsigned int v) { return WriteLE(v); }

QorFile& QorFile::operator<<(double v)
{
    std::uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return WriteLE(bits);
}

QorFile& QorFile::operator<<(const QorGuider& v)
{
    v.Save(*this);
    return *this;
}

QorFile& QorFile::operator<<(const QorString& v)
{
    v.Save(*this);
    return *this;
}

namespace
{
void FillDate(QorDate* date, std::time_t seconds)
{
    if (!date)
        return;
    std::tm local{};
    localtime_r(&seconds, &local);
    date->Initialize(static_cast<short>(local.tm_year + 1900), static_cast<char>(local.tm_mon + 1),
                     static_cast<char>(local.tm_mday), local.tm_hour, local.tm_min, local.tm_sec, local.tm_wday);
}
} // namespace

char QorFile::GetFileTime(const char* path, QorDate* created, QorDate* accessed, QorDate* written)
{
    if (!path)
        return 0;
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd == -1)
        return 0;
    struct statx stx;
    const int rc = ::statx(fd, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &stx);
    ::close(fd);
    if (rc != 0)
        return 0;
    const bool hasBirth = (stx.stx_mask & STATX_BTIME) != 0;
    FillDate(created, hasBirth ? stx.stx_btime.tv_sec : stx.stx_ctime.tv_sec);
    FillDate(accessed, stx.stx_atime.tv_sec);
    FillDate(written, stx.stx_mtime.tv_sec);
    return 1;
}

char QorFile::GetFileTime(QorString& path, QorDate* created, QorDate* accessed, QorDate* written)
{
    return GetFileTime(static_cast<const char*>(path), created, accessed, written);
}

char qor::detail::FileError(const QorFile& file, unsigned long offset, const char* format, ...)
{
    char what[400];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(what, sizeof what, format, args);
    va_end(args);
    const char* path = file.GetPath();
    return QorSetError("%s: byte %lu: %s", *path ? path : "(stream)", offset, what);
}
