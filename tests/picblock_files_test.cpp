// Pictures in and out as image files (QorLoadPicture, QorSavePicturePng), CreatePic from a program's
// picture and screenshots (QorCaptureScreen, QorSaveScreenPng).
#include "test_util.h"

#include "qor/compositor.h"
#include "qor/pictures.h"
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;
using qortest::TempPath;

Bytes PixelBytes(const QorPicBlock& p)
{
    return Bytes(p.GetDataPtr(), p.GetDataPtr() + p.GetSize());
}

// A w x h picture whose pixels differ from each other in every byte the type keeps.
QorPicBlock Pattern(QorPicBlock::ColorType type, long w, long h)
{
    QorPicBlock p(type, w, h);
    for (long y = 0; y < h; ++y)
        for (long x = 0; x < w; ++x)
        {
            unsigned char* px = p.GetPixel(x, y);
            const unsigned v = unsigned(y * w + x);
            if (type == QorPicBlock::Bit16)
            {
                // X1R5G5B5 with the top bit clear: a file keeps 15 bits.
                const unsigned c = (v * 977u) & 0x7FFFu;
                px[0] = static_cast<unsigned char>(c);
                px[1] = static_cast<unsigned char>(c >> 8);
            }
            else if (type == QorPicBlock::Bit8)
            {
                px[0] = static_cast<unsigned char>(v * 7);
            }
            else
            {
                px[0] = static_cast<unsigned char>(v * 11);
                px[1] = static_cast<unsigned char>(v * 5 + 1);
                px[2] = static_cast<unsigned char>(255 - v);
                if (type == QorPicBlock::Bit32)
                    px[3] = 0;
            }
        }
    return p;
}

class QorPicFilesRoundTrip : public ::testing::TestWithParam<QorPicBlock::ColorType>
{
};
} // namespace

TEST_P(QorPicFilesRoundTrip, SavedPngReadsBackAsTheSamePixelBytes)
{
    const QorPicBlock::ColorType type = GetParam();
    QorPicBlock original = Pattern(type, 7, 5);
    // Parameterised names hold slashes: the file is named after the type instead.
    const std::string path = "tmp/QorPicFilesRoundTrip.type" + std::to_string(int(type)) + ".png";
    ASSERT_EQ(QorSavePicturePng(original, path.c_str()), 1) << QorGetLastError();
    QorPicBlock back(type);
    ASSERT_EQ(QorLoadPicturePng(back, path.c_str(), type), 1) << QorGetLastError();
    EXPECT_EQ(back.GetColorType(), type);
    EXPECT_EQ(back.GetWidth(), 7);
    EXPECT_EQ(back.GetHeight(), 5);
    EXPECT_EQ(PixelBytes(back), PixelBytes(original));
}

INSTANTIATE_TEST_SUITE_P(EveryDepth, QorPicFilesRoundTrip,
                         ::testing::Values(QorPicBlock::Bit8, QorPicBlock::Bit16, QorPicBlock::Bit24,
                                           QorPicBlock::Bit32));

TEST(QorPicFiles, EightBitPictureSavesItsPaletteAndReadsItBack)
{
    stPaletteEntry palette[256];
    for (int i = 0; i < 256; ++i)
    {
        palette[i].peRed = static_cast<BYTE>(i);
        palette[i].peGreen = static_cast<BYTE>(255 - i);
        palette[i].peBlue = static_cast<BYTE>(i * 3);
    }
    QorPicBlock indexed = Pattern(QorPicBlock::Bit8, 6, 4);
    indexed.SetPaletteEntryPtr(palette);
    const std::string path = TempPath("indexed.png");
    ASSERT_EQ(QorSavePicturePng(indexed, path.c_str()), 1);

    stPaletteEntry read[256];
    QorPicBlock back;
    ASSERT_EQ(QorLoadPicture(back, path.c_str(), QorPicBlock::Bit8, nullptr, read), 1);
    EXPECT_EQ(PixelBytes(back), PixelBytes(indexed));
    EXPECT_EQ(back.GetPaletteEntryPtr(), read);
    EXPECT_EQ(read[10].peRed, 10);
    EXPECT_EQ(read[10].peGreen, 245);
    EXPECT_EQ(read[10].peBlue, 30);
    EXPECT_EQ(read[255].peBlue, static_cast<BYTE>(255 * 3));

    // The same file read as true colour shows the palette's colours: index 7 at (1, 0).
    QorPicBlock colour;
    ASSERT_EQ(QorLoadPicture(colour, path.c_str(), QorPicBlock::Bit24), 1);
    EXPECT_EQ(colour.GetPixel(1, 0)[2], 7);
    EXPECT_EQ(colour.GetPixel(1, 0)[1], 248);
    EXPECT_EQ(colour.GetPixel(1, 0)[0], 21);
}

