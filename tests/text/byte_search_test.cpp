// SPDX-License-Identifier: MIT
#include "text/byte_search.h"
#include "text/vector_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace ky::impl;

std::vector<std::size_t> found(const std::string& text, const std::string& needle)
{
    std::vector<std::size_t> places;
    ByteSearch search(text, needle);
    for (std::size_t place = search.next(); place != search.npos; place = search.next())
        places.push_back(place);
    EXPECT_EQ(search.next(), search.npos);
    return places;
}

std::vector<std::size_t> expected(const std::string& text, const std::string& needle)
{
    std::vector<std::size_t> places;
    for (std::size_t at = 0; (at = text.find(needle, at)) != std::string::npos; at += needle.size())
        places.push_back(at);
    return places;
}

TEST(ByteSearch, FindsWhatTheStringFindsAtEveryLengthAndDensity)
{
    std::uint32_t random = 7;
    const auto next = [&random](std::size_t limit)
    {
        random = random * 1664525U + 1013904223U;
        return static_cast<std::size_t>(random >> 8) % limit;
    };
    const std::string letters = "ab\xFF";
    for (int round = 0; round < 20000; ++round)
    {
        std::string text(next(300), 'x');
        for (char& letter : text)
            letter = next(4) == 0 ? 'x' : letters[next(1 + next(letters.size()))];
        std::string needle(1 + next(next(8) == 0 ? 100 : 4), 'a');
        for (char& letter : needle)
            letter = letters[next(1 + next(letters.size()))];
        ASSERT_EQ(found(text, needle), expected(text, needle)) << text << " / " << needle;
    }
}

TEST(ByteSearch, VectorMaskAgreesWithThePortableOne)
{
    const VectorText* const vector = vectorText();
    if (vector == nullptr)
        GTEST_SKIP() << "no vector code for this processor";
    std::string text;
    for (unsigned i = 0; i < 400; ++i)
        text.push_back(static_cast<char>((i * i) >> 3));
    for (std::size_t at = 0; at + 64 + 5 < text.size(); ++at)
        for (unsigned byte = 0; byte < 256; ++byte)
        {
            const char first = static_cast<char>(byte);
            for (const std::size_t distance : {0U, 5U})
            {
                const char last = distance == 0 ? first : text[at + 20 + distance];
                ASSERT_EQ(vector->matchMask(text.data() + at, first, text.data() + at + distance, last),
                          portableMatchMask(text.data() + at, first, text.data() + at + distance, last, 64));
            }
        }
}

} // namespace
