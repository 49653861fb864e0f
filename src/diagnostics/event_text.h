// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace ky::impl
{

/// The longest start of the UTF-8 text that has at most `units` units in UTF-16 and ends at a character border. An
/// ill-formed byte counts as one unit.
std::string_view cutToUtf16Units(std::string_view utf8, std::size_t units) noexcept;

} // namespace ky::impl
