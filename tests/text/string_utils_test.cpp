// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using S = ky::kyStringUtils;
using Texts = std::vector<std::string>;
using ::testing::ElementsAre;

const std::string allSpace = " \t\n\v\f\r";

TEST(StringUtils, TrimsWhiteSpaceOfTheClassicLocaleOnly)
{
    struct Case
    {
        std::string text, left, right, both, collapsed;
    };
    const Case cases[] = {
        {"", "", "", "", ""},
        {allSpace, "", "", "", ""},
        {allSpace + "a" + allSpace, "a" + allSpace, allSpace + "a", "a", "a"},
        {"  a\t b ", "a\t b ", "  a\t b", "a\t b", "a\tb"},
        {"a \t b\n\nc", "a \t b\n\nc", "a \t b\n\nc", "a \t b\n\nc", "a b\nc"},
        {"\xA0 x \x85", "\xA0 x \x85", "\xA0 x \x85", "\xA0 x \x85", "\xA0 x \x85"},
        {std::string(" \0 ", 3), std::string("\0 ", 2), std::string(" \0", 2), std::string("\0", 1),
         std::string("\0", 1)},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(::testing::PrintToString(c.text));
        std::string text = c.text;
        EXPECT_EQ(&S::ltrim(text), &text);
        EXPECT_EQ(text, c.left);
        EXPECT_EQ(S::rtrim(text = c.text), c.right);
        EXPECT_EQ(S::trim(text = c.text), c.both);
        EXPECT_EQ(S::trimAndRemoveConsecutiveSpaces(text = c.text), c.collapsed);
    }
}

TEST(StringUtils, FoldsAsciiLettersOnly)
{
    std::string every;
    for (int byte = 0; byte < 256; ++byte)
        every.push_back(static_cast<char>(byte));
    std::string upper = every;
    std::string lower = every;
    S::toUpper(upper);
    S::toLower(lower);
    for (std::size_t i = 0; i < every.size(); ++i)
    {
        const bool isUpper = i >= 65 && i <= 90;
        const bool isLower = i >= 97 && i <= 122;
        EXPECT_EQ(static_cast<unsigned char>(upper[i]), isLower ? i - 32 : i);
        EXPECT_EQ(static_cast<unsigned char>(lower[i]), isUpper ? i + 32 : i);
    }
}

TEST(StringUtils, SecureClearLeavesNothingInTheBuffer)
{
    for (const std::size_t length : {5U, 15U, 200U, 5000U})
    {
        std::string secret(length, 'x');
        secret.resize(length / 2);
        const char* const buffer = secret.data();
        const std::size_t capacity = secret.capacity();
        S::SecureClear(secret);
        EXPECT_TRUE(secret.empty());
        ASSERT_EQ(secret.data(), buffer);
        ASSERT_EQ(secret.capacity(), capacity);
        const volatile char* const bytes = buffer;
        for (std::size_t i = 0; i < capacity; ++i)
            ASSERT_EQ(bytes[i], '\0') << i;
    }
}

TEST(StringUtils, ReplacesEveryOccurrenceOnce)
{
    struct Case
    {
        std::string text, from, to, result;
        int count;
    };
    const Case cases[] = {
        {"aaaa", "aa", "a", "aa", 2},
        {"aaaaa", "aa", "b", "bba", 2},
        {"abcabc", "b", "xyz", "axyzcaxyzc", 2},
        {"abcabc", "abc", "", "", 2},
        {"xabcyabcz", "abc", "12", "x12y12z", 2},
        {"xabcyabcz", "abc", "123", "x123y123z", 2},
        {"a", "a", "aa", "aa", 1},
        {"aa", "a", "aab", "aabaab", 2},
        {"abc", "x", "y", "abc", 0},
        {"abc", "abcd", "y", "abc", 0},
        {"", "x", "y", "", 0},
        {"abc", "", "y", "abc", 0},
        {std::string("a\0b\0", 4), std::string("\0", 1), "00", "a00b00", 2},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text + ": " + c.from + " by " + c.to);
        std::string text = c.text;
        EXPECT_EQ(S::ReplaceAllOccurences(text, c.from, c.to), c.count);
        EXPECT_EQ(text, c.result);
        EXPECT_EQ(S::replace(text = c.text, c.from, c.to), c.result);
        std::wstring wide(c.text.begin(), c.text.end());
        S::replace(wide, std::wstring(c.from.begin(), c.from.end()), std::wstring(c.to.begin(), c.to.end()));
        EXPECT_EQ(wide, std::wstring(c.result.begin(), c.result.end()));
    }
}

