#pragma once

// QOR_API marks what the shared library exports; everything else is built with hidden visibility.
// The same mark serves the static library and the library's users, where it changes nothing.
#if defined(__GNUC__) || defined(__clang__)
#define QOR_API __attribute__((visibility("default")))
#else
#define QOR_API
#endif
