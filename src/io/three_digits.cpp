// SPDX-License-Identifier: MIT
#include "io/three_digits.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace ky::impl
{

namespace
{

// Exact as doubles, so that scaling rounds once.
constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10,
                             1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21};

constexpr int lastFixed = 2; // exponent of fixed notation
constexpr double smallest = 1e-4;
constexpr double largest = 1e21;

/// The error of the scaled value is far below this.
constexpr double doubtful = 1e-9;

/// Of a value in [smallest, largest). Beside a power of ten it may be off by one: rounding corrects that.
int decimalExponent(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const int binary = static_cast<int>(bits >> 52) - 1023;
    const int estimate = (binary * 1233) >> 12; // x log10(2), the true exponent or one less
    const double next = estimate + 1 >= 0 ? powers[estimate + 1] : 1 / powers[-estimate - 1];
    return value >= next ? estimate + 1 : estimate;
}

struct Digits
{
    explicit Digits(unsigned number)
        : first(digit(number / 100)),
          second(digit(number / 10 % 10)),
          third(digit(number % 10)),
          count(third != '0'    ? 3
                : second != '0' ? 2
                                : 1)
    {
    }
    static char digit(unsigned value) { return static_cast<char>('0' + value); }

    char first;
    char second;
    char third;
    int count; ///< without zeros at the end
};

/// With a point behind `whole` digits, 1 to 3.
char* writeDigits(char* to, const Digits& digits, int whole)
{
    to[0] = digits.first;
    to[whole == 1 ? 2 : 1] = digits.second;
    to[whole == 3 ? 2 : 3] = digits.third;
    if (digits.count <= whole)
        return to + whole;
    to[whole] = '.';
    return to + digits.count + 1;
}

char* writeGeneral(char* to, const Digits& digits, int exponent)
{
    if (exponent < 0)
    {
        std::memcpy(to, "0.000", 5);
        to += 1 - exponent;
        to[0] = digits.first;
        to[1] = digits.second;
        to[2] = digits.third;
        return to + digits.count;
    }
    if (exponent <= lastFixed)
        return writeDigits(to, digits, exponent + 1);
    to = writeDigits(to, digits, 1);
    to[0] = 'e';
    to[1] = '+';
    to[2] = static_cast<char>('0' + exponent / 10);
    to[3] = static_cast<char>('0' + exponent % 10);
    return to + 4;
}

} // namespace

ThreeDigitText::ThreeDigitText(double value) noexcept
{
    if (writeUsual(value))
        return;
    char* const begin = mBuffer.data();
    mSize = static_cast<std::size_t>(
        std::to_chars(begin, begin + mBuffer.size(), value, std::chars_format::general, 3).ptr - begin);
}

/// False for what needs more care: very small and large values, 0, no numbers, and values at a half digit.
bool ThreeDigitText::writeUsual(double value) noexcept
{
    const double magnitude = std::fabs(value);
    if (!(magnitude >= smallest && magnitude < largest))
        return false;
    int exponent = decimalExponent(magnitude);
    const double scaled = exponent <= 2 ? magnitude * powers[2 - exponent] : magnitude / powers[exponent - 2];
    auto digits = static_cast<unsigned>(scaled);
    const double rest = scaled - digits;
    if (std::fabs(rest - 0.5) < doubtful)
        return false;
    digits += rest > 0.5 ? 1U : 0U;
    if (digits > 999)
    {
        digits = 100;
        ++exponent;
    }
    mBuffer[0] = '-';
    char* const to = writeGeneral(mBuffer.data() + (std::signbit(value) ? 1 : 0), Digits(digits), exponent);
    mSize = static_cast<std::size_t>(to - mBuffer.data());
    return true;
}

} // namespace ky::impl
