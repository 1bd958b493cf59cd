// A first qor program: a picture, a keyed sprite loaded from PNG, Big5 text, a mosaic and screenshots.
// Usage: getting_started [output-directory]   (headless: no window opens unless QorSelectPort asks)
#include <qor.h>
#include <cstdio>
#include <string>

int main(int argc, char** argv)
{
    const std::string out = argc > 1 ? argv[1] : ".";
    CWnd window;
    if (!window.Create("getting started", 320, 200))
        return 1;
    QorOffScreenBuffer screen;
    screen.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 320, 200, &window);

    // A picture made by the program. 32-bit pixels are bytes blue, green, red, unused.
    QorPicBlock sky(QorPicBlock::Bit32, 320, 200);
    for (long y = 0; y < 200; ++y)
        for (long x = 0; x < 320; ++x)
        {
            unsigned char* p = sky.GetPixel(x, y);
            p[0] = static_cast<unsigned char>(255 - y), p[1] = static_cast<unsigned char>(60 + y / 2);
            p[2] = static_cast<unsigned char>(x / 2), p[3] = 0;
        }
    screen.CreateSprite(screen.CreatePic(sky), 1000); // a larger depth lies further back

    // A sprite: a yellow disc on magenta, written as PNG and read back with magenta as its key colour.
    unsigned char magenta[4] = {255, 0, 255, 0}, yellow[4] = {0, 220, 255, 0};
    QorPicBlock ball(QorPicBlock::Bit32, 48, 48, magenta);
    for (long y = 0; y < 48; ++y)
        for (long x = 0; x < 48; ++x)
            if ((x - 24) * (x - 24) + (y - 24) * (y - 24) < 22 * 22)
                ball.Fill(x, y, x, y, yellow);
    QorPicBlock loaded;
    const std::string png = out + "/ball.png";
    if (!QorSavePicturePng(ball, png.c_str()) || !QorLoadPicture(loaded, png.c_str(), QorPicBlock::Bit32, magenta))
        return std::printf("ball: %s\n", QorGetLastError()), 1;
    QorGuider sprite = screen.CreateSprite(screen.CreatePic(loaded), 10);
    screen.SetMask(sprite, 1); // magenta pixels are not drawn
    screen.MoveSprite(sprite, 40, 120);

    // Big5 text ("你好" and Latin) in the Kai face; not pure white, the text sprite's default key colour.
    unsigned char cream[4] = {200, 250, 255, 0};
    QorGuider text = screen.CreateSprite(QorGuider(), 5);
    screen.SetText(text, "\xA7\x41\xA6\x6E, qor!", cream, "", -40, 0, FW_BOLD, 0, 0, 0);
    screen.MoveSprite(text, 110, 40);
    screen.Redraw(1, 1);

    // A mosaic from 16-pixel cells to sharp, one step per timer click; a screenshot halfway and at the end.
    screen.SetTimerClick(100);
    screen.MosiacIn(1000, 1, 16);
    for (int step = 1; screen.OnTimer(); ++step)
        if (step == 4 && !QorSaveScreenPng(screen, (out + "/mosaic.png").c_str()))
            return std::printf("mosaic: %s\n", QorGetLastError()), 1;
    if (!QorSaveScreenPng(screen, (out + "/screen.png").c_str()))
        return std::printf("screen: %s\n", QorGetLastError()), 1;
    std::printf("wrote %s/screen.png and %s/mosaic.png\n", out.c_str(), out.c_str());
    return 0;
}
