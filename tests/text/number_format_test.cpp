// SPDX-License-Identifier: MIT
// Numbers to text against streams of the classic locale.
#include "support/soak.h"

#include <ky/kyStringUtils.h>

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

namespace
{

using S = ky::kyStringUtils;

/// The stream under another process locale and the global locale of the test.
class Reference
{
public:
    Reference() { mStream.imbue(std::locale::classic()); }

    std::string real(double value, int precision, bool fixed)
    {
        mStream.str({});
        mStream.precision(precision);
        mStream.setf(fixed ? std::ios_base::fixed : std::ios_base::fmtflags(), std::ios_base::floatfield);
        mStream << value;
        return mStream.str();
    }

    template <typename Integer>
    std::string integer(Integer value, int width)
    {
        mStream.str({});
        mStream << std::setfill('0') << std::setw(width) << value;
        return mStream.str();
    }

private:
    std::ostringstream mStream;
};

class Grouping : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Every locale that can be set is set against the results.
class NumberFormat : public testing::Test
{
protected:
    NumberFormat() : mBefore(std::locale::global(std::locale(std::locale::classic(), new Grouping)))
    {
        for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "German_Germany.1252"})
            if (std::setlocale(LC_ALL, name) != nullptr)
                break;
    }
    ~NumberFormat() override
    {
        std::locale::global(mBefore);
        std::setlocale(LC_ALL, "C");
    }

    Reference reference;

private:
    std::locale mBefore;
};

TEST_F(NumberFormat, IntegersAreFilledBeforeTheSign)
{
    EXPECT_EQ(S::fromInt(7, 3), "007");
    EXPECT_EQ(S::fromInt(1234, 2), "1234");
    EXPECT_EQ(S::fromInt(-5, 4), "00-5");
    EXPECT_EQ(S::fromInt(std::numeric_limits<int>::min(), 12), "0-2147483648");
    EXPECT_EQ(S::fromUInt(4294967295U, 1), "4294967295");
    EXPECT_EQ(S::fromUInt64(std::numeric_limits<std::uint64_t>::max(), 21), "018446744073709551615");
    EXPECT_EQ(S::fromInt64(0, 40), std::string(40, '0'));
    EXPECT_EQ(S::fromInt64(-1, std::numeric_limits<int>::min()), "-1");
    std::mt19937_64 random(1);
    for (int i = 0; i < 50000; ++i)
    {
        const std::uint64_t bits = random() >> (random() % 64);
        const int width = static_cast<int>(random() % 30) - 3;
        ASSERT_EQ(S::fromInt64(static_cast<std::int64_t>(bits), width),
                  reference.integer(static_cast<std::int64_t>(bits), width));
        ASSERT_EQ(S::fromUInt64(bits, width), reference.integer(bits, width));
        ASSERT_EQ(S::fromInt(static_cast<int>(bits), width), reference.integer(static_cast<int>(bits), width));
        ASSERT_EQ(S::fromUInt(static_cast<unsigned>(bits), width),
                  reference.integer(static_cast<unsigned>(bits), width));
    }
}

TEST_F(NumberFormat, RealsHaveTheirKnownTexts)
{
    EXPECT_EQ(S::fromFloat(3.14159, 2, true), "3.14");
    EXPECT_EQ(S::fromFloat(3.14159, 2, false), "3.1");
    EXPECT_EQ(S::fromFloat(0.1F, 10, false), "0.1000000015") << "a float is widened";
    EXPECT_EQ(S::fromFloat(1234567.0, 3, false), "1.23e+06");
    EXPECT_EQ(S::fromFloat(1234567.5, 2, true), "1234567.50");
    EXPECT_EQ(S::fromFloat(999.5, 3, false), "1e+03");
    EXPECT_EQ(S::fromFloat(998.5, 3, false), "998") << "an exact half goes to the even digit";
    EXPECT_EQ(S::fromFloat(0.0001, 3, false), "0.0001");
    EXPECT_EQ(S::fromFloat(0.00001, 3, false), "1e-05");
    EXPECT_EQ(S::fromFloat(5e-324, 3, false), "4.94e-324");
    EXPECT_EQ(S::fromFloat(2.0, 0, false), "2");
    EXPECT_EQ(S::fromFloat(25.0, 0, false), "2e+01");
    EXPECT_EQ(S::fromFloat(2.0 / 3, -1, false), "0.666667");
    EXPECT_EQ(S::fromFloat(2.0 / 3, -7, true), "0.666667");
    EXPECT_EQ(S::fromFloat(-0.0, 3, false), "-0");
    EXPECT_EQ(S::fromFloat(-0.0, 1, true), "-0.0");
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(S::fromFloat(infinity, 3, false), "inf");
    EXPECT_EQ(S::fromFloat(-infinity, 3000, true), "-inf");
    EXPECT_EQ(S::fromFloat(std::copysign(std::nan(""), 1.0), 3, false), "nan");
    EXPECT_EQ(S::fromFloat(std::copysign(std::nan(""), -1.0), 3, true), "-nan");
    EXPECT_EQ(S::fromFloat(0.5, 5000, true), "0.5" + std::string(4999, '0'));
    EXPECT_EQ(S::fromFloat(0.5, std::numeric_limits<int>::max(), false), "0.5");
}

