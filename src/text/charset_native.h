// SPDX-License-Identifier: MIT
// Character sets and the locale "C" as the platform has them.
#pragma once

#include <ky/kyExport.h>

#include <string>
#include <string_view>

namespace ky::impl::native
{

enum class CodePage
{
    Ansi,
    Utf8
};

/// The texts are not empty and hold no NUL; a NUL follows each. False when the platform refuses the conversion, `out`
/// is then unspecified. Ill-formed text is no reason to refuse.
bool decode(CodePage page, std::string_view text, std::wstring& out);
bool encode(CodePage page, std::wstring_view text, std::string& out);

/// The same for text that holds seven-bit characters only, by the C runtime under `locale` where it has such functions.
bool decodeAscii(kyCLocaleHandle locale, std::string_view text, std::wstring& out);
bool encodeAscii(kyCLocaleHandle locale, std::wstring_view text, std::string& out);

/// The locale named "C"; null when the C runtime fails.
kyCLocaleHandle createCLocale();
void freeCLocale(kyCLocaleHandle locale);

} // namespace ky::impl::native
