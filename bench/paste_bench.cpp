// Pasting and filling beside memcpy/memset and SDL2 doing the same work, for 8, 24 and 32 bits:
// a 64 x 64 sprite into a 640 x 480 picture, and a whole 640 x 480 frame. About half of every
// source's pixels are the key colour.
#include "BenchRatios.h"
#include "BenchSdl.h"
#include "BenchSimd.h"
#include "qor/pictures.h"

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
const long kFrameW = 640, kFrameH = 480;

using qorbench::MakeSurface;
using qorbench::SdlKey;
using qorbench::Surface;

struct Scene
{
    QorPicBlock dst;
    QorPicBlock src;
    unsigned char key[4] = {0x10, 0x20, 0x30, 0x00};
    SDL_Palette* palette = nullptr;

    Scene(int bpp, long side)
        : dst(QorPicBlock::ColorType(bpp), kFrameW, kFrameH),
          src(QorPicBlock::ColorType(bpp), side == 0 ? kFrameW : side, side == 0 ? kFrameH : side)
    {
        std::mt19937 rng(42);
        std::uniform_int_distribution<int> byte(0, 255);
        for (unsigned long i = 0; i < dst.GetSize(); ++i)
            dst.GetDataPtr()[i] = static_cast<unsigned char>(byte(rng));
        qorbench::FillKeyRuns(src, key, rng);
        const int b = dst.GetBytesPerPixel();
        if (b == 1)
        {
            palette = qorbench::MakeBenchPalette();
        }
    }
    ~Scene()
    {
        if (palette)
            SDL_FreePalette(palette);
    }
    long Bytes() const { return src.GetWidth() * src.GetHeight() * src.GetBytesPerPixel(); }
};

enum class Mode
{
    kOpaque,
    kKeyed,
    kMirroredKeyed,
};

void OurPaste(benchmark::State& state, int bpp, long side, Mode mode, qor::detail::SimdLevel level)
{
    Scene scene(bpp, side);
    qorbench::ScopedSimdLevel simd(level);
    const char keyed = mode != Mode::kOpaque, mirrored = mode == Mode::kMirroredKeyed;
    for (auto _ : state)
    {
        scene.dst.Paste(scene.src, 100 % (kFrameW - scene.src.GetWidth() + 1), 50 % (kFrameH - scene.src.GetHeight() + 1),
                        keyed, mirrored, 0, 1, 0);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * scene.Bytes());
}

