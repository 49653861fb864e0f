// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include "sysinfo/registry_value.h"
#include "text/hex_codec.h"

#include <cstddef>
#include <iterator>
#include <utf8.h>

namespace ky
{

namespace
{

using Bytes = std::vector<unsigned char>;

// The type numbers of the registry.
enum RegistryType : std::uint32_t
{
    RegText = 1,
    RegExpandableText = 2,
    RegNumber = 4,
    RegBigEndianNumber = 5,
    RegLink = 6,
    RegTexts = 7,
    RegLongNumber = 11
};

/// One text of UTF-16 from the word `at` up to a NUL or the end; `at` moves behind it. An odd byte at the end is none.
std::string utf16Text(const Bytes& bytes, std::size_t& at)
{
    const auto word = [&bytes](std::size_t i)
    { return static_cast<std::uint32_t>(bytes[2 * i] | bytes[2 * i + 1] << 8); };
    const std::size_t count = bytes.size() / 2;
    std::string text;
    while (at < count)
    {
        std::uint32_t character = word(at++);
        if (character == 0)
            break;
        const bool high = character >= 0xD800 && character < 0xDC00;
        if (high && at < count && word(at) >= 0xDC00 && word(at) < 0xE000)
            character = 0x10000 + ((character - 0xD800) << 10) + (word(at++) - 0xDC00);
        else if (character >= 0xD800 && character < 0xE000)
            character = 0xFFFD;
        utf8::unchecked::append(character, std::back_inserter(text));
    }
    return text;
}

/// A list ends at an empty text.
std::vector<std::string> utf16Texts(const Bytes& bytes)
{
    std::vector<std::string> texts;
    for (std::size_t at = 0; at < bytes.size() / 2;)
    {
        std::string text = utf16Text(bytes, at);
        if (text.empty())
            break;
        texts.push_back(std::move(text));
    }
    return texts;
}

kyVariant number(const Bytes& bytes, bool bigEndian)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | bytes[bigEndian ? i : bytes.size() - 1 - i];
    return kyVariant(value);
}

std::string hexText(const Bytes& bytes)
{
    std::string text(bytes.size() * 2, '\0');
    impl::encodeHex(reinterpret_cast<const char*>(bytes.data()), bytes.size(), impl::lowerHexDigits, text.data());
    return text;
}

} // namespace

kyVariant impl::registryValue(const native::RegistryData& data)
{
    const std::size_t size = data.bytes.size();
    std::size_t at = 0;
    switch (data.type)
    {
    case RegText:
    case RegExpandableText:
    case RegLink: return utf16Text(data.bytes, at);
    case RegTexts: return utf16Texts(data.bytes);
    case RegNumber:
    case RegBigEndianNumber:
        return size == 4 ? number(data.bytes, data.type == RegBigEndianNumber) : kyVariant(hexText(data.bytes));
    case RegLongNumber: return size == 8 ? number(data.bytes, false) : kyVariant(hexText(data.bytes));
    default: return hexText(data.bytes);
    }
}

bool kySystemUtils::GetRegistryValue(const std::string& hive, const std::string& key, const std::string& name,
                                     kyVariant& value)
{
    using impl::native::RegistryHive;
    const bool machine = hive == "HKEY_LOCAL_MACHINE";
    impl::native::RegistryData data;
    if ((!machine && hive != "HKEY_CURRENT_USER") ||
        !impl::native::readRegistry(machine ? RegistryHive::LocalMachine : RegistryHive::CurrentUser, key, name, data))
        return false;
    value = impl::registryValue(data);
    return true;
}

} // namespace ky
