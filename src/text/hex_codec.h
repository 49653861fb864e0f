// SPDX-License-Identifier: MIT
// Bytes to hexadecimal digits and back. Vector code where the processor has it; the portable forms give the same
// answers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ky::impl
{

inline constexpr char lowerHexDigits[] = "0123456789abcdef";
inline constexpr char upperHexDigits[] = "0123456789ABCDEF";

/// Writes 2 x `size` characters, high nibble first, without a final NUL. `sixteenDigits` is one of the two above.
void encodeHex(const char* bytes, std::size_t size, const char* sixteenDigits, char* out) noexcept;

/// Decodes pairs of digits of either case up to the first that is none. Returns the number of bytes written.
std::size_t decodeHex(const char* text, std::size_t pairs, char* out) noexcept;

void portableEncodeHex(const char* bytes, std::size_t size, const char* sixteenDigits, char* out) noexcept;
std::size_t portableDecodeHex(const char* text, std::size_t pairs, char* out) noexcept;

} // namespace ky::impl
