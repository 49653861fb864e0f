// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include "text/character_class.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>

namespace ky
{

namespace
{

using impl::isSpace;
using impl::lowerByte;
using impl::upperByte;

template <typename Element, typename Container>
bool isElementOf(const Element& element, const Container& container)
{
    const std::less<const Element*> before;
    return !before(&element, container.data()) && before(&element, container.data() + container.size());
}

/// Makes room for `more` elements without giving up geometric growth, which repeated appending relies on.
void reserveMore(std::vector<std::string>& out, std::size_t more)
{
    const std::size_t needed = out.size() + more;
    if (needed > out.capacity())
        out.reserve(std::max(needed, 2 * out.capacity()));
}

void appendTokens(std::string_view text, char separator, std::vector<std::string>& out, bool skipEmpty)
{
    if (!skipEmpty)
        reserveMore(out, static_cast<std::size_t>(std::count(text.begin(), text.end(), separator)) + 1);
    const char* const end = text.data() + text.size();
    for (const char* start = text.data(); start != end;)
    {
        const auto* cut =
            static_cast<const char*>(std::memchr(start, separator, static_cast<std::size_t>(end - start)));
        const char* const stop = cut == nullptr ? end : cut;
        if (stop != start || !skipEmpty)
            out.emplace_back(start, stop);
        start = cut == nullptr ? end : cut + 1;
    }
}

/// For a `to` that is not longer than `from`: the text only moves towards its start.
template <typename Char>
std::size_t replaceShrinking(std::basic_string<Char>& text, std::basic_string_view<Char> from,
                             std::basic_string_view<Char> to, std::size_t match)
{
    using Traits = std::char_traits<Char>;
    Char* const data = text.data();
    std::size_t written = match;
    std::size_t count = 0;
    while (match != std::basic_string<Char>::npos)
    {
        Traits::copy(data + written, to.data(), to.size());
        written += to.size();
        ++count;
        const std::size_t rest = match + from.size();
        match = text.find(from.data(), rest, from.size());
        const std::size_t restEnd = match == std::basic_string<Char>::npos ? text.size() : match;
        if (written != rest)
            Traits::move(data + written, data + rest, restEnd - rest);
        written += restEnd - rest;
    }
    text.resize(written);
    return count;
}

template <typename Char>
std::size_t replaceGrowing(std::basic_string<Char>& text, std::basic_string_view<Char> from,
                           std::basic_string_view<Char> to, std::size_t match)
{
    std::vector<std::size_t> matches;
    for (; match != std::basic_string<Char>::npos; match = text.find(from.data(), match + from.size(), from.size()))
        matches.push_back(match);
    std::basic_string<Char> result;
    result.reserve(text.size() + matches.size() * (to.size() - from.size()));
    std::size_t rest = 0;
    for (const std::size_t place : matches)
    {
        result.append(text, rest, place - rest);
        result.append(to);
        rest = place + from.size();
    }
    result.append(text, rest);
    text.swap(result);
    return matches.size();
}

template <typename Char>
std::size_t replaceAll(std::basic_string<Char>& text, const std::basic_string<Char>& from,
                       const std::basic_string<Char>& to)
{
    const std::size_t match = from.empty() ? std::basic_string<Char>::npos : text.find(from);
    if (match == std::basic_string<Char>::npos)
        return 0;
    // The shrinking form writes into the text while it still reads its arguments.
    if (to.size() > from.size())
        return replaceGrowing<Char>(text, from, to, match);
    if (&from == &text || &to == &text)
        return replaceShrinking<Char>(text, std::basic_string<Char>(from), std::basic_string<Char>(to), match);
    return replaceShrinking<Char>(text, from, to, match);
}

std::string lowered(const std::string& text)
{
    std::string result(text);
    kyStringUtils::toLower(result);
    return result;
}

/// Empty for characters that need no escaping.
std::string_view xmlEntity(char character)
{
    switch (character)
    {
    case '"': return "&quot;";
    case '&': return "&amp;";
    case '\'': return "&apos;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    default: return {};
    }
}

} // namespace

std::string& kyStringUtils::ltrim(std::string& text)
{
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isSpace));
    return text;
}

std::string& kyStringUtils::rtrim(std::string& text)
{
    text.erase(std::find_if_not(text.rbegin(), text.rend(), isSpace).base(), text.end());
    return text;
}

std::string& kyStringUtils::trim(std::string& text) { return rtrim(ltrim(text)); }

