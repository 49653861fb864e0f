// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/pool_of.h"
#include "concurrency/threads.h"
#include "support/soak.h"

#include <ky/kyConcurrent.h>
#include <ky/kyProgressNotifier.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <numeric>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

using ky::concurrent::parallelFor;
using ky::concurrent::reduce;
using ky::test::PoolOf;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

class LoopsOn : public testing::TestWithParam<unsigned>
{
protected:
    PoolOf mPool{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Workers, LoopsOn, testing::ValuesIn(ky::test::workerCounts),
                         testing::PrintToStringParamName());

/// Every index exactly once, in blocks of at most `grain`.
template <typename Index>
void expectEachOnce(Index begin, Index end, std::uint64_t grain)
{
    std::mutex mutex;
    std::multiset<Index> seen;
    const auto see = [&](Index index)
    {
        const std::lock_guard locker(mutex);
        seen.insert(index);
    };
    EXPECT_TRUE(parallelFor(begin, end, see, grain));
    Index expected = begin;
    for (const Index index : seen)
        EXPECT_EQ(index, expected++);
    EXPECT_EQ(expected, std::max(begin, end));

    std::map<Index, Index> blocks;
    const auto seeBlock = [&](Index first, Index last)
    {
        const std::lock_guard locker(mutex);
        EXPECT_TRUE(blocks.emplace(first, last).second);
    };
    EXPECT_TRUE(parallelFor(begin, end, seeBlock, grain));
    Index next = begin;
    for (const auto& [first, last] : blocks)
    {
        EXPECT_EQ(first, next);
        EXPECT_LT(first, last);
        EXPECT_TRUE(grain == 0 || static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first) <= grain);
        next = last;
    }
    EXPECT_EQ(next, std::max(begin, end));
}

TEST_P(LoopsOn, MeetEveryIndexOnce)
{
    for (const std::uint64_t grain : {0U, 1U, 7U, 1000U, 1'000'000U})
    {
        expectEachOnce<int>(0, 1000, grain);
        expectEachOnce<int>(0, 257, grain);
        expectEachOnce<int>(-300, 300, grain);
        expectEachOnce<int>(5, 6, grain);
        expectEachOnce<std::int8_t>(-128, 127, grain);
        expectEachOnce<std::uint8_t>(0, 255, grain);
        constexpr auto most = std::numeric_limits<std::uint64_t>::max();
        expectEachOnce<std::uint64_t>(most - 500, most, grain);
        constexpr auto least = std::numeric_limits<std::int64_t>::min();
        expectEachOnce<std::int64_t>(least, least + 500, grain);
    }
    expectEachOnce<std::uint64_t>(3, 10, std::numeric_limits<std::uint64_t>::max());
    for (const int end : {5, 4, -7})
        EXPECT_TRUE(parallelFor(5, end, [](int) { FAIL() << "no index"; }));
}

