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
    static const std::vector<std::string> pieces = {"a",
                                                    "A",
                                                    "b",
                                                    "Z",
                                                    "ch",
                                                    "aa",
                                                    "0",
                                                    "00",
                                                    "1",
                                                    "9",
                                                    "10",
                                                    "99999999999999999999",
                                                    " ",
                                                    "-",
                                                    "_",
                                                    ".",
                                                    "'",
                                                    "\t",
                                                    "\xC3\xA4",
                                                    "\xC3\x84",
                                                    "\xC3\xA9",
                                                    "e\xCC\x81",
                                                    "\xC3\x9F",
                                                    "\xD0\x96",
                                                    "\xE4\xB8\xAD",
                                                    "\xF0\x9F\x98\x80",
                                                    "\xFF",
                                                    "\xED\xA0\x80",
                                                    "\xC2\xB7",
                                                    "l",
                                                    "\xCC\x81",
                                                    "\xEF\xBF\xBE",
                                                    "\xE2\x80\x8D"};
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
