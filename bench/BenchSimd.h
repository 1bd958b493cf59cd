#pragma once

// The paste kernels' instruction-set levels, for benchmarks that run the same work at every level side by
// side: variants are named "<variant>_<level>" (ours_keyed_scalar, ours_keyed_sse2, ours_keyed_avx2) and the
// ratio table flags a higher level that is slower than a lower one.
#include "pictures/PasteKernels.h"

#include <string>
#include <vector>

namespace qorbench
{
struct SimdVariant
{
    qor::detail::SimdLevel level;
    std::string suffix;
};

/// The levels this processor runs, lowest first.
inline std::vector<SimdVariant> SimdVariants()
{
    std::vector<SimdVariant> variants{{qor::detail::SimdLevel::kScalar, "_scalar"}};
    const auto best = qor::detail::GetBestSimdLevel();
    if (best >= qor::detail::SimdLevel::kSse2)
        variants.push_back({qor::detail::SimdLevel::kSse2, "_sse2"});
    if (best >= qor::detail::SimdLevel::kAvx2)
        variants.push_back({qor::detail::SimdLevel::kAvx2, "_avx2"});
    return variants;
}

/// The levels whose row kernel for these flags is not the next lower level's: a level without a kernel of
/// its own runs the same code, and timing it again would only compare noise.
inline std::vector<SimdVariant> DistinctSimdVariants(int bytesPerPixel, bool transparent, bool mirrorX)
{
    std::vector<SimdVariant> distinct;
    qor::detail::PasteRowKernel previous = nullptr;
    const qor::detail::SimdLevel saved = qor::detail::GetSimdLevel();
    for (const SimdVariant& v : SimdVariants())
    {
        qor::detail::SetSimdLevel(v.level);
        const qor::detail::PasteRowKernel kernel =
            qor::detail::GetPasteRowKernel(bytesPerPixel, transparent, mirrorX, false);
        if (kernel != previous)
            distinct.push_back(v);
        previous = kernel;
    }
    qor::detail::SetSimdLevel(saved);
    return distinct;
}

/// The levels of the fill: its vector code is AVX2's alone.
inline std::vector<SimdVariant> FillSimdVariants()
{
    std::vector<SimdVariant> variants;
    for (const SimdVariant& v : SimdVariants())
        if (v.level != qor::detail::SimdLevel::kSse2)
            variants.push_back(v);
    return variants;
}

/// The level pastes use while it lives.
class ScopedSimdLevel
{
public:
    explicit ScopedSimdLevel(qor::detail::SimdLevel level) : m_saved(qor::detail::GetSimdLevel())
    {
        qor::detail::SetSimdLevel(level);
    }
    ~ScopedSimdLevel() { qor::detail::SetSimdLevel(m_saved); }
    ScopedSimdLevel(const ScopedSimdLevel&) = delete;
    ScopedSimdLevel& operator=(const ScopedSimdLevel&) = delete;

private:
    qor::detail::SimdLevel m_saved;
};
} // namespace qorbench
