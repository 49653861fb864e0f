// SPDX-License-Identifier: MIT
#include "text/character_class.h"
#include "text/number_text.h"

#include <ky/kyEnumHelper.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace ky
{

namespace
{

constexpr char flagSeparator = '|';

bool equals(std::string_view a, std::string_view b, EnumHelperInterface::Case rule)
{
    if (rule == EnumHelperInterface::Case::Sensitive)
        return a == b;
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char one, char other) { return impl::lowerByte(one) == impl::lowerByte(other); });
}

/// A decimal number with a sign or not, or up to 64 bits in hexadecimal.
bool parseNumber(std::string_view text, std::int64_t& value)
{
    const char* const end = text.data() + text.size();
    if (text.size() > 2 && text[0] == '0' && impl::lowerByte(text[1]) == 'x')
    {
        std::uint64_t bits = 0;
        const auto [at, error] = std::from_chars(text.data() + 2, end, bits, 16);
        if (error != std::errc() || at != end)
            return false;
        value = static_cast<std::int64_t>(bits);
        return true;
    }
    std::int64_t number = 0;
    const auto [at, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || at != end)
        return false;
    value = number;
    return true;
}

void appendFlag(std::string& out, std::string_view name)
{
    if (!out.empty())
        out += flagSeparator;
    out += name;
}

} // namespace

std::string_view EnumHelperInterface::findName(std::int64_t value) const noexcept
{
    const std::size_t count = getCount();
    for (std::size_t i = 0; i < count; ++i)
    {
        if (getValue(i) == value)
            return getName(i);
    }
    return {};
}

bool EnumHelperInterface::findValue(std::string_view name, std::int64_t& value, Case rule) const noexcept
{
    const std::size_t count = getCount();
    for (std::size_t i = 0; i < count; ++i)
    {
        if (equals(getName(i), name, rule))
        {
            value = getValue(i);
            return true;
        }
    }
    return false;
}

std::string EnumHelperInterface::toText(std::int64_t value) const
{
    const std::string_view name = findName(value);
    return std::string(name.empty() ? impl::IntegerText(value).view() : name);
}

bool EnumHelperInterface::fromText(std::string_view text, std::int64_t& value, Case rule) const noexcept
{
    const std::string_view word = impl::trimmed(text);
    return !word.empty() && (findValue(word, value, rule) || parseNumber(word, value));
}

std::string EnumHelperInterface::toFlagsText(std::int64_t value) const
{
    const std::string_view whole = findName(value);
    if (!whole.empty())
        return std::string(whole);
    std::string text;
    const auto all = static_cast<std::uint64_t>(value);
    std::uint64_t left = all;
    for (std::size_t i = 0; i < getCount() && left != 0; ++i)
    {
        const auto bits = static_cast<std::uint64_t>(getValue(i));
        if ((bits & all) != bits || (bits & left) == 0 || getName(i).empty())
            continue;
        appendFlag(text, getName(i));
        left &= ~bits;
    }
    if (left == 0)
        return text.empty() ? "0" : text;
    std::array<char, 18> hexadecimal = {'0', 'x'};
    char* const end = std::to_chars(hexadecimal.data() + 2, hexadecimal.data() + hexadecimal.size(), left, 16).ptr;
    std::transform(hexadecimal.data() + 2, end, hexadecimal.data() + 2, impl::upperByte);
    appendFlag(text, {hexadecimal.data(), static_cast<std::size_t>(end - hexadecimal.data())});
    return text;
}

bool EnumHelperInterface::fromFlagsText(std::string_view text, std::int64_t& value, Case rule) const noexcept
{
    std::uint64_t bits = 0;
    for (;;)
    {
        const std::size_t end = text.find(flagSeparator);
        std::int64_t flag = 0;
        if (!fromText(text.substr(0, end), flag, rule))
            return false;
        bits |= static_cast<std::uint64_t>(flag);
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
    value = static_cast<std::int64_t>(bits);
    return true;
}

} // namespace ky
