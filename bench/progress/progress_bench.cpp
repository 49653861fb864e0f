// SPDX-License-Identifier: MIT
// Rows: progress/update (three nested groups), progress/begin_end, progress/proxy, progress/poll,
// progress/poll_all_ways.
#include "library.h"

#include <ky/kyProgressNotifier.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <mutex>
#include <vector>

#if defined(KY_PEER_QT)
#include <QPromise>
#endif

namespace
{

const ky::bench::Library sLibrary;

constexpr double stepMax = 1e15;

class Counting : public ky::kyProgressNotifier
{
public:
    long long changes = 0;

protected:
    void onProgressChanged(float) override { ++changes; }
};

void nest(ky::kyProgressNotifierInterface& notifier)
{
    notifier.beginStepGroup(10);
    notifier.changeCurrentStep(1.0, 3);
    notifier.beginStepGroupWeights({1.0, 2.0, 3.0}, 1.0, nullptr);
    notifier.changeCurrentStep(stepMax, 1);
}

void update(benchmark::State& state)
{
    Counting notifier;
    nest(notifier);
    for (auto _ : state)
        notifier.incrementCurrentStepProgress(1.0);
    benchmark::DoNotOptimize(notifier.changes);
}

/// The same arithmetic and the call of a function, without anything around it.
void updateByHand(benchmark::State& state)
{
    long long changes = 0;
    std::function<void(float)> hook = [&](float) { ++changes; };
    benchmark::DoNotOptimize(hook);
    double scale[] = {2.0 / 6.0, 0.1, 1.0};
    double offset[] = {1.0 / 6.0, 0.3, 0.0};
    benchmark::DoNotOptimize(scale);
    benchmark::DoNotOptimize(offset);
    double progress = 0.0;
    float last = 0.0F;
    for (auto _ : state)
    {
        progress += 1.0;
        double value = progress / stepMax;
        for (int i = 0; i < 3; ++i)
            value = value * scale[i] + offset[i];
        if (value != static_cast<double>(last))
        {
            last = static_cast<float>(value);
            hook(last);
        }
    }
    benchmark::DoNotOptimize(changes);
}

void beginEnd(benchmark::State& state)
{
    Counting notifier;
    const std::vector<double> weights(10, 1.0);
    for (auto _ : state)
    {
        ky::kyProgressNotifierGroupCloser closer;
        notifier.beginStepGroupWeights(weights, 1.0, &closer);
    }
}

void proxy(benchmark::State& state)
{
    static Counting notifier;
    static ky::kyProgressNotifierThreadSafeProxy shared(&notifier);
    if (state.thread_index() == 0)
        shared.resetNotifier();
    for (auto _ : state)
        shared.incrementCurrentStepProgress(1e-12);
}

void mutexAround(benchmark::State& state)
{
    static Counting notifier;
    static std::recursive_mutex mutex;
    for (auto _ : state)
    {
        const std::lock_guard lock(mutex);
        notifier.incrementCurrentStepProgress(1e-12);
    }
}

void poll(benchmark::State& state)
{
    const ky::kyProgressNotifier notifier;
    const ky::kyProgressNotifierInterface* asked = &notifier;
    benchmark::DoNotOptimize(asked);
    for (auto _ : state)
        benchmark::DoNotOptimize(asked->shouldCancel());
}

/// All the ways there are: proxy, own request, flag and parent.
void pollAll(benchmark::State& state)
{
    bool flag = false;
    ky::kyProgressNotifier parent;
    ky::kyProgressNotifier notifier(&flag, &parent);
    ky::kyProgressNotifierThreadSafeProxy shared(&notifier);
    for (auto _ : state)
        benchmark::DoNotOptimize(shared.shouldCancel());
}

BENCHMARK(update)->Name("progress/update/ky");
BENCHMARK(updateByHand)->Name("progress/update/floor");
BENCHMARK(beginEnd)->Name("progress/begin_end/ky");
BENCHMARK(proxy)->Name("progress/proxy/ky")->Threads(2)->UseRealTime();
BENCHMARK(mutexAround)->Name("progress/proxy/std_recursive")->Threads(2)->UseRealTime();
BENCHMARK(poll)->Name("progress/poll/ky");
BENCHMARK(pollAll)->Name("progress/poll_all_ways/ky");

#if defined(KY_PEER_QT)
void updateQt(benchmark::State& state)
{
    QPromise<void> promise;
    promise.start();
    promise.setProgressRange(0, 2000000000);
    int value = 0;
    for (auto _ : state)
        promise.setProgressValue(++value);
    promise.finish();
}
void pollQt(benchmark::State& state)
{
    QPromise<void> promise;
    promise.start();
    for (auto _ : state)
        benchmark::DoNotOptimize(promise.isCanceled());
    promise.finish();
}
BENCHMARK(updateQt)->Name("progress/update/qt_promise");
BENCHMARK(pollQt)->Name("progress/poll/qt_promise");
#endif

} // namespace