TEST(QorPicFiles, KeyColourBecomesTheMask)
{
    QorPicBlock original = Pattern(QorPicBlock::Bit24, 3, 2);
    const std::string path = TempPath("keyed.png");
    ASSERT_EQ(QorSavePicturePng(original, path.c_str()), 1);
    const unsigned char magenta[3] = {255, 0, 255};
    QorPicBlock sprite;
    ASSERT_EQ(QorLoadPicture(sprite, path.c_str(), QorPicBlock::Bit24, magenta), 1);
    EXPECT_EQ(Bytes(sprite.GetMask(), sprite.GetMask() + 3), Bytes({255, 0, 255}));
}

TEST(QorPicFiles, BmpFilesLoadThroughTheSameCall)
{
    // A 2 x 2, 24-bit bottom-up BMP: rows padded to 8 bytes.
    Bytes bmp = {'B', 'M', 70, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0};
    bmp.resize(54, 0);
    const Bytes rows = {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    bmp.insert(bmp.end(), rows.begin(), rows.end());
    const std::string path = TempPath("picture.bmp");
    qortest::WriteAll(path, bmp);
    QorPicBlock picture;
    ASSERT_EQ(QorLoadPicture(picture, path.c_str(), QorPicBlock::Bit32), 1) << QorGetLastError();
    ASSERT_EQ(picture.GetWidth(), 2);
    // The top row is the file's second row; 32-bit pixels are blue, green, red, 0.
    EXPECT_EQ(Bytes(picture.GetPixel(0, 0), picture.GetPixel(0, 0) + 8), Bytes({7, 8, 9, 0, 10, 11, 12, 0}));
    EXPECT_EQ(Bytes(picture.GetPixel(0, 1), picture.GetPixel(0, 1) + 4), Bytes({1, 2, 3, 0}));
}

TEST(QorPicFiles, RefusalsLeaveThePictureAndSayWhy)
{
    QorPicBlock picture = Pattern(QorPicBlock::Bit24, 2, 2);
    const Bytes before = PixelBytes(picture);
    EXPECT_EQ(QorLoadPicture(picture, "tmp/no-such-picture.png", QorPicBlock::Bit24), 0);
    EXPECT_NE(std::string(QorGetLastError()).find("tmp/no-such-picture.png"), std::string::npos) << QorGetLastError();
    EXPECT_EQ(QorLoadPicture(picture, "tmp/no-such-picture.png", QorPicBlock::ColorType(9)), 0);
    EXPECT_NE(std::string(QorGetLastError()).find("colour type 9"), std::string::npos) << QorGetLastError();

    const std::string rgb = TempPath("rgb.png");
    ASSERT_EQ(QorSavePicturePng(picture, rgb.c_str()), 1);
    EXPECT_EQ(QorLoadPicture(picture, rgb.c_str(), QorPicBlock::Bit8), 0);
    EXPECT_NE(std::string(QorGetLastError()).find("needs a palette image"), std::string::npos) << QorGetLastError();
    EXPECT_EQ(PixelBytes(picture), before);

    QorPicBlock empty;
    EXPECT_EQ(QorSavePicturePng(empty, TempPath("empty.png").c_str()), 0);
    EXPECT_NE(std::string(QorGetLastError()).find("empty picture"), std::string::npos) << QorGetLastError();
}

TEST(QorPicFiles, CreatePicStoresACopyOfTheProgramsPictureWithItsMask)
{
    CWnd window;
    ASSERT_TRUE(window.Create("files", 8, 4));
    QorOffScreenBuffer screen;
    screen.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 8, 4, &window);
    QorPicBlock made = Pattern(QorPicBlock::Bit32, 5, 3);
    const QorPicBlock original = made;
    made.SetMask(made.GetPixel(1, 0));
    const QorGuider pic = screen.CreatePic(made);
    ASSERT_TRUE(pic.object != nullptr);
    EXPECT_EQ(screen.GetPicWidth(pic), 5);
    EXPECT_EQ(screen.GetPicHeight(pic), 3);
    // A copy: blacking out the program's picture afterwards does not reach the screen.
    const unsigned char black[4] = {0, 0, 0, 0};
    made.Fill(black);
    const QorGuider sprite = screen.CreateSprite(pic, 10);
    screen.SetMask(sprite, 1);
    screen.Redraw(0, 1);

    QorPicBlock shot;
    ASSERT_EQ(QorCaptureScreen(screen, shot), 1) << QorGetLastError();
    auto at = [](const QorPicBlock& p, long x, long y) { return Bytes(p.GetPixel(x, y), p.GetPixel(x, y) + 4); };
    EXPECT_EQ(at(shot, 0, 0), at(original, 0, 0));
    EXPECT_EQ(at(shot, 4, 2), at(original, 4, 2));
    // The mask colour (pixel (1, 0)'s) is transparent: the black screen shows through.
    EXPECT_EQ(Bytes(shot.GetPixel(1, 0), shot.GetPixel(1, 0) + 4), Bytes({0, 0, 0, 0}));
}

