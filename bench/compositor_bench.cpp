// The compositor beside SDL2 doing the same work:
//  scene<bits>:   a full redraw of 640 x 480 with 100 keyed 64 x 64 sprites at fixed pseudo-random places,
//                 against SDL_FillRect plus 100 SDL_BlitSurface with a colour key, and again with RLE;
//  move<bits>:    one sprite moved by a few pixels and repainted with RedrawSprite, beside the full redraw;
//  present<bits>: a 640 x 480 frame of 8, 16, 24 or 32 bits presented into a 32-bit window (headless port) in
//                 modes 0 and 3 (and 6 at 8 bits, through the palette), against SDL_BlitSurface from INDEX8,
//                 RGB555, BGR24 or XRGB8888 to XRGB8888.
// About half of every sprite's pixels are the key colour, in runs.
#include "BenchRatios.h"
#include "BenchSdl.h"
#include "BenchSimd.h"

#include "qor/compositor.h"
#include "qor/platform.h"

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
const long kFrameW = 640, kFrameH = 480, kSide = 64;
const int kSprites = 100, kPictures = 8;

using qorbench::MakeSurface;
using qorbench::SdlFormat;
using qorbench::SdlKey;
using qorbench::Surface;

// The compositor with its registry pictures reachable, to fill them with the bench's pixels.
class Compositor : public QorOffScreenBuffer
{
public:
    QorGuider MakePicture(const QorPicBlock& pixels)
    {
        QorGuider g = CreateNewPic();
        FindPic(g)->picture = pixels;
        return g;
    }
};

// The pictures and places both sides draw: kPictures sprite pictures of runs of key and colour, and
// kSprites places inside the frame.
struct SceneData
{
    explicit SceneData(int bytes) : type(QorPicBlock::ColorType(bytes == 1 ? 1 : bytes))
    {
        std::mt19937 rng(42);
        for (int p = 0; p < kPictures; ++p)
        {
            QorPicBlock picture(type, kSide, kSide);
            qorbench::FillKeyRuns(picture, key, rng);
            pictures.push_back(picture);
        }
        std::uniform_int_distribution<long> px(0, kFrameW - kSide), py(0, kFrameH - kSide);
        for (int s = 0; s < kSprites; ++s)
            places.emplace_back(px(rng), py(rng));
        if (bytes == 1)
        {
            palette = qorbench::MakeBenchPalette();
        }
    }
    ~SceneData()
    {
        if (palette)
            SDL_FreePalette(palette);
    }
    SceneData(const SceneData&) = delete;
    SceneData& operator=(const SceneData&) = delete;

    QorPicBlock::ColorType type;
    unsigned char key[4] = {0x10, 0x20, 0x30, 0x00};
    unsigned char background[4] = {0x40, 0x50, 0x60, 0x00};
    std::vector<QorPicBlock> pictures;
    std::vector<Point<long>> places;
    SDL_Palette* palette = nullptr;
};

// The scene built in a compositor: the pictures in its registry, one sprite per place.
std::vector<QorGuider> BuildScene(Compositor& c, const SceneData& data)
{
    c.Initialize(data.type, QorOffScreenBuffer::kDeviceBitmap, kFrameW, kFrameH, nullptr);
    c.SetMainVisibleRect(QorRect(0, 0, kFrameW - 1, kFrameH - 1));
    c.GetMainBufferPicBlockPtr()->SetMask(data.background);
    std::vector<QorGuider> pictures;
    for (const QorPicBlock& p : data.pictures)
        pictures.push_back(c.MakePicture(p));
    std::vector<QorGuider> sprites;
    for (int s = 0; s < kSprites; ++s)
    {
        sprites.push_back(c.CreateSprite(pictures[s % kPictures], 1000 - s));
        c.MoveSprite(sprites.back(), data.places[s].x, data.places[s].y);
    }
    return sprites;
}

