// SPDX-License-Identifier: MIT
#include "variant/ini_text.h"

#include "text/character_class.h"
#include "text/number_parse.h"
#include "variant/variant_access.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <cstring>

namespace ky::impl
{

namespace
{

bool isEnclosed(std::string_view text, char first, char last)
{
    return text.size() >= 2 && text.front() == first && text.back() == last;
}

/// `word` is lower-case ASCII.
bool equalsIgnoringCase(std::string_view text, std::string_view word)
{
    return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                      [](char byte, char lower) { return lowerByte(byte) == lower; });
}

/// One replacement after the other over the whole text. This is not the inverse of escaping: a doubled backslash in
/// front of t, r or n is taken for the shorter escape. Files depend on it.
std::string unescaped(std::string_view text)
{
    std::string result(text);
    kyStringUtils::replace(result, "\\\"", "\"");
    kyStringUtils::replace(result, "\\t", "\t");
    kyStringUtils::replace(result, "\\r", "\r");
    kyStringUtils::replace(result, "\\n", "\n");
    kyStringUtils::replace(result, "\\\\", "\\");
    return result;
}

/// `text` is what stood behind the equals sign, without quotes.
kyVariant typed(std::string_view text)
{
    if (equalsIgnoringCase(text, "true"))
        return kyVariant(true);
    if (equalsIgnoringCase(text, "false"))
        return kyVariant(false);
    std::int64_t integer = 0;
    if (!text.empty() && parseWholeInteger(text, integer))
        return kyVariant(integer);
    double real = 0.0;
    if (!text.empty() && parseWholeReal(text, real))
        return kyVariant(real);
    return kyVariant(text);
}

class IniReader
{
public:
    explicit IniReader(IniMap& map) : mRoot(map) {}

    /// `line` is trimmed.
    void readLine(std::string_view line)
    {
        if (isEnclosed(line, '[', ']'))
            startSection(line.substr(1, line.size() - 2));
        else if (!line.empty() && line.front() != ';')
            readEntry(line);
        ++mLineNumber;
    }

private:
    void startSection(std::string_view name)
    {
        mSectionName = name;
        mSection = name == iniGeneral ? &mRoot : nullptr;
    }

    void readEntry(std::string_view line)
    {
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            return warn("Invalid line (", line);
        const std::string_view key = trimmed(line.substr(0, equals));
        if (key.empty())
            return warn("Invalid key at line (", line);
        kyVariant* const entry = create(key);
        if (entry == nullptr)
            return warn("Duplicated key at line (", line);
        std::string_view value = trimmed(line.substr(equals + 1));
        if (isEnclosed(value, '"', '"'))
            value = value.substr(1, value.size() - 2);
        *entry = value.find('\\') == std::string_view::npos ? typed(value) : typed(unescaped(value));
    }

    /// The new entry for a key of the current section; null when it exists or lies below a value.
    kyVariant* create(std::string_view key)
    {
        if (mSection == nullptr)
            mSection = descend(&mRoot, mSectionName);
        const std::size_t last = key.rfind(iniPathSeparator);
        if (last == std::string_view::npos)
            return insertNew(mSection, key);
        return insertNew(descend(mSection, key.substr(0, last)), key.substr(last + 1));
    }

    /// The map that the path names, made when absent; null when the path meets something else.
    static IniMap* descend(IniMap* map, std::string_view path)
    {
        while (map != nullptr)
        {
            const std::size_t end = path.find(iniPathSeparator);
            const std::string_view key = path.substr(0, end);
            kyVariant* const created = insertNew(map, key);
            if (created != nullptr)
                created->setType(kyVariant::Type::Map);
            kyVariant& value = created != nullptr ? *created : map->find(key)->second;
            VariantAccess::complete(value);
            map = VariantAccess::map(value);
            if (end == std::string_view::npos)
                break;
            path.remove_prefix(end + 1);
        }
        return map;
    }

    /// Null when there is no map or the key is taken.
    static kyVariant* insertNew(IniMap* map, std::string_view key)
    {
        if (map == nullptr)
            return nullptr;
        const std::size_t before = map->size();
        kyVariant& value = (*map)[key];
        return map->size() != before ? &value : nullptr;
    }

    void warn(const char* what, std::string_view line) const
    {
        std::string message = what;
        message += std::to_string(mLineNumber);
        message += ") ";
        message += line;
        message += " in Ini file";
        warnIni(message);
    }

    IniMap& mRoot;
    std::string_view mSectionName;
    IniMap* mSection = &mRoot; ///< where keys go; null until the first key of a section makes it
    std::size_t mLineNumber = 0;
};

} // namespace

void readIni(std::string_view text, IniMap& map)
{
    IniReader reader(map);
    while (!text.empty())
    {
        const void* const found = std::memchr(text.data(), '\n', text.size());
        const std::size_t size =
            found != nullptr ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) : text.size();
        reader.readLine(trimmed(text.substr(0, size)));
        text.remove_prefix(found != nullptr ? size + 1 : size);
    }
}

} // namespace ky::impl
