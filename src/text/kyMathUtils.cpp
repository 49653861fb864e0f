// SPDX-License-Identifier: MIT
#include <ky/kyMathUtils.h>

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <string>

namespace ky
{

namespace
{

constexpr std::size_t mostDigits = 10; // of 32 bits

struct Prefix
{
    double above;
    double factor;
    char sign;
};

constexpr Prefix prefixes[] = {{1e12, 1e-12, 'T'}, {1e9, 1e-9, 'G'},   {1e6, 1e-6, 'M'},    {1000.0, 0.001, 'k'},
                               {0.001, 1.0, ' '},  {1e-6, 0.001, 'm'}, {1e-9, 1e-6, '\xB5'}};

std::string currentThousandsSeparator()
{
    const char* const separator = std::localeconv()->thousands_sep;
    return separator == nullptr || *separator == '\0' ? "," : separator;
}

} // namespace

void kyMathUtils::Format3Digit(float value, float& scaled, char& prefix)
{
    const double exact = static_cast<double>(value);
    for (const Prefix& candidate : prefixes)
        if (exact > candidate.above)
        {
            scaled = static_cast<float>(std::floor(exact * candidate.factor * 1000.0) / 1000.0);
            prefix = candidate.sign;
            return;
        }
    scaled = value;
    prefix = ' ';
}

const char* kyMathUtils::FormatIntegerSeparator(unsigned long value)
{
    // Never destroyed: static destructors of programs may still call this, or use the text.
    static const std::string& separator = *new std::string(currentThousandsSeparator());
    static std::string& text = *new std::string;
    text.reserve(mostDigits + mostDigits / 3 * separator.size()); // the buffer is never exchanged again
    char digits[mostDigits];
    const char* const end = std::to_chars(digits, digits + mostDigits, static_cast<std::uint32_t>(value)).ptr;
    text.clear();
    for (const char* digit = digits; digit != end; ++digit)
    {
        if (digit != digits && (end - digit) % 3 == 0)
            text += separator;
        text += *digit;
    }
    return text.c_str();
}

bool isNumber(double value) noexcept { return !std::isnan(value); }

bool isFiniteNumber(double value) noexcept { return std::isfinite(value); }

} // namespace ky
