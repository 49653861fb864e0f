// SPDX-License-Identifier: MIT
// The path automaton against std::regex.
#include "variant/path_pattern.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

using ky::impl::PathMatcher;

std::regex libraryPattern(const std::string& pattern, bool caseInsensitive)
{
    auto flags = std::regex::ECMAScript | std::regex::nosubs;
    if (caseInsensitive)
        flags |= std::regex::icase;
    return std::regex(pattern, flags);
}

/// Appends the text in pieces, with a detour that is taken back.
bool matched(PathMatcher& matcher, const std::string& text, std::size_t cut)
{
    const PathMatcher::Mark empty = matcher.mark();
    matcher.append(std::string_view(text).substr(0, cut));
    const PathMatcher::Mark middle = matcher.mark();
    matcher.append("detour");
    matcher.rewind(middle);
    matcher.append(std::string_view(text).substr(cut));
    const bool result = matcher.matches();
    matcher.rewind(empty);
    return result;
}

TEST(PathPattern, AgreesWithTheStandardLibraryOnFixedPatterns)
{
    const char* const patterns[] = {"",          "a",           "a|b|",         "(a|ab)(c|bcd)(d*)",
                                    "a{0}b",     "a{2,3}",      "(ab){2,}",     "[a-c]+/?",
                                    "[^a-c]*",   "[]",          "[^]*",         "[a-]+",
                                    "[-a]+",     "\\w+/\\d*",   "\\W\\S+\\s?",  "(?:a|/)*?b",
                                    "^a$",       "a$|^b",       "$^",           "^^a",
                                    "(a*)*",     "(a*)+b",      "(|a)+",        "a]}",
                                    "\\.\\*\\/", "[\\]\\-\\d]", ".*\\.txt",     "x*?y+?z??",
                                    "((a)|b)*c", "a.c",         "\\x41",        "\\bab",
                                    "(?=a)ab",   "a(?!b).",     "[[:digit:]]+", "[a\\-z]+",
                                    "\\D+",      "\\f|\\n|\\t", "[\\r\\v]",     "[\\D]",
                                    "[\\w-]",    "[a-c-]",      "a{1,2}{2}",    "a**",
                                    "[a-\\x62]", "\\_",         "[\xc3-\xc3]",  "[a-c-e]",
                                    "[ab-]",     "[ac-]b",      "a+?+",         "\\q",
                                    "a*{2}"};
    const char* const texts[] = {"",    "a",   "b",   "ab", "abcd", "aab",  "aaa", "abab",  "a/b",  "A",
                                 "B/",  "-",   "--a", "1",  "a1/2", "a/",   " x",  "z",     "aaab", "ba",
                                 "a]}", ".*/", "]",   "é",  "\n",   "a\nc", "xyz", "x.txt", "yz",   "bac",
                                 "\\",  "a^",  "aB",  "AB", "012",  "a-z",  "\f",  "\t",    "\v",   "\r"};
    for (const char* const pattern : patterns)
    {
        for (const bool caseInsensitive : {false, true})
        {
            PathMatcher matcher(pattern, caseInsensitive);
            const std::regex library = libraryPattern(pattern, caseInsensitive);
            for (const std::string text : texts)
            {
                EXPECT_EQ(matched(matcher, text, text.size() / 2), std::regex_match(text, library))
                    << pattern << " on " << text << (caseInsensitive ? " without case" : "");
            }
        }
    }
}

std::string randomPattern(std::mt19937& random, int depth)
{
    static const char* const atoms[] = {"a", "b", "/", "B", ".", "[ab]", "[^a/]", "\\w", "[A-C]", "\\/"};
    static const char* const quantifiers[] = {"", "", "", "*", "+", "?", "*?", "{2}", "{1,2}", "{0,1}", "{1,}"};
    std::string out;
    for (auto terms = 1 + random() % 3; terms != 0; --terms)
    {
        const bool group = depth > 0 && random() % 3 == 0;
        out += group ? "(" + randomPattern(random, depth - 1) + ")" : std::string(atoms[random() % std::size(atoms)]);
        out += quantifiers[random() % std::size(quantifiers)];
    }
    if (random() % 4 == 0)
        out += "|" + randomPattern(random, depth - 1);
    return out;
}

