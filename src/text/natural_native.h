// SPDX-License-Identifier: MIT
// The natural order of texts as the platform has it for its user.
#pragma once

#include <string_view>

namespace ky::impl::native
{

/// -1, 0 or 1; -2 when the platform fails.
int compareNatural(std::wstring_view a, std::wstring_view b, bool caseSensitive);

/// The same for UTF-8 where that can be told without decoding it; false otherwise.
bool compareNaturalBytes(std::string_view a, std::string_view b, bool caseSensitive, int& result);

} // namespace ky::impl::native
