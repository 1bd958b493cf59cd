// LoadQBM over arbitrary bytes, into a fresh picture and into an attached one, then a save round trip.
#include "FuzzInput.h"
#include "qor/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("qbm");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    QorFile file;
    file.Open(path.c_str(), QorFile::kRead);
    QorPicBlock picture;
    picture.LoadQBM(file);
    unsigned char pixels[16 * 16 * 4] = {};
    QorPicBlock attached;
    attached.Attach(QorPicBlock::Bit32, 16, 16, pixels);
    file.Seek(0, 0, 1);
    attached.LoadQBM(file);
    unsigned char colour[4] = {1, 2, 3, 4};
    picture.Fill(colour);
    QorPicBlock copy(picture);
    return 0;
}
