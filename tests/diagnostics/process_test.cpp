// SPDX-License-Identifier: MIT
// Several processes in one rotating log: nothing lost, doubled, torn or out of order, whoever is killed whenever.
#include "diagnostics/fork_while_logging.h"
#include "diagnostics/log_checker.h"
#include "support/child_process.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

namespace
{

using ky::test::account;
using ky::test::ChildProcess;
using ky::test::isSoak;
using ky::test::LogContent;
using ky::test::TempDir;

std::vector<std::string> writerArguments(const std::string& path, int maxSize, int keep, int writer, int threads,
                                         int lines)
{
    std::vector<std::string> arguments{path};
    for (const int value : {maxSize, keep, writer, threads, lines})
        arguments.push_back(std::to_string(value));
    return arguments;
}

void writeTogether(int maxSize, int keep, int lines)
{
    constexpr int writers = 8;
    constexpr int threads = 4;
    const TempDir dir;
    const std::string path = dir.file("l\xC3\xB6g.txt");
    std::vector<ChildProcess> children;
    for (int w = 0; w < writers; ++w)
        children.emplace_back("log-write", writerArguments(path, maxSize, keep, w, threads, lines));
    for (ChildProcess& child : children)
        EXPECT_EQ(child.wait(std::chrono::seconds(1000)), 0);

    LogContent log = ky::test::readLog(path, keep, static_cast<std::size_t>(maxSize));
    const bool complete = log.rotatedFiles < keep;
    for (int w = 0; w < writers; ++w)
    {
        for (int t = 0; t < threads; ++t)
            ky::test::expectRun(log, w, t, complete, complete ? lines - 1 : -1);
    }
    EXPECT_EQ(ky::test::describe(log), "");
    EXPECT_EQ(log.torn, std::vector<std::string>());
    EXPECT_GT(log.rotatedFiles, 3);
    const auto written = static_cast<std::size_t>(writers * threads * lines);
    if (complete)
    {
        EXPECT_EQ(log.lines, written);
    }
    account("log of many processes", {log.lines, "lines kept to the end"}, {},
            {log.missing + log.torn.size(), "lines"});
}

TEST(SharedLog, ManyWritersLoseNothing)
{
    writeTogether(64 * 1024, 128, isSoak() ? 25000 : 500);
    // Large enough to hold every line to the end.
    if (isSoak())
        writeTogether(4 * 1024 * 1024, 128, 25000);
}

TEST(SharedLog, KilledWritersCostTheirOwnLineAtMost)
{
    constexpr int keep = 128;
    constexpr int maxSize = 64 * 1024;
    constexpr int survivors = 2;
    constexpr int threads = 2;
    const int kills = isSoak() ? 2000 : ky::test::canFork() ? 150 : 12;
    const TempDir dir;
    const std::string path = dir.file("killed.log");
    std::mt19937 random(std::random_device{}());
    std::vector<ChildProcess> steady;
    for (int w = 0; w < survivors; ++w)
        steady.emplace_back("log-write", writerArguments(path, maxSize, keep, w, threads, 0));
    for (int k = 0; k < kills; ++k)
    {
        ChildProcess victim("log-write", writerArguments(path, maxSize, keep, 100 + k, threads, 0));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 25000));
        victim.kill();
        victim.wait();
    }
    for (ChildProcess& child : steady)
    {
        EXPECT_TRUE(child.isRunning()) << "a survivor must not have been stopped by the dead";
        child.kill();
        child.wait();
    }

    // The lock of the last dead is free, and their log can be continued.
    ChildProcess last("log-write", writerArguments(path, maxSize, keep, 50, 1, 100));
    EXPECT_EQ(last.wait(), 0);
    LogContent log = ky::test::readLog(path, keep, maxSize);
    EXPECT_LE(log.torn.size(), static_cast<std::size_t>(kills + survivors)) << "only the dead may leave torn lines";
    const bool complete = log.rotatedFiles < keep;
    std::vector<std::pair<int, int>> everybody;
    for (const auto& [who, numbers] : log.numbers)
        everybody.push_back(who);
    for (const auto& [writer, thread] : everybody)
        ky::test::expectRun(log, writer, thread, complete, writer == 50 ? 99 : -1);
    EXPECT_EQ(ky::test::describe(log), "");
    EXPECT_GT(everybody.size(), static_cast<std::size_t>(survivors * threads));
    account("log of many processes", {log.lines, "lines kept to the end"}, {kills, "writers killed"},
            {log.missing, "lines of others"});
}

