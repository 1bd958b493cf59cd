// Both LoadBMP forms over arbitrary bytes; what loads is turned upside down.
#include "FuzzInput.h"
#include "qor/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("bmp");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    BITMAPINFOHEADER info{};
    unsigned char* bits = nullptr;
    if (LoadBMP(path.c_str(), &info, &bits))
    {
        VerticalReverse(bits, &info);
        delete[] bits;
    }
    BITMAPCOREHEADER core{};
    bits = nullptr;
    if (LoadBMP(path.c_str(), &core, &bits))
        delete[] bits;
    return 0;
}
