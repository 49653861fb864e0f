// SPDX-License-Identifier: MIT
// The characters are taken as two words, right-aligned and filled up with zeros in front, and all bytes of a word are
// looked at and summed side by side: texts of different lengths then take the same way.
#include "text/plain_number.h"

#include "platform/compiler.h"
#include "text/byte_lanes.h"

#include <array>
#include <bit>
#include <cfloat>

namespace ky::impl
{
namespace
{

constexpr std::size_t wordSize = 8;

/// The digits 0 that come first in a word whose last `size` bytes are taken, 1 at least.
std::uint64_t zerosBefore(std::size_t size) noexcept { return inEveryByte('0') >> (8 * (size - 1)) >> 8; }

/// The last word of a text of 1 character or more.
std::uint64_t lastWord(const char* at, std::size_t size) noexcept
{
    if (size >= wordSize)
        return wordAt<std::uint64_t>(at + size - wordSize);
    const std::size_t shift = 8 * (wordSize - size);
    if (size >= 4) // two halves that overlap as the size demands
        return zerosBefore(size) | wordAt<std::uint32_t>(at) << shift | wordAt<std::uint32_t>(at + size - 4) << 32;
    const std::size_t middle = size / 2;
    return zerosBefore(size) | wordAt<std::uint8_t>(at) << shift |
           wordAt<std::uint8_t>(at + middle) << (shift + 8 * middle) | wordAt<std::uint8_t>(at + size - 1) << 56;
}

/// What stands before it; more than 8 and up to 16 characters in all.
std::uint64_t firstWord(const char* at, std::size_t size) noexcept
{
    return zerosBefore(size - wordSize) | wordAt<std::uint64_t>(at) << (8 * (2 * wordSize - size));
}

/// The high bit of every byte that is more than 9.
std::uint64_t beyondNine(std::uint64_t word) noexcept
{
    return (((word & inEveryByte(0x7F)) + inEveryByte(0x80 - 10)) | word) & inEveryByte(0x80);
}

/// The number that eight bytes from 0 to 9 are the digits of: pairs, fours and eights are summed side by side.
std::uint64_t sumOfDigits(std::uint64_t word) noexcept
{
    word = word * 10 + (word >> 8);
    constexpr std::uint64_t pairs = 0x000000FF000000FF;
    const std::uint64_t upper = (word & pairs) * (100 + (std::uint64_t{1'000'000} << 32));
    const std::uint64_t lower = ((word >> 16) & pairs) * (1 + (std::uint64_t{10'000} << 32));
    return (upper + lower) >> 32;
}

PlainNumber unclear() noexcept { return {PlainNumber::Form::Unclear, {0}}; }

PlainNumber integerOf(std::uint64_t magnitude, bool negative) noexcept
{
    return {PlainNumber::Form::Integer, {static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude)}};
}

/// The digits with so many of them behind the separator.
PlainNumber realOf(std::uint64_t digits, std::size_t behind, bool negative) noexcept
{
    // Exact doubles: one division of two of them is rounded once, as the number itself would be.
    static constexpr std::array<double, 16> powers = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    if (digits > std::uint64_t{1} << DBL_MANT_DIG || FLT_EVAL_METHOD != 0)
        return unclear();
    const double magnitude = static_cast<double>(static_cast<std::int64_t>(digits)) / powers[behind];
    PlainNumber real = {PlainNumber::Form::Real, {0}};
    real.real = negative ? -magnitude : magnitude;
    return real;
}

/// A word of digits around a separator.
struct Fraction
{
    /// `odd` marks what is no digit, one byte at least.
    Fraction(std::uint64_t word, std::uint64_t odd) noexcept
    {
        const int at = std::countr_zero(odd) & ~7;
        const std::uint64_t separator = word >> at & 0xFF;
        valid = (odd & (odd - 1)) == 0 && (separator == ('.' ^ '0') || separator == (',' ^ '0'));
        // What stands before the separator moves up into its place.
        const std::uint64_t before = (std::uint64_t{1} << at) - 1;
        digits = sumOfDigits((word & before) << 8 | (word & ~before << 8));
        behind = wordSize - 1 - static_cast<std::size_t>(at) / 8;
    }

    bool valid;
    std::uint64_t digits;
    std::size_t behind; ///< how many of them
};

// Apart, like the other rarer forms, so that short integers need no stack.
KY_NOINLINE PlainNumber shortRealOf(std::uint64_t word, std::uint64_t odd, bool negative) noexcept
{
    const Fraction fraction(word, odd);
    return fraction.valid ? realOf(fraction.digits, fraction.behind, negative) : unclear();
}

/// More than 8 and up to 16 characters. Which of the words holds the separator is no branch: it changes from one number
/// to the next.
KY_NOINLINE PlainNumber longNumberOf(const char* at, std::size_t size, bool negative) noexcept
{
    const std::uint64_t first = firstWord(at, size) ^ inEveryByte('0');
    const std::uint64_t last = lastWord(at, size) ^ inEveryByte('0');
    const std::uint64_t oddFirst = beyondNine(first);
    const std::uint64_t oddLast = beyondNine(last);
    if ((oddFirst | oddLast) == 0)
        return integerOf(sumOfDigits(first) * 100'000'000 + sumOfDigits(last), negative);
    const bool inLast = oddFirst == 0;
    const Fraction fraction(inLast ? last : first, inLast ? oddLast : oddFirst);
    if (!fraction.valid || (!inLast && oddLast != 0))
        return unclear();
    const std::uint64_t others = sumOfDigits(inLast ? first : last);
    const std::uint64_t digits =
        inLast ? others * 10'000'000 + fraction.digits : fraction.digits * 100'000'000 + others;
    return realOf(digits, fraction.behind + (inLast ? 0 : wordSize), negative);
}

/// Eight hexadecimal digits; false for any other character.
bool sumOfHexDigits(std::uint64_t word, std::uint64_t& number) noexcept
{
    constexpr std::uint64_t high = inEveryByte(0x80);
    const std::uint64_t letters = bytesBetween(word | inEveryByte(0x20), 'a', 'f');
    if ((word & high) != 0 || (bytesBetween(word, '0', '9') | letters) != high)
        return false;
    std::uint64_t sum = (word & inEveryByte(0x0F)) + (letters >> 7) * 9;
    sum = (sum << 4 | sum >> 8) & 0x00FF00FF00FF00FF;
    sum = (sum << 8 | sum >> 16) & 0x0000FFFF0000FFFF;
    number = (sum << 16 | sum >> 32) & 0xFFFFFFFF;
    return true;
}

/// The text behind "0x"; no more digits than fit, whatever they are.
KY_NOINLINE PlainNumber hexadecimalOf(const char* at, std::size_t size, bool negative) noexcept
{
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (size == 0 || !sumOfHexDigits(lastWord(at, size), last) ||
        (size > wordSize && !sumOfHexDigits(firstWord(at, size), first)))
        return unclear();
    return integerOf(first << 32 | last, negative);
}

/// Whether a text that begins with a letter may be one of the names of reals, "inf" and "nan".
bool mayBeName(std::string_view text) noexcept
{
    const auto is = [text](std::size_t i, char letter) { return (text[i] | 0x20) == letter; };
    return text.size() >= 3 && ((is(0, 'i') && is(1, 'n')) || (is(0, 'n') && is(1, 'a')));
}

} // namespace

PlainNumber parsePlainNumber(std::string_view text) noexcept
{
    if (text.empty() || std::endian::native != std::endian::little)
        return unclear();
    const char first = text.front();
    if (first >= 'A')
        return mayBeName(text) ? unclear() : PlainNumber{PlainNumber::Form::Text, {0}};
    const bool negative = first == '-';
    const char* const at = text.data() + (negative ? 1 : 0);
    const std::size_t size = text.size() - (negative ? 1 : 0);
    if (size == 0 || size > 2 * wordSize || *at < '0' || *at > '9')
        return unclear();
    if (*at == '0' && size > 1 && at[1] != '.' && at[1] != ',') // octal where it is not hexadecimal
        return (at[1] | 0x20) == 'x' ? hexadecimalOf(at + 2, size - 2, negative) : unclear();
    if (size > wordSize)
        return longNumberOf(at, size, negative);
    const std::uint64_t word = lastWord(at, size) ^ inEveryByte('0');
    const std::uint64_t odd = beyondNine(word);
    if (odd != 0)
        return shortRealOf(word, odd, negative);
    return integerOf(sumOfDigits(word), negative);
}

} // namespace ky::impl
