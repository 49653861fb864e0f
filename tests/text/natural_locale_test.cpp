// SPDX-License-Identifier: MIT
// The natural order under locales compiled for the test. The first comparison of a process settles its locale: every
// case runs in a process of its own.
#include "support/temp_dir.h"
#include "text/order_laws.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>

namespace
{

using S = ky::kyStringUtils;
using Names = std::vector<std::string>;

/// Exit code 0 when the names come out as they are given and the laws hold.
[[noreturn]] void sortAndExit(const Names& expected, bool caseSensitive)
{
    Names names = expected;
    std::reverse(names.begin(), names.end());
    std::stable_sort(names.begin(), names.end(),
                     caseSensitive ? S::UTF8NaturalSortFunction : S::UTF8NaturalSortFunctionCaseInsensitive);
    if (names != expected)
        std::fprintf(stderr, "%s\n", testing::PrintToString(names).c_str());
    std::_Exit(names == expected && ky::test::brokenOrderLaws(1000) == 0 ? 0 : 1);
}

class NaturalLocale : public testing::Test
{
protected:
    /// Makes the locale the one of the environment; false where the system cannot compile it.
    bool use(const std::string& name)
    {
        const std::string path = dir.file(name + ".UTF-8");
        const std::string command = "localedef -i " + name + " -f UTF-8 '" + path + "' 2>/dev/null";
        if (std::system(command.c_str()) != 0 && !ky::test::exists(path + "/LC_COLLATE"))
            return false;
        ::setenv("LOCPATH", dir.path().c_str(), 1);
        ::setenv("LC_ALL", (name + ".UTF-8").c_str(), 1);
        return true;
    }

    void TearDown() override
    {
        ::unsetenv("LOCPATH");
        ::unsetenv("LC_ALL");
    }

    ky::test::TempDir dir;
};

#define REQUIRE_LOCALE(name)                                                                                           \
    if (!use(name))                                                                                                    \
    GTEST_SKIP() << "no locale " << (name)

TEST_F(NaturalLocale, WithoutOneTheOrderIsByCodePoint)
{
    ::setenv("LC_ALL", "C", 1);
    EXPECT_EXIT(sortAndExit({"-", "0", "2", "10", "A", "B10", "a", "a2", "a10", "b", "\xC3\x84"}, true),
                testing::ExitedWithCode(0), "");
    EXPECT_EXIT(sortAndExit({"a", "B", "b2", "B10", "z", "\xC3\xA4"}, false), testing::ExitedWithCode(0), "");
    ::setenv("LC_ALL", "none_XX.UTF-8", 1);
    EXPECT_EXIT(sortAndExit({"B10", "a2", "a10"}, true), testing::ExitedWithCode(0), "");
}

TEST_F(NaturalLocale, AccentsAndCapitalsComeAfterNumbers)
{
    REQUIRE_LOCALE("en_US");
    const Names names = {"a b", "a1", "a02", "A2b", "a10", "aa", "ab", "\u00E4z", "b", "\u00E91", "e2", "E10", "z"};
    EXPECT_EXIT(sortAndExit(names, true), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(sortAndExit(names, false), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(sortAndExit({"file1", "File1", "file1x"}, true), testing::ExitedWithCode(0), "");
}

TEST_F(NaturalLocale, LettersOfTwoCharactersKeepTheirPlace)
{
    REQUIRE_LOCALE("cs_CZ");
    EXPECT_EXIT(sortAndExit({"cz2", "cz10", "h", "ch2", "ch10", "i"}, true), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(sortAndExit({"cz2", "cz10", "h", "ch2", "CH10", "i"}, false), testing::ExitedWithCode(0), "");
}

TEST_F(NaturalLocale, LettersFoldAsTheUserExpects)
{
    REQUIRE_LOCALE("tr_TR");
    const auto check = []
    {
        const bool dotless = S::CompareUTF8Natural("I1", "\u01311", false) == 0;
        const bool dotted = S::CompareUTF8Natural("\u01301", "i1", false) == 0;
        std::_Exit(dotless && dotted && S::CompareUTF8Natural("I1", "i1", false) != 0 ? 0 : 1);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(sortAndExit({"h", "\xC4\xB1", "i2", "i10"}, false), testing::ExitedWithCode(0), "");
}

TEST_F(NaturalLocale, ProcessLocalePlaysNoRole)
{
    REQUIRE_LOCALE("en_US");
    ASSERT_NE(std::setlocale(LC_ALL, "en_US.UTF-8"), nullptr);
    ::setenv("LC_ALL", "C", 1);
    EXPECT_EXIT(sortAndExit({"B", "a", "b"}, true), testing::ExitedWithCode(0), "");
    std::setlocale(LC_ALL, "C");
}

} // namespace
