// Animations beside the redraw they ask for and beside SDL2 drawing the same sprites:
//  anim<bits>/timer_click:     one QorAnimSet::TimerClick(1) of 100 looping animations of keyed 64 x 64
//                              frames on a 640 x 480 scene (frame swap, moves, bookkeeping and the redraw
//                              of the united rectangle);
//  anim<bits>/step_only:       the same step without the redraw (TimerClick(0)): the bookkeeping alone;
//  anim<bits>/redraw_only:     the compositor redrawing that same rectangle over the same sprites, with no
//                              animation work;
//  anim<bits>/sdl_colorkey:    SDL_FillRect plus 100 colour-keyed SDL_BlitSurface of the same pictures.
// Every animation has 8 frames that cycle through 8 pictures and step by up to 3 pixels.
#include "BenchRatios.h"
#include "BenchSdl.h"

#include "qor/animation.h"
#include "qor/compositor.h"

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

namespace
{
const long kFrameW = 640, kFrameH = 480, kSide = 64;
const int kAnimations = 100, kPictures = 8, kFrames = 8;

using qorbench::MakeSurface;
using qorbench::SdlFormat;
using qorbench::SdlKey;
using qorbench::Surface;

// The pictures (runs of key and colour, about half key) and the origins both sides draw.
struct AnimData
{
    explicit AnimData(int bytes) : type(QorPicBlock::ColorType(bytes == 1 ? 1 : bytes))
    {
        std::mt19937 rng(7);
        for (int p = 0; p < kPictures; ++p)
        {
            QorPicBlock picture(type, kSide, kSide);
            qorbench::FillKeyRuns(picture, key, rng);
            pictures.push_back(picture);
        }
        std::uniform_int_distribution<long> px(0, kFrameW - kSide - 3), py(0, kFrameH - kSide - 3);
        for (int a = 0; a < kAnimations; ++a)
            origins.emplace_back(px(rng), py(rng));
        if (bytes == 1)
        {
            palette = qorbench::MakeBenchPalette();
        }
    }
    ~AnimData()
    {
        if (palette)
            SDL_FreePalette(palette);
    }
    AnimData(const AnimData&) = delete;
    AnimData& operator=(const AnimData&) = delete;

    static long FrameX(int k) { return k % 4; }
    static long FrameY(int k) { return (k * 3) % 4; }

    QorPicBlock::ColorType type;
    unsigned char key[4] = {0x10, 0x20, 0x30, 0x00};
    unsigned char background[4] = {0x40, 0x50, 0x60, 0x00};
    std::vector<QorPicBlock> pictures;
    std::vector<Point<long>> origins;
    SDL_Palette* palette = nullptr;
};

// The scene: a compositor with the set's 100 animations running, and the rectangle they cover.
struct AnimScene
{
    explicit AnimScene(const AnimData& data)
    {
        QorAnimSetWriter writer;
        for (const QorPicBlock& p : data.pictures)
            writer.AddPicture(p);
        for (int a = 0; a < kAnimations; ++a)
        {
            long pics[kFrames], xs[kFrames], ys[kFrames];
            for (int k = 0; k < kFrames; ++k)
            {
                pics[k] = (a + k) % kPictures;
                xs[k] = AnimData::FrameX(k);
                ys[k] = AnimData::FrameY(k);
            }
            const std::string name = "anim" + std::to_string(a);
            writer.AddUnit(name.c_str(), 1, data.origins[a].x, data.origins[a].y, 1000 - a, pics, xs, ys, kFrames);
        }
        char path[] = "/tmp/qor-bench-XXXXXX";
        const int fd = ::mkstemp(path);
        if (fd >= 0)
            ::close(fd);
        writer.Write(path);

        buffer.Initialize(data.type, QorOffScreenBuffer::kDeviceBitmap, kFrameW, kFrameH, nullptr);
        buffer.SetMainVisibleRect(QorRect(0, 0, kFrameW - 1, kFrameH - 1));
        buffer.GetMainBufferPicBlockPtr()->SetMask(data.background);
        set.SetOffScreenBufferPtr(&buffer);
        set.Open(path, QorAnimSet::kReadAll);
        for (int a = 0; a < kAnimations; ++a)
        {
            QorGuider g = set.CreateAnim(("anim" + std::to_string(a)).c_str());
            set.ActiveAnim(g);
        }
        ::unlink(path);
        buffer.Redraw(0, 0);

        // Set field by field: the constructor would order the corners.
        area.left = kFrameW;
        area.top = kFrameH;
        area.right = -1;
        area.bottom = -1;
        for (const Point<long>& o : data.origins)
        {
            area.left = std::min<long>(area.left, o.x);
            area.top = std::min<long>(area.top, o.y);
            area.right = std::max<long>(area.right, o.x + 3 + kSide - 1);
            area.bottom = std::max<long>(area.bottom, o.y + 3 + kSide - 1);
        }
    }

