// SPDX-License-Identifier: MIT
// Rows: mutex/uncontended, mutex/two_threads, condition/ping_pong, semaphore/uncontended, mutex_named/uncontended.
#include "library.h"

#include <ky/kyMutex.h>
#include <ky/kySemaphore.h>
#include <ky/kyWaitCondition.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <semaphore>
#include <thread>

#if defined(KY_PEER_QT)
#include <QMutex>
#include <QSemaphore>
#include <QWaitCondition>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Condition.h>
#include <Poco/Mutex.h>
#include <Poco/NamedMutex.h>
#include <Poco/Semaphore.h>
#endif

namespace
{

const ky::bench::Library sLibrary;

template <typename Lock>
void uncontended(benchmark::State& state)
{
    // glibc leaves out the atomic operations while a process has one thread.
    std::jthread another(
        [](std::stop_token stop)
        {
            while (!stop.stop_requested())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        });
    Lock lock;
    for (auto _ : state)
    {
        lock.lock();
        benchmark::ClobberMemory();
        lock.unlock();
    }
}

/// Two threads take turns at sections that change one number, with as much work outside.
template <typename Lock>
void twoThreads(benchmark::State& state)
{
    static Lock lock;
    static long shared = 0;
    long own = 0;
    for (auto _ : state)
    {
        lock.lock();
        benchmark::DoNotOptimize(++shared);
        lock.unlock();
        benchmark::DoNotOptimize(++own);
    }
    state.SetItemsProcessed(state.iterations());
}

/// A turn goes to another thread and comes back. `Pair` offers lock, unlock, wait and wake.
template <typename Pair>
void pingPong(benchmark::State& state)
{
    Pair pair;
    int turn = 0;
    const auto hand = [&](int from, int to)
    {
        pair.lock();
        while (turn == to)
            pair.wait();
        if (turn == from)
            turn = to;
        pair.wake();
        pair.unlock();
    };
    std::thread other(
        [&]
        {
            for (;;)
            {
                pair.lock();
                while (turn == 0)
                    pair.wait();
                if (turn == 2)
                {
                    pair.unlock();
                    return;
                }
                turn = 0;
                pair.wake();
                pair.unlock();
            }
        });
    for (auto _ : state)
        hand(0, 1);
    pair.lock();
    while (turn == 1)
        pair.wait();
    turn = 2;
    pair.wake();
    pair.unlock();
    other.join();
}

struct KyPair
{
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    void wait() { condition.wait(&mutex, 0xFFFFFFFF); }
    void wake() { condition.wakeOne(); }
    ky::kyMutex mutex;
    ky::kyWaitCondition condition;
};

struct StdPair
{
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    void wait()
    {
        std::unique_lock held(mutex, std::adopt_lock);
        condition.wait(held);
        held.release();
    }
    void wake() { condition.notify_one(); }
    std::mutex mutex;
    std::condition_variable condition;
};

/// What every lock does at least: one interlocked instruction to take it, one to find out whether somebody waits.
struct BareLock
{
    void lock()
    {
        int expected = 0;
        while (!word.compare_exchange_weak(expected, 1, std::memory_order_acquire))
            expected = 0;
    }
    void unlock() { benchmark::DoNotOptimize(word.exchange(0, std::memory_order_release)); }
    std::atomic<int> word{0};
};

template <typename Semaphore>
void acquireRelease(benchmark::State& state, Semaphore& semaphore)
{
    for (auto _ : state)
    {
        semaphore.acquire(1);
        benchmark::ClobberMemory();
        semaphore.release(1);
    }
}

struct StdSemaphore
{
    void acquire(int) { semaphore.acquire(); }
    void release(int) { semaphore.release(); }
    std::counting_semaphore<> semaphore{4};
};

struct KyNamed
{
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    ky::kyMutexSystem mutex{"kysystem-benchmark"};
};

BENCHMARK(uncontended<ky::kyMutex>)->Name("mutex/uncontended/ky");
BENCHMARK(uncontended<std::recursive_mutex>)->Name("mutex/uncontended/std_recursive");
BENCHMARK(uncontended<std::mutex>)->Name("mutex/uncontended/std_plain");
BENCHMARK(uncontended<BareLock>)->Name("mutex/uncontended/floor");
BENCHMARK(twoThreads<ky::kyMutex>)->Name("mutex/two_threads/ky")->Threads(2)->UseRealTime();
BENCHMARK(twoThreads<std::recursive_mutex>)->Name("mutex/two_threads/std_recursive")->Threads(2)->UseRealTime();
BENCHMARK(twoThreads<std::mutex>)->Name("mutex/two_threads/std_plain")->Threads(2)->UseRealTime();
BENCHMARK(pingPong<KyPair>)->Name("condition/ping_pong/ky")->UseRealTime();
BENCHMARK(pingPong<StdPair>)->Name("condition/ping_pong/std")->UseRealTime();
void semaphoreKy(benchmark::State& state)
{
    ky::kySemaphore semaphore(4);
    acquireRelease(state, semaphore);
}
void semaphoreStd(benchmark::State& state)
{
    StdSemaphore semaphore;
    acquireRelease(state, semaphore);
}
BENCHMARK(semaphoreKy)->Name("semaphore/uncontended/ky");
BENCHMARK(semaphoreStd)->Name("semaphore/uncontended/std");
BENCHMARK(uncontended<KyNamed>)->Name("mutex_named/uncontended/ky");

#if defined(KY_PEER_QT)
struct QtPair
{
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    void wait() { condition.wait(&mutex); }
    void wake() { condition.wakeOne(); }
    QMutex mutex;
    QWaitCondition condition;
};
void semaphoreQt(benchmark::State& state)
{
    QSemaphore semaphore(4);
    acquireRelease(state, semaphore);
}
BENCHMARK(uncontended<QRecursiveMutex>)->Name("mutex/uncontended/qt_recursive");
BENCHMARK(twoThreads<QRecursiveMutex>)->Name("mutex/two_threads/qt_recursive")->Threads(2)->UseRealTime();
BENCHMARK(pingPong<QtPair>)->Name("condition/ping_pong/qt")->UseRealTime();
BENCHMARK(semaphoreQt)->Name("semaphore/uncontended/qt");
#endif

#if defined(KY_PEER_POCO)
struct PocoPair
{
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    void wait() { condition.wait(mutex); }
    void wake() { condition.signal(); }
    Poco::FastMutex mutex;
    Poco::Condition condition;
};
struct PocoSemaphore
{
    void acquire(int) { semaphore.wait(); }
    void release(int) { semaphore.set(); }
    Poco::Semaphore semaphore{4, 8};
};
struct PocoNamed
{
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    Poco::NamedMutex mutex{"kysystem-benchmark-poco"};
};
void semaphorePoco(benchmark::State& state)
{
    PocoSemaphore semaphore;
    acquireRelease(state, semaphore);
}
BENCHMARK(uncontended<Poco::Mutex>)->Name("mutex/uncontended/poco_recursive");
BENCHMARK(pingPong<PocoPair>)->Name("condition/ping_pong/poco")->UseRealTime();
BENCHMARK(semaphorePoco)->Name("semaphore/uncontended/poco");
BENCHMARK(uncontended<PocoNamed>)->Name("mutex_named/uncontended/poco");
#endif

} // namespace
