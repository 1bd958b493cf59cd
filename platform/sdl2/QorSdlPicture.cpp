// Pictures to SDL surfaces and PNG files and back.
#include "platform/sdl2/QorSdlPicture.h"

#include "core/QorError.h"
#include "platform/PlatformInternal.h"
#include "platform/sdl2/QorSdlPort.h"

#include <SDL.h>
#include <SDL_image.h>

#include <cstring>

namespace qor::detail
{
namespace
{
bool g_imageStarted = false;

void StartImage()
{
    if (g_imageStarted)
        return;
    g_imageStarted = true;
    IMG_Init(IMG_INIT_PNG);
    RegisterPlatformShutdown();
}

void ColourOf(const QorPicBlock& picture, const unsigned char* p, Uint8& r, Uint8& g, Uint8& b)
{
    switch (picture.GetColorType())
    {
    case QorPicBlock::Bit8:
        if (const stPaletteEntry* palette = picture.GetPaletteEntryPtr())
        {
            r = palette[*p].peRed;
            g = palette[*p].peGreen;
            b = palette[*p].peBlue;
        }
        else
        {
            r = g = b = *p;
        }
        break;
    case QorPicBlock::Bit16:
    {
        const unsigned v = p[0] | (unsigned(p[1]) << 8);
        auto expand = [](unsigned x) { return Uint8((x << 3) | (x >> 2)); };
        r = expand((v >> 10) & 31);
        g = expand((v >> 5) & 31);
        b = expand(v & 31);
        break;
    }
    default:
        b = p[0];
        g = p[1];
        r = p[2];
        break;
    }
}
} // namespace

void ShutDownSdlImage()
{
    if (g_imageStarted)
        IMG_Quit();
    g_imageStarted = false;
}
} // namespace qor::detail

SDL_Surface* QorPictureToSurface(const QorPicBlock& picture)
{
    const long w = picture.GetWidth();
    const long h = picture.GetHeight();
    if (w < 1 || h < 1 || !picture.GetDataPtr() || picture.GetBytesPerPixel() < 1)
        return nullptr;
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, int(w), int(h), 32, SDL_PIXELFORMAT_ARGB8888);
    if (!surface)
        return nullptr;
    for (long y = 0; y < h; ++y)
    {
        auto* row = reinterpret_cast<Uint32*>(static_cast<Uint8*>(surface->pixels) + surface->pitch * y);
        for (long x = 0; x < w; ++x)
        {
            Uint8 r = 0, g = 0, b = 0;
            qor::detail::ColourOf(picture, picture.GetPixel(x, y), r, g, b);
            row[x] = 0xFF000000u | (Uint32(r) << 16) | (Uint32(g) << 8) | b;
        }
    }
    return surface;
}

char QorSavePicturePng(const QorPicBlock& picture, const char* path)
{
    if (!path)
        return QorSetError("saving a picture: no path");
    const long w = picture.GetWidth();
    const long h = picture.GetHeight();
    if (w < 1 || h < 1 || !picture.GetDataPtr() || picture.GetBytesPerPixel() < 1)
        return QorSetError("%s: cannot save an empty picture (%ld x %ld)", path, w, h);
    qor::detail::StartImage();
    SDL_Surface* out = nullptr;
    if (picture.GetColorType() == QorPicBlock::Bit8)
    {
        // An 8-bit picture stays indices and palette, so that it reads back as the same bytes.
        out = SDL_CreateRGBSurfaceWithFormat(0, int(w), int(h), 8, SDL_PIXELFORMAT_INDEX8);
        if (out)
        {
            SDL_Color colours[256];
            const stPaletteEntry* palette = picture.GetPaletteEntryPtr();
            for (int i = 0; i < 256; ++i)
            {
                colours[i].r = palette ? palette[i].peRed : Uint8(i);
                colours[i].g = palette ? palette[i].peGreen : Uint8(i);
                colours[i].b = palette ? palette[i].peBlue : Uint8(i);
                colours[i].a = 255;
            }
            SDL_SetPaletteColors(out->format->palette, colours, 0, 256);
            for (long y = 0; y < h; ++y)
                std::memcpy(static_cast<Uint8*>(out->pixels) + out->pitch * y, picture.GetPixel(0, y), std::size_t(w));
        }
    }
    else if (SDL_Surface* surface = QorPictureToSurface(picture))
    {
        // Saved without alpha: the pictures are opaque.
        out = SDL_ConvertSurfaceFormat(surface, SDL_PIXELFORMAT_RGB24, 0);
        SDL_FreeSurface(surface);
    }
    if (!out)
        return QorSetError("%s: no memory for a %ld x %ld picture", path, w, h);
    const bool saved = IMG_SavePNG(out, path) == 0;
    SDL_FreeSurface(out);
    if (!saved)
        return QorSetError("%s: cannot write the PNG file (%s)", path, IMG_GetError());
    return 1;
}

