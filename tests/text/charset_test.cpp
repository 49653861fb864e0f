// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace
{

using S = ky::kyStringUtils;

constexpr bool wideIsUtf16 = sizeof(wchar_t) == 2;

/// The wide form of code points.
std::wstring wide(const std::u32string& codePoints)
{
    std::wstring result;
    for (const char32_t c : codePoints)
    {
        if (wideIsUtf16 && c > 0xFFFF)
        {
            result.push_back(static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10)));
            result.push_back(static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        }
        else
            result.push_back(static_cast<wchar_t>(c));
    }
    return result;
}

/// What `call` writes to the standard output.
template <typename Call>
std::string outputOf(Call call)
{
    ::testing::internal::CaptureStdout();
    call();
    return ::testing::internal::GetCapturedStdout();
}

TEST(Utf8, ToldFromIllFormed)
{
    constexpr int illFormed = -1;
    const std::pair<std::string, int> cases[] = {
        {"", 0},
        {std::string("a\0b", 3), 3},
        {"\xC3\xA9t\xC3\xA9", 3},
        {"\xE4\xB8\xAD\xE6\x96\x87", 2},
        {"\xEF\xBF\xBF\xF4\x8F\xBF\xBF", 2},
        {"\xC0\x80", illFormed},
        {"\xED\xA0\x80", illFormed},
        {"\xF4\x90\x80\x80", illFormed},
        {"a\xE4\xB8", illFormed},
    };
    for (const auto& [text, count] : cases)
    {
        EXPECT_EQ(S::IsUtf8String(text), count != illFormed) << text;
        EXPECT_EQ(S::CountUtf8Char(text), static_cast<std::size_t>(std::max(count, 0))) << text;
    }
}

TEST(Charset, RoundTripsEveryScriptAtAnyLength)
{
    const std::u32string scripts[] = {U"plain", U"\u00E9\u00DF", U"\u4E2D\u6587\u5B57", U"\U0001F600\U0010FFFF",
                                      U"a\u00E9\u4E2D\U0001F600"};
    for (const std::u32string& script : scripts)
        for (const std::size_t repeats : {1U, 7U, 1000U})
        {
            std::u32string codePoints;
            for (std::size_t i = 0; i < repeats; ++i)
                codePoints += script;
            const std::wstring text = wide(codePoints);
            std::string utf8;
            EXPECT_EQ(outputOf([&] { utf8 = S::convertTo8Bits(text, S::Utf8); }), "");
            EXPECT_EQ(S::CountUtf8Char(utf8), codePoints.size());
            EXPECT_EQ(S::convertToUnicode(utf8, S::Utf8), text);
        }
}

