// SPDX-License-Identifier: MIT
#include <ky/kyMathUtils.h>
#include <ky/kyStringUtils.h>

#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace
{

using S = ky::kyStringUtils;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

TEST(RoundNumber, GivesTheNearestFraction)
{
    struct Case
    {
        double value;
        unsigned char denominator;
        int extra;
        bool sign;
        unsigned char maxDecimals;
        const char* text;
    };
    const Case cases[] = {
        {2.3, 2, 0, false, 255, "2.5"},
        {2.24, 2, 0, false, 255, "2.0"},
        {2.25, 2, 0, false, 255, "2.5"},
        {2.26, 4, 0, false, 255, "2.25"},
        {9.97, 2, 0, false, 255, "10.0"},
        {-9.97, 2, 0, false, 255, "-10.0"},
        {1.999, 8, 0, false, 255, "2.000"},
        {0.3, 5, 0, false, 0, "0"},
        {0.3, 5, 0, false, 1, "0.4"},
        {0.95, 5, 0, false, 0, "1"},
        {1.04, 16, 0, false, 3, "1.0625"},
        {-0.01, 1, 1, false, 255, "0.0"},
        {-0.01, 1, 1, true, 255, "-0.0"},
        {0.0, 1, 1, true, 255, "+0.0"},
        {-0.0, 1, 1, true, 255, "+0.0"},
        {3.14159, 1, 3, true, 255, "+3.142"},
        {2.34, 2, 1, false, 255, "2.35"},
        {-0.4, 2, 0, false, 255, "-0.5"},
        {-0.25, 1, 5, false, 255, "-0.25000"},
        {0.199996, 1, 5, false, 255, "0.20000"},
        {2.5, 1, 0, false, 255, "3"},
        {-2.5, 1, 0, false, 255, "-3"},
        {-2.5, 1, 0, true, 255, "-3"},
        {2.4, 1, 0, true, 255, "+2"},
        {-0.3, 1, 0, false, 255, "0"},
        {-0.3, 1, 0, true, 255, "-0"},
        {2.75, 17, 0, false, 255, "3"},
        {2.75, 255, 5, false, 255, "3"},
        {2.75, 2, 17, false, 255, "3"},
        {2.75, 16, -4, false, 255, "3"},
        {2.75, 1, -1, false, 255, "2"},
        {-0.75, 1, -128, false, 255, "0"},
        {0.94, 16, -1, false, 255, "1.250"},
        {1e300, 2, 0, false, 0, nullptr},
        {18446744073709551616.0, 4, 0, false, 255, "18446744073709551616.00"},
        {0.3, 16, 16, false, 255, "0.30000000000000000000"},
        {0.999999999999999944, 16, 15, false, 255, "0.9999999999999998125"},
        {notANumber, 2, 0, true, 255, "nan"},
        {infinity, 99, 99, true, 255, "inf"},
        {-infinity, 3, 0, false, 0, "-inf"},
    };
    for (const Case& c : cases)
    {
        const std::string text =
            S::roundNumber(c.value, c.denominator, static_cast<char>(c.extra), c.sign, c.maxDecimals);
        EXPECT_EQ(text, c.text == nullptr ? S::fromFloat(c.value, 0, true) : c.text)
            << c.value << " / " << int{c.denominator} << ' ' << c.extra;
    }
}

/// Nothing to compare with: no combination may trap or lose its shape.
TEST(RoundNumber, TakesEveryArgument)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 60000; ++i)
    {
        const double value = i % 2 == 0 ? std::bit_cast<double>(random()) : static_cast<double>(random() % 1000) / 64;
        const auto denominator = static_cast<unsigned char>(random() % 20);
        const auto extra = static_cast<char>(random());
        const std::string text = S::roundNumber(value, denominator, extra, true, 255);
        if (!std::isfinite(value))
            continue;
        ASSERT_EQ(text.front(), value < 0 ? '-' : '+') << text;
        const std::size_t point = text.find('.');
        ASSERT_EQ(text.find_first_not_of("0123456789", 1), point) << text;
        ASSERT_LE(point == std::string::npos ? 0 : text.size() - point - 1, 20U) << text;
        const double back = std::stod(text);
        ASSERT_LE(std::fabs(back - value), std::max(1.0, std::fabs(value) * 1e-15)) << text;
    }
}

