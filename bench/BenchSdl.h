#pragma once

// SDL surfaces holding the same bytes as our pictures, for the side-by-side benchmarks.
#include "qor/pictures.h"

#include <SDL.h>

#include <cstring>
#include <memory>

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
