// Load with a FIX tag: the first input line is the rest of the tag (size text), the remainder the pixels.
#include "FuzzInput.h"
#include "qor/pictures.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto* newline = static_cast<const std::uint8_t*>(std::memchr(data, '\n', size));
    const std::size_t tagLength = newline ? std::size_t(newline - data) : size;
    const std::size_t pixelsAt = newline ? tagLength + 1 : size;
    const std::string& path = qorfuzz::InputPath("fix");
    if (!qorfuzz::WriteInput(path, data + pixelsAt, size - pixelsAt))
        return 0;
    // The size is the caller's to choose, and a caller asks for what it can hold: the reader reads
    // short files short rather than refusing them, so a tag's size is allocated whatever the file holds.
    const std::string text(reinterpret_cast<const char*>(data), tagLength);
    const std::size_t blank = text.find(' ', std::min<std::size_t>(5, text.size()));
    const long w = std::strtol(text.substr(std::min<std::size_t>(5, text.size())).c_str(), nullptr, 10);
    const long h = blank == std::string::npos ? 0 : std::strtol(text.substr(blank + 1).c_str(), nullptr, 10);
    constexpr long kMaxPixels = 1L << 24;
    if (w > 0 && h > 0 && (w > kMaxPixels || h > kMaxPixels || w * h > kMaxPixels))
        return 0;
    QorString tag("FIX  ");
    tag += QorString(reinterpret_cast<const char*>(data), static_cast<int>(tagLength));
    QorFile file;
    file.Open(path.c_str(), QorFile::kRead);
    QorPicBlock picture(QorPicBlock::Bit24, 3, 3);
    picture.Load(tag, file);
    return 0;
}