TEST(QorPicFiles, ScreenshotIsWhatTheWindowShowsSavedAsPng)
{
    CWnd window;
    ASSERT_TRUE(window.Create("shot", 16, 8));
    QorOffScreenBuffer screen;
    screen.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 16, 8, &window);
    unsigned char green[4] = {0, 200, 0, 0};
    const QorGuider sprite = screen.CreateSprite(screen.CreatePic(QorPicBlock(QorPicBlock::Bit32, 4, 4, green)), 10);
    screen.MoveSprite(sprite, 2, 3);
    screen.Redraw(0, 1);

    QorPicBlock shot;
    ASSERT_EQ(QorCaptureScreen(screen, shot), 1) << QorGetLastError();
    EXPECT_EQ(shot.GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(shot.GetWidth(), 16);
    EXPECT_EQ(shot.GetHeight(), 8);
    EXPECT_EQ(Bytes(shot.GetPixel(2, 3), shot.GetPixel(2, 3) + 4), Bytes({0, 200, 0, 0}));
    EXPECT_EQ(Bytes(shot.GetPixel(5, 6), shot.GetPixel(5, 6) + 4), Bytes({0, 200, 0, 0}));
    EXPECT_EQ(Bytes(shot.GetPixel(6, 3), shot.GetPixel(6, 3) + 4), Bytes({0, 0, 0, 0}));

    const std::string path = TempPath("screen.png");
    ASSERT_EQ(QorSaveScreenPng(screen, path.c_str()), 1);
    QorPicBlock saved;
    ASSERT_EQ(QorLoadPicture(saved, path.c_str(), QorPicBlock::Bit32), 1);
    EXPECT_EQ(PixelBytes(saved), PixelBytes(shot));

    EXPECT_EQ(QorSaveScreenPng(screen, "tmp/no-such-dir/screen.png"), 0);
    EXPECT_NE(std::string(QorGetLastError()).find("tmp/no-such-dir/screen.png: cannot write the PNG file"),
              std::string::npos)
        << QorGetLastError();
}
