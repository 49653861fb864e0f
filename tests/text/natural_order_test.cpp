// SPDX-License-Identifier: MIT
// The natural order of the user's locale.
#include "text/order_laws.h"

#include <ky/kyStringUtils.h>

#include <gtest/gtest.h>
#include <string>

namespace
{

using S = ky::kyStringUtils;

int compareSizes(const std::wstring& a, const std::wstring& b, bool caseSensitive)
{
    return S::CompareUTF16Natural(a.data(), a.size(), b.data(), b.size(), caseSensitive);
}

TEST(NaturalComparison, NumbersByValueAndCaseOnRequest)
{
    struct Case
    {
        std::string a;
        std::string b;
        int sensitive;
        int insensitive;
    };
    const Case cases[] = {
        {"file2", "file10", -1, -1},
        {"", "", 0, 0},
        {"", "a", -1, -1},
        {"file2", "file2", 0, 0},
        {"a1b2", "a1b10", -1, -1},
        {"item12b", "item12c", -1, -1},
        {"file.txt", "file2.txt", -1, -1},
        {"9", "10", -1, -1},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(S::CompareUTF8Natural(c.a, c.b, true), c.sensitive) << c.a << ' ' << c.b;
        EXPECT_EQ(S::CompareUTF8Natural(c.b, c.a, true), -c.sensitive) << c.a << ' ' << c.b;
        EXPECT_EQ(S::CompareUTF8Natural(c.a, c.b, false), c.insensitive) << c.a << ' ' << c.b;
    }
    EXPECT_EQ(S::CompareUTF8Natural("File1", "file1", false), 0);
    EXPECT_EQ(S::CompareUTF8Natural("\xC3\x84pfel", "\xC3\xA4PFEL", false), 0);
    const int byCase = S::CompareUTF8Natural("File1", "file1", true);
    EXPECT_NE(byCase, 0);
    EXPECT_EQ(S::CompareUTF8Natural("file1", "File1", true), -byCase);
    EXPECT_TRUE(S::UTF8NaturalSortFunction("file2", "file10"));
    EXPECT_FALSE(S::UTF8NaturalSortFunction("file10", "file2"));
    EXPECT_TRUE(S::UTF8NaturalSortFunctionCaseInsensitive("FILE2", "file10"));
    EXPECT_FALSE(S::UTF8NaturalSortFunctionCaseInsensitive("FILE2", "file2"));
    EXPECT_EQ(S::CompareUTF8Natural(std::string("a\0b", 3), "a", true), 0) << "a text ends at its first NUL";
    EXPECT_EQ(compareSizes(std::wstring(L"file10x", 6), L"file10", true), 0);
    EXPECT_EQ(compareSizes(L"file2", L"file10", false), -1);
}

TEST(NaturalComparison, IsAStrictWeakOrder) { EXPECT_EQ(ky::test::brokenOrderLaws(20000), 0); }

} // namespace
