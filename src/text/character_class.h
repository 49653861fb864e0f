// SPDX-License-Identifier: MIT
// The character classes of the locale "C", independent of the locale in force and valid for every byte.
#pragma once

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

} // namespace ky::impl
