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

void uuid(benchmark::State& state, bool withBraces)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::CreateUuid(withBraces));
}

BENCHMARK(cpuInfo)->Name("cpu_info/copy/ky");
BENCHMARK(rand)->Name("rand/one_thread/ky");
BENCHMARK(randStd)->Name("rand/one_thread/std_rand");
BENCHMARK(randEngine<std::mt19937>)->Name("rand/one_thread/std_mt19937");
BENCHMARK(randEngine<std::random_device>)->Name("rand/one_thread/std_random_device");
BENCHMARK(rand)->Name("rand/two_threads/ky")->Threads(2)->UseRealTime();
BENCHMARK(randStd)->Name("rand/two_threads/std_rand")->Threads(2)->UseRealTime();
BENCHMARK_CAPTURE(uuid, digits, false)->Name("uuid/digits/ky");
BENCHMARK_CAPTURE(uuid, braces, true)->Name("uuid/braces/ky");

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
BENCHMARK(uuidLibuuid)->Name("uuid/digits/libuuid");
#endif

#ifdef KY_PEER_BOOST
void uuidBoost(benchmark::State& state)
{
    boost::uuids::random_generator generator;
    for (auto _ : state)
        benchmark::DoNotOptimize(boost::uuids::to_string(generator()));
}
BENCHMARK(uuidBoost)->Name("uuid/digits/boost");
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

BENCHMARK(usedRam)->Name("used_ram/own_process/ky");
BENCHMARK(programPath)->Name("program_path/own_process/ky");

} // namespace
