// SPDX-License-Identifier: MIT
// Eight characters of a text looked at side by side, as the bytes of one word.
#pragma once

#include <cstdint>
#include <cstring>

namespace ky::impl
{

constexpr std::uint64_t inEveryByte(unsigned byte) { return byte * std::uint64_t{0x0101010101010101}; }

/// A word of the given type, in the byte order of the processor.
template <typename Word>
std::uint64_t wordAt(const char* at) noexcept
{
    Word word = 0;
    std::memcpy(&word, at, sizeof word);
    return word;
}

/// The high bit of every byte from `first` to `last`. No sum leaves its byte while all of them are ASCII.
constexpr std::uint64_t bytesBetween(std::uint64_t word, char first, char last)
{
    const auto distance = [](int limit, char to) { return inEveryByte(static_cast<unsigned>(limit - to)); };
    return (word + distance(0x80, first)) & ~(word + distance(0x7F, last)) & inEveryByte(0x80);
}

} // namespace ky::impl
