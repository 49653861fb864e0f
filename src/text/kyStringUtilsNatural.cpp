// SPDX-License-Identifier: MIT
#include "text/natural_native.h"

#include <ky/kyStringUtils.h>

namespace ky
{

int kyStringUtils::CompareUTF16Natural(const wchar_t* a, std::size_t lengthA, const wchar_t* b, std::size_t lengthB,
                                       bool caseSensitive)
{
    return impl::native::compareNatural({a, lengthA}, {b, lengthB}, caseSensitive);
}

int kyStringUtils::CompareUTF8Natural(const std::string& a, const std::string& b, bool caseSensitive)
{
    int result = 0;
    if (impl::native::compareNaturalBytes(a, b, caseSensitive, result))
        return result;
    return impl::native::compareNatural(convertToUnicode(a, Utf8), convertToUnicode(b, Utf8), caseSensitive);
}

bool kyStringUtils::UTF8NaturalSortFunction(const std::string& a, const std::string& b)
{
    return CompareUTF8Natural(a, b, true) == -1;
}

bool kyStringUtils::UTF8NaturalSortFunctionCaseInsensitive(const std::string& a, const std::string& b)
{
    return CompareUTF8Natural(a, b, false) == -1;
}

} // namespace ky
