#pragma once

#include "core/QorExport.h"

#include "qor/core.h"

// Directory trees and program-menu shortcuts, for installing and removing an application's files.
//
// Paths: both '/' and '\' separate levels, and a path starting with either is absolute. Paths are scanned
// as Big5 text: a byte of 0xA0 or more and the byte after it form one character and are never split, so a
// second byte equal to '\' stays part of the name. A name whose second byte is '/' cannot exist on this
// system; such a path is refused as a whole. Empty levels ("a//b") are ignored and an empty path is refused.
// None of these functions changes the process's current directory, on success or on failure.
//
// Symbolic links met inside a tree are never followed: copying recreates the link itself, deleting removes
// the link and leaves its target alone, and measuring does not count it.

/// Creates every missing level of path. Levels that already exist are kept; nothing is reported.
QOR_API void QorCreateDirectory(const char* path);

/// Creates to (every level) and copies the regular files of from into it, overwriting files of the same
/// name, and the subdirectories too when recursive. Returns the bytes of the files copied (0 when from
/// cannot be opened; to is still created). Each copy keeps the source's modification time and permission
/// bits and is made readable and writable by its owner, so copied read-only files can later be changed.
/// \note Copying a directory onto itself copies nothing; a target inside from is not copied into itself.
QOR_API unsigned long QorCopyDirectory(const char* from, const char* to, char recursive);

/// Not recursive: removes the files (and links) directly in path and keeps path and its subdirectories.
/// Recursive: removes the whole tree, contents before their directory, and last path itself.
/// \note path itself must not be a symbolic link, and the file system root is never deleted.
QOR_API void QorDeleteDirectory(const char* path, char recursive);

/// Total bytes of the regular files in path (and in its subdirectories when recursive); 0 when path
/// cannot be opened.
QOR_API unsigned long QorGetDirectorySize(const char* path, char recursive);

/// Bytes free to this user on the file system holding root (any path on it), or 0 when the query fails.
/// \note The product is computed in 32 bits, so more than 4 GiB free wraps (5 GiB free reads as 1 GiB).
/// Use QorGetFreeDiskSpace64 for the true figure.
QOR_API unsigned long QorGetFreeDiskSpace(const char* root);

/// Bytes free to this user on the file system holding root, unwrapped (saturating), or 0 when the query
/// fails.
QOR_API unsigned long long QorGetFreeDiskSpace64(const char* root);

/// Sets the data home under which program menus live (normally $XDG_DATA_HOME, which the program reads
/// itself if it wants it). Null or empty returns to the default: the user's home directory from the
/// password database followed by "/.local/share".
QOR_API void QorSetDataHome(const char* path);

/// The data home in use, '/'-separated; empty when no default can be found.
QOR_API QorString QorGetDataHome();

/// The program-menu folder of group: <data home>/applications/<group>, where the group's own separators
/// make nested folders. Empty when there is no data home, or when group holds a "." or ".." level or a
/// name that cannot exist here. Nothing is created.
QOR_API QorString QorGetShortcutDir(const char* group);

/// Creates the desktop entry <name>.desktop in the menu folder of group (creating the folder), of type
/// Application, with Name=name, Comment=description, Exec=target (one program path, quoted as a single
/// argument when needed) and Path=workDir. Comment and Path are left out when empty. An existing entry
/// is overwritten. Values are escaped so that no text can start another line or key. The name and
/// description are Big5 and are written as UTF-8 (desktop entries are UTF-8); the target and working
/// directory are paths and keep their bytes.
/// Returns false for an empty name or target, a name holding a separator (or being "." or ".."), a group
/// refused by QorGetShortcutDir, a link in place of the entry, or a folder or file that cannot be written.
QOR_API char QorCreateShortcut(const char* group, const char* name, const char* target, const char* workDir,
                               const char* description);
