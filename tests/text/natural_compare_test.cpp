// SPDX-License-Identifier: MIT
// The order itself, over a collation made for the test: letters by alphabet first, capitals later, accents in between.
#include "text/natural_compare.h"

#include <algorithm>
#include <cwctype>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace
{

using ky::impl::Collation;
using ky::impl::NaturalOrder;

constexpr wchar_t eAcute = 0xE9;

/// Three levels: base letter, accent, case. Control characters have no weight but on the last. Optionally "ch" is a
/// letter behind c, and the dash is ignored on the first level.
class SmallCollation : public Collation
{
public:
    SmallCollation(bool contraction, bool ignoredDash) : mContraction(contraction), mIgnoredDash(ignoredDash) {}

    void weigh(const std::wstring& text, std::wstring& weights) const override
    {
        std::wstring base;
        std::wstring accents;
        std::wstring cases;
        for (std::size_t i = 0; i < text.size(); ++i)
        {
            const wchar_t letter = lower(text[i]);
            cases += letter == text[i] ? L'\x2' : L'\x3';
            if (text[i] < L' ' || (mIgnoredDash && letter == L'-'))
                continue;
            accents += letter == eAcute ? L'\x3' : L'\x2';
            if (mContraction && letter == L'c' && i + 1 < text.size() && lower(text[i + 1]) == L'h')
            {
                base += static_cast<wchar_t>(2 * L'c' + 1);
                ++i;
                continue;
            }
            base += static_cast<wchar_t>(2 * (letter == eAcute ? L'e' : letter));
        }
        weights = base + levelSeparator + accents + levelSeparator + cases;
    }

    wchar_t lower(wchar_t character) const override
    {
        return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
    }

private:
    bool mContraction;
    bool mIgnoredDash;
};

int compareAsciiOr(const NaturalOrder& order, const std::string& a, const std::string& b, bool caseSensitive, int other)
{
    int result = 0;
    return order.compareAscii(a, b, caseSensitive, result) ? result : other;
}

TEST(NaturalOrder, ComparesLevelByLevelAndNumbersByValue)
{
    const SmallCollation collation(false, false);
    const NaturalOrder order(collation);
    const std::wstring e(1, eAcute);
    struct Case
    {
        std::wstring a;
        std::wstring b;
        int sensitive;
        int insensitive;
    };
    const std::wstring nines(5000, L'9');
    const std::wstring zeros(300, L'0');
    const Case cases[] = {
        {L"", L"", 0, 0},
        {L"", L"a", -1, -1},
        {L"file2", L"file10", -1, -1},
        {L"File10", L"file2", 1, 1},
        {L"file2", L"File2", -1, 0},
        {L"file2a", L"File2b", -1, -1},
        {L"r" + e + L"sum2", L"resum10", -1, -1},
        {L"resum2", L"r" + e + L"sum2", -1, -1},
        {L"R" + e + L"sum", L"RESUM", 1, 1},
        {L"file.txt", L"file2.txt", -1, -1},
        {L"file2.txt", L"filea.txt", -1, -1},
        {L"2a", L"a2", -1, -1},
        {L"1.10", L"1.9", 1, 1},
        {L"a007", L"a7", 0, 0},
        {L"a007b", L"a7a", 1, 1},
        {L"a0", L"a", 1, 1},
        {L"a0", L"a00", 0, 0},
        {L"x" + nines, L"x1" + std::wstring(5000, L'0'), -1, -1},
        {L"x" + zeros + L"12", L"x" + nines, -1, -1},
        {L"x18446744073709551616", L"x18446744073709551617", -1, -1},
        {std::wstring(L"a\0b", 3), std::wstring(L"a\0c", 3), -1, -1},
        {std::wstring(L"a\0", 2), std::wstring(L"a\1", 2), -1, -1},
        {std::wstring(1, static_cast<wchar_t>(0xD800)), std::wstring(1, static_cast<wchar_t>(0xDFFF)), -1, -1},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(order.compare(c.a, c.b, true), c.sensitive) << testing::PrintToString(c.a.substr(0, 40));
        EXPECT_EQ(order.compare(c.b, c.a, true), -c.sensitive) << testing::PrintToString(c.a.substr(0, 40));
        EXPECT_EQ(order.compare(c.a, c.b, false), c.insensitive) << testing::PrintToString(c.a.substr(0, 40));
        EXPECT_EQ(order.compare(c.b, c.a, false), -c.insensitive) << testing::PrintToString(c.a.substr(0, 40));
    }
}

std::string randomName(std::mt19937& random)
{
    static const std::string alphabet = "aAbBcChH-_. 0012ez\t";
    std::string name(random() % 8, ' ');
    std::generate(name.begin(), name.end(), [&random] { return alphabet[random() % alphabet.size()]; });
    return name;
}

TEST(NaturalOrder, AsciiAnswersAreThoseOfTheKeys)
{
    std::mt19937 random(7);
    for (const bool ignoredDash : {false, true})
    {
        const SmallCollation collation(false, ignoredDash);
        const NaturalOrder order(collation);
        int answered = 0;
        for (int i = 0; i < 30000; ++i)
        {
            const std::string start = i % 4 < 2 ? "" : randomName(random) + randomName(random) + randomName(random);
            const std::string a = start + randomName(random);
            const std::string b = start + randomName(random);
            const bool caseSensitive = i % 2 == 0;
            int result = 0;
            if (!order.compareAscii(a, b, caseSensitive, result))
                continue;
            ++answered;
            const int expected =
                order.compare(std::wstring(a.begin(), a.end()), std::wstring(b.begin(), b.end()), caseSensitive);
            ASSERT_EQ(result, expected) << '"' << a << "\" \"" << b << '"';
        }
        EXPECT_GT(answered, 25000);
    }
}

TEST(NaturalOrder, AsciiIsLeftToTheKeysWhereItIsNotSimple)
{
    constexpr int keys = 7;
    const SmallCollation simple(false, false);
    const NaturalOrder order(simple);
    EXPECT_EQ(compareAsciiOr(order, "a2", "a10", true, keys), -1);
    EXPECT_EQ(compareAsciiOr(order, "A2", "a02", false, keys), 0);
    EXPECT_EQ(compareAsciiOr(order, "A2", "a2", true, keys), keys) << "the case is beyond the first level";
    EXPECT_EQ(compareAsciiOr(order, "abcdefgh\xC3\xA9", "b", true, keys), keys);
    EXPECT_EQ(compareAsciiOr(order, std::string("abcdefgh\0", 9), "b", true, keys), keys);
    const SmallCollation contracting(true, false);
    EXPECT_EQ(compareAsciiOr(NaturalOrder(contracting), "a2", "a10", true, keys), keys);
    EXPECT_EQ(NaturalOrder(contracting).compare(L"ch2", L"cz10", true), 1);
}

} // namespace
