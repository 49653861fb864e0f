// SPDX-License-Identifier: MIT
// Rows: timer/elapsed_ms, timer/high_resolution, stamp/one_thread, stamp/two_threads.
#include <ky/kyHighResTimer.h>
#include <ky/kyStamp.h>
#include <ky/kyTimer.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>

#if defined(KY_PEER_QT)
#include <QElapsedTimer>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Stopwatch.h>
#endif

namespace
{

void elapsed(benchmark::State& state)
{
    const ky::kyTimer timer(true);
    for (auto _ : state)
        benchmark::DoNotOptimize(timer.getElapsedMs());
}

void elapsedStd(benchmark::State& state)
{
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
    {
        const auto passed = std::chrono::steady_clock::now() - start;
        benchmark::DoNotOptimize(std::chrono::duration_cast<std::chrono::milliseconds>(passed).count());
    }
}

void highResolution(benchmark::State& state)
{
    kyHighResTimer timer;
    timer.start();
    for (auto _ : state)
        benchmark::DoNotOptimize(timer.getElapsedTimeInMicroSec());
}

void highResolutionStd(benchmark::State& state)
{
    const auto start = std::chrono::high_resolution_clock::now();
    for (auto _ : state)
    {
        const std::chrono::duration<double, std::micro> passed = std::chrono::high_resolution_clock::now() - start;
        benchmark::DoNotOptimize(passed.count());
    }
}

void stamps(benchmark::State& state)
{
    static ky::StampGenerator generator;
    for (auto _ : state)
        benchmark::DoNotOptimize(generator.generateStamp());
}

void stampsStd(benchmark::State& state)
{
    static std::atomic<unsigned long long> next{1};
    for (auto _ : state)
        benchmark::DoNotOptimize(next.fetch_add(1));
}

BENCHMARK(elapsed)->Name("timer/elapsed_ms/ky");
BENCHMARK(elapsedStd)->Name("timer/elapsed_ms/std");
BENCHMARK(highResolution)->Name("timer/high_resolution/ky");
BENCHMARK(highResolutionStd)->Name("timer/high_resolution/std");
BENCHMARK(stamps)->Name("stamp/one_thread/ky");
BENCHMARK(stampsStd)->Name("stamp/one_thread/floor_atomic");
BENCHMARK(stamps)->Name("stamp/two_threads/ky")->Threads(2)->UseRealTime();
BENCHMARK(stampsStd)->Name("stamp/two_threads/floor_atomic")->Threads(2)->UseRealTime();

#if defined(KY_PEER_QT)
void elapsedQt(benchmark::State& state)
{
    QElapsedTimer timer;
    timer.start();
    for (auto _ : state)
        benchmark::DoNotOptimize(timer.elapsed());
}
BENCHMARK(elapsedQt)->Name("timer/elapsed_ms/qt");
#endif

#if defined(KY_PEER_POCO)
void elapsedPoco(benchmark::State& state)
{
    Poco::Stopwatch watch;
    watch.start();
    for (auto _ : state)
        benchmark::DoNotOptimize(watch.elapsed());
}
BENCHMARK(elapsedPoco)->Name("timer/high_resolution/poco");
#endif

} // namespace
