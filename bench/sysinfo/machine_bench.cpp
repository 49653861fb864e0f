// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#ifdef KY_PEER_BOOST
#include <boost/uuid/uuid_generators.hpp>
#include <boost/uuid/uuid_io.hpp>
#endif
#ifdef KY_PEER_LIBUUID
#include <uuid/uuid.h>
#endif

namespace
{

using ky::kySystemUtils;

void cpuInfo(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::CPUInfo());
}

void rand(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::Rand());
}

void randStd(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(std::rand());
}

/// One object of the caller's own: cheaper, and not to be shared by threads.
template <typename Engine>
void randEngine(benchmark::State& state)
{
    Engine engine;
    std::uniform_int_distribution<int> distribution(0, 0x7fffffff);
    for (auto _ : state)
        benchmark::DoNotOptimize(distribution(engine));
}

void uuid(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::CreateUuid(state.range(0) != 0));
}

BENCHMARK(cpuInfo)->Name("cpu_info/ky");
BENCHMARK(rand)->Name("rand/ky")->ThreadRange(1, 2);
BENCHMARK(randStd)->Name("rand/std_rand")->ThreadRange(1, 2);
BENCHMARK(randEngine<std::mt19937>)->Name("rand/std_mt19937");
BENCHMARK(randEngine<std::random_device>)->Name("rand/std_random_device");
BENCHMARK(uuid)->Name("uuid/ky_digits")->Arg(0);
BENCHMARK(uuid)->Name("uuid/ky_braces")->Arg(1);

#ifdef KY_PEER_LIBUUID
void uuidLibuuid(benchmark::State& state)
{
    for (auto _ : state)
    {
        uuid_t id;
        uuid_generate_random(id);
        char text[37];
        uuid_unparse_lower(id, text);
        benchmark::DoNotOptimize(std::string(text, 36));
    }
}
BENCHMARK(uuidLibuuid)->Name("uuid/libuuid");
#endif

#ifdef KY_PEER_BOOST
void uuidBoost(benchmark::State& state)
{
    boost::uuids::random_generator generator;
    for (auto _ : state)
        benchmark::DoNotOptimize(boost::uuids::to_string(generator()));
}
BENCHMARK(uuidBoost)->Name("uuid/boost");
#endif

void usedRam(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::GetUsedRamQuantityInBytes());
}

void programPath(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::GetProgramFullPath());
}

BENCHMARK(usedRam)->Name("used_ram/ky");
BENCHMARK(programPath)->Name("program_path/ky");

} // namespace
