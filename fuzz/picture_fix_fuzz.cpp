// Load with a FIX tag: the first input line is the rest of the tag (size text), the remainder the pixels.
#include "FuzzInput.h"
#include "qor/pictures.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto* newline = static_cast<const std::uint8_t*>(std::memchr(data, '\n', size));
    const std::size_t tagLength = newline ? std::size_t(newline - data) : size;
    const std::size_t pixelsAt = newline ? tagLength + 1 : size;
    const std::string& path = qorfuzz::InputPath("fix");
    if (!qorfuzz::WriteInput(path, data + pixelsAt, size - pixelsAt))
        return 0;
    QorString tag("FIX  ");
    tag += QorString(reinterpret_cast<const char*>(data), static_cast<int>(tagLength));
    QorFile file;
    file.Open(path.c_str(), QorFile::kRead);
    QorPicBlock picture(QorPicBlock::Bit24, 3, 3);
    picture.Load(tag, file);
    return 0;
}