void OurScene(benchmark::State& state, int bytes, qor::detail::SimdLevel level)
{
    SceneData data(bytes);
    Compositor c;
    BuildScene(c, data);
    qorbench::ScopedSimdLevel simd(level);
    for (auto _ : state)
    {
        c.Redraw(0, 0);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kSprites);
}

enum class SdlMode
{
    kColorKey,
    kRle,
};

void SdlScene(benchmark::State& state, int bytes, SdlMode mode)
{
    SceneData data(bytes);
    Surface frame(SDL_CreateRGBSurfaceWithFormat(0, int(kFrameW), int(kFrameH), bytes * 8, SdlFormat(bytes)));
    if (data.palette)
        SDL_SetSurfacePalette(frame.get(), data.palette);
    std::vector<Surface> sources;
    for (const QorPicBlock& p : data.pictures)
    {
        Surface s = MakeSurface(p, data.palette);
        // The key as SDL maps the same bytes, so that exactly the same pixels are skipped.
        const Uint32 key = SdlKey(s.get(), data.key, bytes);
        SDL_SetColorKey(s.get(), SDL_TRUE, key);
        if (mode == SdlMode::kRle)
            SDL_SetSurfaceRLE(s.get(), 1);
        sources.push_back(std::move(s));
    }
    const Uint32 background =
        bytes == 1 ? data.background[0]
                   : SDL_MapRGB(frame->format, data.background[2], data.background[1], data.background[0]);
    for (auto _ : state)
    {
        SDL_FillRect(frame.get(), nullptr, background);
        // Farthest first, as the compositor's depth order draws them.
        for (int s = 0; s < kSprites; ++s)
        {
            SDL_Rect at{int(data.places[s].x), int(data.places[s].y), 0, 0};
            SDL_BlitSurface(sources[s % kPictures].get(), nullptr, frame.get(), &at);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kSprites);
}

void OurMove(benchmark::State& state, int bytes, bool full)
{
    SceneData data(bytes);
    Compositor c;
    const std::vector<QorGuider> sprites = BuildScene(c, data);
    c.Redraw(0, 0);
    const QorGuider& moving = sprites[kSprites / 2];
    const Point<long> home = data.places[kSprites / 2];
    long step = 0;
    for (auto _ : state)
    {
        // Back and forth by three pixels.
        step ^= 3;
        c.MoveSprite(moving, home.x + step, home.y + step);
        if (full)
            c.Redraw(0, 0);
        else
            c.RedrawSprite(moving, 0);
        benchmark::ClobberMemory();
    }
}

// An 8-bit frame of every index (or a 32-bit frame: the platform's share, a plain row copy into the window
// and the port's present), presented in a headless window of the same size.
void OurPresent(benchmark::State& state, QorOffScreenBuffer::ShowingMode mode, QorPicBlock::ColorType type)
{
    CWnd window;
    if (!window.Create("bench", int(kFrameW), int(kFrameH)))
    {
        state.SkipWithError("no window");
        return;
    }
    {
        QorOffScreenBuffer c;
        c.Initialize(type, mode, kFrameW, kFrameH, &window);
        c.SetMainVisibleRect(QorRect(0, 0, kFrameW - 1, kFrameH - 1));
        c.SetStdColorPalette();
        QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
        for (unsigned long i = 0; i < main.GetSize(); ++i)
            main.GetDataPtr()[i] = static_cast<unsigned char>(i * 7 + i / 640);
        for (auto _ : state)
        {
            c.DrawToScreen(0, 0);
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(state.iterations() * kFrameW * kFrameH);
}

// SDL's blit of a frame of the same bytes from INDEX8 (with a palette), RGB555, BGR24 or XRGB8888 onto an
// XRGB8888 surface: the work a presentation into a 32-bit window does.
void SdlPresent(benchmark::State& state, int bits)
{
    const Uint32 format = bits == 8    ? SDL_PIXELFORMAT_INDEX8
                          : bits == 16 ? SDL_PIXELFORMAT_RGB555
                          : bits == 24 ? SDL_PIXELFORMAT_BGR24
                                       : SDL_PIXELFORMAT_XRGB8888;
    Surface frame(SDL_CreateRGBSurfaceWithFormat(0, int(kFrameW), int(kFrameH), bits, format));
    Surface window(SDL_CreateRGBSurfaceWithFormat(0, int(kFrameW), int(kFrameH), 32, SDL_PIXELFORMAT_XRGB8888));
    SDL_Palette* palette = SDL_AllocPalette(256);
    std::vector<SDL_Color> colours(256);
    for (int i = 0; i < 256; ++i)
        colours[i] = SDL_Color{Uint8((i / 36) % 6 * 51), Uint8((i / 6) % 6 * 51), Uint8(i % 6 * 51), 255};
    SDL_SetPaletteColors(palette, colours.data(), 0, 256);
    if (bits == 8)
        SDL_SetSurfacePalette(frame.get(), palette);
    const long rowBytes = kFrameW * bits / 8;
    for (long y = 0; y < kFrameH; ++y)
        for (long x = 0; x < rowBytes; ++x)
        {
            const unsigned long i = static_cast<unsigned long>(y * rowBytes + x);
            static_cast<unsigned char*>(frame->pixels)[y * frame->pitch + x] = static_cast<unsigned char>(i * 7 + i / 640);
        }
    for (auto _ : state)
    {
        SDL_BlitSurface(frame.get(), nullptr, window.get(), nullptr);
        benchmark::ClobberMemory();
    }
    SDL_FreePalette(palette);
    state.SetBytesProcessed(state.iterations() * kFrameW * kFrameH);
}

[[maybe_unused]] const bool kRegistered = []
{
    for (int bytes : {1, 3, 4})
    {
        const std::string scene = "scene" + std::to_string(bytes * 8) + "/";
        for (const qorbench::SimdVariant& v : qorbench::DistinctSimdVariants(bytes, true, false))
            benchmark::RegisterBenchmark((scene + "ours" + v.suffix).c_str(), OurScene, bytes, v.level)
                ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((scene + "sdl_colorkey").c_str(), SdlScene, bytes, SdlMode::kColorKey)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((scene + "sdl_colorkey_rle").c_str(), SdlScene, bytes, SdlMode::kRle)
            ->Unit(benchmark::kMicrosecond);
        const std::string move = "move" + std::to_string(bytes * 8) + "/";
        benchmark::RegisterBenchmark((move + "redraw_sprite").c_str(), OurMove, bytes, false)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((move + "full_redraw").c_str(), OurMove, bytes, true)
            ->Unit(benchmark::kMicrosecond);
    }
    for (int bits : {8, 16, 24, 32})
    {
        const std::string group = "present" + std::to_string(bits) + "/";
        const auto type = QorPicBlock::ColorType(bits / 8);
        benchmark::RegisterBenchmark((group + "ours_mode0").c_str(), OurPresent, QorOffScreenBuffer::kDeviceBitmap,
                                     type)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((group + "ours_mode3").c_str(), OurPresent, QorOffScreenBuffer::kIndependent,
                                     type)
            ->Unit(benchmark::kMicrosecond);
        if (bits == 8)
            benchmark::RegisterBenchmark((group + "ours_mode6").c_str(), OurPresent, QorOffScreenBuffer::kSection,
                                         type)
                ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((group + "sdl_blit").c_str(), SdlPresent, bits)->Unit(benchmark::kMicrosecond);
    }
    for (const qorbench::SimdVariant& v : qorbench::SimdVariants())
    {
        qorbench::AddRatio("ours" + v.suffix, "sdl_colorkey");
        qorbench::AddRatio("ours" + v.suffix, "sdl_colorkey_rle");
    }
    qorbench::AddRatio("redraw_sprite", "full_redraw");
    qorbench::AddRatio("ours_mode0", "sdl_blit");
    qorbench::AddRatio("ours_mode3", "sdl_blit");
    qorbench::AddRatio("ours_mode6", "sdl_blit");
    return true;
}();
} // namespace