void RowMemcpy(benchmark::State& state, int bpp, long side)
{
    Scene scene(bpp, side);
    const long dx = 100 % (kFrameW - scene.src.GetWidth() + 1), dy = 50 % (kFrameH - scene.src.GetHeight() + 1);
    const std::size_t rowBytes = std::size_t(scene.src.GetWidth()) * bpp;
    for (auto _ : state)
    {
        for (long y = 0; y < scene.src.GetHeight(); ++y)
            std::memcpy(scene.dst.GetPixel(dx, dy + y), scene.src.GetPixel(0, y), rowBytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * scene.Bytes());
}

enum class SdlMode
{
    kOpaque,
    kColorKey,
    kRle,
};

void SdlBlit(benchmark::State& state, int bpp, long side, SdlMode mode)
{
    Scene scene(bpp, side);
    Surface dst = MakeSurface(scene.dst, scene.palette);
    Surface src = MakeSurface(scene.src, scene.palette);
    if (mode != SdlMode::kOpaque)
        SDL_SetColorKey(src.get(), SDL_TRUE, SdlKey(src.get(), scene.key, bpp));
    if (mode == SdlMode::kRle)
        SDL_SetSurfaceRLE(src.get(), 1);
    SDL_Rect at{int(100 % (kFrameW - scene.src.GetWidth() + 1)), int(50 % (kFrameH - scene.src.GetHeight() + 1)), 0,
                0};
    for (auto _ : state)
    {
        SDL_Rect where = at;
        SDL_BlitSurface(src.get(), nullptr, dst.get(), &where);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * scene.Bytes());
}

void OurFill(benchmark::State& state, int bpp, qor::detail::SimdLevel level)
{
    QorPicBlock frame(QorPicBlock::ColorType(bpp), kFrameW, kFrameH);
    qorbench::ScopedSimdLevel simd(level);
    const unsigned char colour[4] = {0x12, 0x34, 0x56, 0x00};
    for (auto _ : state)
    {
        frame.Fill(0, 0, kFrameW - 1, kFrameH - 1, colour);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * long(frame.GetSize()));
}

void Memset(benchmark::State& state, int bpp)
{
    std::vector<unsigned char> frame(std::size_t(kFrameW * kFrameH * bpp));
    for (auto _ : state)
    {
        std::memset(frame.data(), 0x12, frame.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * long(frame.size()));
}

void SdlFill(benchmark::State& state, int bpp)
{
    QorPicBlock frame(QorPicBlock::ColorType(bpp), kFrameW, kFrameH);
    Surface s = MakeSurface(frame, nullptr);
    const Uint32 colour = bpp == 1 ? 0x12 : SDL_MapRGB(s->format, 0x12, 0x34, 0x56);
    for (auto _ : state)
    {
        SDL_FillRect(s.get(), nullptr, colour);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * long(frame.GetSize()));
}

int Register()
{
    for (int bpp : {1, 3, 4})
    {
        for (long side : {64L, 0L})
        {
            const std::string group =
                "paste" + std::to_string(bpp * 8) + (side ? "_sprite64" : "_frame640x480") + "/";
            // Opaque pastes are row copies at every level: run once, at the best level.
            benchmark::RegisterBenchmark((group + "ours_opaque").c_str(), OurPaste, bpp, side, Mode::kOpaque,
                                         qor::detail::GetBestSimdLevel());
            for (const qorbench::SimdVariant& v : qorbench::DistinctSimdVariants(bpp, true, false))
                benchmark::RegisterBenchmark((group + "ours_keyed" + v.suffix).c_str(), OurPaste, bpp, side,
                                             Mode::kKeyed, v.level);
            for (const qorbench::SimdVariant& v : qorbench::DistinctSimdVariants(bpp, true, true))
                benchmark::RegisterBenchmark((group + "ours_mirrored_keyed" + v.suffix).c_str(), OurPaste, bpp,
                                             side, Mode::kMirroredKeyed, v.level);
            benchmark::RegisterBenchmark((group + "memcpy_rows").c_str(), RowMemcpy, bpp, side);
            benchmark::RegisterBenchmark((group + "sdl_opaque").c_str(), SdlBlit, bpp, side, SdlMode::kOpaque);
            benchmark::RegisterBenchmark((group + "sdl_colorkey").c_str(), SdlBlit, bpp, side, SdlMode::kColorKey);
            benchmark::RegisterBenchmark((group + "sdl_colorkey_rle").c_str(), SdlBlit, bpp, side, SdlMode::kRle);
        }
        const std::string group = "fill" + std::to_string(bpp * 8) + "_frame640x480/";
        // A one-byte colour is a memset at every level.
        for (const qorbench::SimdVariant& v : qorbench::FillSimdVariants())
            if (bpp > 1 || v.level == qor::detail::GetBestSimdLevel())
                benchmark::RegisterBenchmark((group + "ours_fill" + v.suffix).c_str(), OurFill, bpp, v.level);
        benchmark::RegisterBenchmark((group + "memset").c_str(), Memset, bpp);
        benchmark::RegisterBenchmark((group + "sdl_fillrect").c_str(), SdlFill, bpp);
    }
    qorbench::AddRatio("ours_opaque", "memcpy_rows");
    qorbench::AddRatio("ours_opaque", "sdl_opaque");
    for (const qorbench::SimdVariant& v : qorbench::SimdVariants())
    {
        qorbench::AddRatio("ours_keyed" + v.suffix, "sdl_colorkey");
        qorbench::AddRatio("ours_keyed" + v.suffix, "sdl_colorkey_rle");
        qorbench::AddRatio("ours_mirrored_keyed" + v.suffix, "sdl_colorkey");
        qorbench::AddRatio("ours_fill" + v.suffix, "memset");
        qorbench::AddRatio("ours_fill" + v.suffix, "sdl_fillrect");
    }
    return 0;
}

const int kRegistered = Register();
} // namespace
