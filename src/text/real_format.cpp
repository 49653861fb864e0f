// SPDX-License-Identifier: MIT
#include "text/real_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace ky::impl
{

namespace
{

constexpr int defaultPrecision = 6;
// No double has more decimals, nor more significant digits.
constexpr int mostDigits = 1074;
// Sign, 309 digits before the point, the point, and a margin.
using Buffer = std::array<char, mostDigits + 320>;

constexpr int mostShortDigits = 6; // the error of the scaled value then stays far below what is doubtful
constexpr double smallest = 1e-5;
constexpr double largest = 1e21;

/// Whether a rest of a scaled value lies where the value's error might decide about a half.
bool isDoubtful(double rest) { return std::fabs(rest - 0.5) < 1e-6; }

double power(int exponent)
{
    static constexpr std::array<double, 23> powers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                      1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    return powers[static_cast<std::size_t>(exponent)];
}

/// Of the first digit; one off beside a power of ten does no harm, because the digits are then rounded across it.
int exponentOf(double magnitude)
{
    const auto binary = static_cast<int>(std::bit_cast<std::uint64_t>(magnitude) >> 52) - 1023;
    const int estimate = (binary * 1233) >> 12; // floor of binary * log10(2)
    const int above = estimate + 1;
    const bool reached = above >= 0 ? magnitude >= power(above) : magnitude * power(-above) >= 1.0;
    return reached ? above : estimate;
}

/// The digits that a value of common size is rounded to.
template <int Precision>
class ShortDigits
{
public:
    /// By one multiplication or division with an exact power of ten, which is rounded once. Gives up where that
    /// rounding might decide about a half.
    explicit ShortDigits(double magnitude) noexcept
    {
        if (!(magnitude >= smallest && magnitude < largest))
            return;
        mExponent = exponentOf(magnitude);
        const int shift = Precision - 1 - mExponent;
        const double scaled = shift >= 0 ? magnitude * power(shift) : magnitude / power(-shift);
        auto number = static_cast<std::uint32_t>(scaled);
        const double rest = scaled - static_cast<double>(number);
        if (isDoubtful(rest))
            return;
        number += rest > 0.5 ? 1U : 0U;
        if (number >= end)
        {
            number = end / 10;
            ++mExponent;
        }
        for (std::size_t i = Precision; i-- > 0; number /= 10)
            mDigits[i] = static_cast<char>('0' + number % 10);
        for (mCount = Precision; mDigits[mCount - 1] == '0';)
            --mCount;
    }

    bool isValid() const noexcept { return mCount != 0; }

    char* write(char* to) const noexcept
    {
        if (mExponent < -4 || mExponent >= Precision)
            return writeScientific(to);
        if (mExponent < 0)
        {
            std::memcpy(to, "0.00000", 8);
            to += 1 - mExponent;
            copyDigits(to, 0);
            return to + mCount;
        }
        const auto whole = static_cast<std::size_t>(mExponent) + 1;
        copyDigits(to, 0); // zeros before the point are among them
        if (mCount <= whole)
            return to + whole;
        copyDigits(to + whole + 1, whole);
        to[whole] = '.';
        return to + mCount + 1;
    }

private:
    static constexpr std::uint32_t end = []
    {
        std::uint32_t result = 1;
        for (int i = 0; i < Precision; ++i)
            result *= 10;
        return result;
    }();

    /// A whole word, because that takes one instruction.
    void copyDigits(char* to, std::size_t first) const noexcept { std::memcpy(to, mDigits.data() + first, 8); }

    char* writeScientific(char* to) const noexcept
    {
        to[0] = mDigits[0];
        to[1] = '.';
        copyDigits(to + 2, 1);
        to += mCount > 1 ? mCount + 1 : 1;
        *to++ = 'e';
        *to++ = mExponent < 0 ? '-' : '+';
        const int magnitude = std::abs(mExponent);
        *to++ = static_cast<char>('0' + magnitude / 10);
        *to++ = static_cast<char>('0' + magnitude % 10);
        return to;
    }

    std::array<char, 16> mDigits = {};
    std::size_t mCount = 0; ///< without zeros at the end
    int mExponent = 0;
};

/// 0 when the value is none of a common size.
template <int Precision>
std::size_t writeCommon(char* begin, double value) noexcept
{
    const ShortDigits<Precision> digits(std::fabs(value));
    if (!digits.isValid())
        return 0;
    *begin = '-';
    return static_cast<std::size_t>(digits.write(begin + (std::signbit(value) ? 1 : 0)) - begin);
}

// The compiler knows the number of digits: a CSV file is written at the speed of this.
std::size_t writeCommon(char* begin, double value, int precision) noexcept
{
    static_assert(mostShortDigits == 6);
    switch (precision)
    {
    case 1: return writeCommon<1>(begin, value);
    case 2: return writeCommon<2>(begin, value);
    case 3: return writeCommon<3>(begin, value);
    case 4: return writeCommon<4>(begin, value);
    case 5: return writeCommon<5>(begin, value);
    default: return writeCommon<6>(begin, value);
    }
}

/// The same with few decimals, 0 or more; empty where it gives up.
std::string fewDecimals(double value, int precision)
{
    if (precision > mostShortDigits)
        return {};
    const double scaled = std::fabs(value) * power(precision);
    if (!(scaled < 1e9))
        return {};
    auto digits = static_cast<std::uint32_t>(scaled);
    const double rest = scaled - static_cast<double>(digits);
    if (isDoubtful(rest))
        return {};
    digits += rest > 0.5 ? 1 : 0;
    std::array<char, 16> buffer;
    char* begin = buffer.data() + buffer.size();
    for (int i = 0; i < precision; ++i, digits /= 10)
        *--begin = static_cast<char>('0' + digits % 10);
    if (precision > 0)
        *--begin = '.';
    do
        *--begin = static_cast<char>('0' + digits % 10);
    while ((digits /= 10) != 0);
    if (std::signbit(value))
        *--begin = '-';
    return std::string(begin, buffer.data() + buffer.size());
}

} // namespace

ShortReal::ShortReal(double value, int precision) noexcept
{
    char* const begin = mBuffer.data();
    mSize = writeCommon(begin, value, precision);
    if (mSize == 0)
    {
        mSize = static_cast<std::size_t>(
            std::to_chars(begin, begin + mBuffer.size(), value, std::chars_format::general, precision).ptr - begin);
    }
}

std::string generalReal(double value, int precision)
{
    const int digits = precision < 0 ? defaultPrecision : std::clamp(precision, 1, mostDigits);
    if (digits <= mostShortDigits)
        return std::string(ShortReal(value, digits).view());
    Buffer buffer;
    const std::to_chars_result end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits);
    return std::string(buffer.data(), end.ptr);
}

std::string fixedReal(double value, int precision)
{
    const int wanted = precision < 0 ? defaultPrecision : precision;
    std::string few = fewDecimals(value, wanted);
    if (!few.empty())
        return few;
    Buffer buffer;
    const int digits = std::min(wanted, mostDigits);
    const std::to_chars_result end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    std::string text(buffer.data(), end.ptr);
    if (std::isfinite(value))
        text.append(static_cast<std::size_t>(wanted - digits), '0');
    return text;
}

} // namespace ky::impl
