// SPDX-License-Identifier: MIT
// What the processor and the system ask for the bare calls.
#include <benchmark/benchmark.h>

#include <cpuid.h>
#include <sys/random.h>

namespace
{

void floorCpuid(benchmark::State& state)
{
    for (auto _ : state)
    {
        unsigned a, b, c, d;
        __cpuid_count(1, 0, a, b, c, d);
        benchmark::DoNotOptimize(a + b + c + d);
    }
}

/// What describing the processor costs at the first time: every leaf once.
void floorAllLeaves(benchmark::State& state)
{
    for (auto _ : state)
    {
        for (const unsigned first : {0U, 0x80000000U})
        {
            const unsigned highest = __get_cpuid_max(first, nullptr);
            unsigned a, b, c, d;
            for (unsigned leaf = first; leaf <= highest; ++leaf)
            {
                __cpuid_count(leaf, 0, a, b, c, d);
                benchmark::DoNotOptimize(a + b + c + d);
            }
        }
    }
}

void floorGetrandom(benchmark::State& state)
{
    for (auto _ : state)
    {
        unsigned char bytes[16];
        benchmark::DoNotOptimize(::getrandom(bytes, sizeof(bytes), 0));
    }
}

BENCHMARK(floorCpuid)->Name("cpu_info/copy/floor_one_leaf");
BENCHMARK(floorAllLeaves)->Name("cpu_info/copy/floor_all_leaves");
BENCHMARK(floorGetrandom)->Name("uuid/digits/floor_getrandom");

} // namespace