std::string& kyStringUtils::trimAndRemoveConsecutiveSpaces(std::string& text)
{
    trim(text);
    std::size_t kept = 0;
    bool inRun = false;
    for (const char byte : text)
    {
        const bool space = isSpace(byte);
        if (!(space && inRun))
            text[kept++] = byte;
        inRun = space;
    }
    text.resize(kept);
    return text;
}

std::string& kyStringUtils::toUpper(std::string& text)
{
    std::transform(text.begin(), text.end(), text.begin(), upperByte);
    return text;
}

std::string& kyStringUtils::toLower(std::string& text)
{
    std::transform(text.begin(), text.end(), text.begin(), lowerByte);
    return text;
}

void kyStringUtils::SecureClear(std::string& text)
{
    // A call through a volatile pointer cannot be dropped as a dead store.
    static void* (*const volatile wipe)(void*, int, std::size_t) = &std::memset;
    text.resize(text.capacity());
    wipe(text.data(), 0, text.size());
    text.clear();
}

std::string& kyStringUtils::replace(std::string& text, const std::string& from, const std::string& to)
{
    replaceAll(text, from, to);
    return text;
}

std::wstring& kyStringUtils::replace(std::wstring& text, const std::wstring& from, const std::wstring& to)
{
    replaceAll(text, from, to);
    return text;
}

int kyStringUtils::ReplaceAllOccurences(std::string& text, const std::string& from, const std::string& to)
{
    constexpr std::size_t most = static_cast<std::size_t>(std::numeric_limits<int>::max());
    return static_cast<int>(std::min(replaceAll(text, from, to), most));
}

std::size_t kyStringUtils::FindCaseSensitive(const std::string& text, const std::string& sub) { return text.find(sub); }

std::size_t kyStringUtils::FindCaseInsensitive(const std::string& text, const std::string& sub)
{
    return lowered(text).find(lowered(sub));
}

bool kyStringUtils::Contains(const std::string& text, const std::string& sub, bool caseSensitive)
{
    return (caseSensitive ? FindCaseSensitive(text, sub) : FindCaseInsensitive(text, sub)) != npos;
}

bool kyStringUtils::StartsWith(const std::string& text, const std::string& prefix)
{
    return std::string_view(text).starts_with(prefix);
}

bool kyStringUtils::endsWith(const std::string& text, const std::string& suffix)
{
    return std::string_view(text).ends_with(suffix);
}

std::vector<std::string>& kyStringUtils::Split(const std::string& text, char separator, std::vector<std::string>& out,
                                               bool skipEmpty)
{
    if (isElementOf(text, out))
        appendTokens(std::string(text), separator, out, skipEmpty);
    else
        appendTokens(text, separator, out, skipEmpty);
    return out;
}

std::vector<std::string> kyStringUtils::Split(const std::string& text, char separator, bool skipEmpty)
{
    std::vector<std::string> tokens;
    appendTokens(text, separator, tokens, skipEmpty);
    return tokens;
}

std::vector<char*>& kyStringUtils::Split(char* buffer, char separator, std::vector<char*>& out)
{
    out.clear();
    for (char* start = buffer; start != nullptr;)
    {
        out.push_back(start);
        start = separator == '\0' ? nullptr : std::strchr(start, separator);
        if (start != nullptr)
            *start++ = '\0';
    }
    return out;
}

std::vector<std::string>& kyStringUtils::SplitFirst(const std::string& text, char separator,
                                                    std::vector<std::string>& out)
{
    const std::size_t cut = text.find(separator);
    std::string head = text.substr(0, cut);
    if (cut != npos)
    {
        std::string tail = text.substr(cut + 1);
        out.push_back(std::move(head));
        out.push_back(std::move(tail));
    }
    else
        out.push_back(std::move(head));
    return out;
}

std::vector<std::string> kyStringUtils::SplitFirst(const std::string& text, char separator)
{
    std::vector<std::string> tokens;
    SplitFirst(text, separator, tokens);
    return tokens;
}

std::string& kyStringUtils::EscapeXmlString(std::string& text)
{
    std::size_t length = 0;
    for (const char character : text)
    {
        const std::size_t entity = xmlEntity(character).size();
        length += entity == 0 ? 1 : entity;
    }
    if (length == text.size())
        return text;
    std::string result;
    result.reserve(length);
    for (const char character : text)
    {
        const std::string_view entity = xmlEntity(character);
        if (entity.empty())
            result.push_back(character);
        else
            result.append(entity);
    }
    text.swap(result);
    return text;
}

bool kyStringUtils::parseBool(const char* text)
{
    if (text == nullptr)
        return false;
    std::string word(text);
    trim(toLower(word));
    return word != "f" && word != "false" && word != "0";
}

} // namespace ky
