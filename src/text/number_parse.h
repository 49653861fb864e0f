// SPDX-License-Identifier: MIT
// For every room. Text to number as the C library's strtoll (base 0) and strtod read it in the "C" locale, with the
// demand that the whole text is used up. The answers are the same on every platform and under every locale.
#pragma once

#include <cstdint>
#include <string_view>

namespace ky::impl
{

/// Leading white space, a sign, then decimal, 0x hexadecimal or 0 octal digits; values out of range saturate. The empty
/// text is 0. False, with `value` untouched, if anything is left over; blanks alone and what follows a NUL are.
bool parseWholeInteger(std::string_view text, std::int64_t& value) noexcept;

/// The same, but false for values out of range; `value` may have changed then.
bool parseWholeIntegerExactly(std::string_view text, std::int64_t& value) noexcept;

/// Leading white space, a sign, then a decimal or 0x hexadecimal number with '.' and exponent, "inf", "infinity", "nan"
/// or "nan(...)". Too large is infinite, too small is 0. The empty text is 0. False as above.
bool parseWholeReal(std::string_view text, double& value) noexcept;

} // namespace ky::impl
