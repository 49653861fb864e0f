// SPDX-License-Identifier: MIT
#include "text/charset_native.h"

#include "platform/win32.h"

#include <climits>
#include <locale.h>
#include <stdlib.h>
#include <type_traits>

namespace ky::impl::native
{

static_assert(std::is_same_v<kyCLocaleHandle, _locale_t>);

namespace
{

constexpr UINT codePageNumber(CodePage page) { return page == CodePage::Ansi ? CP_ACP : CP_UTF8; }

} // namespace

bool decode(CodePage page, std::string_view text, std::wstring& out)
{
    if (text.size() > INT_MAX)
        return false;
    const int size = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(codePageNumber(page), 0, text.data(), size, nullptr, 0);
    if (needed <= 0)
        return false;
    out.resize(static_cast<std::size_t>(needed));
    return MultiByteToWideChar(codePageNumber(page), 0, text.data(), size, out.data(), needed) == needed;
}

bool encode(CodePage page, std::wstring_view text, std::string& out)
{
    if (text.size() > INT_MAX)
        return false;
    const int size = static_cast<int>(text.size());
    const UINT number = codePageNumber(page);
    const int needed = WideCharToMultiByte(number, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (needed <= 0)
        return false;
    out.resize(static_cast<std::size_t>(needed));
    return WideCharToMultiByte(number, 0, text.data(), size, out.data(), needed, nullptr, nullptr) == needed;
}

bool decodeAscii(kyCLocaleHandle locale, std::string_view text, std::wstring& out)
{
    std::size_t converted = 0;
    out.resize(text.size() + 1);
    if (_mbstowcs_s_l(&converted, out.data(), out.size(), text.data(), text.size(), locale) != 0 || converted == 0)
        return false;
    out.resize(converted - 1);
    return true;
}

bool encodeAscii(kyCLocaleHandle locale, std::wstring_view text, std::string& out)
{
    std::size_t converted = 0;
    out.resize(text.size() + 1);
    if (_wcstombs_s_l(&converted, out.data(), out.size(), text.data(), text.size(), locale) != 0 || converted == 0)
        return false;
    out.resize(converted - 1);
    return true;
}

kyCLocaleHandle createCLocale() { return _create_locale(LC_ALL, "C"); }

void freeCLocale(kyCLocaleHandle locale) { _free_locale(locale); }

} // namespace ky::impl::native
