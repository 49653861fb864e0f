// SPDX-License-Identifier: MIT
// What makes a comparison a strict weak order, tried on random texts.
#pragma once

#include <ky/kyStringUtils.h>

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace ky::test
{

inline std::string randomText(std::mt19937& random)
{
    static const std::vector<std::string> pieces =
        kyStringUtils::Split("a|A|b|Z|ch|aa|0|00|1|9|10|99999999999999999999| |-|_|.|'|\t|\u00E4|\u00C4|\u00E9|e\u0301|"
                             "\u00DF|\u0416|\u4E2D|\U0001F600|\xFF|\xED\xA0\x80|\u00B7|l|\u0301|\uFFFE|\u200D",
                             '|');
    std::string text;
    for (auto left = random() % 6; left > 0; --left)
        text += pieces[random() % pieces.size()];
    return text;
}

/// Number of broken laws, the first of which is reported.
inline int brokenOrderLaws(int rounds)
{
    std::mt19937 random(11);
    int broken = 0;
    for (int i = 0; i < rounds; ++i)
    {
        const std::array<std::string, 3> t = {randomText(random), randomText(random), randomText(random)};
        std::array<int, 2> ab;
        for (const bool caseSensitive : {false, true})
        {
            const auto compare = [&](std::size_t x, std::size_t y)
            { return kyStringUtils::CompareUTF8Natural(t[x], t[y], caseSensitive); };
            const int first = compare(0, 1);
            const int second = compare(1, 2);
            const int through = compare(0, 2);
            ab[caseSensitive ? 1 : 0] = first;
            const bool chained = first == second || second == 0 ? through == first : first != 0 || through == second;
            if (compare(0, 0) == 0 && compare(1, 0) == -first && chained)
                continue;
            if (broken++ == 0)
                ADD_FAILURE() << testing::PrintToString(t) << (caseSensitive ? " sensitive" : " insensitive");
        }
        if (ab[1] == 0 && ab[0] != 0 && broken++ == 0)
            ADD_FAILURE() << testing::PrintToString(t) << " differ only without regard to case";
    }
    return broken;
}

} // namespace ky::test
