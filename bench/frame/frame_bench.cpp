// SPDX-License-Identifier: MIT
// Bringing the library up and down, beside what a desktop program does anyway; and finding a resource.
#include <ky/kyResource.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <benchmark/benchmark.h>

#if defined(KY_PEER_QT)
#include <QCoreApplication>
#include <QFile>
#endif

namespace
{

void startAndStop(benchmark::State& state, ky::InitType type)
{
    ky::kySystemUtils::ExportProcessorCount();
    for (auto _ : state)
    {
        ky::initializeKySystem(type, false);
        ky::terminateKySystem();
    }
}

void lookUp(benchmark::State& state)
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    for (auto _ : state)
    {
        const char* data = nullptr;
        unsigned long long size = 0;
        benchmark::DoNotOptimize(ky::rc::GetResource("frame/frame_bench.cpp", data, size));
        benchmark::DoNotOptimize(data);
    }
    ky::terminateKySystem();
}

BENCHMARK_CAPTURE(startAndStop, light, ky::InitType::Light)->Name("frame/start_stop_light/ky");
BENCHMARK_CAPTURE(startAndStop, full, ky::InitType::Full)->Name("frame/start_stop_full/ky");
BENCHMARK(lookUp)->Name("frame/find_resource/ky");

#if defined(KY_PEER_QT)
void application(benchmark::State& state)
{
    char name[] = "bench";
    char* arguments[] = {name, nullptr};
    for (auto _ : state)
    {
        int count = 1;
        const QCoreApplication made(count, arguments);
        benchmark::DoNotOptimize(&made);
    }
}
BENCHMARK(application)->Name("frame/start_stop_light/qt");

void openResource(benchmark::State& state)
{
    // One that the library itself carries.
    const QString path = QStringLiteral(":/qt-project.org/qmime/packages/freedesktop.org.xml");
    for (auto _ : state)
    {
        QFile file(path);
        benchmark::DoNotOptimize(file.open(QIODevice::ReadOnly));
    }
}
BENCHMARK(openResource)->Name("frame/find_resource/qt");
#endif

} // namespace
