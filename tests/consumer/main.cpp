#include <qor.h>

#include <cstdio>
#include <cstring>
#include <string>

// A program outside the library: strings, a picture written as PNG and read back, and the error text
// a refused file open leaves.
int main(int, char** argv)
{
    QorString text("consumer");
    text += QorString(42, 4);
    QorRect area(10, 10, 0, 0);

    QorPicBlock picture(QorPicBlock::Bit24, 4, 3);
    const unsigned char red[3] = {0, 0, 255};
    picture.Fill(red);
    const std::string png = std::string(argv[0]) + ".png";
    QorPicBlock back(QorPicBlock::Bit24);
    const bool roundTrip = QorSavePicturePng(picture, png.c_str()) &&
                           QorLoadPicture(back, png.c_str(), QorPicBlock::Bit24) && back.GetWidth() == 4 &&
                           back.GetHeight() == 3 && back.GetPixel(3, 2)[2] == 255 && back.GetPixel(3, 2)[0] == 0;

    QorFile missing;
    const bool refused = !missing.Open("no-such-consumer-file", QorFile::kRead) &&
                         std::strstr(QorGetLastError(), "no-such-consumer-file") != nullptr;

    std::printf("%s %ldx%ld png %s, missing file: %s\n", static_cast<char*>(text), area.Width(), area.Height(),
                roundTrip ? "ok" : "FAILED", QorGetLastError());
    return text == "consumer  42" && area.Width() == 11 && roundTrip && refused ? 0 : 1;
}