    QorOffScreenBuffer buffer;
    QorAnimSet set;
    QorRect area;
};

void OurTimerClick(benchmark::State& state, int bytes)
{
    AnimData data(bytes);
    AnimScene scene(data);
    if (scene.set.GetActAnimNum() != kAnimations)
    {
        state.SkipWithError("animations not running");
        return;
    }
    for (auto _ : state)
    {
        scene.set.TimerClick(1);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kAnimations);
}

void OurStepOnly(benchmark::State& state, int bytes)
{
    AnimData data(bytes);
    AnimScene scene(data);
    for (auto _ : state)
    {
        scene.set.TimerClick(0);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kAnimations);
}

void OurRedrawOnly(benchmark::State& state, int bytes)
{
    AnimData data(bytes);
    AnimScene scene(data);
    const QorRect& r = scene.area;
    for (auto _ : state)
    {
        scene.buffer.Redraw(r.left, r.top, r.right, r.bottom, 0, 0);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kAnimations);
}

void SdlScene(benchmark::State& state, int bytes)
{
    AnimData data(bytes);
    Surface frame(SDL_CreateRGBSurfaceWithFormat(0, int(kFrameW), int(kFrameH), bytes * 8, SdlFormat(bytes)));
    if (data.palette)
        SDL_SetSurfacePalette(frame.get(), data.palette);
    std::vector<Surface> sources;
    for (const QorPicBlock& p : data.pictures)
    {
        Surface s = MakeSurface(p, data.palette);
        SDL_SetColorKey(s.get(), SDL_TRUE, SdlKey(s.get(), data.key, bytes));
        sources.push_back(std::move(s));
    }
    const Uint32 background =
        bytes == 1 ? data.background[0]
                   : SDL_MapRGB(frame->format, data.background[2], data.background[1], data.background[0]);
    int k = 0;
    for (auto _ : state)
    {
        SDL_FillRect(frame.get(), nullptr, background);
        for (int a = 0; a < kAnimations; ++a)
        {
            SDL_Rect at{int(data.origins[a].x + AnimData::FrameX(k)), int(data.origins[a].y + AnimData::FrameY(k)), 0,
                        0};
            SDL_BlitSurface(sources[(a + k) % kPictures].get(), nullptr, frame.get(), &at);
        }
        k = (k + 1) % kFrames;
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kAnimations);
}

[[maybe_unused]] const bool kRegistered = []
{
    for (int bytes : {1, 3, 4})
    {
        const std::string group = "anim" + std::to_string(bytes * 8) + "/";
        benchmark::RegisterBenchmark((group + "timer_click").c_str(), OurTimerClick, bytes)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((group + "step_only").c_str(), OurStepOnly, bytes)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((group + "redraw_only").c_str(), OurRedrawOnly, bytes)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((group + "sdl_colorkey").c_str(), SdlScene, bytes)
            ->Unit(benchmark::kMicrosecond);
    }
    qorbench::AddRatio("timer_click", "redraw_only");
    qorbench::AddRatio("step_only", "redraw_only");
    qorbench::AddRatio("timer_click", "sdl_colorkey");
    return true;
}();
} // namespace
