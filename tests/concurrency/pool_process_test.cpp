// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/pool_of.h"
#include "concurrency/threads.h"
#include "diagnostics/fork_while_logging.h"
#include "support/child_process.h"

#include <ky/kyConcurrent.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>

namespace
{

using ky::test::ChildProcess;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

int sumOfIndices()
{
    return ky::concurrent::reduce(
        0, 1000, 0, [](int i) { return i; }, std::plus<>(), 1);
}

TEST(PoolOfTheProcess, DoesNotKeepAProcessThatExitsWithoutTermination)
{
    for (const char* const state : {"idle", "busy"})
        for (int round = 0; round < 5; ++round)
            EXPECT_EQ(ChildProcess("pool_exit", {state}).wait(), 7) << state;
}

TEST(PoolOfTheProcess, ComesAndGoesWithTheLibrary) { EXPECT_EQ(ChildProcess("pool_come_and_go", {"200"}).wait(), 0); }

/// The workers, and whoever holds the mutex of the pool at that moment, are not in the child.
TEST(PoolOfTheProcess, IsNotThereInAForkedChildWhichWorksAlone)
{
    if (!ky::test::canFork())
        GTEST_SKIP() << "no fork here";
    const ky::test::PoolOf pool(3);
    std::atomic<bool> stop{false};
    const auto useThePool = [&](int)
    {
        while (!stop)
            EXPECT_EQ(sumOfIndices(), 499'500);
    };
    const ky::test::Threads threads(3, useThePool);
    const auto child = []
    {
        const bool isRight = ky::concurrent::GetConcurrentPool() == nullptr && sumOfIndices() == 499'500;
        ky::impl::destroyConcurrentPool();
        if (!isRight)
            std::abort();
    };
    for (int round = 0; round < 100; ++round)
        ASSERT_TRUE(ky::test::forkAndRun(child)) << round;
    EXPECT_EQ(sumOfIndices(), 499'500);
    stop = true;
}

} // namespace
