// SPDX-License-Identifier: MIT
// The first initialization of a process, and what the parts of the system-information record cost.
#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <benchmark/benchmark.h>

#if defined(KY_PEER_QT)
#include <QString>
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
BENCHMARK(osInfoKy)->Name("os_description/text/ky");

#if defined(KY_PEER_QT)
void osInfoQt(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(QSysInfo::prettyProductName().size());
}
BENCHMARK(osInfoQt)->Name("os_description/text/qt");
#endif

} // namespace
