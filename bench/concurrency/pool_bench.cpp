// SPDX-License-Identifier: MIT
// Rows: pool_dispatch/1000_tiny, pool_sum/1e7_doubles. The library is initialized by the rows of the locks.
#include <ky/kyConcurrent.h>

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <latch>
#include <numeric>
#include <optional>
#include <thread>
#include <vector>

#if defined(KY_PEER_TBB)
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_reduce.h>
#include <tbb/task_group.h>
#endif
#if defined(KY_PEER_QT)
#include <QThreadPool>
#endif
#if defined(KY_PEER_ASIO)
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#endif

namespace
{

constexpr int tinyTasks = 1000;
constexpr std::size_t sumLength = 10'000'000;

unsigned threadCount() { return std::max(1U, std::thread::hardware_concurrency()); }

/// Per task: the time of a batch is divided by the number of its tasks.
template <typename Batch>
void dispatch(benchmark::State& state, Batch&& batch)
{
    for (auto _ : state)
        batch([](int index) { benchmark::DoNotOptimize(index); });
    state.SetItemsProcessed(state.iterations() * tinyTasks);
    state.counters["per_task"] = benchmark::Counter(
        static_cast<double>(state.iterations() * tinyTasks),
        static_cast<benchmark::Counter::Flags>(benchmark::Counter::kIsRate | benchmark::Counter::kInvert));
}

void dispatchKy(benchmark::State& state)
{
    dispatch(state, [](auto body) { ky::concurrent::parallelFor(0, tinyTasks, body, 1); });
}

void dispatchKyBlocks(benchmark::State& state)
{
    dispatch(state, [](auto body) { ky::concurrent::parallelFor(0, tinyTasks, body); });
}

struct TinyTask final : ky::ConcurrentPool::Task
{
    void execute(ky::kyMutex*, ky::kyWaitCondition*) override { benchmark::DoNotOptimize(this); }
};

void dispatchKySolver(benchmark::State& state)
{
    std::vector<TinyTask> tasks(tinyTasks);
    dispatch(state,
             [&](auto)
             {
                 ky::ConcurrentPool::SolverBase solver;
                 for (TinyTask& task : tasks)
                     solver.addTask(&task);
                 solver.solve();
             });
}

const std::vector<double>& numbers()
{
    static const std::vector<double> values = []
    {
        std::vector<double> made(sumLength);
        std::iota(made.begin(), made.end(), 0.5);
        return made;
    }();
    return values;
}

double sumOf(std::size_t first, std::size_t last)
{
    const double* const values = numbers().data();
    return std::accumulate(values + first, values + last, 0.0);
}

template <typename Sum>
void sum(benchmark::State& state, Sum&& whole)
{
    numbers();
    for (auto _ : state)
        benchmark::DoNotOptimize(whole());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sumLength * sizeof(double)));
}

void sumKy(benchmark::State& state)
{
    sum(state, [] { return ky::concurrent::reduce(std::size_t{0}, sumLength, 0.0, &sumOf, std::plus<>()); });
}

void sumKyIndices(benchmark::State& state)
{
    const double* const values = numbers().data();
    sum(state,
        [&]
        {
            return ky::concurrent::reduce(
                std::size_t{0}, sumLength, 0.0, [&](std::size_t index) { return values[index]; }, std::plus<>());
        });
}

/// One range for each thread; `run` calls the function it is given with 0 to `threads` - 1 and returns when all ended.
template <typename Run>
double sumInParts(unsigned threads, Run&& run)
{
    std::vector<double> parts(threads);
    run(
        [&](unsigned part)
        {
            const std::size_t length = sumLength / threads;
            parts[part] = sumOf(part * length, part + 1 == threads ? sumLength : (part + 1) * length);
        });
    return std::accumulate(parts.begin(), parts.end(), 0.0);
}

template <typename Function>
void onNewThreads(unsigned threads, Function function)
{
    std::vector<std::jthread> started;
    for (unsigned part = 1; part < threads; ++part)
        started.emplace_back([&, part] { function(part); });
    function(0U);
}

void dispatchThreads(benchmark::State& state)
{
    dispatch(state,
             [](auto body)
             {
                 const auto threads = static_cast<int>(threadCount());
                 onNewThreads(threadCount(),
                              [&](unsigned part)
                              {
                                  for (int index = static_cast<int>(part); index < tinyTasks; index += threads)
                                      body(index);
                              });
             });
}

