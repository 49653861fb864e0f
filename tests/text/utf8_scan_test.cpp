// SPDX-License-Identifier: MIT
#include "text/utf8_portable.h"
#include "text/utf8_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

using namespace ky::impl;

/// The table of well-formed byte sequences of the Unicode standard.
struct Sequence
{
    unsigned leadFrom, leadTo, secondFrom, secondTo;
    std::size_t length;
};
constexpr Sequence sequences[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

std::size_t sequenceLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (const Sequence& s : sequences)
    {
        if (byte(0) < s.leadFrom || byte(0) > s.leadTo)
            continue;
        if (text.size() < s.length || (s.length > 1 && (byte(1) < s.secondFrom || byte(1) > s.secondTo)))
            return 0;
        for (std::size_t i = 2; i < s.length; ++i)
            if (byte(i) < 0x80 || byte(i) > 0xBF)
                return 0;
        return s.length;
    }
    return 0;
}

struct Expected
{
    std::size_t prefix = 0;
    std::size_t count = 0;
};

Expected expectedOf(std::string_view text)
{
    Expected result;
    while (result.prefix < text.size())
    {
        const std::size_t length = sequenceLength(text.substr(result.prefix));
        if (length == 0)
            break;
        result.prefix += length;
        ++result.count;
    }
    return result;
}

::testing::AssertionResult agrees(const std::string& text)
{
    const Expected expected = expectedOf(text);
    const bool good = expected.prefix == text.size();
    const auto isRight = [&](std::size_t prefix, const Utf8Count& count) {
        return prefix == expected.prefix && count.wellFormed == good && count.codePoints == (good ? expected.count : 0);
    };
    if (isRight(validUtf8Prefix(text.data(), text.size()), countUtf8(text.data(), text.size())) &&
        isRight(portableUtf8Prefix(text.data(), text.size()), portableCountUtf8(text.data(), text.size())))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << ::testing::PrintToString(text) << ": the prefix is not " << expected.prefix;
}

TEST(Utf8Scan, EveryKindOfFourBytesAcrossBlockBorders)
{
    const unsigned char kinds[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC1, 0xC2,
                                   0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xF0, 0xF1, 0xF4, 0xF5, 0xFF};
    for (const std::size_t offset : {0U, 14U, 62U})
    {
        std::string text(130, '-');
        for (const unsigned char a : kinds)
            for (const unsigned char b : kinds)
                for (const unsigned char c : kinds)
                    for (const unsigned char d : kinds)
                    {
                        const unsigned char bytes[] = {a, b, c, d};
                        std::copy_n(bytes, 4, text.begin() + static_cast<std::ptrdiff_t>(offset));
                        ASSERT_TRUE(agrees(text)) << offset;
                    }
    }
}

TEST(Utf8Scan, EveryPairAndEveryCut)
{
    for (unsigned pair = 0; pair < 0x10000; ++pair)
    {
        std::string text(17, 'x');
        text[15] = static_cast<char>(pair >> 8);
        text[16] = static_cast<char>(pair & 0xFF);
        ASSERT_TRUE(agrees(text)) << pair;
    }
    std::string mixed;
    for (int i = 0; i < 20; ++i)
        mixed += "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";
    for (std::size_t size = 0; size <= mixed.size(); ++size)
        for (std::size_t from = 0; from <= size && from < 12; ++from)
            ASSERT_TRUE(agrees(mixed.substr(from, size - from))) << from << " " << size;
}

TEST(Utf8Scan, RandomMutationsAgreeWithTheTable)
{
    std::uint32_t random = 12345;
    const auto next = [&random](std::size_t limit)
    {
        random = random * 1664525U + 1013904223U;
        return static_cast<std::size_t>(random >> 8) % limit;
    };
    const char* const pieces[] = {
        "a", "bcdefghijklmnopqrstuvwxyz", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD"};
    for (int round = 0; round < 20000; ++round)
    {
        std::string text;
        for (std::size_t left = next(60); left > 0; --left)
            text += pieces[next(std::size(pieces))];
        for (std::size_t left = text.empty() ? 0 : next(3); left > 0; --left)
            text[next(text.size())] = static_cast<char>(next(256));
        ASSERT_TRUE(agrees(text));
    }
}

} // namespace
