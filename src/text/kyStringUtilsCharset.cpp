// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include "text/charset_native.h"
#include "text/utf8_scan.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ky
{

namespace
{

namespace native = impl::native;

kyCLocaleHandle cLocale = nullptr;
const std::locale* standardLocale = nullptr;

template <typename Char>
std::basic_string_view<Char> untilNul(const std::basic_string<Char>& text)
{
    return std::basic_string_view<Char>(text).substr(0, text.find(Char()));
}

template <typename Char>
bool isSevenBit(std::basic_string_view<Char> text)
{
    using Value = std::make_unsigned_t<Char>;
    return std::all_of(text.begin(), text.end(), [](Char character) { return static_cast<Value>(character) <= 0x7F; });
}

constexpr const char* decodingFailed = "kyStringUtils::convertCharset failed ";
constexpr const char* encodingFailed = "kyStringUtils::toUT8 failed ";
constexpr const char* asciiFailed = "kyStringUtils::fromAscii failed ";

/// `result` of a conversion that went well; otherwise the message goes out and the result is empty.
template <typename String>
String resultOf(bool converted, String& result, const char* message)
{
    if (converted)
        return std::move(result);
    static const std::ios_base::Init streamsExist; // static objects may convert before
    std::cout << message << std::endl;
    return {};
}

template <native::CodePage Page>
std::wstring decode(std::string_view text)
{
    std::wstring wide;
    return resultOf(native::decode(Page, text, wide), wide, decodingFailed);
}

std::wstring decodeAscii(std::string_view text)
{
    std::wstring wide;
    return resultOf(isSevenBit(text) && native::decodeAscii(cLocale, text, wide), wide, asciiFailed);
}

template <native::CodePage Page>
std::string encode(std::wstring_view text)
{
    std::string bytes;
    return resultOf(native::encode(Page, text, bytes), bytes, encodingFailed);
}

std::string encodeAscii(std::wstring_view text)
{
    std::string bytes;
    return resultOf(isSevenBit(text) && native::encodeAscii(cLocale, text, bytes), bytes, asciiFailed);
}

// Indexed by kyCharSet.
constexpr std::size_t charSetCount = 3;
using native::CodePage;
constexpr std::wstring (*decoders[charSetCount])(std::string_view) = {&decode<CodePage::Ansi>, &decode<CodePage::Utf8>,
                                                                      &decodeAscii};
constexpr std::string (*encoders[charSetCount])(std::wstring_view) = {&encode<CodePage::Ansi>, &encode<CodePage::Utf8>,
                                                                      &encodeAscii};

bool isCharSet(kyStringUtils::kyCharSet value) { return static_cast<std::size_t>(value) < charSetCount; }

} // namespace

bool kyStringUtils::IsUtf8String(const std::string& text) { return impl::isUtf8(text); }

std::size_t kyStringUtils::CountUtf8Char(const std::string& text)
{
    return impl::countUtf8(text.data(), text.size()).codePoints;
}

std::wstring kyStringUtils::convertToUnicode(const std::string& text, kyCharSet from)
{
    const std::string_view whole = untilNul(text);
    return whole.empty() || !isCharSet(from) ? std::wstring() : decoders[from](whole);
}

std::string kyStringUtils::convertTo8Bits(const std::wstring& text, kyCharSet to)
{
    const std::wstring_view whole = untilNul(text);
    return whole.empty() || !isCharSet(to) ? std::string() : encoders[to](whole);
}

std::string kyStringUtils::convertCharset(const std::string& text, kyCharSet from, kyCharSet to)
{
    return convertTo8Bits(convertToUnicode(text, from), to);
}

std::string kyStringUtils::UnknownEncodingToUtf8(const std::string& text, char replacement)
{
    if (IsUtf8String(text))
        return text;
    std::string converted = convertCharset(text, Ansi, Utf8);
    if (IsUtf8String(converted))
        return converted;
    std::string plain(text);
    std::replace_if(
        plain.begin(), plain.end(), [](char byte) { return static_cast<unsigned char>(byte) > 0x7F; }, replacement);
    return plain;
}

bool kyStringUtils::InitializeStringUtils()
{
    if (cLocale != nullptr)
        return false;
    auto standard = std::make_unique<const std::locale>(std::locale::classic());
    cLocale = native::createCLocale();
    if (cLocale == nullptr)
        return false;
    standardLocale = standard.release();
    return true;
}

bool kyStringUtils::TerminateStringUtils()
{
    if (cLocale == nullptr)
        return false;
    native::freeCLocale(cLocale);
    cLocale = nullptr;
    delete standardLocale;
    standardLocale = nullptr;
    return true;
}

void kyStringUtils::InitializeForThread() {}

kyCLocaleHandle* kyStringUtils::GetCLocale() { return &cLocale; }

const std::locale& kyStringUtils::GetCPlusLocale()
{
    return standardLocale == nullptr ? std::locale::classic() : *standardLocale;
}

} // namespace ky
