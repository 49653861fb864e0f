// SPDX-License-Identifier: MIT
#include "log_floor_native.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>

#if defined(KY_PEER_SPDLOG)
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Logger.h>
#endif
#if defined(KY_PEER_QT)
#include <QLoggingCategory>
#endif

namespace
{

/// 60 bytes with prefix and line end, as the library writes them.
const std::string message = "one line of 26 characters.";
const std::string wholeLine = "INFO : Sun Nov 15 07:44:17 2026 " + message + "\r\n";

/// A fresh file for every run.
class LogPath
{
public:
    explicit LogPath(const char* name)
        : mPath((std::filesystem::temp_directory_path() / (std::string("ky-bench-") + name + ".log")).string())
    {
        std::filesystem::remove(mPath);
    }
    ~LogPath() { std::filesystem::remove(mPath); }
    const std::string& text() const { return mPath; }

private:
    std::string mPath;
};

void reopenedKy(benchmark::State& state)
{
    const LogPath path("ky");
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerUtf8(path.text());
    for (auto _ : state)
        ky::logInfo() << message;
    ky::terminateKySystem();
}
BENCHMARK(reopenedKy)->Name("log_line/reopened/ky");

void reopenedWithLimitKy(benchmark::State& state)
{
    const LogPath path("ky");
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8(path.text(), 0, 1 << 20, 5);
    for (auto _ : state)
        ky::logInfo() << message;
    ky::terminateKySystem();
    for (int i = 0; i < 5; ++i)
        std::filesystem::remove(path.text() + "_" + std::to_string(i) + ".back");
}
BENCHMARK(reopenedWithLimitKy)->Name("log_line/reopened_rotating/ky");

void reopenedFloor(benchmark::State& state, bool locked)
{
    const LogPath path("floor");
    const LogPath lockPath("floor-lock");
    ky::bench::KernelLock lock(lockPath.text());
    for (auto _ : state)
    {
        if (locked)
            lock.lock();
        ky::bench::appendBare(path.text().c_str(), wholeLine.data(), static_cast<unsigned>(wholeLine.size()));
        if (locked)
            lock.unlock();
    }
}
BENCHMARK_CAPTURE(reopenedFloor, locked, true)->Name("log_line/reopened/floor_locked");
BENCHMARK_CAPTURE(reopenedFloor, unlocked, false)->Name("log_line/reopened/floor");
BENCHMARK_CAPTURE(reopenedFloor, locked, true)->Name("log_line/reopened_rotating/floor_locked");

void reopenedStream(benchmark::State& state)
{
    const LogPath path("stream");
    const LogPath lockPath("stream-lock");
    ky::bench::KernelLock lock(lockPath.text());
    for (auto _ : state)
    {
        lock.lock();
        std::ofstream(path.text(), std::ios::binary | std::ios::app) << wholeLine;
        lock.unlock();
    }
}
BENCHMARK(reopenedStream)->Name("log_line/reopened/ofstream_flock");

std::atomic<bool> sEnabled{false};

void offFloor(benchmark::State& state)
{
    int number = 1;
    double real = 2.5;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(number);
        benchmark::DoNotOptimize(real);
        if (sEnabled.load(std::memory_order_relaxed))
            state.SkipWithError("never enabled");
    }
}
BENCHMARK(offFloor)->Name("log_off/three_values/floor");

void offKy(benchmark::State& state)
{
    ky::kyLog::createInstance(true);
    int number = 1;
    double real = 2.5;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(number);
        benchmark::DoNotOptimize(real);
        ky::logDebug("bench") << "text" << number << real;
    }
    ky::kyLog::destroyInstance();
}
BENCHMARK(offKy)->Name("log_off/three_values/ky");

#if defined(KY_PEER_SPDLOG)
void offSpdlog(benchmark::State& state)
{
    spdlog::logger logger("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
    logger.set_level(spdlog::level::info);
    int number = 1;
    double real = 2.5;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(number);
        benchmark::DoNotOptimize(real);
        logger.debug("{}{}{}", "text", number, real);
    }
}
BENCHMARK(offSpdlog)->Name("log_off/three_values/spdlog");
#endif

#if defined(KY_PEER_POCO)
void offPoco(benchmark::State& state)
{
    Poco::Logger& logger = Poco::Logger::get("bench");
    logger.setLevel(Poco::Message::PRIO_INFORMATION);
    int number = 1;
    double real = 2.5;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(number);
        benchmark::DoNotOptimize(real);
        poco_debug_f3(logger, "%s%d%f", std::string("text"), number, real);
    }
}
BENCHMARK(offPoco)->Name("log_off/three_values/poco");
#endif

#if defined(KY_PEER_QT)
Q_LOGGING_CATEGORY(benchCategory, "bench", QtWarningMsg)

void offQt(benchmark::State& state)
{
    int number = 1;
    double real = 2.5;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(number);
        benchmark::DoNotOptimize(real);
        qCDebug(benchCategory) << "text" << number << real;
    }
}
BENCHMARK(offQt)->Name("log_off/three_values/qt");
#endif

} // namespace
