// SPDX-License-Identifier: MIT
#include "text/number_parse.h"
#include "text/real_format.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace ky
{

namespace
{

template <typename Integer>
std::string filledDecimal(Integer value, int width)
{
    std::array<char, 24> buffer;
    char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    const auto length = static_cast<std::size_t>(end - buffer.data());
    const std::size_t wanted = width > 0 ? static_cast<std::size_t>(width) : 0;
    if (wanted <= length)
        return std::string(buffer.data(), length);
    std::string text(wanted, '0');
    text.replace(wanted - length, length, buffer.data(), length);
    return text;
}

/// The components of a version; false when one of them is no number of 32 bits.
bool parseVersion(const std::string& text, std::vector<std::uint32_t>& components)
{
    std::string trimmed(text);
    for (const std::string& part : kyStringUtils::Split(kyStringUtils::trim(trimmed), '.'))
    {
        std::int64_t value = 0;
        if (!impl::parseWholeInteger(part, value) || value < 0 || value > std::numeric_limits<std::uint32_t>::max())
            return false;
        components.push_back(static_cast<std::uint32_t>(value));
    }
    return true;
}

} // namespace

std::string kyStringUtils::fromInt(int value, int width) { return filledDecimal(value, width); }
std::string kyStringUtils::fromUInt(unsigned int value, int width) { return filledDecimal(value, width); }
std::string kyStringUtils::fromInt64(std::int64_t value, int width) { return filledDecimal(value, width); }
std::string kyStringUtils::fromUInt64(std::uint64_t value, int width) { return filledDecimal(value, width); }

std::string kyStringUtils::fromFloat(float value, int precision, bool fixed)
{
    return fromFloat(static_cast<double>(value), precision, fixed);
}

std::string kyStringUtils::fromFloat(double value, int precision, bool fixed)
{
    return fixed ? impl::fixedReal(value, precision) : impl::generalReal(value, precision);
}

kyStringUtils::SoftwareVersionComparisonResult
kyStringUtils::compareSoftwareVersion(const std::string& a, const std::string& b, std::size_t maxComponents)
{
    std::vector<std::uint32_t> left;
    std::vector<std::uint32_t> right;
    if (!parseVersion(a, left) || !parseVersion(b, right))
        return VersionInvalid;
    right.resize(std::min(right.size(), maxComponents));
    left.resize(right.size());
    if (right.empty())
        return VersionInvalid;
    const auto [l, r] = std::mismatch(left.begin(), left.end(), right.begin());
    if (l == left.end())
        return VersionEqual;
    return *l < *r ? VersionLower : VersionHigher;
}

} // namespace ky
