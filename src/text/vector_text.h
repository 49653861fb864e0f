// SPDX-License-Identifier: MIT
// The vector forms of the UTF-8 check, the hexadecimal codec and the byte search. vector_text_x64.cpp has them for
// SSSE3, which is wide enough to be limited by memory and needs no support of the operating system;
// vector_text_none.cpp says that there are none.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ky::impl
{

struct VectorText
{
    /// Whether [data, data + size) is well-formed up to the returned position, which is `size` when all of it is. When
    /// not, the first ill-formed sequence begins at the returned position or at most 63 bytes behind it, and the
    /// position is the start of a sequence. `starts` receives the number of bytes that begin a sequence; it is
    /// meaningful for well-formed text only.
    std::size_t (*scanUtf8)(const char* data, std::size_t size, std::size_t& starts) noexcept;

    /// Writes 2 x n characters for the first n bytes; returns n, which is `size` rounded down to the block length.
    std::size_t (*encodeHex)(const char* bytes, std::size_t size, const char* sixteenDigits, char* out) noexcept;

    /// Decodes leading pairs; returns how many. Stops before a block that holds anything but digits, or is not full.
    std::size_t (*decodeHex)(const char* text, std::size_t pairs, char* out) noexcept;

    /// Bit i is set when first[i] == firstByte and last[i] == lastByte, for i below 64.
    std::uint64_t (*matchMask)(const char* first, char firstByte, const char* last, char lastByte) noexcept;
};

/// Null when the processor lacks what they need.
const VectorText* vectorText() noexcept;

} // namespace ky::impl
