// SPDX-License-Identifier: MIT
// The steps of starting, waiting and joining on a system that does as it is told: its threads have ended when their
// start returns, and its time passes only in sleeps. The library's own threads, which it has from its start to its end,
// are real ones.
#include "concurrency/limited_list.h"
#include "concurrency/sync_native.h"
#include "concurrency/thread_native.h"
#include "concurrency/thread_support.h"
#include "platform/clock_native.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kyThread.h>
#include <ky/kyWorkThread.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace
{

struct System
{
    bool isReal = false;
    bool refusesThreads = false;
    bool losesThreads = false; ///< starts one and does not say which
    bool runsBodies = true;
    bool refusesJoins = false;
    int joined = 0;
    ky::impl::native::Thread* last = nullptr;
    std::int64_t now = 1000;
    std::vector<std::uint64_t> sleeps;
    std::string name;
};
System sSystem;

constexpr std::uintptr_t toldHandle = 1;
/// The calling thread is one of those that do as they are told.
thread_local bool sIsTold = false;

} // namespace

namespace ky::impl::native
{

bool startThread(Thread& thread) noexcept
{
    if (sSystem.isReal)
    {
        thread.handle = reinterpret_cast<std::uintptr_t>(new std::thread(thread.body, thread.argument));
        return true;
    }
    if (sSystem.refusesThreads)
        return false;
    sSystem.last = &thread;
    thread.handle = sSystem.losesThreads ? 0 : toldHandle;
    if (sSystem.runsBodies)
    {
        std::thread(
            [&thread]
            {
                sIsTold = true;
                thread.body(thread.argument);
            })
            .join();
    }
    return true;
}

bool joinThread(Thread& thread) noexcept
{
    if (thread.handle != toldHandle)
    {
        const std::unique_ptr<std::thread> real(reinterpret_cast<std::thread*>(thread.handle));
        real->join();
        return true;
    }
    if (sSystem.refusesJoins)
        return false;
    ++sSystem.joined;
    return true;
}

void nameCurrentThread(const std::string& name) noexcept
{
    if (sIsTold)
        sSystem.name = name;
}

void sleepMs(std::uint64_t milliseconds) noexcept
{
    sSystem.sleeps.push_back(milliseconds);
    sSystem.now += static_cast<std::int64_t>(milliseconds);
}

std::int64_t systemTime100ns() noexcept { return 0; }
std::int64_t ticksSinceStartMs() noexcept { return sSystem.now; }
bool breakDownTime(std::int64_t, bool, std::tm&) noexcept { return true; }

} // namespace ky::impl::native

namespace outer
{

struct Counter : ky::kyThread
{
    ~Counter() override { waitThread(0x7FFFFFFF); }
    void run() override
    {
        ++runs;
        ranAs = CurrentThreadId();
    }
    int runs = 0;
    std::string ranAs;
};

} // namespace outer

namespace
{

using ky::test::errorOf;
using outer::Counter;
using Lines = std::vector<std::string>;

void collect(const std::string& message, ky::kyLogType type, const std::string&, void* lines)
{
    static_cast<Lines*>(lines)->push_back(ky::toText(type) + (" " + message));
}

class ThreadSteps : public testing::Test
{
protected:
    ThreadSteps()
    {
        sSystem = System();
        sSystem.isReal = true;
        ky::initializeKySystem(ky::InitType::Full, false);
        sSystem.isReal = false;
        watchLog();
    }
    ~ThreadSteps() override { ky::terminateKySystem(); }

    void watchLog()
    {
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().installCustomHandler(&collect, &logged);
    }

