// SPDX-License-Identifier: MIT
// The character classes of the locale "C", independent of the locale in force and valid for every byte.
#pragma once

#include <string_view>

namespace ky::impl
{

constexpr bool isSpace(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }
constexpr char lowerByte(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}
constexpr char upperByte(char byte)
{
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - ('a' - 'A')) : byte;
}

/// `text` without white space at its ends.
constexpr std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace ky::impl