/// Bit patterns of all magnitudes, plain decimals, and values at and beside the halves of the last digit.
double randomReal(std::mt19937_64& random)
{
    const std::uint64_t bits = random();
    switch (bits % 6)
    {
    case 0: return std::bit_cast<double>(random());
    case 1: return std::bit_cast<double>(random() & 0x800FFFFFFFFFFFFFU); // subnormal
    case 2: return static_cast<double>(random() % 100000) / 1000;
    case 3: return static_cast<double>(random() % 2000001) * std::pow(10.0, static_cast<int>(random() % 40) - 20) / 2;
    case 4: return std::ldexp(static_cast<double>(random() % 4096), static_cast<int>(random() % 40) - 20);
    default:
    {
        const double half =
            (static_cast<double>(random() % 2000) + 0.5) * std::pow(10.0, static_cast<int>(random() % 30) - 15);
        return std::nextafter(half, random() % 3 == 0 ? 0.0 : half * (random() % 2 == 0 ? 1.0 : 2.0));
    }
    }
}

TEST_F(NumberFormat, RealsAreThoseOfAStream)
{
    std::mt19937_64 random(2);
    const int rounds = ky::test::isSoak() ? 5000000 : 200000;
    int agreed = 0;
    for (; agreed < rounds && !HasFailure(); agreed += HasFailure() ? 0 : 1)
    {
        const double value = randomReal(random);
        const auto pick = random();
        const int precision = static_cast<int>(pick % 8 == 0 ? random() % 40 : random() % 8) - 1;
        const bool fixed = pick % 3 == 0;
        if (std::isnan(value))
            continue;
        EXPECT_EQ(S::fromFloat(value, precision, fixed), reference.real(value, precision, fixed))
            << std::hexfloat << value << ' ' << precision;
        EXPECT_EQ(S::fromFloat(value, 3, false), reference.real(value, 3, false)) << std::hexfloat << value;
        const auto narrow = static_cast<float>(static_cast<double>(pick) * 1e-12);
        EXPECT_EQ(S::fromFloat(narrow, precision, fixed),
                  reference.real(static_cast<double>(narrow), precision, fixed));
    }
    ky::test::account("number texts", {rounds, "random numbers beside a stream's text"}, {},
                      {rounds - agreed, "wrong texts"});
    for (int i = 0; i < 2000; ++i)
    {
        const double value = randomReal(random);
        const int precision = static_cast<int>(random() % 1500);
        if (!std::isnan(value))
        {
            ASSERT_EQ(S::fromFloat(value, precision, i % 2 == 0), reference.real(value, precision, i % 2 == 0))
                << std::hexfloat << value << ' ' << precision;
        }
    }
}

// Every number of 3 digits and every half between two of them, with their neighbours.
TEST_F(NumberFormat, ShortRealsAreThoseOfAStreamAtEveryHalf)
{
    for (int exponent = -8; exponent < 24; ++exponent)
    {
        for (int halves = 199; halves <= 2001; ++halves)
        {
            const double value =
                std::strtod((std::to_string(halves * 5) + "e" + std::to_string(exponent - 3)).c_str(), nullptr);
            for (const double near : {value, std::nextafter(value, 0.0), -std::nextafter(value, 1e300)})
                ASSERT_EQ(S::fromFloat(near, 3, false), reference.real(near, 3, false)) << std::hexfloat << near;
        }
    }
}

} // namespace
