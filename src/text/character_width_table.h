// SPDX-License-Identifier: MIT
// How many columns of a terminal each code point takes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ky::impl
{

enum class WidthClass : std::uint8_t
{
    Zero,       ///< drawn with the character before it, or not at all
    Narrow,     ///< one column
    Wide,       ///< two columns
    WideAsEmoji ///< one column, two with U+FE0F behind it
};

constexpr std::size_t characterWidthRunCount = 1125;

/// Ascending. Each value begins a run of code points of one class: the first code point times 4, plus the class.
extern const std::uint32_t characterWidthRuns[characterWidthRunCount];

} // namespace ky::impl
