// SPDX-License-Identifier: MIT
#include "text/number_parse.h"

#include "text/character_class.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace ky::impl
{
namespace
{

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr std::array<std::uint8_t, 256> hexDigits = []
{
    std::array<std::uint8_t, 256> table{};
    for (std::size_t c = 0; c < table.size(); ++c)
    {
        const bool decimal = c >= '0' && c <= '9';
        const std::size_t small = c | 0x20U;
        const std::size_t digit = decimal ? c - '0' : (small >= 'a' && small <= 'f' ? small - 'a' + 10 : 16);
        table[c] = static_cast<std::uint8_t>(digit);
    }
    return table;
}();

/// 0 to 15, or 16 for anything but a hexadecimal digit.
unsigned hexDigit(char c) noexcept { return hexDigits[static_cast<unsigned char>(c)]; }

bool isHexPrefix(const char* at, const char* end) noexcept
{
    return end - at >= 2 && at[0] == '0' && lowerByte(at[1]) == 'x';
}

/// Skips white space and one sign; returns whether it was a minus.
bool skipBlanksAndSign(const char*& at, const char* end) noexcept
{
    while (at != end && isSpace(*at))
        ++at;
    if (at == end || (*at != '-' && *at != '+'))
        return false;
    return *at++ == '-';
}

bool equalsFolded(std::string_view text, std::string_view lowered) noexcept
{
    if (text.size() != lowered.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (lowerByte(text[i]) != lowered[i])
            return false;
    }
    return true;
}

/// "inf", "infinity", "nan" and "nan(...)" with letters, digits and underscores in the parentheses.
bool parseName(std::string_view text, double& value) noexcept
{
    if (equalsFolded(text, "inf") || equalsFolded(text, "infinity"))
    {
        value = std::numeric_limits<double>::infinity();
        return true;
    }
    if (!equalsFolded(text.substr(0, 3), "nan"))
        return false;
    std::string_view rest = text.substr(3);
    if (!rest.empty())
    {
        if (rest.size() < 2 || rest.front() != '(' || rest.back() != ')')
            return false;
        rest.remove_prefix(1);
        rest.remove_suffix(1);
        for (const char c : rest)
        {
            if (!isDigit(c) && c != '_' && (lowerByte(c) < 'a' || lowerByte(c) > 'z'))
                return false;
        }
    }
    value = std::numeric_limits<double>::quiet_NaN();
    return true;
}

/// An optional exponent behind `mark`, saturated far outside every range. False if anything else is found.
bool parseExponent(const char* at, const char* end, char mark, std::int64_t& exponent) noexcept
{
    exponent = 0;
    if (at == end)
        return true;
    if (lowerByte(*at++) != mark)
        return false;
    bool negative = false;
    if (at != end && (*at == '-' || *at == '+'))
        negative = *at++ == '-';
    if (at == end)
        return false;
    constexpr std::int64_t limit = std::int64_t{1} << 60;
    for (; at != end; ++at)
    {
        if (!isDigit(*at))
            return false;
        if (exponent < limit / 16)
            exponent = exponent * 10 + (*at - '0');
    }
    if (negative)
        exponent = -exponent;
    return true;
}

/// mantissa * 2^exponent, rounded once to the nearest double, ties to even; `sticky` stands for bits cut off below.
double scaleBinary(std::uint64_t mantissa, bool sticky, std::int64_t exponent) noexcept
{
    if (mantissa == 0)
        return 0.0;
    while ((mantissa >> 63) == 0)
    {
        mantissa <<= 1;
        --exponent;
    }
    // The value is now 1.xxx * 2^(exponent + 63); subnormal results keep fewer than 53 bits.
    if (exponent + 63 > 1023)
        return std::numeric_limits<double>::infinity();
    std::int64_t dropped = 11;
    if (exponent + 63 < -1022)
        dropped += -1022 - (exponent + 63);
    if (dropped > 64)
        return 0.0;
    const std::uint64_t kept = dropped == 64 ? 0 : mantissa >> dropped;
    const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    const std::uint64_t rest = mantissa & (half | (half - 1));
    const bool up = rest > half || (rest == half && (sticky || (kept & 1U) != 0));
    return std::ldexp(static_cast<double>(kept + (up ? 1U : 0U)), static_cast<int>(exponent + dropped));
}

/// The text behind "0x".
bool parseHexReal(const char* at, const char* end, double& value) noexcept
{
    std::uint64_t mantissa = 0;
    bool sticky = false;
    bool anyDigit = false;
    bool afterPoint = false;
    std::int64_t scale = 0;
    for (; at != end; ++at)
    {
        if (*at == '.' && !afterPoint)
        {
            afterPoint = true;
            continue;
        }
        const unsigned digit = hexDigit(*at);
        if (digit > 15)
            break;
        anyDigit = true;
        if ((mantissa >> 60) == 0)
        {
            mantissa = mantissa << 4 | digit;
            scale -= afterPoint ? 4 : 0;
        }
        else
        {
            sticky = sticky || digit != 0;
            scale += afterPoint ? 0 : 4;
        }
    }
    std::int64_t exponent = 0;
    if (!anyDigit || !parseExponent(at, end, 'p', exponent))
        return false;
    value = scaleBinary(mantissa, sticky, exponent + scale);
    return true;
}

/// The result for a well-formed decimal number that from_chars finds out of range: infinite or 0.
double saturateDecimal(const char* at, const char* end) noexcept
{
    std::int64_t magnitude = 0;
    bool significant = false;
    bool afterPoint = false;
    for (; at != end && (isDigit(*at) || *at == '.'); ++at)
    {
        if (*at == '.')
        {
            afterPoint = true;
            continue;
        }
        significant = significant || *at != '0';
        if (!afterPoint)
            magnitude += significant ? 1 : 0;
        else
            magnitude -= significant ? 0 : 1;
    }
    std::int64_t exponent = 0;
    parseExponent(at, end, 'e', exponent);
    return magnitude + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

bool parseDecimalReal(const char* at, const char* end, double& value) noexcept
{
    const std::from_chars_result result = std::from_chars(at, end, value);
    if (result.ptr != end)
        return false;
    if (result.ec == std::errc::result_out_of_range)
        value = saturateDecimal(at, end);
    return result.ec != std::errc::invalid_argument;
}

template <unsigned Base>
unsigned digitOf(char c) noexcept
{
    if constexpr (Base == 16)
        return hexDigit(c);
    else
        return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0';
}

template <unsigned Base>
bool parseDigits(const char* at, const char* end, bool negative, std::int64_t& value, bool& saturated) noexcept
{
    // So many digits fit whatever they are.
    constexpr std::ptrdiff_t safe = Base == 16 ? 15 : (Base == 10 ? 18 : 20);
    std::uint64_t sum = 0;
    for (const char* const safeEnd = end - at > safe ? at + safe : end; at != safeEnd; ++at)
    {
        const unsigned digit = digitOf<Base>(*at);
        if (digit >= Base)
            return false;
        sum = sum * Base + digit;
    }
    const std::uint64_t limit =
        static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + (negative ? 1U : 0U);
    for (; at != end; ++at)
    {
        const unsigned digit = digitOf<Base>(*at);
        if (digit >= Base)
            return false;
        saturated = saturated || sum > (limit - digit) / Base;
        sum = sum * Base + digit;
    }
    sum = saturated ? limit : sum;
    value = static_cast<std::int64_t>(negative ? 0 - sum : sum);
    return true;
}

/// `saturated` is false before.
bool parseInteger(std::string_view text, std::int64_t& value, bool& saturated) noexcept
{
    const char* at = text.data();
    const char* const end = at + text.size();
    if (text.empty())
    {
        value = 0;
        return true;
    }
    const bool negative = skipBlanksAndSign(at, end);
    if (at == end)
        return false;
    if (*at != '0')
        return parseDigits<10>(at, end, negative, value, saturated);
    if (isHexPrefix(at, end))
        return end - at > 2 && parseDigits<16>(at + 2, end, negative, value, saturated);
    return parseDigits<8>(at, end, negative, value, saturated);
}

} // namespace

bool parseWholeInteger(std::string_view text, std::int64_t& value) noexcept
{
    bool saturated = false;
    return parseInteger(text, value, saturated);
}

bool parseWholeIntegerExactly(std::string_view text, std::int64_t& value) noexcept
{
    bool saturated = false;
    return parseInteger(text, value, saturated) && !saturated;
}

bool parseWholeReal(std::string_view text, double& value) noexcept
{
    const char* at = text.data();
    const char* const end = at + text.size();
    if (text.empty())
    {
        value = 0.0;
        return true;
    }
    const bool negative = skipBlanksAndSign(at, end);
    if (at == end)
        return false;
    double magnitude = 0.0;
    bool whole = false;
    if (isHexPrefix(at, end))
        whole = parseHexReal(at + 2, end, magnitude);
    else if (isDigit(*at) || *at == '.')
        whole = parseDecimalReal(at, end, magnitude);
    else
        whole = parseName(std::string_view(at, static_cast<std::size_t>(end - at)), magnitude);
    if (whole)
        value = negative ? -magnitude : magnitude;
    return whole;
}

} // namespace ky::impl
