#include "QorDirectory.h"
#include "QorText.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <utility>
#include <vector>

// Everything here works with absolute or caller-relative paths and with *at() calls on directory
// descriptors, so the current directory is never changed and cannot be left changed by a failure.

namespace
{
inline bool IsLeadByte(unsigned char c)
{
    return IsUnicode(static_cast<char>(c));
}

// Desktop entries are UTF-8: the texts shown to the user (name, description) are Big5 and are converted;
// paths stay the bytes the file system knows them by.
std::string DisplayText(const char* big5)
{
    const QorString utf8 = QorBig5ToUtf8(big5, std::strlen(big5));
    return std::string(static_cast<const char*>(utf8), utf8.GetLength());
}

struct SplitPath
{
    bool absolute = false;
    bool valid = true;
    std::vector<std::string> levels;
};

// Splits path at '/' and '\' outside Big5 characters. A character whose second byte is '/' makes the path
// invalid: no file name here can hold that byte.
SplitPath Split(const char* path)
{
    SplitPath out;
    if (!path)
    {
        out.valid = false;
        return out;
    }
    const auto* p = reinterpret_cast<const unsigned char*>(path);
    out.absolute = p[0] == '/' || p[0] == '\\';
    std::string level;
    for (std::size_t i = 0; p[i] != 0; ++i)
    {
        const unsigned char c = p[i];
        if (IsLeadByte(c))
        {
            level += static_cast<char>(c);
            if (p[i + 1] != 0)
            {
                ++i;
                if (p[i] == '/')
                    out.valid = false;
                level += static_cast<char>(p[i]);
            }
        }
        else if (c == '/' || c == '\\')
        {
            if (!level.empty())
                out.levels.push_back(std::move(level));
            level.clear();
        }
        else
        {
            level += static_cast<char>(c);
        }
    }
    if (!level.empty())
        out.levels.push_back(std::move(level));
    if (!out.absolute && out.levels.empty())
        out.valid = false;
    return out;
}

std::string Join(const SplitPath& split)
{
    std::string out = split.absolute ? "/" : "";
    for (std::size_t i = 0; i < split.levels.size(); ++i)
    {
        if (i > 0)
            out += '/';
        out += split.levels[i];
    }
    return out;
}

// The path in this system's form, or false when it cannot name anything here.
bool SystemPath(const char* path, std::string& out)
{
    const SplitPath split = Split(path);
    if (!split.valid)
        return false;
    out = Join(split);
    return true;
}

class Descriptor
{
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_fd; }
    bool IsValid() const { return m_fd >= 0; }

private:
    int m_fd;
};

int OpenDirectoryAt(int dirFd, const char* name, bool followLast)
{
    return openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followLast ? 0 : O_NOFOLLOW));
}

// The names in a directory other than "." and ".."; false when it cannot be read.
bool ListEntries(int dirFd, std::vector<std::string>& names)
{
    const int copy = fcntl(dirFd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0)
        return false;
    DIR* dir = fdopendir(copy);
    if (!dir)
    {
        close(copy);
        return false;
    }
    rewinddir(dir);
    while (const dirent* entry = readdir(dir))
    {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        names.emplace_back(entry->d_name);
    }
    closedir(dir);
    return true;
}