TEST(StringUtils, ReplacesAnyNumberOfPlaces)
{
    for (const std::size_t places : {63U, 64U, 65U, 4095U, 4096U, 4097U, 20000U})
        for (const std::string& to : {std::string(), std::string("-"), std::string("<longer>")})
        {
            std::string text;
            std::string expected;
            for (std::size_t i = 0; i < places; ++i)
            {
                const std::string between = std::to_string(i * i);
                text += between + "xy";
                expected += between + to;
            }
            std::wstring wide(text.begin(), text.end());
            EXPECT_EQ(S::ReplaceAllOccurences(text, "xy", to), static_cast<int>(places));
            EXPECT_TRUE(text == expected) << places << " by " << to;
            S::replace(wide, L"xy", std::wstring(to.begin(), to.end()));
            EXPECT_TRUE(wide == std::wstring(expected.begin(), expected.end())) << places << " by " << to;
        }
}

TEST(StringUtils, ReplaceTakesTheTextItselfAsArgument)
{
    const std::string x = "x";
    std::string text = "aba";
    EXPECT_EQ(S::replace(text, text, x), "x");
    EXPECT_EQ(S::replace(text = "aba", text, text), "aba");
    EXPECT_EQ(S::replace(text = "aba", "a", text), "abababa");
    EXPECT_EQ(S::replace(text = "a", "a", text), "a");
}

TEST(StringUtils, FindsAndCompares)
{
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    struct Case
    {
        std::string text, sub;
        std::size_t exact, folded;
        bool starts, ends;
    };
    const Case cases[] = {
        {"Hello hello", "hello", 6, 0, false, true},
        {"Hello", "Hello", 0, 0, true, true},
        {"Hello", "HELLOO", none, none, false, false},
        {"", "a", none, none, false, false},
        {"", "", 0, 0, true, true},
        {"abc", "", 0, 0, true, true},
        {"abC", "bc", none, 1, false, false},
        {"\xC3\x84z", "\xC3\xA4", none, none, false, false},
        {std::string("a\0b", 3), std::string("\0b", 2), 1, 1, false, true},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text + " / " + c.sub);
        EXPECT_EQ(S::FindCaseSensitive(c.text, c.sub), c.exact);
        EXPECT_EQ(S::FindCaseInsensitive(c.text, c.sub), c.folded);
        EXPECT_EQ(S::Contains(c.text, c.sub, true), c.exact != none);
        EXPECT_EQ(S::Contains(c.text, c.sub, false), c.folded != none);
        EXPECT_EQ(S::StartsWith(c.text, c.sub), c.starts);
        EXPECT_EQ(S::endsWith(c.text, c.sub), c.ends);
    }
}

