// Text rasterised with SDL_ttf for the drawing layer of every port (SDL_ttf needs no video).
#include "platform/PlatformInternal.h"
#include "platform/TextRaster.h"
#include "platform/sdl2/QorSdlPort.h"

#include <SDL.h>
#include <SDL_ttf.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>

namespace qor::detail
{
namespace
{
constexpr int kDefaultHeight = 16;
constexpr int kMaxHeight = 1024;
constexpr unsigned kBaseDpi = 72;
// Open faces kept; the oldest is closed beyond this.
constexpr std::size_t kCacheSize = 32;

struct OpenFace
{
    std::string path;
    int index;
    int size;
    unsigned hdpi;
    int style;
    TTF_Font* font;
};

struct RasterState
{
    bool started = false;
    bool shutDown = false;
    std::deque<OpenFace> faces;
};

RasterState& Raster()
{
    static RasterState* state = new RasterState();
    return *state;
}

TTF_Font* Open(const FaceFile& face, int size, unsigned hdpi, int style)
{
    RasterState& state = Raster();
    if (state.shutDown)
        return nullptr;
    if (!state.started)
    {
        if (TTF_Init() != 0)
            return nullptr;
        state.started = true;
        RegisterPlatformShutdown();
    }
    for (const OpenFace& open : state.faces)
        if (open.size == size && open.hdpi == hdpi && open.style == style && open.index == face.index &&
            open.path == face.path)
            return open.font;
    TTF_Font* font = TTF_OpenFontIndexDPI(face.path.c_str(), size, face.index, hdpi, kBaseDpi);
    if (!font)
        return nullptr;
    TTF_SetFontStyle(font, style);
    if (state.faces.size() >= kCacheSize)
    {
        TTF_CloseFont(state.faces.front().font);
        state.faces.pop_front();
    }
    state.faces.push_back(OpenFace{face.path, face.index, size, hdpi, style, font});
    return font;
}

int Advance(TTF_Font* font, Uint32 ch)
{
    int minX = 0, maxX = 0, minY = 0, maxY = 0, advance = 0;
    if (!TTF_GlyphIsProvided32(font, ch) || TTF_GlyphMetrics32(font, ch, &minX, &maxX, &minY, &maxY, &advance) != 0)
        return 0;
    return advance;
}

// The code points of UTF-8 text (the converters only make valid UTF-8).
std::vector<Uint32> CodePoints(const std::string& utf8)
{
    std::vector<Uint32> points;
    for (std::size_t i = 0; i < utf8.size();)
    {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        Uint32 point = length == 1 ? lead : lead & (0x3Fu >> (length - 1));
        for (std::size_t k = 1; k < length && i + k < utf8.size(); ++k)
            point = (point << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3Fu);
        points.push_back(point);
        i += length;
    }
    return points;
}

// SDL_ttf widens its rendering to the left and upwards when a glyph reaches past the pen origin or above
// the ascent, moving the origin by (x, y). The cell of the text starts there.
void RenderOrigin(TTF_Font* font, const std::string& utf8, int& x, int& y)
{
    int pen = 0;
    int left = 0;
    int top = 0;
    for (Uint32 point : CodePoints(utf8))
    {
        int minX = 0, maxX = 0, minY = 0, maxY = 0, advance = 0;
        if (TTF_GlyphMetrics32(font, point, &minX, &maxX, &minY, &maxY, &advance) != 0)
            continue;
        left = std::min(left, pen + minX);
        top = std::max(top, maxY);
        pen += advance;
    }
    x = -left;
    y = std::max(0, top - TTF_FontAscent(font));
}

// The point size (pixels at 72 dpi) for a LOGFONT height: below 0 the character height, above 0 the
// largest size whose cell fits in the height.
int SizeFor(const FaceFile& face, long height)
{
    if (height == 0)
        return kDefaultHeight;
    if (height < 0)
        return static_cast<int>(std::min<long>(-height, kMaxHeight));
    int size = static_cast<int>(std::min<long>(height, kMaxHeight));
    while (size > 1)
    {
        TTF_Font* font = Open(face, size, kBaseDpi, TTF_STYLE_NORMAL);
        if (!font || TTF_FontHeight(font) <= height)
            break;
        --size;
    }
    return size;
}

// The font for a request: a width stretches the face horizontally through its horizontal resolution,
// so that the average character ('x') is that wide.
TTF_Font* FontFor(const FontRequest& request, int* size = nullptr)
{
    const int points = SizeFor(request.face, request.height);
    if (size)
        *size = points;
    unsigned hdpi = kBaseDpi;
    if (request.width > 0)
    {
        TTF_Font* plain = Open(request.face, points, kBaseDpi, TTF_STYLE_NORMAL);
        const int natural = plain ? Advance(plain, 'x') : 0;
        if (natural > 0)
            hdpi = static_cast<unsigned>(std::clamp<long>((kBaseDpi * request.width + natural / 2) / natural, 1, 4096));
    }
    int style = TTF_STYLE_NORMAL;
    if (request.bold)
        style |= TTF_STYLE_BOLD;
    if (request.italic)
        style |= TTF_STYLE_ITALIC;
    if (request.underline)
        style |= TTF_STYLE_UNDERLINE;
    if (request.strikeOut)
        style |= TTF_STYLE_STRIKETHROUGH;
    return Open(request.face, points, hdpi, style);
}
} // namespace

long CountMissingGlyphs(const FaceFile& face, const std::string& utf8)
{
    TTF_Font* font = Open(face, kDefaultHeight, kBaseDpi, TTF_STYLE_NORMAL);
    long missing = 0;
    for (Uint32 point : CodePoints(utf8))
        if (point >= 0x20 && (!font || !TTF_GlyphIsProvided32(font, point)))
            ++missing;
    return missing;
}

bool GetRasterMetrics(const FontRequest& request, FontMetrics& metrics)
{
    int size = 0;
    TTF_Font* font = FontFor(request, &size);
    if (!font)
        return false;
    metrics.emHeight = size;
    metrics.height = TTF_FontHeight(font);
    metrics.ascent = TTF_FontAscent(font);
    metrics.descent = -TTF_FontDescent(font);
    metrics.lineSkip = TTF_FontLineSkip(font);
    metrics.aveCharWidth = Advance(font, 'x');
    // The widest of the printable ASCII characters and of some full-width characters (the ideographs
    // and the ideographic space span a whole cell).
    long widest = 0;
    for (Uint32 ch = 0x20; ch < 0x7F; ++ch)
        widest = std::max<long>(widest, Advance(font, ch));
    for (Uint32 ch : {0x3000u, 0x4E00u, 0x5B57u, 0x9F98u, 0xFF2Du})
        widest = std::max<long>(widest, Advance(font, ch));
    metrics.maxCharWidth = widest;
    return true;
}

bool MeasureRasterText(const FontRequest& request, const std::string& utf8, long& width, long& height)
{
    TTF_Font* font = FontFor(request);
    if (!font)
        return false;
    int w = 0;
    int h = 0;
    if (!utf8.empty() && TTF_SizeUTF8(font, utf8.c_str(), &w, &h) != 0)
        return false;
    int x = 0;
    int y = 0;
    RenderOrigin(font, utf8, x, y);
    width = std::max(0, w - x);
    height = TTF_FontHeight(font);
    return true;
}

bool RenderRasterText(const FontRequest& request, const std::string& utf8, std::vector<unsigned char>& coverage,
                      long& width, long& height)
{
    TTF_Font* font = FontFor(request);
    if (!font)
        return false;
    coverage.clear();
    width = 0;
    height = TTF_FontHeight(font);
    if (utf8.empty())
        return true;
    const SDL_Color white = {255, 255, 255, 255};
    SDL_Surface* surface = request.antialias ? TTF_RenderUTF8_Blended(font, utf8.c_str(), white)
                                             : TTF_RenderUTF8_Solid(font, utf8.c_str(), white);
    if (!surface)
        return false;
    if (SDL_MUSTLOCK(surface))
        SDL_LockSurface(surface);
    // The cell: from the pen origin, as high as the font; ink outside it is dropped.
    int originX = 0;
    int originY = 0;
    RenderOrigin(font, utf8, originX, originY);
    width = std::max(0, surface->w - originX);
    coverage.assign(static_cast<std::size_t>(width * height), 0);
    const auto* pixels = static_cast<const Uint8*>(surface->pixels);
    for (long y = 0; y < height && y + originY < surface->h; ++y)
    {
        const Uint8* row = pixels + surface->pitch * (y + originY) + originX * surface->format->BytesPerPixel;
        for (long x = 0; x < width; ++x)
        {
            unsigned char ink = 0;
            if (surface->format->BytesPerPixel == 1)
            {
                // The solid rendering is an 8-bit surface whose index 0 is the background.
                ink = row[x] ? 255 : 0;
            }
            else
            {
                Uint32 pixel = 0;
                SDL_memcpy(&pixel, row + x * 4, 4);
                Uint8 r, g, b, a;
                SDL_GetRGBA(pixel, surface->format, &r, &g, &b, &a);
                ink = a;
            }
            coverage[static_cast<std::size_t>(y * width + x)] = ink;
        }
    }
    if (SDL_MUSTLOCK(surface))
        SDL_UnlockSurface(surface);
    SDL_FreeSurface(surface);
    return true;
}

void ShutDownTextRaster()
{
    RasterState& state = Raster();
    for (const OpenFace& open : state.faces)
        TTF_CloseFont(open.font);
    state.faces.clear();
    if (state.started)
        TTF_Quit();
    state.started = false;
    state.shutDown = true;
}
} // namespace qor::detail