TEST(FractionnalRepresentation, IsTheBestWithinTheLimit)
{
    struct Case
    {
        double value;
        std::int64_t limit, numerator, denominator;
    };
    const Case cases[] = {
        {0.75, 100, 3, 4},
        {3.14159265, 100, 311, 99},
        {-3.14159265, 100, -311, 99},
        {3.14159265, 7, 22, 7},
        {-0.0, 100, 0, 1},
        {5.0, 1, 5, 1},
        {0.6, 1, 1, 1},
        {0.1, 0, 0, 1},
        {1e-320, 1000, 0, 1},
        {notANumber, 10, 0, 1},
        {-infinity, 10, -most, 1},
        {1e300, most, most, 1},
        {-9223372036854775808.0, 10, -most, 1},
        {9223372036854774784.0, most, 9223372036854774784, 1},
    };
    for (const Case& c : cases)
    {
        std::int64_t numerator = -1;
        std::int64_t denominator = -1;
        S::computeFractionnalRepresentation(c.value, numerator, denominator, c.limit);
        EXPECT_EQ(numerator, c.numerator) << c.value;
        EXPECT_EQ(denominator, c.denominator) << c.value;
    }
}

TEST(FractionnalRepresentation, BeatsEveryOtherSmallFraction)
{
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i)
    {
        const double value = static_cast<double>(random() % 1000000) / 99991.0;
        const auto limit = static_cast<std::int64_t>(1 + random() % 60);
        std::int64_t numerator = 0;
        std::int64_t denominator = 0;
        S::computeFractionnalRepresentation(value, numerator, denominator, limit);
        double best = 1.0;
        for (std::int64_t k = 1; k <= limit; ++k)
            best =
                std::min(best, std::fabs(value - std::round(value * static_cast<double>(k)) / static_cast<double>(k)));
        ASSERT_LE(denominator, limit);
        ASSERT_NEAR(std::fabs(value - static_cast<double>(numerator) / static_cast<double>(denominator)), best, 1e-12)
            << value << " <= " << limit;
    }
    for (int i = 0; i < 100000; ++i)
    {
        const double value = std::bit_cast<double>(random());
        const auto limit = static_cast<std::int64_t>(random() >> (1 + random() % 63));
        std::int64_t numerator = 0;
        std::int64_t denominator = 0;
        S::computeFractionnalRepresentation(value, numerator, denominator, limit);
        ASSERT_GE(denominator, 1);
        ASSERT_LE(denominator, std::max<std::int64_t>(limit, 1));
        if (std::fabs(value) < 1e18)
        {
            ASSERT_LE(std::fabs(value - static_cast<double>(numerator) / static_cast<double>(denominator)),
                      std::max(1.0, std::fabs(value) * 1e-15));
        }
    }
}

