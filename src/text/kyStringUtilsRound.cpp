// SPDX-License-Identifier: MIT
#include "text/real_format.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ky
{

namespace
{

/// Step in units of the last decimal.
struct Fraction
{
    unsigned step;
    int decimals;
};

constexpr std::size_t denominatorCount = 17;
constexpr std::array<Fraction, denominatorCount> fractions = {
    {{0, 0}, {1, 0}, {5, 1}, {0, 0}, {25, 2}, {2, 1}, {0, 0}, {0, 0}, {125, 3}, {}, {}, {}, {}, {}, {}, {}, {625, 4}}};
constexpr int firstUnusable = denominatorCount; // of extra decimals as well

/// Steps divide it, so that rounding touches the digits below only.
constexpr double lowUnit = 10000.0;
constexpr int lowDigits = 4;

std::string roundedInteger(double value, bool forceSign)
{
    const std::string magnitude = impl::fixedReal(std::round(std::fabs(value)), 0);
    if (forceSign)
        return (value < 0.0 ? "-" : "+") + magnitude;
    return value < 0.0 && magnitude != "0" ? "-" + magnitude : magnitude;
}

/// A magnitude of `decimals` decimals. The fraction can have more digits than 64 bits hold: it is kept in two parts.
class Decimal
{
public:
    Decimal(double magnitude, int decimals)
        : mInteger(std::floor(magnitude)),
          mDecimals(decimals),
          mScaled((magnitude - mInteger) * std::pow(10, decimals))
    {
        const double digits = std::floor(mScaled);
        mLow = std::fmod(digits, lowUnit);
        mHigh = std::round((digits - mLow) / lowUnit);
    }

    void roundTo(double step)
    {
        const double rest = std::fmod(mLow, step);
        const double below = rest + (mScaled - std::floor(mScaled));
        mLow -= rest;
        if (below < step - below)
            return;
        mLow += step;
        if (mDecimals > lowDigits && mLow >= lowUnit)
        {
            mLow -= lowUnit;
            mHigh += 1.0;
        }
        double& leading = mDecimals > lowDigits ? mHigh : mLow;
        const double limit = std::pow(10, mDecimals > lowDigits ? mDecimals - lowDigits : mDecimals);
        if (leading >= limit)
        {
            leading -= limit;
            mInteger += 1.0;
        }
    }

    bool isZero() const { return mInteger == 0.0 && mHigh == 0.0 && mLow == 0.0; }

    std::string text(bool withDecimals) const
    {
        std::string result = impl::fixedReal(mInteger, 0);
        if (!withDecimals)
            return result;
        result += '.';
        if (mDecimals > lowDigits)
            result += kyStringUtils::fromUInt64(static_cast<std::uint64_t>(mHigh), mDecimals - lowDigits);
        return result + kyStringUtils::fromUInt64(static_cast<std::uint64_t>(mLow), std::min(mDecimals, lowDigits));
    }

private:
    double mInteger;
    int mDecimals;
    double mScaled;
    double mLow;
    double mHigh;
};

} // namespace

std::string kyStringUtils::roundNumber(double value, unsigned char denominator, char extraDecimals, bool forceSign,
                                       unsigned char maxDecimals)
{
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0.0 ? "inf" : "-inf";
    const int extra = static_cast<signed char>(extraDecimals);
    if (denominator >= fractions.size() || extra >= firstUnusable)
        return roundedInteger(value, forceSign);
    const Fraction fraction = fractions[denominator];
    const int decimals = fraction.decimals + extra;
    if (decimals == 0)
        return roundedInteger(value, forceSign);
    Decimal decimal(std::fabs(value), decimals);
    decimal.roundTo(std::max(1U, fraction.step));
    std::string sign;
    if (value < 0.0 ? forceSign || !decimal.isZero() : forceSign)
        sign = value < 0.0 ? "-" : "+";
    return sign + decimal.text(std::min<int>(decimals, maxDecimals) >= 1);
}

namespace
{

constexpr std::int64_t mostInteger = std::numeric_limits<std::int64_t>::max();
constexpr double integerLimit = 9223372036854775808.0; // 2^63

struct Ratio
{
    std::int64_t numerator;
    std::int64_t denominator;

    double distanceTo(double value) const
    {
        return std::fabs(value - static_cast<double>(numerator) / static_cast<double>(denominator));
    }
};

/// The largest n >= 0 for which last * n + previous stays within `limit`.
std::int64_t mostTimes(std::int64_t last, std::int64_t previous, std::int64_t limit)
{
    return last == 0 ? limit : (limit - previous) / last;
}

/// Of a value from 0 to below 2^63.
Ratio approximate(double value, std::int64_t maxDenominator)
{
    constexpr double largestTerm = 2147483647.0;
    Ratio last{1, 0};
    Ratio previous{0, 1};
    const auto extended = [&](std::int64_t term) {
        return Ratio{last.numerator * term + previous.numerator, last.denominator * term + previous.denominator};
    };
    double rest = value;
    for (auto term = static_cast<std::int64_t>(value);; term = static_cast<std::int64_t>(rest))
    {
        const Ratio next = extended(term);
        previous = last;
        last = next;
        const double fraction = rest - static_cast<double>(term);
        if (fraction == 0.0)
            break;
        rest = 1.0 / fraction;
        if (rest > largestTerm)
            break;
        const auto following = static_cast<std::int64_t>(rest);
        if (following > mostTimes(last.denominator, previous.denominator, maxDenominator) ||
            following > mostTimes(last.numerator, previous.numerator, mostInteger))
            break;
    }
    const std::int64_t times = std::min(mostTimes(last.denominator, previous.denominator, maxDenominator),
                                        mostTimes(last.numerator, previous.numerator, mostInteger));
    const Ratio between = extended(times);
    if (between.distanceTo(value) < last.distanceTo(value))
        return between;
    return last;
}

} // namespace

void kyStringUtils::computeFractionnalRepresentation(double value, std::int64_t& numerator, std::int64_t& denominator,
                                                     std::int64_t maxDenominator)
{
    const double magnitude = std::fabs(value);
    Ratio ratio{0, 1};
    if (magnitude >= integerLimit)
        ratio.numerator = mostInteger;
    else if (!std::isnan(value))
        ratio = approximate(magnitude, std::max<std::int64_t>(maxDenominator, 1));
    numerator = value < 0.0 ? -ratio.numerator : ratio.numerator;
    denominator = ratio.denominator;
}

} // namespace ky