bool SameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool WriteFully(int fd, const char* bytes, std::size_t n)
{
    while (n > 0)
    {
        const ssize_t written = write(fd, bytes, n);
        if (written < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes += written;
        n -= static_cast<std::size_t>(written);
    }
    return true;
}

// Opens name in dirFd for writing as a regular file of its own: an existing link or a file we may not
// write is replaced rather than written through.
int OpenTargetFile(int dirFd, const char* name)
{
    const int flags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC;
    int fd = openat(dirFd, name, flags, 0600);
    if (fd >= 0)
        return fd;
    struct stat existing;
    if ((errno != ELOOP && errno != EACCES && errno != EPERM) ||
        fstatat(dirFd, name, &existing, AT_SYMLINK_NOFOLLOW) != 0 || S_ISDIR(existing.st_mode) ||
        unlinkat(dirFd, name, 0) != 0)
        return -1;
    return openat(dirFd, name, flags | O_EXCL, 0600);
}

// Copies one regular file; returns its byte count, or 0 (and no partial target) on failure.
unsigned long CopyOneFile(int fromDir, int toDir, const char* name)
{
    Descriptor source(openat(fromDir, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat sourceStat;
    if (!source.IsValid() || fstat(source.Get(), &sourceStat) != 0 || !S_ISREG(sourceStat.st_mode))
        return 0;
    Descriptor target(OpenTargetFile(toDir, name));
    struct stat targetStat;
    if (!target.IsValid() || fstat(target.Get(), &targetStat) != 0)
        return 0;
    // The same file reached twice (a directory copied onto itself, or a hard link): truncating would lose it.
    if (SameFile(sourceStat, targetStat))
        return 0;

    bool ok = ftruncate(target.Get(), 0) == 0;
    unsigned long total = 0;
    char buffer[65536];
    while (ok)
    {
        const ssize_t got = read(source.Get(), buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
        {
            ok = got == 0;
            break;
        }
        ok = WriteFully(target.Get(), buffer, static_cast<std::size_t>(got));
        total += static_cast<unsigned long>(got);
    }
    if (ok)
    {
        const struct timespec times[2] = {{0, UTIME_OMIT}, sourceStat.st_mtim};
        ok = fchmod(target.Get(), (sourceStat.st_mode & 0777) | S_IRUSR | S_IWUSR) == 0 &&
             futimens(target.Get(), times) == 0;
    }
    if (!ok)
    {
        unlinkat(toDir, name, 0);
        return 0;
    }
    return total;
}

// Recreates the link itself, replacing a non-directory entry of the same name.
void CopyOneLink(int fromDir, int toDir, const char* name, const struct stat& linkStat)
{
    std::string target(static_cast<std::size_t>(linkStat.st_size > 0 ? linkStat.st_size : PATH_MAX) + 1, '\0');
    const ssize_t length = readlinkat(fromDir, name, &target[0], target.size());
    if (length < 0 || static_cast<std::size_t>(length) >= target.size())
        return;
    target.resize(static_cast<std::size_t>(length));
    if (symlinkat(target.c_str(), toDir, name) == 0 || errno != EEXIST)
        return;
    struct stat existing;
    if (fstatat(toDir, name, &existing, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(existing.st_mode) &&
        unlinkat(toDir, name, 0) == 0)
        symlinkat(target.c_str(), toDir, name);
}

unsigned long CopyTree(int fromDir, int toDir, bool recursive, const struct stat& topTarget)
{
    std::vector<std::string> names;
    if (!ListEntries(fromDir, names))
        return 0;
    unsigned long total = 0;
    for (const std::string& name : names)
    {
        struct stat entry;
        if (fstatat(fromDir, name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (S_ISREG(entry.st_mode))
        {
            total += CopyOneFile(fromDir, toDir, name.c_str());
        }
        else if (S_ISLNK(entry.st_mode))
        {
            CopyOneLink(fromDir, toDir, name.c_str(), entry);
        }
        else if (S_ISDIR(entry.st_mode) && recursive && !SameFile(entry, topTarget))
        {
            Descriptor sub(OpenDirectoryAt(fromDir, name.c_str(), false));
            if (!sub.IsValid())
                continue;
            mkdirat(toDir, name.c_str(), 0777);
            Descriptor subTarget(OpenDirectoryAt(toDir, name.c_str(), false));
            if (subTarget.IsValid())
                total += CopyTree(sub.Get(), subTarget.Get(), true, topTarget);
        }
    }
    return total;
}

void DeleteContents(int dirFd, bool recursive)
{
    std::vector<std::string> names;
    if (!ListEntries(dirFd, names))
        return;
    for (const std::string& name : names)
    {
        struct stat entry;
        if (fstatat(dirFd, name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (!S_ISDIR(entry.st_mode))
        {
            unlinkat(dirFd, name.c_str(), 0);
        }
        else if (recursive)
        {
            {
                Descriptor sub(OpenDirectoryAt(dirFd, name.c_str(), false));
                if (sub.IsValid())
                    DeleteContents(sub.Get(), true);
            }
            unlinkat(dirFd, name.c_str(), AT_REMOVEDIR);
        }
    }
}

unsigned long TreeSize(int dirFd, bool recursive)
{
    std::vector<std::string> names;
    if (!ListEntries(dirFd, names))
        return 0;
    unsigned long total = 0;
    for (const std::string& name : names)
    {
        struct stat entry;
        if (fstatat(dirFd, name.c_str(), &entry, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (S_ISREG(entry.st_mode))
        {
            total += static_cast<unsigned long>(entry.st_size);
        }
        else if (S_ISDIR(entry.st_mode) && recursive)
        {
            Descriptor sub(OpenDirectoryAt(dirFd, name.c_str(), false));
            if (sub.IsValid())
                total += TreeSize(sub.Get(), true);
        }
    }
    return total;
}

std::string g_dataHome;

std::string DefaultDataHome()
{
    long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(static_cast<std::size_t>(size > 0 ? size : 16384));
    struct passwd entry;
    struct passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE && buffer.size() < (1u << 20))
        buffer.resize(buffer.size() * 2);
    if (!found || !found->pw_dir || found->pw_dir[0] == 0)
        return std::string();
    std::string home;
    if (!SystemPath(found->pw_dir, home))
        return std::string();
    return home == "/" ? "/.local/share" : home + "/.local/share";
}

std::string DataHome()
{
    return g_dataHome.empty() ? DefaultDataHome() : g_dataHome;
}

// The menu folder of group, or empty when it would leave the applications folder or cannot exist.
std::string ShortcutDir(const char* group)
{
    std::string dir = DataHome();
    if (dir.empty())
        return dir;
    dir += dir == "/" ? "applications" : "/applications";
    if (!group)
        return dir;
    const SplitPath split = Split(group);
    if (!split.valid && !split.levels.empty())
        return std::string();
    for (const std::string& level : split.levels)
    {
        if (level == "." || level == "..")
            return std::string();
        dir += '/';
        dir += level;
    }
    return dir;
}

// A control byte a desktop entry cannot hold; the escaped ones (tab, line feed, carriage return) excluded.
bool IsDroppedControl(unsigned char c)
{
    return (c < 0x20 && c != '\t' && c != '\n' && c != '\r') || c == 0x7F;
}

// A string value in desktop-entry form: '\' and the line and tab controls become escapes, and spaces at
// either end become \s so that a reader's trimming keeps them. Byte by byte, not Big5-aware, so a Big5
// second byte equal to '\' is escaped too and a reader gets back exactly the bytes given.
std::string EscapeValue(const std::string& text)
{
    std::size_t first = 0;
    while (first < text.size() && text[first] == ' ')
        ++first;
    std::size_t last = text.size();
    while (last > first && text[last - 1] == ' ')
        --last;

    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == ' ' && (i < first || i >= last))
            out += "\\s";
        else if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\t')
            out += "\\t";
        else if (!IsDroppedControl(c))
            out += static_cast<char>(c);
    }
    return out;
}

// The target as one Exec argument: '%' is doubled (it would start a field code), and a text holding a
// reserved character is put in double quotes with '"', '`', '$' and '\' escaped inside them.
std::string ExecArgument(const std::string& target)
{
    static const char kReserved[] = " \t\n\r\"'\\><~|&;$*?#()`";
    bool quote = false;
    for (char c : target)
        quote = quote || std::strchr(kReserved, c) != nullptr;
    std::string out = quote ? "\"" : "";
    for (char c : target)
    {
        if (c == '%')
            out += "%%";
        else if (quote && (c == '"' || c == '`' || c == '$' || c == '\\'))
            (out += '\\') += c;
        else
            out += c;
    }
    if (quote)
        out += '"';
    return out;
}

bool IsEmptyText(const char* text)
{
    return !text || text[0] == 0;
}
} // namespace

void QorCreateDirectory(const char* path)
{
    try
    {
        const SplitPath split = Split(path);
        if (!split.valid)
            return;
        std::string prefix = split.absolute ? "/" : "";
        for (const std::string& level : split.levels)
        {
            prefix += level;
            mkdir(prefix.c_str(), 0777);
            prefix += '/';
        }
    }
    catch (const std::bad_alloc&)
    {
    }
}

unsigned long QorCopyDirectory(const char* from, const char* to, char recursive)
{
    try
    {
        QorCreateDirectory(to);
        std::string fromPath, toPath;
        if (!SystemPath(from, fromPath) || !SystemPath(to, toPath))
            return 0;
        Descriptor fromDir(OpenDirectoryAt(AT_FDCWD, fromPath.c_str(), true));
        Descriptor toDir(OpenDirectoryAt(AT_FDCWD, toPath.c_str(), true));
        struct stat fromStat, toStat;
        if (!fromDir.IsValid() || !toDir.IsValid() || fstat(fromDir.Get(), &fromStat) != 0 ||
            fstat(toDir.Get(), &toStat) != 0 || SameFile(fromStat, toStat))
            return 0;
        return CopyTree(fromDir.Get(), toDir.Get(), recursive != 0, toStat);
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

void QorDeleteDirectory(const char* path, char recursive)
{
    try
    {
        std::string dirPath;
        if (!SystemPath(path, dirPath))
            return;
        struct stat rootStat, dirStat;
        {
            Descriptor dir(OpenDirectoryAt(AT_FDCWD, dirPath.c_str(), false));
            if (!dir.IsValid() || fstat(dir.Get(), &dirStat) != 0 || stat("/", &rootStat) != 0 ||
                SameFile(dirStat, rootStat))
                return;
            DeleteContents(dir.Get(), recursive != 0);
        }
        if (recursive)
            rmdir(dirPath.c_str());
    }
    catch (const std::bad_alloc&)
    {
    }
}

unsigned long QorGetDirectorySize(const char* path, char recursive)
{
    try
    {
        std::string dirPath;
        if (!SystemPath(path, dirPath))
            return 0;
        Descriptor dir(OpenDirectoryAt(AT_FDCWD, dirPath.c_str(), true));
        return dir.IsValid() ? TreeSize(dir.Get(), recursive != 0) : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

unsigned long long QorGetFreeDiskSpace64(const char* root)
{
    try
    {
        std::string rootPath;
        struct statvfs info;
        if (!SystemPath(root, rootPath) || statvfs(rootPath.c_str(), &info) != 0)
            return 0;
        unsigned long long bytes = 0;
        if (__builtin_mul_overflow(static_cast<unsigned long long>(info.f_bavail),
                                   static_cast<unsigned long long>(info.f_frsize), &bytes))
            return ULLONG_MAX;
        return bytes;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

unsigned long QorGetFreeDiskSpace(const char* root)
{
    // Cluster size times free clusters in 32 bits, as programs written for it expect.
    return static_cast<std::uint32_t>(QorGetFreeDiskSpace64(root));
}

void QorSetDataHome(const char* path)
{
    try
    {
        std::string home;
        g_dataHome = !IsEmptyText(path) && SystemPath(path, home) ? home : std::string();
    }
    catch (const std::bad_alloc&)
    {
        g_dataHome.clear();
    }
}

QorString QorGetDataHome()
{
    try
    {
        return QorString(DataHome().c_str());
    }
    catch (const std::bad_alloc&)
    {
        return QorString();
    }
}

QorString QorGetShortcutDir(const char* group)
{
    try
    {
        return QorString(ShortcutDir(group).c_str());
    }
    catch (const std::bad_alloc&)
    {
        return QorString();
    }
}

char QorCreateShortcut(const char* group, const char* name, const char* target, const char* workDir,
                       const char* description)
{
    try
    {
        if (IsEmptyText(name) || IsEmptyText(target))
            return 0;
        const SplitPath nameSplit = Split(name);
        if (!nameSplit.valid || nameSplit.absolute || nameSplit.levels.size() != 1 || nameSplit.levels[0] != name ||
            nameSplit.levels[0] == "." || nameSplit.levels[0] == "..")
            return 0;
        const std::string dir = ShortcutDir(group);
        if (dir.empty())
            return 0;
        QorCreateDirectory(dir.c_str());

        std::string text = "[Desktop Entry]\nType=Application\nName=" + EscapeValue(DisplayText(name)) + "\n";
        if (!IsEmptyText(description))
            text += "Comment=" + EscapeValue(DisplayText(description)) + "\n";
        text += "Exec=" + EscapeValue(ExecArgument(target)) + "\n";
        if (!IsEmptyText(workDir))
            text += "Path=" + EscapeValue(workDir) + "\n";

        const std::string file = dir + "/" + name + ".desktop";
        Descriptor out(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
        if (!out.IsValid())
            return 0;
        if (!WriteFully(out.Get(), text.data(), text.size()))
        {
            unlink(file.c_str());
            return 0;
        }
        return 1;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}
