// Opens arbitrary bytes as a picture group and loads every picture by index and by name.
#include "FuzzInput.h"
#include "qor/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string& path = qorfuzz::InputPath("picgroup");
    if (!qorfuzz::WriteInput(path, data, size))
        return 0;
    QorPicGroup group;
    if (!group.Open(path.c_str()))
        return 0;
    QorPicGroup copy(group);
    for (unsigned long i = 0; i < group.GetCount() && i < 32; ++i)
    {
        QorPicBlock picture;
        group.LoadData(&picture, i);
        copy.LoadData(&picture, group.GetName(i));
    }
    return 0;
}
