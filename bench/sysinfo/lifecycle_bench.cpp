// SPDX-License-Identifier: MIT
// Initialization and termination of the library beside the construction of an application object of another one, and
// what of it the parts of the system-information record cost.
#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <benchmark/benchmark.h>

#if defined(KY_PEER_QT)
#include <QCoreApplication>
#include <QSysInfo>
#endif

namespace
{

using ky::kySystemUtils;

/// The first pair of a process pays for what is asked once. Stands first, and says nothing in a filtered run.
void firstPairKy(benchmark::State& state)
{
    kySystemUtils::ExportProcessorCount();
    for (auto _ : state)
    {
        ky::initializeKySystem(ky::InitType::Light, false);
        ky::terminateKySystem();
    }
}
BENCHMARK(firstPairKy)->Name("initialize_terminate/first_of_process/ky")->Iterations(1)->Unit(benchmark::kMicrosecond);

void pairKy(benchmark::State& state, ky::InitType type)
{
    kySystemUtils::ExportProcessorCount();
    for (auto _ : state)
    {
        ky::initializeKySystem(type, false);
        ky::terminateKySystem();
    }
}
BENCHMARK_CAPTURE(pairKy, light, ky::InitType::Light)
    ->Name("initialize_terminate/light/ky")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(pairKy, full, ky::InitType::Full)
    ->Name("initialize_terminate/full/ky")
    ->Unit(benchmark::kMicrosecond);

void recordKy(benchmark::State& state)
{
    for (auto _ : state)
    {
        kySystemUtils::InitializeSystemUtils();
        kySystemUtils::TerminateSystemUtils();
    }
}
BENCHMARK(recordKy)->Name("initialize_terminate/record_alone/ky")->Unit(benchmark::kMicrosecond);

void reportKy(benchmark::State& state)
{
    ky::initializeKySystem(ky::InitType::Light, false);
    for (auto _ : state)
    {
        // The management answers are kept with the record.
        kySystemUtils::TerminateSystemUtils();
        kySystemUtils::InitializeSystemUtils();
        ky::kyVariant::kyVariantMapImpl report;
        kySystemUtils::GenerateHardwareReport(report, true);
        benchmark::DoNotOptimize(report.size());
    }
    ky::terminateKySystem();
}
BENCHMARK(reportKy)->Name("report/full/ky")->Unit(benchmark::kMicrosecond);

void osInfoKy(benchmark::State& state)
{
    ky::initializeKySystem(ky::InitType::Light, false);
    for (auto _ : state)
        benchmark::DoNotOptimize(kySystemUtils::GetOSInfo().size());
    ky::terminateKySystem();
}
BENCHMARK(osInfoKy)->Name("os_description/ky");

#if defined(KY_PEER_QT)
void pairQt(benchmark::State& state)
{
    char name[] = "bench";
    for (auto _ : state)
    {
        int count = 1;
        char* arguments[] = {name, nullptr};
        QCoreApplication application(count, arguments);
        benchmark::DoNotOptimize(&application);
    }
}
BENCHMARK(pairQt)->Name("initialize_terminate/application_object/qt")->Unit(benchmark::kMicrosecond);

void osInfoQt(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(QSysInfo::prettyProductName().size());
}
BENCHMARK(osInfoQt)->Name("os_description/qt");
#endif

} // namespace
