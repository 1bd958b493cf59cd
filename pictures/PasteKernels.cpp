#include "PasteKernels.h"
#include "PasteRows.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#define QOR_X86 1
#endif

namespace qor::detail
{
namespace
{
template <int Bpp>
void FillScalar(KernelTable& table)
{
    auto& t = table[Bpp - 1];
    t[0][0][0] = SlotOf<RowScalar<Bpp, false, false, false>>();
    t[0][0][1] = SlotOf<RowScalar<Bpp, false, false, true>>();
    t[0][1][0] = SlotOf<RowScalar<Bpp, false, true, false>>();
    t[0][1][1] = SlotOf<RowScalar<Bpp, false, true, true>>();
    t[1][0][0] = SlotOf<RowScalar<Bpp, true, false, false>>();
    t[1][0][1] = SlotOf<RowScalar<Bpp, true, false, true>>();
    t[1][1][0] = SlotOf<RowScalar<Bpp, true, true, false>>();
    t[1][1][1] = SlotOf<RowScalar<Bpp, true, true, true>>();
}

struct Tables
{
    KernelTable byLevel[3];

    Tables()
    {
        for (KernelTable& table : byLevel)
        {
            FillScalar<1>(table);
            FillScalar<2>(table);
            FillScalar<3>(table);
            FillScalar<4>(table);
        }
#ifdef QOR_X86
        SetSse2Kernels(byLevel[1]);
        SetSse2Kernels(byLevel[2]);
        // Even filling the table may run AVX2 instructions of that unit.
        if (GetBestSimdLevel() == SimdLevel::kAvx2)
            SetAvx2Kernels(byLevel[2]);
#endif
    }
};

const Tables& GetTables()
{
    static const Tables tables;
    return tables;
}

SimdLevel DetectLevel()
{
#ifdef QOR_X86
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2"))
        return SimdLevel::kAvx2;
    return SimdLevel::kSse2;
#else
    return SimdLevel::kScalar;
#endif
}

SimdLevel& CurrentLevel()
{
    static SimdLevel level = GetBestSimdLevel();
    return level;
}
} // namespace

SimdLevel GetBestSimdLevel()
{
    static const SimdLevel best = DetectLevel();
    return best;
}

SimdLevel GetSimdLevel()
{
    return CurrentLevel();
}

SimdLevel SetSimdLevel(SimdLevel level)
{
    CurrentLevel() = std::min(level, GetBestSimdLevel());
    return CurrentLevel();
}

PasteRowKernel GetPasteRowKernel(int bytesPerPixel, bool transparent, bool mirrorX, bool subtract)
{
    if (bytesPerPixel < 1 || bytesPerPixel > 4)
        return nullptr;
    const int level = static_cast<int>(CurrentLevel());
    return GetTables().byLevel[level][bytesPerPixel - 1][transparent][mirrorX][subtract].row;
}

PasteBlockKernel GetPasteBlockKernel(int bytesPerPixel, bool transparent, bool mirrorX, bool subtract)
{
    if (bytesPerPixel < 1 || bytesPerPixel > 4)
        return nullptr;
    const int level = static_cast<int>(CurrentLevel());
    return GetTables().byLevel[level][bytesPerPixel - 1][transparent][mirrorX][subtract].block;
}

std::uint32_t PackKey(const unsigned char* key, int bytesPerPixel)
{
    if (!key)
        return 0;
    switch (bytesPerPixel)
    {
    case 1:
        return LoadPixel<1>(key);
    case 2:
        return LoadPixel<2>(key);
    case 3:
        return LoadPixel<3>(key);
    case 4:
        return LoadPixel<4>(key) & KeyMask32();
    }
    return 0;
}

std::uint32_t GetKeyMask(int bytesPerPixel)
{
    return bytesPerPixel == 4 ? KeyMask32() : ~0u;
}

void FillPixels(unsigned char* dst, long n, const unsigned char* colour, int bytesPerPixel)
{
    if (n <= 0)
        return;
    const std::size_t bpp = static_cast<std::size_t>(bytesPerPixel);
    const std::size_t total = std::size_t(n) * bpp;
    if (std::all_of(colour + 1, colour + bpp, [&](unsigned char b) { return b == colour[0]; }))
    {
        std::memset(dst, colour[0], total);
        return;
    }
#ifdef QOR_X86
    if (CurrentLevel() == SimdLevel::kAvx2 && total >= 128)
    {
        FillAvx2(dst, total, colour, bpp);
        return;
    }
#endif
    // Lay down one pixel, then keep doubling the filled prefix: large fills run at copy speed.
    std::memcpy(dst, colour, bpp);
    for (std::size_t done = bpp; done < total;)
    {
        const std::size_t chunk = std::min(done, total - done);
        std::memcpy(dst + done, dst, chunk);
        done += chunk;
    }
}
} // namespace qor::detail
