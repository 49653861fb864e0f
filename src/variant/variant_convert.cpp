// SPDX-License-Identifier: MIT
// The to... conversions and the typing of text.
#include "platform/compiler.h"
#include "text/number_parse.h"
#include "text/plain_number.h"
#include "variant/variant_access.h"

#include <algorithm>
#include <array>
#include <limits>

namespace ky
{
namespace
{

using Access = impl::VariantAccess;

std::int64_t truncate(double value) noexcept
{
    constexpr double limit = 9223372036854775808.0;
    if (value >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (value < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return value == value ? static_cast<std::int64_t>(value) : 0;
}

bool isTrueWord(std::string_view text) noexcept
{
    return text == "true" || text == "True" || text == "TRUE" || text == "t" || text == "1";
}

/// parseWholeReal() with ',' read as '.'.
bool parseRealWithComma(std::string_view text, double& value)
{
    if (text.find(',') == std::string_view::npos)
        return impl::parseWholeReal(text, value);
    std::array<char, 64> small;
    std::string large;
    char* copy = small.data();
    if (text.size() > small.size())
    {
        large.resize(text.size());
        copy = large.data();
    }
    std::replace_copy(text.begin(), text.end(), copy, ',', '.');
    return impl::parseWholeReal(std::string_view(copy, text.size()), value);
}

/// Apart from what most texts take, which needs next to no stack.
KY_NOINLINE kyVariant buildByTrying(std::string_view text)
{
    std::int64_t integer = 0;
    double real = 0.0;
    if (impl::parseWholeInteger(text, integer))
        return kyVariant(integer);
    if (parseRealWithComma(text, real))
        return kyVariant(real);
    return kyVariant(text);
}

} // namespace

bool kyVariant::toBool() const
{
    switch (type_)
    {
    case Type::Integer: return payload_.integer != 0;
    case Type::Real: return payload_.real != 0.0;
    case Type::String: return isTrueWord(Access::string(*this));
    case Type::Bool: return payload_.boolean;
    default: return false;
    }
}

std::int64_t kyVariant::toInteger() const
{
    std::int64_t value = 0;
    switch (type_)
    {
    case Type::Integer:
    case Type::DateTime: return payload_.integer;
    case Type::Real: return truncate(payload_.real);
    case Type::String: impl::parseWholeInteger(Access::string(*this), value); return value;
    case Type::Bool: return payload_.boolean ? 1 : 0;
    default: return 0;
    }
}

double kyVariant::toReal() const
{
    double value = 0.0;
    switch (type_)
    {
    case Type::Integer: return static_cast<double>(payload_.integer);
    case Type::Real: return payload_.real;
    case Type::String: impl::parseWholeReal(Access::string(*this), value); return value;
    case Type::Bool: return payload_.boolean ? 1.0 : 0.0;
    default: return std::numeric_limits<double>::quiet_NaN();
    }
}

kyVariant::DateTime kyVariant::toDateTime() const
{
    return type_ == Type::Integer || type_ == Type::DateTime ? DateTime(payload_.integer) : DateTime();
}

std::vector<std::string> kyVariant::toStringList() const
{
    std::vector<std::string> out;
    if (type_ == Type::String)
        out.push_back(Access::string(*this));
    else if (type_ == Type::StringList)
        out = Access::stringList(*this);
    else if (const impl::List* const list = Access::list(*this))
        list->toStringList(out);
    return out;
}

kyVariant::kyVariantListImpl kyVariant::toList() const
{
    if (const impl::List* const list = Access::list(*this))
        return *list;
    kyVariantListImpl out;
    if (type_ == Type::StringList)
    {
        const impl::StringList& texts = Access::stringList(*this);
        out.reserve(texts.size());
        for (const std::string& text : texts)
            out << text;
    }
    return out;
}

kyVariant::kyVariantMapImpl kyVariant::toMap() const
{
    const impl::Map* const map = Access::map(*this);
    return map != nullptr ? *map : kyVariantMapImpl();
}

kyVariant kyVariant::BuildFromString(std::string_view text)
{
    const impl::PlainNumber plain = impl::parsePlainNumber(text);
    switch (plain.form)
    {
    case impl::PlainNumber::Form::Text: return kyVariant(text);
    case impl::PlainNumber::Form::Integer: return kyVariant(plain.integer);
    case impl::PlainNumber::Form::Real: return kyVariant(plain.real);
    default: return buildByTrying(text);
    }
}

kyVariant kyVariant::BuildFromString(const std::string& text) { return BuildFromString(std::string_view(text)); }

} // namespace ky
