#include "core/QorError.h"

#include <cstdarg>
#include <cstdio>

namespace
{
// One text per thread, as each thread's calls fail on their own.
thread_local char t_lastError[512] = "";
} // namespace

const char* QorGetLastError()
{
    return t_lastError;
}

void QorClearError()
{
    t_lastError[0] = '\0';
}

char QorSetError(const char* format, ...)
{
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(t_lastError, sizeof t_lastError, format, args);
    va_end(args);
    return 0;
}
