// SPDX-License-Identifier: MIT
#include "text/natural_native.h"

#include "text/natural_compare.h"

#include <cstring>
#include <langinfo.h>
#include <locale.h>
#include <wchar.h>
#include <wctype.h>

namespace ky::impl::native
{

namespace
{

/// The user's collation, and case mapping for all of Unicode.
locale_t userLocale()
{
    locale_t locale = newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr)
        locale = newlocale(LC_ALL_MASK, "C", nullptr);
    if (std::strcmp(nl_langinfo_l(CODESET, locale), "UTF-8") == 0)
        return locale;
    const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale);
    return unicode == nullptr ? locale : unicode;
}

class LocaleCollation : public Collation
{
public:
    LocaleCollation() : mLocale(userLocale()) {}
    ~LocaleCollation() override { freelocale(mLocale); }

    void weigh(const std::wstring& text, std::wstring& weights) const override
    {
        weights.resize(6 * text.size() + 16);
        std::size_t size = wcsxfrm_l(weights.data(), text.c_str(), weights.size(), mLocale);
        if (size >= weights.size())
        {
            weights.resize(size + 1);
            size = wcsxfrm_l(weights.data(), text.c_str(), weights.size(), mLocale);
        }
        weights.resize(size);
    }

    wchar_t lower(wchar_t character) const override
    {
        return static_cast<wchar_t>(towlower_l(static_cast<wint_t>(character), mLocale));
    }

private:
    locale_t mLocale;
};

/// Lives as long as the process, whose last texts may be compared late.
const NaturalOrder& userOrder()
{
    static const NaturalOrder& order = *new NaturalOrder(*new LocaleCollation);
    return order;
}

} // namespace

int compareNatural(std::wstring_view a, std::wstring_view b, bool caseSensitive)
{
    return userOrder().compare(a, b, caseSensitive);
}

bool compareNaturalBytes(std::string_view a, std::string_view b, bool caseSensitive, int& result)
{
    return userOrder().compareAscii(a, b, caseSensitive, result);
}

} // namespace ky::impl::native
