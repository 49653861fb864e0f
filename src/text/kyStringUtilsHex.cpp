// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include "text/hex_codec.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>

namespace ky
{

namespace
{

constexpr std::size_t uuidBytes = 16;
constexpr std::size_t uuidDigits = 2 * uuidBytes;
constexpr std::size_t decoratedLength = 38;

/// A run of digits in the decorated form.
struct DigitGroup
{
    std::size_t position;
    std::size_t length;
};
constexpr std::array<DigitGroup, 5> digitGroups = {{{1, 8}, {10, 4}, {15, 4}, {20, 4}, {25, 12}}};

/// Copies the digits of `text` to `digits` as far as the length tells them apart, and decodes them.
bool decodeUuid(std::string_view text, char* out)
{
    std::array<char, uuidDigits> digits;
    if (text.size() == decoratedLength)
    {
        char* end = digits.data();
        for (const DigitGroup& group : digitGroups)
            end = std::copy_n(text.data() + group.position, group.length, end);
        text = {digits.data(), digits.size()};
    }
    return text.size() == uuidDigits && impl::decodeHex(text.data(), uuidBytes, out) == uuidBytes;
}

bool pointsInto(const char* data, const std::string& text)
{
    const std::less<const char*> before;
    return !before(data, text.data()) && before(data, text.data() + text.size());
}

} // namespace

void kyStringUtils::ToHex(const char* data, std::size_t length, std::string& out)
{
    if (pointsInto(data, out))
    {
        const std::string copy(data, length);
        return ToHex(copy.data(), length, out);
    }
    out.resize(2 * length);
    impl::encodeHex(data, length, impl::lowerHexDigits, out.data());
}

std::string kyStringUtils::ToHex(std::uint64_t value, unsigned width)
{
    constexpr std::size_t most = 16;
    std::array<char, most> digits;
    std::size_t first = most;
    const std::size_t least = std::min<std::size_t>(width, most);
    do
    {
        digits[--first] = impl::upperHexDigits[value & 0x0F];
        value >>= 4;
    } while (value != 0 || most - first < least);
    return std::string(digits.data() + first, most - first);
}

bool kyStringUtils::FromHex(const char* text, std::size_t length, std::string& out)
{
    if (pointsInto(text, out))
    {
        const std::string copy(text, length);
        return FromHex(copy.data(), length, out);
    }
    const std::size_t pairs = length / 2;
    out.resize(pairs);
    return length % 2 == 0 && impl::decodeHex(text, pairs, out.data()) == pairs;
}

void kyStringUtils::UUIDToHex(const unsigned char* uuid, std::string& out, bool decorated)
{
    std::array<char, uuidDigits> digits;
    impl::encodeHex(reinterpret_cast<const char*>(uuid), uuidBytes, impl::upperHexDigits, digits.data());
    if (!decorated)
    {
        out.assign(digits.data(), digits.size());
        return;
    }
    out.assign(decoratedLength, '-');
    out.front() = '{';
    out.back() = '}';
    const char* next = digits.data();
    for (const DigitGroup& group : digitGroups)
    {
        std::copy_n(next, group.length, out.data() + group.position);
        next += group.length;
    }
}

bool kyStringUtils::IsUUID(const std::string& text)
{
    std::array<char, uuidBytes> ignored;
    return decodeUuid(text, ignored.data());
}

bool kyStringUtils::UUIDToBinary(const std::string& text, unsigned char* out)
{
    return decodeUuid(text, reinterpret_cast<char*>(out));
}

} // namespace ky
