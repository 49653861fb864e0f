// SPDX-License-Identifier: MIT
#include "text/hex_codec.h"

#include "text/vector_text.h"

#include <array>

namespace ky::impl
{

namespace
{

constexpr signed char notADigit = -1;

constexpr std::array<signed char, 256> digitValues = []
{
    std::array<signed char, 256> values{};
    values.fill(notADigit);
    for (unsigned value = 0; value < 16; ++value)
    {
        values[static_cast<unsigned char>(lowerHexDigits[value])] = static_cast<signed char>(value);
        values[static_cast<unsigned char>(upperHexDigits[value])] = static_cast<signed char>(value);
    }
    return values;
}();

} // namespace

void portableEncodeHex(const char* bytes, std::size_t size, const char* sixteenDigits, char* out) noexcept
{
    for (std::size_t i = 0; i < size; ++i)
    {
        const unsigned char byte = static_cast<unsigned char>(bytes[i]);
        out[2 * i] = sixteenDigits[byte >> 4];
        out[2 * i + 1] = sixteenDigits[byte & 0x0F];
    }
}

std::size_t portableDecodeHex(const char* text, std::size_t pairs, char* out) noexcept
{
    for (std::size_t i = 0; i < pairs; ++i)
    {
        const int high = digitValues[static_cast<unsigned char>(text[2 * i])];
        const int low = digitValues[static_cast<unsigned char>(text[2 * i + 1])];
        if (high == notADigit || low == notADigit)
            return i;
        out[i] = static_cast<char>(high * 16 + low);
    }
    return pairs;
}

void encodeHex(const char* bytes, std::size_t size, const char* sixteenDigits, char* out) noexcept
{
    const VectorText* vector = vectorText();
    const std::size_t done = vector == nullptr ? 0 : vector->encodeHex(bytes, size, sixteenDigits, out);
    portableEncodeHex(bytes + done, size - done, sixteenDigits, out + 2 * done);
}

std::size_t decodeHex(const char* text, std::size_t pairs, char* out) noexcept
{
    const VectorText* vector = vectorText();
    const std::size_t done = vector == nullptr ? 0 : vector->decodeHex(text, pairs, out);
    return done + portableDecodeHex(text + 2 * done, pairs - done, out + done);
}

} // namespace ky::impl
