// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/thread_support.h"
#include "concurrency/threads.h"
#include "support/child_process.h"

#include <ky/kyMutex.h>
#include <ky/kySemaphore.h>
#include <ky/kyThreadPeriodicalUpdater.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>

namespace
{

using namespace ky::test;
using Updater = ky::kyThreadPeriodicalUpdater;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new FullLibrary);

/// So long a period never ends in a test: a round begins only when somebody is registered.
constexpr unsigned int anHour = 3600;

/// Writes down who was called. Each caller is a letter with a call() of its own.
class Record
{
public:
    struct Caller
    {
        Record* record;
        char letter;
    };

    static void call(void* caller)
    {
        auto& own = *static_cast<Caller*>(caller);
        const ky::kyMutexLocker locker(own.record->mMutex);
        own.record->mCalls += own.letter;
    }

    std::string calls()
    {
        const ky::kyMutexLocker locker(mMutex);
        return mCalls;
    }

    Caller a{this, 'a'};
    Caller b{this, 'b'};
    Caller c{this, 'c'};

private:
    ky::kyMutex mMutex;
    std::string mCalls;
};

void count(void* counter) { ++*static_cast<std::atomic<int>*>(counter); }

#define EXPECT_CALLS(expected)                                                                                         \
    EXPECT_TRUE(eventually([&] { return record.calls() == (expected); })) << record.calls() << " is not " << (expected)

