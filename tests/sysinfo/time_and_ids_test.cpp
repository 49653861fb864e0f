// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <clocale>

namespace
{

using ky::kySystemUtils;

TEST(Time, ClocksAgreeWithTheStandardOnes)
{
    const auto before =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    const long long ms = kySystemUtils::GetMSecElapsedSinceEpoch();
    const long long seconds = kySystemUtils::GetSecElapsedSinceEpoch();
    const auto after =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    EXPECT_LE(before - 50, ms) << "the system's tick may lag by some milliseconds";
    EXPECT_LE(ms, after + 50);
    EXPECT_LE(ms / 1000, seconds);
    const long long base = kySystemUtils::GetTimeBaseMs();
    EXPECT_GT(base, 0);
    EXPECT_LE(base, kySystemUtils::GetTimeBaseMs());
    EXPECT_LE(base / 1000, kySystemUtils::GetTimeBaseSec());
}

TEST(Time, FormatsUnderTheCLocaleWithinEightyBytes)
{
    const std::string year = kySystemUtils::GetCurrentTimeAsString("%Y", false);
    ASSERT_EQ(year.size(), 4u);
    EXPECT_GE(std::stoi(year), 2021);
    const std::string text = kySystemUtils::GetCurrentTimeAsString("%a %b %d %H:%M:%S %Y", true);
    EXPECT_EQ(text.size(), 24u) << text;
    EXPECT_EQ(kySystemUtils::GetCurrentTimeAsString(std::string(79, 'x').c_str(), true).size(), 79u);
    EXPECT_EQ(kySystemUtils::GetCurrentTimeAsString(std::string(80, 'x').c_str(), true), "");
    EXPECT_EQ(kySystemUtils::GetCurrentTimeAsString("", true), "");
    EXPECT_EQ(kySystemUtils::GetCurrentTimeAsString(nullptr, true), "");
}

using UuidBits = std::array<std::uint64_t, 2>;

UuidBits bitsOf(const std::string& digits)
{
    return {std::stoull(digits.substr(0, 16), nullptr, 16), std::stoull(digits.substr(16), nullptr, 16)};
}

TEST(Uuid, IsRandomVersionFourInTheDocumentedForm)
{
    std::vector<UuidBits> all(1000000);
    UuidBits everSet = {};
    UuidBits alwaysSet = {~0ULL, ~0ULL};
    for (UuidBits& bits : all)
    {
        const std::string plain = kySystemUtils::CreateUuid(false);
        ASSERT_EQ(plain.size(), 32u);
        ASSERT_EQ(plain.find_first_not_of("0123456789abcdef"), std::string::npos) << plain;
        bits = bitsOf(plain);
        for (std::size_t half = 0; half < 2; ++half)
        {
            everSet[half] |= bits[half];
            alwaysSet[half] &= bits[half];
        }
    }
    // Version 4 and the variant of the two highest bits; every other bit is 0 sometimes and 1 sometimes.
    EXPECT_EQ(everSet, (UuidBits{0xffffffffffff4fff, 0xbfffffffffffffff}));
    EXPECT_EQ(alwaysSet, (UuidBits{0x0000000000004000, 0x8000000000000000}));
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());

    const std::string braced = kySystemUtils::CreateUuid(true);
    ASSERT_EQ(braced.size(), 38u);
    EXPECT_EQ(braced.front(), '{');
    EXPECT_EQ(braced.back(), '}');
    for (const std::size_t dash : {9u, 14u, 19u, 24u})
        EXPECT_EQ(braced[dash], '-') << braced;
}

} // namespace
