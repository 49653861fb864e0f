// SPDX-License-Identifier: MIT
// Conversions that are refused when they would change the value.
#include "text/number_parse.h"
#include "variant/variant_access.h"

#include <ky/kyStringUtils.h>

#include <cmath>
#include <utility>

namespace ky
{
namespace
{

using Access = impl::VariantAccess;
using Type = kyVariant::Type;

// Every function gives the null variant when it refuses.

bool isWithin64Bits(double value) noexcept
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    return value >= -limit && value < limit;
}

kyVariant fromInteger(std::int64_t value, Type target)
{
    const double real = static_cast<double>(value);
    switch (target)
    {
    case Type::Integer: return kyVariant(value);
    case Type::Real:
        return isWithin64Bits(real) && static_cast<std::int64_t>(real) == value ? kyVariant(real) : kyVariant();
    case Type::String: return kyVariant(kyStringUtils::fromInt64(value, 1));
    case Type::Bool: return value == 0 || value == 1 ? kyVariant(value == 1) : kyVariant();
    default: return {};
    }
}

kyVariant fromReal(double value, Type target)
{
    switch (target)
    {
    case Type::Integer:
        return isWithin64Bits(value) && std::trunc(value) == value ? kyVariant(static_cast<std::int64_t>(value))
                                                                   : kyVariant();
    case Type::Real: return kyVariant(value);
    case Type::String: return kyVariant(kyStringUtils::fromFloat(value, 3, false));
    case Type::Bool: return value == 0.0 || value == 1.0 ? kyVariant(value == 1.0) : kyVariant();
    default: return {};
    }
}

kyVariant booleanOf(std::string_view text)
{
    for (const std::string_view word : {"true", "True", "TRUE", "t", "1"})
        if (text == word)
            return kyVariant(true);
    for (const std::string_view word : {"false", "False", "FALSE", "f", "0"})
        if (text == word)
            return kyVariant(false);
    return {};
}

kyVariant fromText(const std::string& text, Type target)
{
    std::int64_t integer = 0;
    double real = 0.0;
    switch (target)
    {
    case Type::Integer: return impl::parseWholeIntegerExactly(text, integer) ? kyVariant(integer) : kyVariant();
    case Type::Real: return impl::parseWholeReal(text, real) ? kyVariant(real) : kyVariant();
    case Type::String: return kyVariant(text);
    case Type::Bool: return booleanOf(text);
    default: return {};
    }
}

kyVariant fromBoolean(bool value, Type target)
{
    switch (target)
    {
    case Type::Integer: return kyVariant(value ? 1 : 0);
    case Type::Real: return kyVariant(value ? 1.0 : 0.0);
    case Type::String: return kyVariant(value ? "true" : "false");
    case Type::Bool: return kyVariant(value);
    default: return {};
    }
}

kyVariant losslessly(const kyVariant& value, Type target)
{
    switch (value.getType())
    {
    case Type::Integer: return fromInteger(Access::integer(value), target);
    case Type::Real: return fromReal(Access::real(value), target);
    case Type::String: return fromText(Access::string(value), target);
    case Type::Bool: return fromBoolean(Access::boolean(value), target);
    default: return {};
    }
}

} // namespace

bool kyVariant::convertLosslessTo(Type target, kyVariant& out) const
{
    kyVariant result = losslessly(*this, target);
    if (!result.isNull())
        out = std::move(result);
    return out.getType() == target;
}

} // namespace ky
