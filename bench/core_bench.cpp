// Appending one byte at a time: the grow step decides how often the storage moves.
#include "qor/core.h"

#include <benchmark/benchmark.h>

#include <string>

static void BM_QorStringAppendChar(benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state)
    {
        QorString s;
        for (int i = 0; i < n; ++i)
            s += 'a';
        benchmark::DoNotOptimize(static_cast<char*>(s));
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_QorStringAppendChar)->Arg(64)->Arg(4096);

static void BM_StdStringAppendChar(benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state)
    {
        std::string s;
        for (int i = 0; i < n; ++i)
            s += 'a';
        benchmark::DoNotOptimize(s.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_StdStringAppendChar)->Arg(64)->Arg(4096);
