#pragma once

// Writes a fuzz input to a file of its own (the readers take paths or open streams) and opens it.
#include "qor/files.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace qorfuzz
{
inline const std::string& InputPath(const char* name)
{
    static const std::string path = std::string("/tmp/qor-") + name + "-" + std::to_string(::getpid()) + ".bin";
    return path;
}

inline bool WriteInput(const std::string& path, const std::uint8_t* data, std::size_t size)
{
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out)
        return false;
    const bool ok = std::fwrite(data, 1, size, out) == size;
    return std::fclose(out) == 0 && ok;
}
} // namespace qorfuzz
