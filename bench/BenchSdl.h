#pragma once

// SDL surfaces holding the same bytes as our pictures, for the side-by-side benchmarks.
#include "qor/pictures.h"

#include <SDL.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace qorbench
{
struct SurfaceDeleter
{
    void operator()(SDL_Surface* s) const { SDL_FreeSurface(s); }
};
using Surface = std::unique_ptr<SDL_Surface, SurfaceDeleter>;

/// The SDL format whose memory layout matches a picture of that many bytes per pixel.
inline Uint32 SdlFormat(int bytes)
{
    switch (bytes)
    {
    case 1:
        return SDL_PIXELFORMAT_INDEX8;
    case 3:
        return SDL_PIXELFORMAT_RGB24; // bytes in memory: red, green, blue
    default:
        return SDL_PIXELFORMAT_RGB888; // 32-bit words 0x00RRGGBB: bytes blue, green, red, unused
    }
}

/// The SDL value of a key given as picture bytes, so that SDL treats exactly the same pixels as the key.
inline Uint32 SdlKey(const SDL_Surface* s, const unsigned char* key, int bytes)
{
    if (bytes == 1)
        return key[0];
    if (bytes == 3)
        return SDL_MapRGB(s->format, key[0], key[1], key[2]);
    return SDL_MapRGB(s->format, key[2], key[1], key[0]);
}

/// Fills picture with runs of the key and of colour, as in a sprite (runs of 1 to 24 pixels, alternating,
/// starting with colour): about half of its pixels are the key. The key becomes the picture's mask.
inline void FillKeyRuns(QorPicBlock& picture, const unsigned char* key, std::mt19937& rng)
{
    std::uniform_int_distribution<int> byte(0, 255);
    const int bytes = picture.GetBytesPerPixel();
    bool isKey = false;
    for (long i = 0, run = 0; i < picture.GetWidth() * picture.GetHeight(); ++i, --run)
    {
        if (run <= 0)
        {
            isKey = !isKey;
            run = 1 + byte(rng) % 24;
        }
        unsigned char* px = picture.GetDataPtr() + i * bytes;
        for (int k = 0; k < bytes; ++k)
            px[k] = isKey ? key[k] : static_cast<unsigned char>(0x80 | byte(rng));
    }
    picture.SetMask(key);
}

/// The benchmarks' 256-colour palette for 8-bit surfaces; the caller frees it with SDL_FreePalette.
inline SDL_Palette* MakeBenchPalette()
{
    SDL_Palette* palette = SDL_AllocPalette(256);
    std::vector<SDL_Color> colours(256);
    for (int i = 0; i < 256; ++i)
        colours[i] = SDL_Color{Uint8(i), Uint8(255 - i), Uint8(i * 7), 255};
    SDL_SetPaletteColors(palette, colours.data(), 0, 256);
    return palette;
}

/// A surface with the picture's pixels (and the palette, for 8-bit pictures).
inline Surface MakeSurface(const QorPicBlock& p, SDL_Palette* palette)
{
    const int bytes = p.GetBytesPerPixel();
    Surface s(SDL_CreateRGBSurfaceWithFormat(0, int(p.GetWidth()), int(p.GetHeight()), bytes * 8, SdlFormat(bytes)));
    if (palette)
        SDL_SetSurfacePalette(s.get(), palette);
    for (long y = 0; y < p.GetHeight(); ++y)
        std::memcpy(static_cast<unsigned char*>(s->pixels) + y * s->pitch, p.GetPixel(0, y),
                    std::size_t(p.GetWidth()) * bytes);
    return s;
}
} // namespace qorbench
