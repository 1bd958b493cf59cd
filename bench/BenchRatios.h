#pragma once

// Benchmarks are named "<group>/<variant>"; bench_main prints, per group, each variant's time relative
// to the group's reference variants.
#include <string>

namespace qorbench
{
/// Declares that, in every group, variant is to be compared with reference (time ratio variant/reference).
void AddRatio(const std::string& variant, const std::string& reference);
} // namespace qorbench
