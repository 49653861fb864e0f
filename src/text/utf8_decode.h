// SPDX-License-Identifier: MIT
// One code point at a time, from bytes that may be anything.
#pragma once

#include <cstddef>
#include <string_view>

namespace ky::impl
{

struct DecodedCharacter
{
    char32_t value = 0xFFFD;
    std::size_t length = 1; ///< bytes
    bool isWellFormed = false;
};

/// The first code point of a text that is not empty. Where it is ill-formed, U+FFFD stands for the longest beginning of
/// a well-formed sequence, or for one byte.
constexpr DecodedCharacter decodeUtf8(std::string_view text) noexcept
{
    const unsigned lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80)
        return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t value = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        const unsigned next = i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
        if (next < lowest || next > highest)
            return {0xFFFD, i, false};
        value = (value << 6) | (next & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {value, length, true};
}

} // namespace ky::impl
