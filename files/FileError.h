#pragma once

#include "files/QorFile.h"

namespace qor::detail
{
/// Sets the last-error text of a refused read as "<path>: byte <offset>: <what>" ("(stream)" for a file
/// opened without a path). Returns 0, so a reader can `return FileError(...);`.
char FileError(const QorFile& file, unsigned long offset, const char* format, ...)
#if defined(__GNUC__) || defined(__clang__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;
} // namespace qor::detail
