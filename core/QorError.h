#pragma once

#include "core/QorExport.h"

/// The last refusal's text on this thread, "" when none: the file (when known), the byte offset and
/// what was wrong, e.g. "art/hero.qbm: byte 6: picture type 9 is not 1 to 4".
/// \note Like SDL_GetError it is only meaningful right after a call that reported failure by its return
///       value; a later success does not clear it. The pointer stays valid until the next error is set.
QOR_API const char* QorGetLastError();
/// Empties the last-error text.
QOR_API void QorClearError();
/// Sets the last-error text, printf style (cut at 511 bytes). Returns 0, so a refusal can end with
/// `return QorSetError(...);`.
QOR_API char QorSetError(const char* format, ...)
#if defined(__GNUC__) || defined(__clang__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
