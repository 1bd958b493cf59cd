// LoadQGB over arbitrary bytes, twice in a row (the second read may keep the first buffer).
#include "FuzzInput.h"
#include "qor/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("qgb");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    QorFile file;
    file.Open(path.c_str(), QorFile::kRead);
    QorPicBlock picture;
    picture.LoadQGB(file);
    picture.LoadData(file);
    unsigned char colour[4] = {9, 9, 9, 9};
    picture.Fill(1, 1, 5, 5, colour);
    return 0;
}
