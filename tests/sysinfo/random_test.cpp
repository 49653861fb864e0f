// SPDX-License-Identifier: MIT
#include "concurrency/threads.h"

#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace
{

using ky::kySystemUtils;
using ky::test::Threads;

constexpr std::size_t draws = 20000;

std::vector<int> drawn()
{
    std::vector<int> numbers(draws);
    std::generate(numbers.begin(), numbers.end(), &kySystemUtils::Rand);
    return numbers;
}

std::size_t repeats(std::vector<int> numbers)
{
    std::sort(numbers.begin(), numbers.end());
    return static_cast<std::size_t>(numbers.end() - std::unique(numbers.begin(), numbers.end()));
}

TEST(Rand, GivesThirtyOneEvenBits)
{
    const std::vector<int> numbers = drawn();
    EXPECT_GE(*std::min_element(numbers.begin(), numbers.end()), 0);
    for (int bit = 0; bit < 31; ++bit)
    {
        const auto ones = std::count_if(numbers.begin(), numbers.end(), [bit](int n) { return (n >> bit & 1) != 0; });
        // Ten standard deviations.
        EXPECT_NEAR(static_cast<double>(ones), draws / 2.0, 710) << bit;
    }
    EXPECT_LT(repeats(numbers), 10u);
}

TEST(Rand, HasASequenceOfItsOwnInEveryThread)
{
    std::vector<std::vector<int>> sequences(8);
    Threads(8, [&](int thread) { sequences[static_cast<std::size_t>(thread)] = drawn(); }).join();
    std::vector<int> all;
    for (const std::vector<int>& sequence : sequences)
        all.insert(all.end(), sequence.begin(), sequence.end());
    // By chance some six of 160 000 are met again; two equal sequences would bring 20 000.
    EXPECT_LT(repeats(all), 60u);
}

std::atomic<int> sCalls{0};
int counting() { return ++sCalls; }
int minusOne() { return -1; }

TEST(Rand, TakesAnotherGenerator)
{
    sCalls = 0;
    EXPECT_EQ(kySystemUtils::SetRandGenerator(&counting), nullptr);
    Threads(4, [](int) { EXPECT_GT(kySystemUtils::Rand(), 0); }).join();
    EXPECT_EQ(kySystemUtils::Rand(), 5);
    EXPECT_EQ(kySystemUtils::SetRandGenerator(&minusOne), &counting);
    EXPECT_EQ(kySystemUtils::Rand(), -1);
    EXPECT_EQ(kySystemUtils::SetRandGenerator(nullptr), &minusOne);
    EXPECT_LT(repeats(drawn()), 10u);
    EXPECT_EQ(sCalls, 5);
}

} // namespace