TEST(StringUtils, SplitsLikeALineReaderOrKeepsEverythingInPlace)
{
    struct Case
    {
        std::string text;
        Texts all, nonEmpty, inPlace;
    };
    const Case cases[] = {
        {"", {}, {}, {""}},
        {",", {""}, {}, {"", ""}},
        {"a", {"a"}, {"a"}, {"a"}},
        {"a,", {"a"}, {"a"}, {"a", ""}},
        {",a", {"", "a"}, {"a"}, {"", "a"}},
        {"a,,b", {"a", "", "b"}, {"a", "b"}, {"a", "", "b"}},
        {",,", {"", ""}, {}, {"", "", ""}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(S::Split(c.text, ',', false), c.all);
        EXPECT_EQ(S::Split(c.text, ',', true), c.nonEmpty);
        Texts appended = {"before"};
        appended.reserve(20);
        EXPECT_EQ(&S::Split(c.text, ',', appended, false), &appended);
        EXPECT_EQ(appended.size(), c.all.size() + 1);
        EXPECT_EQ(appended.front(), "before");
        std::string buffer = c.text;
        std::vector<char*> pointers(3, nullptr);
        S::Split(buffer.data(), ',', pointers);
        EXPECT_EQ(Texts(pointers.begin(), pointers.end()), c.inPlace);
        for (const char* token : pointers)
            EXPECT_TRUE(token >= buffer.data() && token <= buffer.data() + buffer.size());
    }
    EXPECT_THAT(S::Split(std::string("a\0b\0", 4), '\0', false), ElementsAre("a", "b"));
    std::vector<char*> pointers(1, nullptr);
    char whole[] = "a,b";
    S::Split(whole, '\0', pointers);
    EXPECT_THAT(pointers, ElementsAre(whole));
    S::Split(nullptr, ',', pointers);
    EXPECT_TRUE(pointers.empty());
}

TEST(StringUtils, SplitsTakeAnElementOfTheirOutput)
{
    Texts out = {"a,b,c,d,e,f,g,h"};
    out.shrink_to_fit();
    S::Split(out[0], ',', out, false);
    ASSERT_EQ(out.size(), 9U);
    EXPECT_EQ(out[8], "h");
    out = {"k=v"};
    out.shrink_to_fit();
    EXPECT_THAT(S::SplitFirst(out[0], '=', out), ElementsAre("k=v", "k", "v"));
}

TEST(StringUtils, SplitFirstCutsOnce)
{
    EXPECT_THAT(S::SplitFirst("a=b=c", '='), ElementsAre("a", "b=c"));
    EXPECT_THAT(S::SplitFirst("=", '='), ElementsAre("", ""));
    EXPECT_THAT(S::SplitFirst("abc", '='), ElementsAre("abc"));
    EXPECT_THAT(S::SplitFirst("", '='), ElementsAre(""));
}

TEST(StringUtils, EscapesXml)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"plain \xC3\xA9 text", "plain \xC3\xA9 text"},
        {"\"&'<>", "&quot;&amp;&apos;&lt;&gt;"},
        {"a<b&&c", "a&lt;b&amp;&amp;c"},
        {"&amp;", "&amp;amp;"},
        {std::string("\0<", 2), std::string("\0&lt;", 5)},
    };
    for (const auto& [plain, escaped] : cases)
    {
        std::string text = plain;
        EXPECT_EQ(S::EscapeXmlString(text), escaped);
    }
}

TEST(StringUtils, OnlyThreeWordsAreFalse)
{
    for (const char* text : {"f", "F", "false", "FALSE", "  FALSE  ", "\tFalse\r\n", "0", " 0"})
        EXPECT_FALSE(S::parseBool(text)) << text;
    EXPECT_FALSE(S::parseBool(nullptr));
    for (const char* text : {"", " ", "no", "off", "n", "00", "0.0", "-0", "fa lse", "falsee", "1", "true"})
        EXPECT_TRUE(S::parseBool(text)) << text;
}

TEST(StringUtils, HundredMegabytesAreNoProblem)
{
    const std::size_t size = 100U << 20;
    std::string text(size, ',');
    EXPECT_TRUE(S::Split(text, ',', true).empty());
    EXPECT_EQ(S::ReplaceAllOccurences(text, ",,", "<"), static_cast<int>(size / 2));
    EXPECT_EQ(S::EscapeXmlString(text).size(), size * 2);
    EXPECT_TRUE(S::IsUtf8String(text));
    EXPECT_EQ(S::CountUtf8Char(text), size * 2);
    S::SecureClear(text);
    EXPECT_TRUE(text.empty());
}

} // namespace