char QorLoadPicture(QorPicBlock& picture, const char* path, QorPicBlock::ColorType type, const unsigned char* key,
                    stPaletteEntry* palette)
{
    if (!path)
        return QorSetError("loading a picture: no path");
    if (type != QorPicBlock::Bit8 && type != QorPicBlock::Bit16 && type != QorPicBlock::Bit24 &&
        type != QorPicBlock::Bit32)
        return QorSetError("%s: colour type %d is not 1 to 4", path, int(type));
    qor::detail::StartImage();
    SDL_Surface* loaded = IMG_Load(path);
    if (!loaded)
        return QorSetError("%s: cannot read the image (%s)", path, IMG_GetError());
    if (type == QorPicBlock::Bit8)
    {
        // Palette images only: their indices are the picture's pixels.
        const SDL_Palette* colours = loaded->format->palette;
        const int bits = loaded->format->BitsPerPixel;
        if (bits != 8 || !colours)
        {
            SDL_FreeSurface(loaded);
            return QorSetError("%s: an 8-bit picture needs a palette image, this one has %d bits per pixel", path,
                               bits);
        }
        QorPicBlock result(QorPicBlock::Bit8, loaded->w, loaded->h);
        if (SDL_MUSTLOCK(loaded))
            SDL_LockSurface(loaded);
        for (int y = 0; y < loaded->h; ++y)
            std::memcpy(result.GetPixel(0, y), static_cast<Uint8*>(loaded->pixels) + loaded->pitch * y,
                        std::size_t(loaded->w));
        if (SDL_MUSTLOCK(loaded))
            SDL_UnlockSurface(loaded);
        if (palette)
        {
            for (int i = 0; i < 256; ++i)
            {
                const bool used = i < colours->ncolors;
                palette[i].peRed = used ? colours->colors[i].r : 0;
                palette[i].peGreen = used ? colours->colors[i].g : 0;
                palette[i].peBlue = used ? colours->colors[i].b : 0;
            }
            result.SetPaletteEntryPtr(palette);
        }
        else
        {
            result.SetPaletteEntryPtr(picture.GetPaletteEntryPtr());
        }
        SDL_FreeSurface(loaded);
        if (key)
            result.SetMask(key);
        picture = result;
        return 1;
    }
    SDL_Surface* argb = SDL_ConvertSurfaceFormat(loaded, SDL_PIXELFORMAT_ARGB8888, 0);
    SDL_FreeSurface(loaded);
    if (!argb)
        return QorSetError("%s: cannot convert the image (%s)", path, SDL_GetError());
    QorPicBlock result(type, argb->w, argb->h);
    if (SDL_MUSTLOCK(argb))
        SDL_LockSurface(argb);
    for (int y = 0; y < argb->h; ++y)
    {
        const auto* row = reinterpret_cast<const Uint32*>(static_cast<const Uint8*>(argb->pixels) + argb->pitch * y);
        for (int x = 0; x < argb->w; ++x)
        {
            const Uint8 r = Uint8(row[x] >> 16);
            const Uint8 g = Uint8(row[x] >> 8);
            const Uint8 b = Uint8(row[x]);
            unsigned char* p = result.GetPixel(x, y);
            if (type == QorPicBlock::Bit16)
            {
                const unsigned v = (unsigned(r >> 3) << 10) | (unsigned(g >> 3) << 5) | unsigned(b >> 3);
                p[0] = static_cast<unsigned char>(v);
                p[1] = static_cast<unsigned char>(v >> 8);
            }
            else
            {
                p[0] = b;
                p[1] = g;
                p[2] = r;
                if (type == QorPicBlock::Bit32)
                    p[3] = 0;
            }
        }
    }
    if (SDL_MUSTLOCK(argb))
        SDL_UnlockSurface(argb);
    SDL_FreeSurface(argb);
    if (key)
        result.SetMask(key);
    picture = result;
    return 1;
}

char QorLoadPicturePng(QorPicBlock& picture, const char* path, QorPicBlock::ColorType type, const unsigned char* key,
                       stPaletteEntry* palette)
{
    return QorLoadPicture(picture, path, type, key, palette);
}
