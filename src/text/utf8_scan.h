// SPDX-License-Identifier: MIT
// Well-formedness of UTF-8: overlong forms, surrogates and code points above U+10FFFF are ill-formed; NUL is an
// ordinary character. Vector code where the processor has it, utfcpp elsewhere; both give the same answers.
#pragma once

#include <cstddef>
#include <string_view>

namespace ky::impl
{

/// Bytes of the longest well-formed prefix. It never ends inside a sequence. `size` means that the whole text is
/// well-formed.
std::size_t validUtf8Prefix(const char* data, std::size_t size) noexcept;

struct Utf8Count
{
    bool wellFormed = false;
    std::size_t codePoints = 0; ///< 0 when ill-formed
};

/// Checks the whole text and counts its code points in one pass.
Utf8Count countUtf8(const char* data, std::size_t size) noexcept;

inline bool isUtf8(std::string_view text) noexcept { return validUtf8Prefix(text.data(), text.size()) == text.size(); }

} // namespace ky::impl