void sumThreads(benchmark::State& state)
{
    sum(state, [] { return sumInParts(threadCount(), [](auto part) { onNewThreads(threadCount(), part); }); });
}

void sumAlone(benchmark::State& state)
{
    sum(state, [] { return sumOf(0, sumLength); });
}

BENCHMARK(dispatchKy)->Name("pool_dispatch/1000_tiny/ky")->UseRealTime();
BENCHMARK(dispatchKyBlocks)->Name("pool_dispatch/1000_tiny/ky_blocks")->UseRealTime();
BENCHMARK(dispatchKySolver)->Name("pool_dispatch/1000_tiny/ky_solver")->UseRealTime();
BENCHMARK(dispatchThreads)->Name("pool_dispatch/1000_tiny/std_thread")->UseRealTime();
BENCHMARK(sumKy)->Name("pool_sum/1e7_doubles/ky")->UseRealTime();
BENCHMARK(sumKyIndices)->Name("pool_sum/1e7_doubles/ky_indices")->UseRealTime();
BENCHMARK(sumThreads)->Name("pool_sum/1e7_doubles/std_thread")->UseRealTime();
BENCHMARK(sumAlone)->Name("pool_sum/1e7_doubles/one_thread")->UseRealTime();

#if defined(KY_PEER_TBB)
void dispatchTaskGroup(benchmark::State& state)
{
    dispatch(state,
             [](auto body)
             {
                 tbb::task_group group;
                 for (int index = 0; index < tinyTasks; ++index)
                     group.run([=] { body(index); });
                 group.wait();
             });
}

void dispatchTbbLoop(benchmark::State& state)
{
    dispatch(state, [](auto body) { tbb::parallel_for(0, tinyTasks, body); });
}

void sumTbb(benchmark::State& state)
{
    const auto add = [](const tbb::blocked_range<std::size_t>& range, double before)
    { return before + sumOf(range.begin(), range.end()); };
    sum(state,
        [&] { return tbb::parallel_reduce(tbb::blocked_range<std::size_t>(0, sumLength), 0.0, add, std::plus<>()); });
}

BENCHMARK(dispatchTaskGroup)->Name("pool_dispatch/1000_tiny/tbb_task_group")->UseRealTime();
BENCHMARK(dispatchTbbLoop)->Name("pool_dispatch/1000_tiny/tbb_parallel_for")->UseRealTime();
BENCHMARK(sumTbb)->Name("pool_sum/1e7_doubles/tbb")->UseRealTime();
#endif

#if defined(KY_PEER_QT)
QThreadPool& qtPool()
{
    static QThreadPool pool;
    return pool;
}

void dispatchQt(benchmark::State& state)
{
    dispatch(state,
             [](auto body)
             {
                 for (int index = 0; index < tinyTasks; ++index)
                     qtPool().start([=] { body(index); });
                 qtPool().waitForDone();
             });
}

void sumQt(benchmark::State& state)
{
    const auto run = [](auto part)
    {
        for (unsigned i = 0; i < threadCount(); ++i)
            qtPool().start([=] { part(i); });
        qtPool().waitForDone();
    };
    sum(state, [&] { return sumInParts(threadCount(), run); });
}

BENCHMARK(dispatchQt)->Name("pool_dispatch/1000_tiny/qt")->UseRealTime();
BENCHMARK(sumQt)->Name("pool_sum/1e7_doubles/qt")->UseRealTime();
#endif

#if defined(KY_PEER_ASIO)
boost::asio::thread_pool& asioPool()
{
    static boost::asio::thread_pool pool(threadCount());
    return pool;
}

template <typename Function>
void onAsio(int count, Function function)
{
    std::latch left(count);
    for (int index = 0; index < count; ++index)
        boost::asio::post(asioPool(),
                          [&, index]
                          {
                              function(index);
                              left.count_down();
                          });
    left.wait();
}

void dispatchAsio(benchmark::State& state)
{
    dispatch(state, [](auto body) { onAsio(tinyTasks, body); });
}

void sumAsio(benchmark::State& state)
{
    const auto run = [](auto part)
    { onAsio(static_cast<int>(threadCount()), [&](int index) { part(static_cast<unsigned>(index)); }); };
    sum(state, [&] { return sumInParts(threadCount(), run); });
}

BENCHMARK(dispatchAsio)->Name("pool_dispatch/1000_tiny/asio")->UseRealTime();
BENCHMARK(sumAsio)->Name("pool_sum/1e7_doubles/asio")->UseRealTime();
#endif

} // namespace
