// SPDX-License-Identifier: MIT
#include "text/real_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace ky::impl
{

namespace
{

constexpr int defaultPrecision = 6;
// No double has more decimals, nor more significant digits.
constexpr int mostDigits = 1074;
// Sign, 309 digits before the point, the point, and a margin.
using Buffer = std::array<char, mostDigits + 320>;

double power(int exponent)
{
    static constexpr std::array<double, 23> powers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                      1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    return powers[static_cast<std::size_t>(exponent)];
}

constexpr int mostPrecision = 6; // the error then stays far below what counts as a half

/// Whether a rest of a rounded product lies where its error might decide about a half.
bool isDoubtful(double rest) { return std::fabs(rest - 0.5) < 1e-6; }

/// Few digits of values of common size, by one multiplication or division with an exact power of ten, which is rounded
/// once. Gives up where that rounding might decide about a half.
class FewDigits
{
public:
    FewDigits(double value, int precision) : mPrecision(precision)
    {
        const double magnitude = std::fabs(value);
        if (precision < 1 || precision > mostPrecision || !(magnitude >= 1e-5 && magnitude < 1e15))
            return;
        mExponent = exponentOf(magnitude);
        const int shift = precision - 1 - mExponent;
        const double scaled = shift >= 0 ? magnitude * power(shift) : magnitude / power(-shift);
        mDigits = static_cast<std::uint32_t>(scaled);
        const double rest = scaled - static_cast<double>(mDigits);
        if (isDoubtful(rest))
            return;
        mDigits += rest > 0.5 ? 1 : 0;
        if (static_cast<double>(mDigits) >= power(precision))
        {
            mDigits /= 10;
            ++mExponent;
        }
        mNegative = value < 0.0;
        mValid = true;
    }

    bool isValid() const { return mValid; }

    std::string text() const
    {
        std::array<char, 8> digits;
        std::uint32_t rest = mDigits;
        for (int i = mPrecision - 1; i >= 0; --i, rest /= 10)
            digits[static_cast<std::size_t>(i)] = static_cast<char>('0' + rest % 10);
        int count = mPrecision;
        while (digits[static_cast<std::size_t>(count - 1)] == '0')
            --count;
        std::array<char, 24> buffer;
        char* end = buffer.data();
        if (mNegative)
            *end++ = '-';
        end = mExponent < -4 || mExponent >= mPrecision ? scientific(digits.data(), count, end)
                                                        : positional(digits.data(), count, end);
        return std::string(buffer.data(), end);
    }

private:
    /// Of the first digit; one off beside a power of ten does no harm, because the digits are then rounded across it.
    static int exponentOf(double magnitude)
    {
        const auto binary = static_cast<int>(std::bit_cast<std::uint64_t>(magnitude) >> 52) - 1023;
        const int estimate = (binary * 1233 - (binary < 0 ? 4095 : 0)) / 4096; // floor of binary * log10(2)
        const int above = estimate + 1;
        const bool reached = above >= 0 ? magnitude >= power(above) : magnitude * power(-above) >= 1.0;
        return reached ? above : estimate;
    }

    static char* scientificExponent(int exponent, char* end)
    {
        *end++ = 'e';
        *end++ = exponent < 0 ? '-' : '+';
        const int magnitude = std::abs(exponent);
        *end++ = static_cast<char>('0' + magnitude / 10);
        *end++ = static_cast<char>('0' + magnitude % 10);
        return end;
    }

    char* scientific(const char* digits, int count, char* end) const
    {
        *end++ = *digits;
        if (count > 1)
            *end++ = '.';
        return scientificExponent(mExponent, std::copy(digits + 1, digits + count, end));
    }

    char* positional(const char* digits, int count, char* end) const
    {
        if (mExponent < 0)
        {
            *end++ = '0';
            *end++ = '.';
            end = std::fill_n(end, -mExponent - 1, '0');
            return std::copy(digits, digits + count, end);
        }
        const int whole = mExponent + 1;
        if (count <= whole)
            return std::fill_n(std::copy(digits, digits + count, end), whole - count, '0');
        end = std::copy(digits, digits + whole, end);
        *end++ = '.';
        return std::copy(digits + whole, digits + count, end);
    }

    int mPrecision;
    int mExponent = 0;
    std::uint32_t mDigits = 0;
    bool mNegative = false;
    bool mValid = false;
};

/// The same with few decimals; empty where it gives up.
std::string fewDecimals(double value, int precision)
{
    if (precision < 0 || precision > mostPrecision)
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

std::string generalReal(double value, int precision)
{
    const FewDigits few(value, precision);
    if (few.isValid())
        return few.text();
    Buffer buffer;
    const int digits = precision < 0 ? defaultPrecision : std::min(precision, mostDigits);
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