TEST_P(LoopsOn, TransformAndInvokeReachEverything)
{
    std::vector<int> input(10'000);
    std::iota(input.begin(), input.end(), -5'000);
    std::vector<std::string> output(input.size());
    EXPECT_TRUE(ky::concurrent::transform(input.begin(), input.end(), output.begin(),
                                          [](int value) { return std::to_string(value); }));
    for (std::size_t i = 0; i < input.size(); ++i)
        ASSERT_EQ(output[i], std::to_string(input[i]));

    std::atomic<int> sum{0};
    ky::concurrent::invoke([&] { sum += 1; }, [&] { sum += 20; }, [&] { sum += 300; }, [&] { sum += 4000; });
    ky::concurrent::invoke();
    EXPECT_EQ(sum, 4321);
}

TEST_P(LoopsOn, ReduceInTheOrderOfTheIndices)
{
    const auto text = [](int index) { return std::to_string(index) + ','; };
    std::string expected = ">";
    for (int index = -700; index < 700; ++index)
        expected += text(index);
    for (const std::uint64_t grain : {0U, 1U, 33U, 5000U})
        EXPECT_EQ(">" + reduce(-700, 700, std::string(), text, std::plus<>(), grain), expected);
    EXPECT_EQ(reduce(0, 0, std::string("none"), text, std::plus<>()), "none");
}

/// Floating-point sums depend on the order; the result is to depend on the numbers alone.
TEST(Loops, ReduceToTheSameBitsOnAnyNumberOfWorkers)
{
    std::vector<double> values(100'000);
    std::minstd_rand random(7);
    for (double& value : values)
        value = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 60) - 30);
    const auto add = [&](std::size_t first, std::size_t last)
    { return std::accumulate(values.data() + first, values.data() + last, 0.0); };
    const auto each = [&](std::size_t index) { return values[index]; };
    std::vector<double> sums;
    for (const unsigned workers : ky::test::workerCounts)
    {
        const PoolOf pool(workers);
        for (int repeated = 0; repeated < 5; ++repeated)
        {
            sums.push_back(reduce(std::size_t{0}, values.size(), 0.0, add, std::plus<>()));
            sums.push_back(reduce(std::size_t{0}, values.size(), 0.0, each, std::plus<>()));
        }
    }
    EXPECT_EQ(std::count(sums.begin(), sums.end(), sums.front()), std::ssize(sums));
}

/// Neighbouring results must not share a word, as the elements of a vector of bool do.
TEST_P(LoopsOn, ReduceBools)
{
    const auto yes = [](int) { return true; };
    for (int repeated = 0; repeated < 50; ++repeated)
        EXPECT_TRUE(reduce(0, 2000, true, yes, std::logical_and<>(), 1));
}

TEST_P(LoopsOn, HandOnTheExceptionWhenAllBodiesHaveEnded)
{
    for (const int guilty : {0, 1, 499, 999})
    {
        std::atomic<int> begun{0};
        std::atomic<int> ended{0};
        const auto body = [&](int index)
        {
            ++begun;
            if (index == guilty)
                throw std::out_of_range("index");
            std::this_thread::yield();
            ++ended;
        };
        EXPECT_THROW(parallelFor(0, 1000, body, 1), std::out_of_range);
        EXPECT_EQ(begun, ended + 1);
        expectEachOnce<int>(0, 100, 1);
    }
    EXPECT_THROW(parallelFor(0, 1000, [](int index) { throw index; }), int) << "each body throws";
}

int fibonacci(int n)
{
    if (n < 2)
        return n;
    int left = 0;
    int right = 0;
    ky::concurrent::invoke([&] { left = fibonacci(n - 1); }, [&] { right = fibonacci(n - 2); });
    return left + right;
}

TEST_P(LoopsOn, MayBeNestedAndRecursive)
{
    EXPECT_EQ(fibonacci(16), 987);
    std::atomic<int> bodies{0};
    const auto count = [&](int) { ++bodies; };
    const auto inner = [&](int) { parallelFor(0, 20, count, 1); };
    const auto outer = [&](int) { parallelFor(0, 20, inner, 1); };
    parallelFor(0, 20, outer);
    EXPECT_EQ(bodies, 8000);
}

TEST_P(LoopsOn, MayComeFromManyThreadsAtOnce)
{
    const std::uint64_t rounds = ky::test::isSoak() ? 2000 : 60;
    std::atomic<std::uint64_t> sum{0};
    const auto one = [](unsigned) { return 1U; };
    const auto digit = [&](unsigned index) { return reduce(0U, index % 10, 0U, one, std::plus<>()); };
    const auto add = [&](int)
    {
        for (std::uint64_t round = 0; round < rounds; ++round)
            sum += reduce(0U, 1000U, std::uint64_t{0}, digit, std::plus<>(), 10);
    };
    ky::test::Threads(8, add).join();
    const std::uint64_t wanted = 8 * rounds * 4500;
    ky::test::account("worker pool", {wanted, "indices of nested loops on 8 threads"}, {},
                      {std::max(sum.load(), wanted) - std::min(sum.load(), wanted), "indices"});
}

/// Keeps what it was told.
struct Recorder : ky::kyProgressNotifier
{
    std::vector<float> told;
    std::thread::id teller;
    bool isToldByOthers = false;
    float throwAt = 2;

protected:
    void onProgressChanged(float progress) override
    {
        isToldByOthers |= std::this_thread::get_id() != teller;
        told.push_back(progress);
        if (progress >= throwAt)
            throw std::runtime_error("hook");
    }
};

TEST_P(LoopsOn, ReportProgressAsOneStepOnTheCallingThread)
{
    Recorder recorder;
    recorder.teller = std::this_thread::get_id();
    recorder.beginStepGroup(2);
    const auto nothing = [](auto...) {};
    EXPECT_TRUE(parallelFor(
        0, 500, [](int) {}, 1, &recorder));
    EXPECT_FLOAT_EQ(recorder.getGlobalProgress(), 0.5F);
    EXPECT_TRUE(std::is_sorted(recorder.told.begin(), recorder.told.end()));
    EXPECT_FALSE(recorder.isToldByOthers);
    EXPECT_TRUE(GetParam() != 0 || recorder.told.size() == 500U) << recorder.told.size();
    recorder.changeCurrentStep(1, 1);
    EXPECT_TRUE(ky::concurrent::invoke(&recorder, nothing, nothing));
    EXPECT_FLOAT_EQ(recorder.getGlobalProgress(), 1);
}

TEST_P(LoopsOn, BeginNoBlockAfterACancellation)
{
    Recorder recorder;
    std::atomic<int> bodies{0};
    const auto body = [&](int index)
    {
        if (index == 100)
            recorder.cancelJob();
        ++bodies;
    };
    EXPECT_FALSE(parallelFor(0, 100'000'000, body, 1, &recorder));
    EXPECT_GT(bodies, 0) << "the one that cancels";
    EXPECT_LT(bodies, 100'000'000);
    EXPECT_FLOAT_EQ(recorder.getGlobalProgress(), 1) << "the group has been ended";

    bodies = 0;
    const auto one = [](int) { return 1; };
    EXPECT_FALSE(parallelFor(0, 1000, body, 1, &recorder));
    EXPECT_EQ(reduce(0, 1000, 0, one, std::plus<>(), 0, &recorder), std::nullopt);
    EXPECT_TRUE(parallelFor(0, 0, body, 1, &recorder)) << "there was nothing left to do";
    EXPECT_EQ(bodies, 0);
    recorder.enableJob();
    EXPECT_EQ(reduce(0, 1000, 0, one, std::plus<>(), 0, &recorder), 1000);
}

TEST_P(LoopsOn, HandOnWhatTheNotifierThrows)
{
    Recorder recorder;
    recorder.throwAt = 0.25F;
    bool hasThrown = false;
    try
    {
        parallelFor(
            0, 1000, [](int) { std::this_thread::yield(); }, 1, &recorder);
    }
    catch (const std::runtime_error&)
    {
        hasThrown = true;
    }
    EXPECT_TRUE(hasThrown || GetParam() != 0) << "workers may leave nothing to the calling thread to report";
    expectEachOnce<int>(0, 100, 1);
}

} // namespace
