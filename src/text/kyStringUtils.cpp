// SPDX-License-Identifier: MIT
#include <ky/kyStringUtils.h>

#include "text/byte_search.h"
#include "text/character_class.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

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

/// Counts in bytes as long as they suffice, which compilers turn into vector code of full width.
std::size_t countOf(char byte, std::string_view text)
{
    std::size_t count = 0;
    while (!text.empty())
    {
        const std::string_view piece = text.substr(0, std::numeric_limits<unsigned char>::max());
        unsigned char hits = 0;
        for (const char candidate : piece)
            hits = static_cast<unsigned char>(hits + (candidate == byte ? 1 : 0));
        count += hits;
        text.remove_prefix(piece.size());
    }
    return count;
}

void appendTokens(std::string_view text, char separator, std::vector<std::string>& out, bool skipEmpty)
{
    if (!skipEmpty)
        reserveMore(out, countOf(separator, text) + 1);
    impl::ByteSearch separators(text, std::string_view(&separator, 1));
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t stop = std::min(separators.next(), text.size());
        if (stop != start || !skipEmpty)
            out.emplace_back(text.data() + start, stop - start);
        start = stop + 1;
    }
}

/// Wide counterpart of ByteSearch.
class WideSearch
{
public:
    static constexpr std::size_t npos = std::wstring_view::npos;

    WideSearch(std::wstring_view text, std::wstring_view needle) : mText(text), mNeedle(needle) {}

    std::size_t next()
    {
        const std::size_t position = mText.find(mNeedle, mEarliest);
        if (position != npos)
            mEarliest = position + mNeedle.size();
        return position;
    }

private:
    std::wstring_view mText;
    std::wstring_view mNeedle;
    std::size_t mEarliest = 0;
};

template <typename Char>
using Search = std::conditional_t<std::is_same_v<Char, char>, impl::ByteSearch, WideSearch>;

/// The places of `from` in `text`. Only so many are remembered, because a list of all of them can take many times the
/// memory of the text; the others are looked for again.
template <typename Char>
class Places
{
public:
    Places(std::basic_string_view<Char> text, std::basic_string_view<Char> from)
    {
        Search<Char> search(text, from);
        for (std::size_t place = search.next(); place != search.npos; place = search.next(), ++mCount)
        {
            if (mCount == 0)
                mFirst.reserve(std::min(remembered, text.size() / from.size()));
            if (mCount < remembered)
                mFirst.push_back(place);
        }
    }

    std::size_t count() const { return mCount; }

    /// Calls `visit` with every place in turn. What lies before the end of the place visited may change meanwhile.
    template <typename Visit>
    void forEach(std::basic_string_view<Char> text, std::basic_string_view<Char> from, Visit visit) const
    {
        for (const std::size_t place : mFirst)
            visit(place);
        if (mCount == mFirst.size())
            return;
        const std::size_t start = mFirst.back() + from.size();
        Search<Char> search(text.substr(start), from);
        for (std::size_t place = search.next(); place != search.npos; place = search.next())
            visit(start + place);
    }

private:
    static constexpr std::size_t remembered = 4096;
    std::vector<std::size_t> mFirst;
    std::size_t mCount = 0;
};

/// Works within the buffer of `text`: its content first moves to the end of the final size, when it grows, and from
/// there back to the start piece by piece. The other arguments must not lie in `text`.
template <typename Char>
std::size_t replaceInBuffer(std::basic_string<Char>& text, std::basic_string_view<Char> from,
                            std::basic_string_view<Char> to)
{
    using Traits = std::char_traits<Char>;
    const Places<Char> places(text, from);
    const std::size_t size = text.size();
    const std::size_t growth = to.size() > from.size() ? places.count() * (to.size() - from.size()) : 0;
    text.resize(size + growth);
    Char* const target = text.data();
    Char* const source = target + growth;
    if (growth != 0)
        Traits::move(source, target, size);
    std::size_t written = 0;
    std::size_t rest = 0;
    const auto keepUntil = [&](std::size_t end)
    {
        if (target + written != source + rest)
            Traits::move(target + written, source + rest, end - rest);
        written += end - rest;
    };
    places.forEach({source, size}, from,
                   [&](std::size_t place)
                   {
                       keepUntil(place);
                       Traits::copy(target + written, to.data(), to.size());
                       written += to.size();
                       rest = place + from.size();
                   });
    keepUntil(size);
    text.resize(written);
    return places.count();
}

template <typename Char>
std::size_t replaceAll(std::basic_string<Char>& text, const std::basic_string<Char>& from,
                       const std::basic_string<Char>& to)
{
    if (from.empty())
        return 0;
    if (&from == &text || &to == &text)
        return replaceInBuffer<Char>(text, std::basic_string<Char>(from), std::basic_string<Char>(to));
    return replaceInBuffer<Char>(text, from, to);
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