TEST(PathPattern, AgreesWithTheStandardLibraryOnRandomPatterns)
{
    std::mt19937 random(5);
    int matches = 0;
    for (int i = 0; i < 1500; ++i)
    {
        const std::string pattern = randomPattern(random, 2);
        const bool caseInsensitive = random() % 2 == 0;
        PathMatcher matcher(pattern, caseInsensitive);
        const std::regex library = libraryPattern(pattern, caseInsensitive);
        ASSERT_TRUE(matcher.isAutomatic()) << pattern;
        for (int k = 0; k < 10; ++k)
        {
            std::string text;
            for (auto length = random() % 8; length != 0; --length)
                text += "ab/B"[random() % 4];
            const bool expected = std::regex_match(text, library);
            ASSERT_EQ(matched(matcher, text, random() % (text.size() + 1)), expected) << pattern << " on " << text;
            matches += expected ? 1 : 0;
        }
    }
    EXPECT_GT(matches, 1000);
}

TEST(PathPattern, RefusesWhatTheStandardLibraryRefuses)
{
    for (const std::string& pattern : std::initializer_list<std::string>{
             "[a-\\d]", "[a-[]", "(",   ")",      "a)",  "(a",  "(?a)",   "*",
             "+a",      "?",     "{a",  "a{2,1}", "a{",  "a{1", "a{,2}",  "[",
             "[a",      "[b-a]", "[a-", "\\",     "[\\", "a|*", "(a)\\1", std::string(40, 'a').append("[\0-", 3)})
    {
        EXPECT_THROW(libraryPattern(pattern, false), std::regex_error) << pattern;
        EXPECT_THROW(PathMatcher(pattern, false), std::regex_error) << pattern;
    }
    // Numbers that the library would take for others.
    for (const char* const pattern : {"a{99999999999999999999}", "(?=a)a{1,4294967297}", "(a)\\99999999999999999999"})
        EXPECT_THROW(PathMatcher(pattern, false), std::regex_error) << pattern;
    PathMatcher fitting("(?=a)a{0000000000002}[{12345678901\\]2]\\{12345678901", false);
    EXPECT_TRUE(matched(fitting, "aa]{12345678901", 1));
}

TEST(PathPattern, LongPatterns)
{
    std::string all = "none";
    for (int i = 0; i < 20000; ++i)
        all.append("|section/key").append(std::to_string(i));
    for (const std::string& pattern : {std::string(200000, 'a'), all, "(" + all + ")*"})
    {
        PathMatcher matcher(pattern, false);
        ASSERT_TRUE(matcher.isAutomatic());
        const std::string last = pattern[0] == 'a' ? pattern : "section/key19999";
        EXPECT_TRUE(matched(matcher, last, 3));
        EXPECT_FALSE(matched(matcher, last + "0", 3));
    }
}

TEST(PathPattern, LongPaths)
{
    const std::string text(1000000, 'a');
    PathMatcher automatic("(a|b)*a", false);
    EXPECT_TRUE(matched(automatic, text, 10));
    EXPECT_FALSE(matched(automatic, text + "b", 10));
    PathMatcher hopeless("ab.*", false);
    hopeless.append("aa");
    EXPECT_TRUE(hopeless.hopeless());
    PathMatcher beyond("(?=a).*", false);
    EXPECT_FALSE(beyond.isAutomatic());
    EXPECT_TRUE(matched(beyond, text.substr(0, 900), 10));
    EXPECT_THROW(matched(beyond, text, 10), std::regex_error);
    for (const std::size_t depth : {100U, 1000U})
    {
        PathMatcher nested(std::string(depth, '(') + "a" + std::string(depth, ')'), false);
        EXPECT_TRUE(matched(nested, "a", 0)) << depth;
        EXPECT_FALSE(matched(nested, "b", 0)) << depth;
    }
    PathMatcher large("((a{20}){30}){40}", false);
    EXPECT_FALSE(large.isAutomatic());
}

} // namespace
