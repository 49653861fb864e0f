// SPDX-License-Identifier: MIT
#include "text/charset_native.h"

#include "text/utf8_decode.h"
#include "text/utf8_scan.h"

#include <algorithm>
#include <array>
#include <locale.h>
#include <type_traits>

namespace ky::impl::native
{

static_assert(std::is_same_v<kyCLocaleHandle, locale_t>);
static_assert(sizeof(wchar_t) == 4);

namespace
{

constexpr wchar_t replacementCharacter = 0xFFFD;

// Windows-1252 differs from Latin-1 here only; its five unassigned bytes stand for the control characters of Latin-1.
constexpr unsigned char firstSpecial = 0x80;
constexpr std::array<wchar_t, 32> windows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

wchar_t fromAnsi(char byte)
{
    const unsigned char value = static_cast<unsigned char>(byte);
    const unsigned special = static_cast<unsigned>(value) - firstSpecial;
    return special < windows1252.size() ? windows1252[special] : static_cast<wchar_t>(value);
}

char toAnsi(wchar_t character)
{
    const unsigned value = static_cast<unsigned>(character);
    if (value < firstSpecial || (value >= firstSpecial + windows1252.size() && value <= 0xFF))
        return static_cast<char>(value);
    const auto* special = std::find(windows1252.begin(), windows1252.end(), character);
    return special == windows1252.end() ? '?' : static_cast<char>(firstSpecial + (special - windows1252.begin()));
}

void appendCodePoints(std::string_view text, std::wstring& out)
{
    const Utf8Count count = countUtf8(text.data(), text.size());
    out.reserve(count.wellFormed ? count.codePoints : text.size());
    while (!text.empty())
    {
        const DecodedCharacter character = decodeUtf8(text);
        out.push_back(static_cast<wchar_t>(character.value));
        text.remove_prefix(character.length);
    }
}

void appendUtf8(wchar_t character, std::string& out)
{
    unsigned value = static_cast<unsigned>(character);
    if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        value = static_cast<unsigned>(replacementCharacter);
    const auto put = [&out](unsigned byte) { out.push_back(static_cast<char>(byte)); };
    const auto putContinuation = [&](unsigned shift) { put(0x80U | ((value >> shift) & 0x3FU)); };
    if (value < 0x80)
        return put(value);
    if (value < 0x800)
        put(0xC0U | (value >> 6));
    else
    {
        if (value < 0x10000)
            put(0xE0U | (value >> 12));
        else
        {
            put(0xF0U | (value >> 18));
            putContinuation(12);
        }
        putContinuation(6);
    }
    putContinuation(0);
}

} // namespace

bool decode(CodePage page, std::string_view text, std::wstring& out)
{
    out.clear();
    if (page == CodePage::Utf8)
        appendCodePoints(text, out);
    else
    {
        out.resize(text.size());
        std::transform(text.begin(), text.end(), out.begin(), fromAnsi);
    }
    return true;
}

bool encode(CodePage page, std::wstring_view text, std::string& out)
{
    out.clear();
    out.reserve(text.size());
    for (const wchar_t character : text)
    {
        if (page == CodePage::Utf8)
            appendUtf8(character, out);
        else
            out.push_back(toAnsi(character));
    }
    return true;
}

bool decodeAscii(kyCLocaleHandle, std::string_view text, std::wstring& out)
{
    out.assign(text.begin(), text.end());
    return true;
}

bool encodeAscii(kyCLocaleHandle, std::wstring_view text, std::string& out)
{
    out.resize(text.size());
    std::transform(text.begin(), text.end(), out.begin(),
                   [](wchar_t character) { return static_cast<char>(character); });
    return true;
}

kyCLocaleHandle createCLocale() { return newlocale(LC_ALL_MASK, "C", nullptr); }

void freeCLocale(kyCLocaleHandle locale) { freelocale(locale); }

} // namespace ky::impl::native