TEST(Updater, TheFirstRoundIsNotLostWhileTheThreadStarts)
{
    for (int round = 0; round < (isSoak() ? 10'000 : 200); ++round)
    {
        std::atomic<int> calls{0};
        Updater updater(anHour);
        updater.addCallback(&count, &calls);
        ASSERT_TRUE(eventually([&] { return calls == 1; })) << round;
    }
}

TEST(Updater, BeginsARoundWithEachNewOneKeepsDuplicatesAndRemovesTheFirstOfThem)
{
    Record record;
    Updater updater(anHour);
    EXPECT_TRUE(updater.isRunning());
    EXPECT_EQ(updater.getThreadName(), "ky::kyThreadPeriodicalUpdater " + updater.getThreadId());
    updater.addCallback(&Record::call, &record.a);
    EXPECT_CALLS("a");
    updater.addCallback(&Record::call, &record.b);
    EXPECT_CALLS("aab");
    updater.addCallback(&Record::call, &record.a);
    EXPECT_CALLS("aababa");
    updater.removeCallback(&Record::call, &record.a);
    updater.removeCallback(&Record::call, &record.c);
    updater.removeCallback(&count, &record.b);
    updater.addCallback(&Record::call, &record.c);
    EXPECT_CALLS("aabababac");
    updater.removeCallback(&Record::call, &record.a);
    updater.addCallback(&Record::call, &record.c);
    EXPECT_CALLS("aabababacbcc");
}

TEST(Updater, CallsOnceMoreWhenItEnds)
{
    Record record;
    {
        Updater updater(anHour);
        updater.addCallback(&Record::call, &record.a);
        updater.addCallback(&Record::call, &record.b);
        EXPECT_TRUE(eventually([&] { return record.calls().find('b') != std::string::npos; }));
        updater.removeCallback(&Record::call, &record.b);
    }
    EXPECT_EQ(record.calls().back(), 'a');
    EXPECT_EQ(record.calls().find('b'), record.calls().rfind('b'));
}

TEST(Updater, APeriodOfNoSecondsIsOneSecond)
{
    std::atomic<int> calls{0};
    Updater updater(0);
    const auto start = std::chrono::steady_clock::now();
    updater.addCallback(&count, &calls);
    EXPECT_TRUE(eventually([&] { return calls >= 3; }));
    // The clock of the wait may be a tick coarser than this one.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
}

/// A callback that changes the list, once, while the round goes through it.
struct Change
{
    Updater* updater;
    Record* record;
    std::string removed;
    std::string added;
    bool removesItself;

    static void call(void* change)
    {
        auto& own = *static_cast<Change*>(change);
        const auto callerOf = [&own](char letter) { return letter == 'a' ? &own.record->a : &own.record->b; };
        for (const char letter : std::exchange(own.removed, {}))
            own.updater->removeCallback(&Record::call, callerOf(letter));
        for (const char letter : std::exchange(own.added, {}))
            own.updater->addCallback(&Record::call, callerOf(letter));
        if (own.removesItself)
            own.updater->removeCallback(&Change::call, &own);
    }

    /// Registers the change and b within a round, so that the same round comes to both.
    static void begin(void* change)
    {
        auto& own = *static_cast<Change*>(change);
        own.updater->removeCallback(&Change::begin, change);
        own.updater->addCallback(&Change::call, change);
        own.updater->addCallback(&Record::call, &own.record->b);
    }
};

TEST(Updater, CallbacksMayChangeTheList)
{
    // The list is a, the change, b; c is registered to begin the next round.
    const struct
    {
        std::string removed, added;
        bool removesItself;
        std::string round, nextRound;
    } cases[] = {
        {"", "", true, "ab", "abc"}, {"b", "", false, "a", "ac"},     {"a", "", true, "ab", "bc"},
        {"ab", "", true, "a", "c"},  {"", "b", false, "abb", "abbc"}, {"b", "a", true, "aa", "aac"},
    };
    for (const auto& [removed, added, removesItself, round, nextRound] : cases)
    {
        Record record;
        Updater updater(anHour);
        Change change{&updater, &record, removed, added, removesItself};
        updater.addCallback(&Record::call, &record.a);
        EXPECT_CALLS("a");
        updater.addCallback(&Change::begin, &change);
        const std::string first = "a" + round; // Clang 14 captures no structured binding
        EXPECT_CALLS(first);
        updater.addCallback(&Record::call, &record.c);
        const std::string both = first + nextRound;
        EXPECT_CALLS(both);
    }
}

TEST(Updater, ARemovedCallbackIsNotRunning)
{
    struct Guarded
    {
        static void call(void* guarded)
        {
            auto& own = *static_cast<Guarded*>(guarded);
            if (!own.isRegistered)
                own.wasCalledLate = true;
        }
        bool isRegistered = true; ///< plain: the updater's mutex is what orders its users
        bool wasCalledLate = false;
    };
    const int rounds = isSoak() ? 20'000 : 500;
    Updater updater(anHour);
    std::atomic<int> late{0};
    const auto change = [&](int)
    {
        for (int round = 0; round < rounds; ++round)
        {
            Guarded own;
            updater.addCallback(&Guarded::call, &own);
            if (round % 4 == 0)
                std::this_thread::yield();
            updater.removeCallback(&Guarded::call, &own);
            own.isRegistered = false;
            late += own.wasCalledLate;
        }
    };
    Threads(4, change).join();
    account("periodical updater", {4 * rounds, "callbacks added and removed"}, {},
            {late.load(), "calls after a removal"});
}

TEST(Updater, IsDestroyedAtAnyMoment)
{
    std::atomic<int> calls{0};
    for (int round = 0; round < (isSoak() ? 10'000 : 300); ++round)
    {
        Updater updater(anHour);
        if (round % 2 == 0)
            updater.addCallback(&count, &calls);
        if (round % 3 == 0)
            std::this_thread::yield();
    }
}

TEST(Updater, ACallbackThatFailsEndsTheThreadAndLeavesNothingLocked)
{
    const Silence silence;
    const auto call = [](void* function) { (*static_cast<const std::function<void()>*>(function))(); };
    for (auto& failure : failures())
    {
        std::atomic<int> calls{0};
        Updater updater(anHour);
        updater.addCallback(call, &failure);
        EXPECT_TRUE(updater.waitThread(forEver)); // a report of a fault may take its time
        updater.addCallback(&count, &calls);
        updater.removeCallback(call, &failure);
        EXPECT_EQ(calls, 0);
    }
}

} // namespace
