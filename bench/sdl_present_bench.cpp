// Presentation on the SDL2 port (SDL's dummy video driver, software renderer), a program of its own because
// the port is chosen once a process: a 640 x 480 32-bit frame presented with pixel-perfect scaling into a
// 1280 x 960 window (DrawToScreen: the frame into the window, the texture update, the scaled copy and the
// present), against SDL_RenderCopy of a 640 x 480 texture scaled to 1280 x 960 nearest-neighbour on the same
// kind of renderer, presented.
#include "BenchRatios.h"

#include "platform/sdl2/QorSdlWindow.h"
#include "qor/compositor.h"
#include "qor/platform.h"

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

namespace
{
const long kFrameW = 640, kFrameH = 480;

void OurScaledPresent(benchmark::State& state, int factor)
{
    CWnd window;
    if (!window.Create("bench", int(kFrameW), int(kFrameH)))
    {
        state.SkipWithError("no window");
        return;
    }
    QorSetWindowScaling(window, QorScaleMode::kPixelPerfect);
    SDL_SetWindowSize(QorSdlGetWindow(window), int(kFrameW * factor), int(kFrameH * factor));
    SDL_PumpEvents();
    {
        QorOffScreenBuffer c;
        c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kIndependent, kFrameW, kFrameH, &window);
        c.SetMainVisibleRect(QorRect(0, 0, kFrameW - 1, kFrameH - 1));
        QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
        for (unsigned long i = 0; i < main.GetSize(); ++i)
            main.GetDataPtr()[i] = static_cast<unsigned char>(i * 7 + i / 640);
        RECT v;
        QorGetWindowViewport(window, &v);
        if (v.right - v.left != kFrameW * factor)
        {
            state.SkipWithError("the window did not take the scaled size");
            return;
        }
        for (auto _ : state)
        {
            c.DrawToScreen(0, 0);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void SdlScaledCopy(benchmark::State& state, int factor)
{
    SDL_Window* window = SDL_CreateWindow("bench", 0, 0, int(kFrameW * factor), int(kFrameH * factor), 0);
    SDL_Renderer* renderer = window ? SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE) : nullptr;
    SDL_Texture* texture = renderer ? SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING,
                                                        int(kFrameW), int(kFrameH))
                                    : nullptr;
    if (texture)
    {
        SDL_SetTextureScaleMode(texture, SDL_ScaleModeNearest);
        std::vector<Uint32> pixels(std::size_t(kFrameW * kFrameH));
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = Uint32(i * 2654435761u);
        SDL_UpdateTexture(texture, nullptr, pixels.data(), int(kFrameW * 4));
        const SDL_Rect dest = {0, 0, int(kFrameW * factor), int(kFrameH * factor)};
        for (auto _ : state)
        {
            SDL_RenderCopy(renderer, texture, nullptr, &dest);
            SDL_RenderPresent(renderer);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations());
    }
    else
    {
        state.SkipWithError("no SDL renderer");
    }
    if (texture)
        SDL_DestroyTexture(texture);
    if (renderer)
        SDL_DestroyRenderer(renderer);
    if (window)
        SDL_DestroyWindow(window);
}

[[maybe_unused]] const bool kRegistered = []
{
    if (QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy") != 1)
    {
        std::fprintf(stderr, "the SDL2 port does not start: no scaled-present benchmarks\n");
        return false;
    }
    benchmark::RegisterBenchmark("scaled_present2x/ours_pixel_perfect", OurScaledPresent, 2)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("scaled_present2x/sdl_rendercopy_nearest", SdlScaledCopy, 2)
        ->Unit(benchmark::kMicrosecond);
    qorbench::AddRatio("ours_pixel_perfect", "sdl_rendercopy_nearest");
    return true;
}();
} // namespace
