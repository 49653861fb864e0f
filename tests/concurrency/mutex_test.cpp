// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/threads.h"

#include <ky/kyMutex.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <type_traits>

namespace
{

using namespace std::chrono_literals;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

static_assert(std::has_virtual_destructor_v<ky::kyMutex> && std::has_virtual_destructor_v<ky::kyMutex2>);
static_assert(!std::is_polymorphic_v<ky::kyMutexSystem> && !std::is_base_of_v<ky::kyMutex, ky::kyMutex2>);
static_assert(!std::is_copy_constructible_v<ky::kyMutex> && !std::is_copy_assignable_v<ky::kyMutex>);

bool onAnotherThread(const std::function<bool()>& call)
{
    bool result = false;
    std::thread([&] { result = call(); }).join();
    return result;
}

bool tryLock(ky::kyMutex& mutex) { return mutex.tryLock(); }
bool tryLock(ky::kyMutex2& mutex) { return mutex.tryLock(0); }

template <typename Mutex>
bool isFree(Mutex& mutex)
{
    return onAnotherThread(
        [&]
        {
            const bool locked = tryLock(mutex);
            if (locked)
                mutex.unlock();
            return locked;
        });
}

template <typename Mutex>
class AnyMutex : public testing::Test
{
};
using InProcess = testing::Types<ky::kyMutex, ky::kyMutex2>;
TYPED_TEST_SUITE(AnyMutex, InProcess);

TYPED_TEST(AnyMutex, IsRecursiveAndFreeAfterTheLastUnlock)
{
    TypeParam mutex;
    EXPECT_TRUE(isFree(mutex));
    mutex.lock();
    EXPECT_TRUE(tryLock(mutex));
    mutex.lock();
    for (int level = 0; level < 3; ++level)
    {
        EXPECT_FALSE(isFree(mutex)) << level;
        mutex.unlock();
    }
    EXPECT_TRUE(isFree(mutex));
}

TYPED_TEST(AnyMutex, KeepsManyThreadsApart)
{
    constexpr int threadCount = 16;
    constexpr int rounds = 2000;
    TypeParam mutex;
    long counter = 0;
    const auto work = [&](int thread)
    {
        for (int round = thread; round < thread + rounds; ++round)
        {
            mutex.lock();
            const bool nested = round % 3 == 0 && tryLock(mutex);
            ++counter;
            if (round % 97 == 0)
                std::this_thread::yield();
            if (nested)
                mutex.unlock();
            mutex.unlock();
        }
    };
    ky::test::Threads(threadCount, work).join();
    EXPECT_EQ(counter, threadCount * rounds);
}

TEST(Mutex2, WaitsForItsTimeAndNoLonger)
{
    ky::kyMutex2 mutex;
    mutex.lock();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(onAnotherThread([&] { return mutex.tryLock(30); }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 15ms);

    std::atomic<bool> obtained{false};
    std::thread waiting(
        [&]
        {
            obtained = mutex.tryLock(0xFFFFFFFF);
            mutex.unlock();
        });
    std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(obtained);
    mutex.unlock();
    waiting.join();
    EXPECT_TRUE(obtained);
}

TEST(Mutex2, UnlockByAnotherThreadDoesNothing)
{
    ky::kyMutex2 mutex;
    mutex.lock();
    std::thread([&] { mutex.unlock(); }).join();
    EXPECT_FALSE(isFree(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFree(mutex));
}

TEST(Mutex2, AnAbandonedMutexRefusesOneAttemptAndIsFreeThen)
{
    ky::kyMutex2 mutex;
    const auto abandon = [&]
    {
        std::thread(
            [&]
            {
                mutex.lock();
                mutex.lock();
            })
            .join();
    };
    abandon();
    EXPECT_FALSE(mutex.tryLock(1000));
    EXPECT_TRUE(isFree(mutex));

    abandon();
    mutex.lock();
    EXPECT_FALSE(isFree(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFree(mutex));
}

TEST(MutexLocker, LocksAndUnlocksOnce)
{
    ky::kyMutex mutex;
    {
        ky::kyMutexLocker locker(mutex, false);
        locker.unlock();
        EXPECT_FALSE(locker.isLocked());
        EXPECT_TRUE(isFree(mutex));
        locker.lock();
        locker.lock();
        EXPECT_TRUE(locker.isLocked());
        EXPECT_FALSE(isFree(mutex));
        locker.unlock();
        EXPECT_TRUE(isFree(mutex));
        locker.lock();
    }
    EXPECT_TRUE(isFree(mutex)) << "the destructor unlocks what the locker holds";
    {
        const ky::kyMutexLocker locker(mutex, true);
        EXPECT_FALSE(isFree(mutex));
        mutex.lock();
    }
    EXPECT_FALSE(isFree(mutex)) << "the destructor gives up one level only";
    mutex.unlock();
}

} // namespace