    Lines logged;
};

TEST_F(ThreadSteps, StatesFollowStartAndJoin)
{
    Counter thread;
    EXPECT_FALSE(thread.isRunning());
    EXPECT_TRUE(thread.isFinished());
    EXPECT_FALSE(thread.waitThread(0));
    EXPECT_EQ(thread.getThreadId(), "InvalidThread");
    EXPECT_EQ(thread.getThreadName(), "");
    for (int round = 1; round <= 2; ++round)
    {
        thread.startThread("name");
        EXPECT_FALSE(thread.isRunning());
        EXPECT_FALSE(thread.isFinished());
        EXPECT_EQ(thread.getThreadId(), thread.ranAs);
        thread.startThread("other");
        EXPECT_EQ(thread.runs, round);
        EXPECT_TRUE(thread.waitThread(0));
        EXPECT_TRUE(thread.isFinished());
        EXPECT_EQ(thread.getThreadId(), "InvalidThread");
        EXPECT_EQ(thread.getThreadName(), "name " + thread.ranAs);
        EXPECT_FALSE(thread.waitThread(0x7FFFFFFF));
        EXPECT_EQ(sSystem.joined, round);
    }
}

TEST_F(ThreadSteps, TheSystemGetsTheWholeName)
{
    struct Unnamed : Counter
    {
    };
    const std::string longName(200, 'n');
    const auto nameOf = [](auto&& thread, const char* name)
    {
        thread.startThread(name);
        EXPECT_EQ(thread.getThreadName(), sSystem.name);
        EXPECT_TRUE(sSystem.name.ends_with(" " + thread.ranAs));
        return sSystem.name.substr(0, sSystem.name.rfind(' '));
    };
    EXPECT_EQ(nameOf(Counter(), nullptr), "outer::Counter");
    EXPECT_EQ(nameOf(Counter(), ""), "");
    EXPECT_EQ(nameOf(Counter(), longName.c_str()), longName);
    EXPECT_TRUE(nameOf(Unnamed(), nullptr).ends_with("::Unnamed"));
}

TEST_F(ThreadSteps, ARefusedStartThrowsAndLeavesTheRunningFlag)
{
    Counter thread;
    sSystem.refusesThreads = true;
    EXPECT_EQ(errorOf([&] { thread.startThread("x"); }), std::errc::resource_unavailable_try_again);
    EXPECT_TRUE(thread.isRunning());
    EXPECT_FALSE(thread.isFinished());
    EXPECT_EQ(thread.getThreadId(), "InvalidThread");
    EXPECT_FALSE(thread.waitThread(1000));
    EXPECT_TRUE(sSystem.sleeps.empty());
    sSystem.refusesThreads = false;
    thread.startThread("x");
    EXPECT_EQ(thread.runs, 1);
    EXPECT_TRUE(thread.waitThread(0));
}

TEST_F(ThreadSteps, EachFailureToJoinHasItsCode)
{
    const struct
    {
        bool System::*fault;
        std::errc code;
    } cases[] = {{&System::losesThreads, std::errc::invalid_argument},
                 {&System::refusesJoins, std::errc::no_such_process}};
    for (const auto& [fault, code] : cases)
    {
        sSystem.*fault = true;
        Counter thread;
        thread.startThread("x");
        for (const int timeoutMs : {0, 0x7FFFFFFF})
            EXPECT_EQ(errorOf([&] { thread.waitThread(timeoutMs); }), code);
        EXPECT_FALSE(thread.isFinished());
        sSystem.*fault = false;
        sSystem.last->handle = 1;
        EXPECT_TRUE(thread.waitThread(0));
    }
}

TEST_F(ThreadSteps, AWaitLooksEvery15Ms)
{
    sSystem.runsBodies = false;
    const struct
    {
        int timeoutMs;
        std::size_t sleeps;
    } cases[] = {{std::numeric_limits<int>::min(), 0}, {-1, 0}, {0, 1}, {14, 1}, {15, 2}, {100, 7}, {105, 8}};
    Counter thread;
    thread.startThread("x");
    for (const auto& [timeoutMs, sleeps] : cases)
    {
        sSystem.sleeps.clear();
        EXPECT_FALSE(thread.waitThread(timeoutMs));
        EXPECT_EQ(sSystem.sleeps, std::vector<std::uint64_t>(sleeps, 15)) << timeoutMs;
    }
    EXPECT_EQ(sSystem.joined, 0);
    EXPECT_TRUE(thread.isRunning());
    sSystem.sleeps.clear();
    EXPECT_TRUE(thread.waitThread(0x7FFFFFFF));
    EXPECT_TRUE(sSystem.sleeps.empty());
}

TEST_F(ThreadSteps, SleepsAreCutToMilliseconds)
{
    ky::kyThread::sleep(3);
    ky::kyThread::msleep(7);
    for (const unsigned long us : {0UL, 999UL, 1000UL, 2999UL, 4'000'000UL})
        ky::kyThread::usleep(us);
    EXPECT_EQ(sSystem.sleeps, (std::vector<std::uint64_t>{3000, 7, 0, 0, 1, 2, 4000}));
}

TEST_F(ThreadSteps, EarlyObjectsWarnOnceForEachMember)
{
    struct Worker : ky::kyWorkThread
    {
        void processJob(ky::kyJob*) override {}
    };
    const std::string thread = "CRITICAL Thread create before full init of kySystem";
    const std::string condition = "CRITICAL WaitCondition created before full init of kySystem";
    const std::string mutex = "CRITICAL Mutex created before full init of kySystem";
    const auto make = []
    {
        const Counter plain;
        const Worker worker;
    };
    make();
    EXPECT_EQ(logged, Lines{}) << "fully initialized";
    ky::terminateKySystem();
    ky::initializeKySystem(ky::InitType::Light, false);
    watchLog();
    make();
    EXPECT_EQ(logged, (Lines{thread, thread, condition, mutex, mutex}));
}

TEST(LimitedList, RefusesToGrowBeyondItsLimit)
{
    std::list<int> list;
    std::string refusal;
    try
    {
        for (const int element : {1, 2, 3})
            ky::impl::appendLimited(list, element, 2);
    }
    catch (const std::length_error& error)
    {
        refusal = error.what();
    }
    EXPECT_EQ(refusal, "list too long");
    EXPECT_EQ(list, (std::list<int>{1, 2}));
}

} // namespace