TEST(MathUtils, Format3DigitScalesToItsPrefix)
{
    struct Case
    {
        float value;
        float scaled;
        char prefix;
    };
    constexpr float largest = std::numeric_limits<float>::max();
    const Case cases[] = {
        {1500.0F, 1.5F, 'k'},      {1000.0F, 1000.0F, ' '},    {2199023255552.0F, 2.199F, 'T'},
        {2.5e9F, 2.5F, 'G'},       {1e6F, 1000.0F, 'k'},       {1.5e6F, 1.5F, 'M'},
        {0.5F, 0.5F, ' '},         {1.23456F, 1.234F, ' '},    {0.0005F, 0.0F, 'm'},
        {5e-7F, 0.0F, '\xB5'},     {1e-10F, 1e-10F, ' '},      {0.0F, 0.0F, ' '},
        {-2000.0F, -2000.0F, ' '}, {999999.0F, 999.999F, 'k'}, {-largest, -largest, ' '},
    };
    for (const Case& c : cases)
    {
        float scaled = -1.0F;
        char prefix = '?';
        ky::kyMathUtils::Format3Digit(c.value, scaled, prefix);
        EXPECT_EQ(scaled, c.scaled) << c.value;
        EXPECT_EQ(prefix, c.prefix) << c.value;
    }
    float scaled = 0.0F;
    char prefix = '?';
    ky::kyMathUtils::Format3Digit(std::numeric_limits<float>::quiet_NaN(), scaled, prefix);
    EXPECT_TRUE(std::isnan(scaled));
    EXPECT_EQ(prefix, ' ');
}

TEST(MathUtils, FormatIntegerSeparatorGroupsTheLow32Bits)
{
    const auto format = ky::kyMathUtils::FormatIntegerSeparator;
    const char* const first = format(0);
    EXPECT_STREQ(first, "0");
    EXPECT_EQ(format(1234567), first) << "one buffer";
    EXPECT_STREQ(first, "1,234,567");
    EXPECT_STREQ(format(999), "999");
    EXPECT_STREQ(format(1000), "1,000");
    EXPECT_STREQ(format(100000), "100,000");
    EXPECT_STREQ(format(4294967295UL), "4,294,967,295");
    if (sizeof(unsigned long) > 4)
    {
        EXPECT_STREQ(format(std::numeric_limits<unsigned long>::max() << 31), "2,147,483,648");
    }
}

TEST(MathUtils, TellsNumbers)
{
    for (const double value : {0.0, -1.0, std::numeric_limits<double>::denorm_min(), 1e308})
        EXPECT_TRUE(ky::isNumber(value) && ky::isFiniteNumber(value)) << value;
    for (const double value : {infinity, -infinity})
        EXPECT_TRUE(ky::isNumber(value) && !ky::isFiniteNumber(value)) << value;
    EXPECT_FALSE(ky::isNumber(notANumber) || ky::isFiniteNumber(-notANumber));
}

TEST(SoftwareVersion, ComparesNumberByNumber)
{
    struct Case
    {
        const char* a;
        const char* b;
        std::size_t components;
        S::SoftwareVersionComparisonResult result;
    };
    const Case cases[] = {
        {"1.10", "1.9", 9, S::VersionHigher},
        {"1.0", "1.0.5", 2, S::VersionEqual},
        {"1.0", "1.0.5", 3, S::VersionLower},
        {"1.2.3", "1.2", 9, S::VersionEqual},
        {"1.2", "1.2.0", 9, S::VersionEqual},
        {" 1.2\t", "\n1.2 ", 9, S::VersionEqual},
        {"0x10.1", "16.1", 9, S::VersionEqual},
        {"010", "8", 9, S::VersionEqual},
        {"4294967295", "4294967294", 9, S::VersionHigher},
        {"1..2", "1.0.2", 9, S::VersionEqual},
        {"1.", "1", 9, S::VersionEqual},
        {"", "1", 9, S::VersionLower},
        {"1", "", 9, S::VersionInvalid},
        {"", "", 9, S::VersionInvalid},
        {"1.0", "1.0", 0, S::VersionInvalid},
        {"1.x", "1.0", 9, S::VersionInvalid},
        {"1.0", "1.0 beta", 9, S::VersionInvalid},
        {"1.0", "1.0.x", 1, S::VersionInvalid},
        {"08", "8", 9, S::VersionInvalid},
        {"-1", "1", 9, S::VersionInvalid},
        {"4294967296", "1", 9, S::VersionInvalid},
    };
    for (const Case& c : cases)
        EXPECT_EQ(S::compareSoftwareVersion(c.a, c.b, c.components), c.result) << c.a << " : " << c.b;
}

} // namespace
