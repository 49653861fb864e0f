// SPDX-License-Identifier: MIT
// UTF-8 checks against utfcpp, and the conversions built on them.
#include "require.h"

#include "text/utf8_portable.h"
#include "text/utf8_scan.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <cstdint>

namespace
{

using S = ky::kyStringUtils;

void checkScan(const std::string& text)
{
    const std::size_t prefix = ky::impl::validUtf8Prefix(text.data(), text.size());
    KY_REQUIRE(prefix == ky::impl::portableUtf8Prefix(text.data(), text.size()));
    KY_REQUIRE(S::IsUtf8String(text) == (prefix == text.size()));
    KY_REQUIRE(S::IsUtf8String(text.substr(0, prefix)));
    const ky::impl::Utf8Count count = ky::impl::portableCountUtf8(text.data(), text.size());
    KY_REQUIRE(count.wellFormed == (prefix == text.size()));
    KY_REQUIRE(S::CountUtf8Char(text) == count.codePoints);
}

void checkConversions(const std::string& text)
{
    const std::wstring wide = S::convertToUnicode(text, S::Utf8);
    const std::string back = S::convertTo8Bits(wide, S::Utf8);
    const std::string whole = text.substr(0, text.find('\0'));
    KY_REQUIRE(S::IsUtf8String(back));
    KY_REQUIRE((back == whole) == S::IsUtf8String(whole));
    KY_REQUIRE(S::convertToUnicode(back, S::Utf8) == wide);
    KY_REQUIRE(S::IsUtf8String(S::convertCharset(text, S::Ansi, S::Utf8)));
    // Any wide characters at all, the ones that are no code points included.
    std::wstring raw(text.size() / sizeof(wchar_t), L'\0');
    if (!raw.empty())
        std::copy_n(text.data(), raw.size() * sizeof(wchar_t), reinterpret_cast<char*>(raw.data()));
    KY_REQUIRE(S::IsUtf8String(S::convertTo8Bits(raw, S::Utf8)));
    KY_REQUIRE(S::convertTo8Bits(raw, S::Ansi).empty() == (raw.empty() || raw.front() == L'\0'));
}

void checkUnknownEncoding(const std::string& text)
{
    const std::string result = S::UnknownEncodingToUtf8(text, '?');
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    KY_REQUIRE(S::IsUtf8String(result) || std::all_of(result.begin(), result.end(), isAscii));
    KY_REQUIRE(!S::IsUtf8String(text) || result == text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    checkScan(text);
    checkConversions(text);
    checkUnknownEncoding(text);
    // The same text at another place relative to the blocks of the vector code.
    checkScan(std::string(size % 61, 'a') + text);
    return 0;
}
