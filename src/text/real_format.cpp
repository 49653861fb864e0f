// SPDX-License-Identifier: MIT
#include "text/real_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace ky::impl
{

namespace
{

constexpr int defaultPrecision = 6;
// No double has more decimals, nor more significant digits.
constexpr int mostDigits = 1074;
// Sign, 309 digits before the point, the point, and a margin.
using Buffer = std::array<char, mostDigits + 320>;

} // namespace

std::string generalReal(double value, int precision)
{
    Buffer buffer;
    const int digits = precision < 0 ? defaultPrecision : std::min(precision, mostDigits);
    const std::to_chars_result end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits);
    return std::string(buffer.data(), end.ptr);
}

std::string fixedReal(double value, int precision)
{
    Buffer buffer;
    const int wanted = precision < 0 ? defaultPrecision : precision;
    const int digits = std::min(wanted, mostDigits);
    const std::to_chars_result end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    std::string text(buffer.data(), end.ptr);
    if (std::isfinite(value))
        text.append(static_cast<std::size_t>(wanted - digits), '0');
    return text;
}

} // namespace ky::impl