TEST(Charset, IllFormedTextBecomesReplacementCharacters)
{
    const std::pair<std::string, std::u32string> cases[] = {
        {"\xFF", U"\uFFFD"},           {"a\x80z", U"a\uFFFDz"},           {"\xC3", U"\uFFFD"},
        {"a\xE4\xB8", U"a\uFFFD"},     {"\xE4\xB8z", U"\uFFFDz"},         {"\xF0\x9F\x98z", U"\uFFFDz"},
        {"\xC0\xAF", U"\uFFFD\uFFFD"}, {"\xC3\xC3\xA9", U"\uFFFD\u00E9"}, {"\xF5\x80", U"\uFFFD\uFFFD"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(S::convertToUnicode(text, S::Utf8), wide(expected)) << ::testing::PrintToString(text);

    std::wstring lone = L"a";
    lone.push_back(static_cast<wchar_t>(0xD800));
    lone += L"b";
    lone.push_back(static_cast<wchar_t>(0xDFFF));
    EXPECT_EQ(S::convertTo8Bits(lone, S::Utf8), "a\xEF\xBF\xBD"
                                                "b\xEF\xBF\xBD");
    if (!wideIsUtf16)
    {
        const std::wstring beyond = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
        EXPECT_EQ(S::convertTo8Bits(beyond, S::Utf8), "\xEF\xBF\xBD\xEF\xBF\xBD");
    }
}

TEST(Charset, EndsAtTheFirstNulAndMayBeEmpty)
{
    const std::string text("ab\0cd", 5);
    for (const auto set : {S::Ansi, S::Utf8, S::Ascii})
    {
        EXPECT_EQ(outputOf([&] { EXPECT_EQ(S::convertCharset("", set, set), ""); }), "") << "no failure";
        EXPECT_EQ(S::convertToUnicode(text, set), L"ab");
        EXPECT_EQ(S::convertTo8Bits(std::wstring(L"ab\0cd", 5), set), "ab");
        EXPECT_EQ(S::convertCharset(text, set, S::Utf8), "ab");
    }
}

TEST(Charset, AnsiIsASingleByteSetOfWesternEurope)
{
    if (S::convertToUnicode("\x80", S::Ansi) != L"\u20AC")
        GTEST_SKIP() << "the active code page is another one";
    std::string every;
    for (int byte = 1; byte < 256; ++byte)
        every.push_back(static_cast<char>(byte));
    EXPECT_EQ(S::convertTo8Bits(S::convertToUnicode(every, S::Ansi), S::Ansi), every);
    EXPECT_EQ(S::convertCharset("\x80 \xE9 \x99 \x9F", S::Ansi, S::Utf8),
              "\xE2\x82\xAC \xC3\xA9 \xE2\x84\xA2 \xC5\xB8");
    EXPECT_EQ(S::convertCharset("\xE4\xB8\xAD", S::Utf8, S::Ansi), "?");
}

TEST(Charset, AsciiFailsAboveSevenBits)
{
    const std::string message = "kyStringUtils::fromAscii failed \n";
    const std::string sevenBits = "tab\t tilde~ del\x7F";
    EXPECT_EQ(S::convertCharset(sevenBits, S::Ascii, S::Ascii), sevenBits);
    for (const char* text : {"\x80", "ab\xFF", "\xC3\xA9"})
    {
        std::wstring decoded = L"?";
        EXPECT_EQ(outputOf([&] { decoded = S::convertToUnicode(text, S::Ascii); }), message);
        EXPECT_EQ(decoded, L"");
    }
    for (const wchar_t character : {wchar_t{0x80}, wchar_t{0xE9}, wchar_t{0x4E2D}})
    {
        std::string encoded = "?";
        EXPECT_EQ(outputOf([&] { encoded = S::convertTo8Bits(std::wstring(3, character), S::Ascii); }), message);
        EXPECT_EQ(encoded, "");
    }
}

TEST(Charset, UnknownSetsGiveNothing)
{
    const auto unknown = static_cast<S::kyCharSet>(3);
    EXPECT_EQ(S::convertToUnicode("text", unknown), L"");
    EXPECT_EQ(S::convertTo8Bits(L"text", unknown), "");
}

TEST(Charset, UnknownEncodingIsUtf8OrAnsi)
{
    EXPECT_EQ(S::UnknownEncodingToUtf8("gr\xC3\xBC\xC3\x9F", '?'), "gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(S::UnknownEncodingToUtf8(std::string("a\0b", 3), '?'), std::string("a\0b", 3));
    const std::string latin = "gr\xFC\xDF";
    EXPECT_EQ(S::UnknownEncodingToUtf8(latin, '?'), S::convertCharset(latin, S::Ansi, S::Utf8));
    EXPECT_TRUE(S::IsUtf8String(S::UnknownEncodingToUtf8("\xFF\xFE\x80", '?')));
}

TEST(Locales, ExistBetweenInitializationAndTermination)
{
    ASSERT_EQ(*S::GetCLocale(), nullptr);
    EXPECT_FALSE(S::TerminateStringUtils());
    EXPECT_TRUE(S::InitializeStringUtils());
    EXPECT_FALSE(S::InitializeStringUtils());
    S::InitializeForThread();
    EXPECT_NE(*S::GetCLocale(), nullptr);
    EXPECT_EQ(S::convertCharset("under the locale", S::Ascii, S::Ascii), "under the locale");
    std::ostringstream stream;
    stream.imbue(S::GetCPlusLocale());
    stream << 1234567.5;
    EXPECT_EQ(stream.str(), "1.23457e+06");
    EXPECT_TRUE(S::TerminateStringUtils());
    EXPECT_EQ(*S::GetCLocale(), nullptr);
    EXPECT_EQ(S::GetCPlusLocale(), std::locale::classic());
    EXPECT_FALSE(S::TerminateStringUtils());
}

} // namespace
