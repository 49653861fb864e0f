// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/thread_support.h"
#include "concurrency/threads.h"
#include "diagnostics/fork_while_logging.h"
#include "diagnostics/guard_faults.h"
#include "support/child_process.h"

#include <ky/kySemaphore.h>
#include <ky/kyThreadPeriodicalUpdater.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyLog;
using ky::kySemaphore;
using ky::kyThread;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new FullLibrary);

static_assert(std::is_base_of_v<ky::kyRunnableInterface, kyThread> && std::is_abstract_v<ky::kyRunnableInterface>);
static_assert(!std::is_constructible_v<ky::kyRunnableInterface> && !std::is_copy_constructible_v<kyThread>);

TEST(Thread, HasItsNameInTheSystem)
{
    // The second column: where the system keeps 15 bytes. Empty: the whole name fits, or its end is the id.
    const char* const cases[][2] = {
        {"short", ""},
        {"exactly-fifteen-and-more", "exactly-fifteen"},
        {"fourteen bytes", "fourteen bytes "},
        {"\xC3\xA4\xC3\xB6\xC3\xBC\xC3\xA4\xC3\xB6\xC3\xBC\xC3\xA4\xC3\xB6",
         "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\xA4\xC3\xB6\xC3\xBC\xC3\xA4"},
        {"1234567890123\xE2\x82\xAC", "1234567890123"},
        {"123456789012\xE2\x82\xAC", "123456789012\xE2\x82\xAC"},
    };
    for (const auto& [name, cut] : cases)
    {
        std::string shown;
        Body thread([&] { shown = systemNameOfThisThread(); });
        thread.startThread(name);
        EXPECT_TRUE(thread.waitThread(forEver));
        EXPECT_EQ(shown, cutsThreadNames() && *cut != '\0' ? std::string(cut) : thread.getThreadName());
    }
}

TEST(Thread, CannotJoinItself)
{
    std::error_code code;
    bool polled = true;
    Body* self = nullptr;
    Body thread(
        [&]
        {
            polled = self->waitThread(0);
            code = errorOf([&] { self->waitThread(forEver); });
        });
    self = &thread;
    thread.startThread(nullptr);
    EXPECT_TRUE(thread.waitThread(forEver));
    EXPECT_EQ(code, std::errc::resource_deadlock_would_occur);
    EXPECT_FALSE(polled);
}

TEST(Thread, EndsWhenItsBodyFails)
{
    const Silence silence;
    std::vector<std::function<void()>> bodies = failures();
    if (canEndThread())
        bodies.push_back(&endThread);
    for (const auto& body : bodies)
    {
        Body thread(body);
        thread.startThread(nullptr);
        // A report of a fault may take its time.
        EXPECT_TRUE(thread.waitThread(forEver));
        EXPECT_FALSE(thread.isRunning());
    }
}

TEST(Thread, IsDestroyedRightAfterItsStart)
{
    std::atomic<int> runs{0};
    const int rounds = isSoak() ? 10'000 : 200;
    for (int round = 0; round < rounds; ++round)
    {
        Body thread([&] { ++runs; });
        thread.startThread(round % 2 == 0 ? nullptr : "named");
    }
    account("threads", {rounds, "starts and ends"}, {}, {std::abs(rounds - runs), "runs"});
}

TEST(Thread, ManyStartAndAskAtOnce)
{
    std::atomic<int> wrong{0};
    const auto start = [&](int)
    {
        for (int round = 0; round < 50; ++round)
        {
            std::string own;
            Body* self = nullptr;
            Body inner([&] { own = round % 3 == 0 ? self->getThreadId() : kyThread::CurrentThreadId(); });
            self = &inner;
            inner.startThread("inner");
            const std::string asked = round % 2 == 0 ? inner.getThreadId() : inner.getThreadName().substr(6);
            inner.waitThread(round % 3 == 0 ? forEver : 1'000'000);
            wrong += own != asked || own == kyThread::CurrentThreadId();
        }
    };
    Threads(8, start).join();
    EXPECT_EQ(wrong, 0);
}

TEST(Fork, AChildCanDestroyThreadsAndLog)
{
    if (!canFork())
        GTEST_SKIP() << "no fork here";
    std::atomic<bool> stop{false};
    const Silence silence;
    const auto log = [&](int)
    {
        while (!stop)
            ky::kyLogObject(ky::kyLogType::INFO, "thread", kyLog::editPtr(), nullptr) << "line";
    };
    Threads loggers(4, log);
    kySemaphore gate(0);
    const int forks = isSoak() ? 1000 : 20;
    int blocked = 0;
    for (int round = 0; round < forks; ++round)
    {
        auto waiting = std::make_unique<Body>([&] { gate.acquire(1); });
        auto updater = std::make_unique<ky::kyThreadPeriodicalUpdater>(3600);
        waiting->startThread("waiting");
        const bool ended = forkAndRun(
            [&]
            {
                ky::kyLogObject(ky::kyLogType::INFO, "child", kyLog::editPtr(), nullptr) << "line";
                static_cast<void>(waiting->getThreadId());
                if (waiting->waitThread(forEver) || !waiting->isFinished())
                    std::abort();
                waiting.reset();
                updater.reset();
            });
        blocked += !ended;
        gate.release(1);
    }
    stop = true;
    loggers.join();
    account("fork", {forks, "children that end threads and log"}, {forks, "forks while 4 threads log"},
            {blocked, "children stuck"});
}

TEST(Exit, DoesNotWaitForThreads)
{
    for (const char* const how : {"exit", "terminate"})
        EXPECT_EQ(ChildProcess("threads_left_running", {how}).wait(), 7) << how;
}

} // namespace
