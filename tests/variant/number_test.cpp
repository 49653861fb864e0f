// SPDX-License-Identifier: MIT
// Number parsing in the forms that need work of their own.
#include "text/number_parse.h"
#include "text/number_text.h"
#include "text/plain_number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace
{

using ky::impl::parseWholeInteger;
using ky::impl::parseWholeReal;

TEST(NumberParse, RealForms)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const std::pair<std::string, double> rows[] = {
        {"", 0.0},
        {" +1.5e+3", 1500.0},
        {"1e00000000000000000000000001", 10.0},
        {"1e99999999999999999999", infinity},
        {"-1e-99999999999999999999", -0.0},
        {"0e99999999999999999999", 0.0},
        {std::string("0.").append(400, '0').append("1"), 0.0},
        {std::string("1").append(400, '0'), infinity},
        {std::string("1").append(400, '0').append("e-400"), 1.0},
        {std::string("0.").append(399, '0').append("1e400"), 1.0},
        {"1.7976931348623157e308", std::numeric_limits<double>::max()},
        {"1.7976931348623159e308", infinity},
        {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
        {"2.4703282292062327e-324", 0.0},
        {"0x10", 16.0},
        {"-0X.8", -0.5},
        {"0x1p-1074", std::numeric_limits<double>::denorm_min()},
        {"0x1p-1075", 0.0},
        {"0x1.00000000000000000000001p-1075", std::numeric_limits<double>::denorm_min()},
        {"0x1p1023", 8.98846567431158e307},
        {"0x1p1024", infinity},
        {"0x0p99999999999999999999", 0.0},
        {"0x1.fffffffffffff8p0", 2.0},
        {"0x1.00000000000008p0", 1.0}, // ties go to the even neighbour
        {"0x1.00000000000018p0", 1.0 + 2 * std::numeric_limits<double>::epsilon()},
        {"0x1.0000000000000800000110p0", 1.0 + std::numeric_limits<double>::epsilon()},
        {"0x1.00000000000009p0", 1.0 + std::numeric_limits<double>::epsilon()},
        {"0x1p-2000", 0.0},
        {"0x1.fffffffffffff7p0", 2.0 - std::numeric_limits<double>::epsilon()},
        {std::string("0x").append(40, '0').append("1").append(20, '0').append("p-80"), 1.0},
        {std::string("0x0.").append(20, '0').append("1p84"), 1.0},
        {"INFinity", infinity}};
    for (const auto& [text, expected] : rows)
    {
        double value = 99.0;
        ASSERT_TRUE(parseWholeReal(text, value)) << text;
        EXPECT_EQ(value, expected) << text;
        EXPECT_EQ(std::signbit(value), std::signbit(expected)) << text;
    }
    for (const char* const text :
         {" ",    "+",     "--1",    "+-1",   "1e",     "1e+",    "1 ",     "1.2.3", "0x",
          "0x1p", "0x1p+", "0x.",    "e5",    "infi",   "nan(",   "nan(-)", "na",    "1f",
          "0x1g", "1,5",   "nanxy)", "nan(a", "nan()x", "nan({)", "0x1p5x", "0x1p-", "0x1.2.3"})
    {
        double value = 99.0;
        EXPECT_FALSE(parseWholeReal(text, value)) << text;
        EXPECT_EQ(value, 99.0);
    }
    for (const char* const text : {"nan", "NaN", "-nan()", "nan(_x9Z)"})
    {
        double value = 99.0;
        EXPECT_TRUE(parseWholeReal(text, value)) << text;
        EXPECT_TRUE(std::isnan(value)) << text;
    }
}

TEST(NumberParse, IntegersOfEveryLengthSurvive)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i)
    {
        const auto number = static_cast<std::int64_t>(random()) >> (random() % 64);
        std::int64_t parsed = 0;
        EXPECT_TRUE(parseWholeInteger(ky::impl::IntegerText(number).view(), parsed));
        EXPECT_EQ(parsed, number);
    }
}

TEST(NumberParse, PlainNumbersAgreeWithTheGeneralFunctions)
{
    using Form = ky::impl::PlainNumber::Form;
    std::mt19937_64 random(13);
    int answered = 0;
    for (int i = 0; i < 300000; ++i)
    {
        static constexpr std::string_view alphabet = "0123456789012345678901234567890123456789.,-+ xXeEinNIfaz/:";
        static constexpr std::string_view hexadecimal = "0123456789012345678901234567890abcdefABCDEFg@`G/:";
        static constexpr std::string_view names[] = {"inf", "INFINITY", "nan", "NaN(1)", "in", "Na", "ink", "nap"};
        std::string text(1 + random() % (i % 2 == 0 ? 5 : 19), '?');
        for (char& c : text)
            c = alphabet[random() % (i % 8 < 4 ? 41 : alphabet.size())];
        if (i % 32 == 1)
            text = names[random() % std::size(names)];
        if (i % 4 == 2)
        {
            for (char& c : text)
                c = hexadecimal[random() % (i % 8 == 2 ? 43 : hexadecimal.size())];
            text.resize(1 + random() % 16, '7');
            text.insert(0, random() % 2 == 0 ? "0x" : "-0X");
        }
        std::int64_t expectedInteger = 2;
        double expectedReal = 2.0;
        const ky::impl::PlainNumber plain = ky::impl::parsePlainNumber(text);
        if (plain.form == Form::Unclear)
            continue;
        ++answered;
        Form expected = Form::Text;
        if (parseWholeInteger(text, expectedInteger))
            expected = Form::Integer;
        else
        {
            std::replace(text.begin(), text.end(), ',', '.');
            if (parseWholeReal(text, expectedReal))
                expected = Form::Real;
        }
        ASSERT_EQ(plain.form, expected) << text;
        ASSERT_TRUE(plain.form != Form::Integer || plain.integer == expectedInteger) << text;
        ASSERT_TRUE(plain.form != Form::Real || std::memcmp(&plain.real, &expectedReal, sizeof expectedReal) == 0)
            << text;
    }
    EXPECT_GT(answered, 50000);
}

TEST(NumberText, AgreesWithTheCLibrary)
{
    std::mt19937_64 random(11);
    for (int i = 0; i < 20000; ++i)
    {
        const std::uint64_t bits = random();
        double value = 0.0;
        if (i % 2 == 0)
            std::memcpy(&value, &bits, sizeof(value));
        else
            value = static_cast<double>(bits % 100000000) / 1000.0;
        if (std::isnan(value))
            continue;
        char expected[40];
        std::snprintf(expected, sizeof(expected), "%g", value);
        EXPECT_EQ(ky::impl::RealText(value).view(), expected);
    }
}

} // namespace
