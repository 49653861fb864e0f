// SPDX-License-Identifier: MIT
// Starting a program and waiting for its end, from a small process and from one that holds 2 GB.
#include "library.h"

#include <ky/kyProcess.h>

#include <benchmark/benchmark.h>

#include <memory>

#include "process/floor.h"

#if defined(KY_PEER_QT)
#include <QProcess>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Process.h>
#endif

namespace
{

const ky::bench::Library library;

constexpr std::size_t gigabytes2 = std::size_t{2} << 30;

template <typename Run>
void repeat(const std::string& name, Run run)
{
    for (const bool large : {false, true})
    {
        const auto body = [run, large](benchmark::State& state)
        {
            std::unique_ptr<char[]> memory;
            if (large)
            {
                memory.reset(new char[gigabytes2]);
                for (std::size_t i = 0; i < gigabytes2; i += 4096)
                    memory[i] = 1;
                benchmark::DoNotOptimize(memory.get());
            }
            for (auto _ : state)
            {
                if (run() != 0)
                    state.SkipWithError("the program failed");
            }
        };
        const std::string row = large ? "process/spawn_wait_2gb/" : "process/spawn_wait/";
        benchmark::RegisterBenchmark((row + name).c_str(), body)->UseRealTime()->Unit(benchmark::kMicrosecond);
    }
}

const bool registered = []
{
    static const std::string program = ky::bench::trueProgram();
    repeat("ky", [] { return ky::kyProcess::ExecUtf8(program, {}, "", false, 60000, nullptr); });
    repeat("floor_bare_calls", [] { return ky::bench::runByBareCalls(program); });
#if defined(KY_PEER_QT)
    repeat("qt",
           []
           {
               QProcess process;
               process.setProcessChannelMode(QProcess::ForwardedChannels);
               process.start(QString::fromStdString(program), {});
               return process.waitForFinished(60000) ? process.exitCode() : -1;
           });
#endif
#if defined(KY_PEER_POCO)
    repeat("poco", [] { return Poco::Process::launch(program, {}).wait(); });
#endif
    return true;
}();

} // namespace
