// Pictures as SDL surfaces and PNG files (platform/sdl2/QorSdlPicture.h), used by the golden tests.
#include "test_util.h"

#include "platform/sdl2/QorSdlPicture.h"
#include "qor/pictures.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

Uint32 SurfacePixel(SDL_Surface* surface, int x, int y)
{
    Uint32 value = 0;
    std::memcpy(&value, static_cast<Uint8*>(surface->pixels) + surface->pitch * y + x * 4, 4);
    return value;
}

QorPicBlock Numbered(QorPicBlock::ColorType type, long w, long h)
{
    QorPicBlock p(type, w, h);
    for (unsigned long i = 0; i < p.GetSize(); ++i)
        p.GetDataPtr()[i] = static_cast<unsigned char>(i * 37 + 11);
    return p;
}
} // namespace

TEST(QorSdlPicture, SurfaceShowsEachDepthAsOpaqueArgb)
{
    QorPicBlock rgb(QorPicBlock::Bit24, 2, 1);
    const unsigned char bgr[6] = {1, 2, 3, 4, 5, 6};
    std::memcpy(rgb.GetDataPtr(), bgr, 6);
    SDL_Surface* surface = QorPictureToSurface(rgb);
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(surface->format->format, Uint32(SDL_PIXELFORMAT_ARGB8888));
    EXPECT_EQ(SurfacePixel(surface, 0, 0), 0xFF030201u);
    EXPECT_EQ(SurfacePixel(surface, 1, 0), 0xFF060504u);
    SDL_FreeSurface(surface);

    QorPicBlock high(QorPicBlock::Bit16, 1, 1);
    const unsigned v = (31u << 10) | (1u << 5) | 16u;
    high.GetDataPtr()[0] = static_cast<unsigned char>(v);
    high.GetDataPtr()[1] = static_cast<unsigned char>(v >> 8);
    surface = QorPictureToSurface(high);
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(SurfacePixel(surface, 0, 0), 0xFFFF0884u);
    SDL_FreeSurface(surface);

    QorPicBlock indexed(QorPicBlock::Bit8, 2, 1);
    indexed.GetDataPtr()[0] = 5;
    indexed.GetDataPtr()[1] = 200;
    surface = QorPictureToSurface(indexed);
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(SurfacePixel(surface, 0, 0), 0xFF050505u);
    SDL_FreeSurface(surface);
    stPaletteEntry palette[256];
    palette[200] = 0x00302010u;
    indexed.SetPaletteEntryPtr(palette);
    surface = QorPictureToSurface(indexed);
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(SurfacePixel(surface, 1, 0), 0xFF102030u);
    SDL_FreeSurface(surface);

    EXPECT_EQ(QorPictureToSurface(QorPicBlock(QorPicBlock::Bit32)), nullptr);
}

TEST(QorSdlPicture, PngRoundTripKeepsTwentyFourAndThirtyTwoBitPixels)
{
    const std::string path = qortest::TempPath("rgb.png");
    QorPicBlock rgb = Numbered(QorPicBlock::Bit24, 7, 3);
    ASSERT_EQ(QorSavePicturePng(rgb, path.c_str()), 1);
    QorPicBlock back;
    ASSERT_EQ(QorLoadPicturePng(back, path.c_str(), QorPicBlock::Bit24), 1);
    EXPECT_EQ(back.GetWidth(), 7);
    EXPECT_EQ(back.GetHeight(), 3);
    EXPECT_EQ(Bytes(back.GetDataPtr(), back.GetDataPtr() + back.GetSize()),
              Bytes(rgb.GetDataPtr(), rgb.GetDataPtr() + rgb.GetSize()));

    // 32 bits: colours kept, the fourth byte comes back 0.
    QorPicBlock wide(QorPicBlock::Bit32);
    ASSERT_EQ(QorLoadPicturePng(wide, path.c_str(), QorPicBlock::Bit32), 1);
    for (long y = 0; y < 3; ++y)
        for (long x = 0; x < 7; ++x)
        {
            EXPECT_EQ(Bytes(wide.GetPixel(x, y), wide.GetPixel(x, y) + 3),
                      Bytes(rgb.GetPixel(x, y), rgb.GetPixel(x, y) + 3));
            EXPECT_EQ(wide.GetPixel(x, y)[3], 0);
        }
}

TEST(QorSdlPicture, SixteenBitPicturesRoundTripThroughTheirExpandedColours)
{
    const std::string path = qortest::TempPath("high.png");
    QorPicBlock high = Numbered(QorPicBlock::Bit16, 5, 2);
    // Bit 15 is unused in X1R5G5B5 and does not survive.
    for (long i = 1; i < long(high.GetSize()); i += 2)
        high.GetDataPtr()[i] &= 0x7F;
    ASSERT_EQ(QorSavePicturePng(high, path.c_str()), 1);
    QorPicBlock back;
    ASSERT_EQ(QorLoadPicturePng(back, path.c_str(), QorPicBlock::Bit16), 1);
    EXPECT_EQ(Bytes(back.GetDataPtr(), back.GetDataPtr() + back.GetSize()),
              Bytes(high.GetDataPtr(), high.GetDataPtr() + high.GetSize()));
}

TEST(QorSdlPicture, LoadingRefusesMissingFilesAndEightBitsFromAnRgbImage)
{
    QorPicBlock picture = Numbered(QorPicBlock::Bit24, 2, 2);
    const Bytes before(picture.GetDataPtr(), picture.GetDataPtr() + picture.GetSize());
    EXPECT_EQ(QorLoadPicturePng(picture, qortest::TempPath("missing.png").c_str(), QorPicBlock::Bit24), 0);
    const std::string path = qortest::TempPath("rgb.png");
    ASSERT_EQ(QorSavePicturePng(picture, path.c_str()), 1);
    EXPECT_EQ(QorLoadPicturePng(picture, path.c_str(), QorPicBlock::Bit8), 0);
    EXPECT_EQ(picture.GetColorType(), QorPicBlock::Bit24);
    EXPECT_EQ(Bytes(picture.GetDataPtr(), picture.GetDataPtr() + picture.GetSize()), before);
    EXPECT_EQ(QorSavePicturePng(QorPicBlock(QorPicBlock::Bit24), path.c_str()), 0);
}