TEST(SharedLog, AProcessThatLeavesWhileItLogsEnds)
{
    const int leaves = isSoak() ? 1000 : 5;
    int lost = 0;
    for (int i = 0; i < leaves; ++i)
    {
        const TempDir dir;
        ChildProcess child("log-leave", {dir.file("x.log"), "goodbye"});
        EXPECT_EQ(child.wait(), 0);
        lost += ky::test::readFile(dir.file("x.log")).find("goodbye\r\n") == std::string::npos;
    }
    account("start and end", {leaves, "exits while threads log"}, {}, {lost, "last lines"});
}

TEST(SharedLog, AForkedChildLogsWhileTheParentsThreadsDo)
{
    if (!ky::test::canFork())
        GTEST_SKIP() << "no fork here";
    constexpr int threads = 4;
    const int forks = isSoak() ? 1000 : 60;
    const TempDir dir;
    const std::string path = dir.file("forked.log");
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8(path, 0, 256 * 1024, 128);
    // The fork detector's own warning is not what is counted here.
    ky::kyLog::edit().setLogTypeEnabled(ky::kyLogType::CRITICAL, false);
    std::atomic<bool> stop{false};
    std::vector<int> written(threads);
    std::vector<std::thread> loggers;
    for (int t = 0; t < threads; ++t)
    {
        loggers.emplace_back(
            [&, t]
            {
                for (int n = 0; !stop; ++n)
                {
                    ky::logInfo() << ky::test::makeMessage({0, t, n});
                    written[static_cast<std::size_t>(t)] = n;
                }
            });
    }
    std::atomic<int> next{0};
    std::atomic<int> blocked{0};
    const auto forkChildren = [&]
    {
        for (int f = next++; f < forks; f = next++)
        {
            if (!ky::test::forkAndRun([f] { ky::logInfo() << ky::test::makeMessage({1 + f, 0, 0}); }))
                ++blocked;
        }
    };
    std::thread secondForker(forkChildren);
    forkChildren();
    secondForker.join();
    stop = true;
    for (std::thread& logger : loggers)
        logger.join();
    ky::terminateKySystem();

    EXPECT_EQ(blocked, 0) << "of " << forks << " children";
    LogContent log = ky::test::readLog(path, 128, 256 * 1024);
    const bool complete = log.rotatedFiles < 128;
    for (int t = 0; t < threads; ++t)
        ky::test::expectRun(log, 0, t, complete, written[static_cast<std::size_t>(t)]);
    for (int f = 0; complete && f < forks; ++f)
        ky::test::expectRun(log, 1 + f, 0, true, 0);
    EXPECT_EQ(ky::test::describe(log), "");
    account("fork", {log.lines, "lines kept to the end"}, {forks, "forks while 4 threads log"},
            {log.missing + static_cast<std::uint64_t>(blocked), "lines, children stuck"});
}

TEST(StandardOutput, GetsEveryTypeWithThePrefix)
{
    const TempDir dir;
    ChildProcess child("log-output", {}, dir.file("out"));
    EXPECT_EQ(child.wait(), 0);
    std::string output = ky::test::readFile(dir.file("out"));
    std::string lines;
    for (std::size_t at = 0; at < output.size();)
    {
        const std::size_t end = output.find('\n', at);
        ASSERT_NE(end, std::string::npos);
        std::string line = output.substr(at, end - at);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t time = line.find(" : ");
        ASSERT_NE(time, std::string::npos) << line;
        ASSERT_GT(line.size(), time + 27) << line;
        lines += line.substr(0, time + 3) + line.substr(time + 3 + 24) + "\n";
        at = end + 1;
    }
    EXPECT_EQ(lines, "INFO(none) :  no logger\nDEBUG :  debug passes without a logger\n"
                     "WARNING :  echo \xC3\xA4\xE6\x97\xA5\nUNKNOWN(q) :  direct\n");
}

TEST(StandardOutput, IsThereForTheStaticObjectsOfAProgram)
{
    const TempDir dir;
    EXPECT_EQ(ChildProcess::program("ky_early_message", {}, dir.file("out")).wait(), 0);
    EXPECT_NE(ky::test::readFile(dir.file("out")).find(" early message"), std::string::npos);
}

} // namespace
