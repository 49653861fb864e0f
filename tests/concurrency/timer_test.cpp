// SPDX-License-Identifier: MIT
#include "concurrency/threads.h"

#include <ky/kyHighResTimer.h>
#include <ky/kyStamp.h>
#include <ky/kyTimer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using namespace std::chrono_literals;

constexpr long long longest = std::numeric_limits<long long>::max();
constexpr long long shortest = std::numeric_limits<long long>::min();

static_assert(sizeof(ky::kyTimer) == 8 && sizeof(ky::Stamp) == 8 && sizeof(kyHighResTimer) == sizeof(void*));
static_assert(std::has_virtual_destructor_v<ky::StampGenerator>);
static_assert(!std::is_copy_constructible_v<ky::StampGenerator>);

TEST(Timer, NotSnappedHasRunForEver)
{
    ky::kyTimer timer(false);
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_FALSE(timer.isTimeSnapped());
        EXPECT_EQ(timer.getElapsedMs(), 0x7FFFFFFFFFFFFFFFLL);
        EXPECT_TRUE(timer.isElapsedSec(1000000));
        EXPECT_TRUE(timer.isElapsedMs(longest - 1));
        EXPECT_FALSE(timer.isElapsedMs(longest)) << "strictly greater";
        EXPECT_EQ(timer.getElapsedMs(true), longest) << "the time before the snap";
        EXPECT_TRUE(timer.isTimeSnapped());
        EXPECT_LT(timer.getElapsedMs(false), 600000);
        timer.clearTime();
    }
}

TEST(Timer, CountsMillisecondsWithoutOverflow)
{
    const auto before = std::chrono::steady_clock::now();
    ky::kyTimer timer(true);
    EXPECT_FALSE(timer.isElapsedSec(600));
    while (timer.getElapsedMs() < 40)
        std::this_thread::sleep_for(1ms);
    // One tick of the coarser clock may be missing.
    EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
    EXPECT_TRUE(timer.isElapsedMs(39));
    EXPECT_TRUE(timer.isElapsedMs(-1));
    for (const long long seconds : {longest, longest / 1000 + 1})
        EXPECT_FALSE(timer.isElapsedSec(seconds)) << seconds;
    for (const long long seconds : {shortest, shortest / 1000 - 1, -1LL})
        EXPECT_TRUE(timer.isElapsedSec(seconds)) << seconds;
    EXPECT_GE(timer.getElapsedMs(true), 40);
    EXPECT_FALSE(timer.isElapsedSec(600));
    const ky::kyTimer copy = timer;
    EXPECT_TRUE(copy.isTimeSnapped());
}

TEST(HighResTimer, KeepsTheFirstEnd)
{
    kyHighResTimer timer;
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.getElapsedTimeInMicroSec(), 0.0);
    timer.stop();
    EXPECT_EQ(timer.getElapsedTimeInMicroSec(), 0.0) << "a stop of a stopped timer";

    const auto before = std::chrono::steady_clock::now();
    timer.start();
    EXPECT_TRUE(timer.isRunning());
    double last = timer.getElapsedTimeInMicroSec();
    while (timer.getElapsedTimeInMicroSec() < 3000.0)
    {
        const double now = timer.getElapsedTimeInMicroSec();
        ASSERT_GE(now, last);
        last = now;
    }
    timer.stop();
    const std::chrono::duration<double, std::micro> passed = std::chrono::steady_clock::now() - before;
    const double elapsed = timer.getElapsedTimeInMicroSec();
    EXPECT_GE(elapsed, 3000.0);
    EXPECT_LE(elapsed, passed.count() * 1.1 + 1000.0);
    std::this_thread::sleep_for(2ms);
    timer.stop();
    EXPECT_EQ(timer.getElapsedTimeInMicroSec(), elapsed);
    EXPECT_EQ(timer.getElapsedTimeInMilliSec(), elapsed * 0.001);
    EXPECT_EQ(timer.getElapsedTimeInSec(), elapsed * 0.000001);

    kyHighResTimer copy = timer;
    timer.clearTimer();
    EXPECT_EQ(timer.getElapsedTimeInMicroSec(), 0.0);
    EXPECT_EQ(copy.getElapsedTimeInMicroSec(), elapsed);
    timer = copy;
    copy.start();
    EXPECT_EQ(timer.getElapsedTimeInMicroSec(), elapsed);
    EXPECT_FALSE(timer.isRunning());
}

TEST(Stamp, ComparesUnsigned)
{
    const ky::Stamp high(0xFFFFFFFFFFFFFFFFULL);
    EXPECT_FALSE(ky::Stamp::Invalid().isValid());
    EXPECT_TRUE(high.isValid());
    EXPECT_TRUE(ky::Stamp(1) < high && high > ky::Stamp(1));
    EXPECT_FALSE(high < high || high > high);
    EXPECT_TRUE(ky::Stamp::Invalid() == ky::Stamp(0) && high != ky::Stamp(1));
}

TEST(Stamp, AreHandedOutOnceEach)
{
    constexpr std::size_t perThread = 5000;
    constexpr std::size_t threadCount = 16;
    ky::StampGenerator generator;
    std::vector<ky::Stamp> all(threadCount * perThread, ky::Stamp::Invalid());
    const auto take = [&](int thread)
    {
        ky::Stamp* const own = all.data() + static_cast<std::size_t>(thread) * perThread;
        std::generate_n(own, perThread, [&] { return generator.generateStamp(); });
        EXPECT_TRUE(std::is_sorted(own, own + perThread));
    };
    ky::test::Threads(threadCount, take).join();
    std::sort(all.begin(), all.end());
    for (std::size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(all[i].getValue(), i + 1);
}

} // namespace
