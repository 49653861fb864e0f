// SPDX-License-Identifier: MIT
#include "variant/ini_text.h"

#include "variant/variant_access.h"

namespace ky::impl
{

namespace
{

/// The letter behind the backslash, or 0 for a character that stands for itself.
char escapeOf(char character)
{
    switch (character)
    {
    case '\\':
    case '"': return character;
    case '\n': return 'n';
    case '\r': return 'r';
    case '\t': return 't';
    default: return 0;
    }
}

void appendString(std::string& text, std::string_view value)
{
    const bool quoted = value.find('"') != std::string_view::npos;
    if (quoted)
        text += '"';
    std::size_t copied = 0;
    for (std::size_t i = 0; i < value.size(); ++i)
    {
        const char escape = escapeOf(value[i]);
        if (escape == 0)
            continue;
        ((text += value.substr(copied, i - copied)) += '\\') += escape;
        copied = i + 1;
    }
    text += value.substr(copied);
    if (quoted)
        text += '"';
}

bool refuse(std::string_view key, kyVariant::Type type)
{
    std::string message = "saveVariantToIni unsupported variant type (";
    message += std::to_string(static_cast<unsigned>(type));
    message += ") for key ";
    message += key;
    warnIni(message);
    return false;
}

bool writeEntry(std::string_view key, const kyVariant& value, std::string& text)
{
    switch (value.getType())
    {
    case kyVariant::Type::Integer:
    case kyVariant::Type::Real:
    case kyVariant::Type::Bool:
    case kyVariant::Type::String: break;
    default: return refuse(key, value.getType());
    }
    text += key;
    text += '=';
    if (value.getType() == kyVariant::Type::String)
        appendString(text, VariantAccess::string(value));
    else
        appendText(text, value);
    text += '\n';
    return true;
}

bool writeLeaves(const IniMap& leaves, std::string& text)
{
    for (const auto& [key, value] : leaves)
    {
        if (!writeEntry(key, value, text))
            return false;
    }
    return true;
}

bool isFlat(const IniMap& map)
{
    for (const auto& entry : map)
    {
        const kyVariant::Type type = entry.second.getType();
        if (type == kyVariant::Type::Map || type == kyVariant::Type::List)
            return false;
    }
    return true;
}

bool writeSection(const kyVariant& section, std::string& text)
{
    const IniMap* const map = VariantAccess::map(section);
    if (map == nullptr)
        return true;
    if (isFlat(*map))
        return writeLeaves(*map, text);
    IniMap leaves;
    map->toFlattenMap(leaves, iniPathSeparator);
    return writeLeaves(leaves, text);
}

} // namespace

bool writeIni(const IniMap& map, std::string& text)
{
    ((text += '[') += iniGeneral) += "]\n";
    for (const auto& [key, value] : map)
    {
        if (value.getType() != kyVariant::Type::Map ? !writeEntry(key, value, text)
                                                    : key == iniGeneral && !writeSection(value, text))
            return false;
    }
    for (const auto& [key, value] : map)
    {
        if (value.getType() != kyVariant::Type::Map || key == iniGeneral)
            continue;
        ((text += "\n[") += key) += "]\n";
        if (!writeSection(value, text))
            return false;
    }
    return true;
}

} // namespace ky::impl
