// SPDX-License-Identifier: MIT
#include "text/natural_native.h"

#include "platform/win32.h"

#include <climits>

namespace ky::impl::native
{

int compareNatural(std::wstring_view a, std::wstring_view b, bool caseSensitive)
{
    constexpr int failure = -2;
    if (a.size() > INT_MAX || b.size() > INT_MAX)
        return failure;
    const DWORD flags = SORT_DIGITSASNUMBERS | (caseSensitive ? 0 : NORM_IGNORECASE);
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, flags, a.data(), static_cast<int>(a.size()), b.data(),
                           static_cast<int>(b.size()), nullptr, nullptr, 0) -
           CSTR_EQUAL;
}

bool compareNaturalBytes(std::string_view, std::string_view, bool, int&) { return false; }

} // namespace ky::impl::native
