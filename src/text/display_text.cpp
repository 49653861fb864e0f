// SPDX-License-Identifier: MIT
#include "text/display_text.h"

#include "text/character_width_table.h"
#include "text/utf8_decode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace ky::impl
{

namespace
{

constexpr char32_t zeroWidthJoiner = 0x200D;
constexpr char32_t emojiSelector = 0xFE0F;
constexpr std::string_view replacementText = "\xEF\xBF\xBD";

bool isControl(char32_t value)
{
    const bool isDirection = (value >= 0x202A && value <= 0x202E) || (value >= 0x2066 && value <= 0x2069);
    return value < 0x20 || (value >= 0x7F && value < 0xA0) || value == 0x2028 || value == 0x2029 || isDirection;
}

/// A control character in ASCII.
class Escape
{
public:
    explicit Escape(char32_t value)
    {
        put('\\');
        switch (value)
        {
        case '\n': put('n'); break;
        case '\r': put('r'); break;
        case '\t': put('t'); break;
        default: putNumber(value);
        }
    }

    std::string_view view() const { return {mText.data(), mSize}; }

private:
    void put(char byte) { mText[mSize++] = byte; }

    void putNumber(char32_t value)
    {
        constexpr char digits[] = "0123456789ABCDEF";
        put(value < 0x100 ? 'x' : 'u');
        for (unsigned bits = value < 0x100 ? 8 : 16; bits > 0; bits -= 4)
            put(digits[(value >> (bits - 4)) & 15]);
    }

    std::array<char, 6> mText{};
    std::size_t mSize = 0;
};

WidthClass widthClassOf(char32_t value)
{
    if (value >= 0xAF && value < 0x300)
        return WidthClass::Narrow;
    const auto behind = std::upper_bound(std::begin(characterWidthRuns), std::end(characterWidthRuns),
                                         (static_cast<std::uint32_t>(value) << 2) | 3U);
    return static_cast<WidthClass>(*std::prev(behind) & 3U);
}

bool isEmoji(char32_t value, WidthClass kind)
{
    if (kind == WidthClass::WideAsEmoji)
        return value > 0x7F;
    return kind == WidthClass::Wide && ((value >= 0x2300 && value < 0x2C00) || (value >= 0x1F000 && value < 0x20000));
}

bool isSkinTone(char32_t value) { return value >= 0x1F3FB && value <= 0x1F3FF; }

/// A character that grows by the code points drawn with it.
class Cluster
{
public:
    explicit Cluster(char32_t base) : Cluster(base, widthClassOf(base)) {}

    /// False when the code point begins a character of its own.
    bool take(char32_t value)
    {
        const WidthClass kind = widthClassOf(value);
        const bool isJoined = mEndsWithJoiner && mIsEmoji && isEmoji(value, kind);
        const bool isTone = mIsEmoji && isSkinTone(value);
        if (kind != WidthClass::Zero && !isJoined && !isTone)
            return false;
        if (isTone || (value == emojiSelector && mBecomesWide))
            mWidth = 2;
        mEndsWithJoiner = value == zeroWidthJoiner;
        return true;
    }

    std::size_t width() const { return mWidth; }

private:
    Cluster(char32_t base, WidthClass kind)
        : mWidth(kind == WidthClass::Zero   ? 0
                 : kind == WidthClass::Wide ? 2
                                            : 1),
          mBecomesWide(kind == WidthClass::WideAsEmoji),
          mIsEmoji(isEmoji(base, kind))
    {
    }

    std::size_t mWidth;
    bool mBecomesWide;
    bool mIsEmoji;
    bool mEndsWithJoiner = false;
};

constexpr std::size_t wordSize = sizeof(std::uint64_t);

/// Whether all bytes of a word are printable ASCII: none below ' ', above '~', or with the top bit.
bool isPlainWord(const char* bytes)
{
    constexpr std::uint64_t ones = 0x0101010101010101U;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, wordSize);
    return ((word | (word - ones * ' ') | (word + ones)) & ones << 7) == 0;
}

} // namespace

DisplayCharacter firstDisplayCharacter(std::string_view text) noexcept
{
    using Kind = DisplayCharacter::Kind;
    const DecodedCharacter first = decodeUtf8(text);
    DisplayCharacter result{first.length, 0, Kind::Shown, first.value, first.length};
    char32_t shown = first.value;
    if (!first.isWellFormed)
        result.kind = Kind::IllFormed;
    else if (isControl(first.value))
    {
        // Marks behind it are drawn with the last character of the escape.
        const Escape escape(first.value);
        shown = static_cast<unsigned char>(escape.view().back());
        result.kind = Kind::Control;
        result.width = escape.view().size() - 1;
    }
    Cluster cluster(shown);
    while (result.bytes < text.size() && static_cast<unsigned char>(text[result.bytes]) >= 0x80)
    {
        const DecodedCharacter next = decodeUtf8(text.substr(result.bytes));
        if (!next.isWellFormed || isControl(next.value) || !cluster.take(next.value))
            break;
        result.bytes += next.length;
    }
    result.width += cluster.width();
    return result;
}

std::size_t plainPrefix(std::string_view text) noexcept
{
    std::size_t length = 0;
    while (text.size() - length >= wordSize && isPlainWord(text.data() + length))
        length += wordSize;
    while (length != text.size() && text[length] >= ' ' && text[length] <= '~')
        ++length;
    return length == text.size() || length == 0 ? length : length - 1;
}

std::size_t displayWidth(std::string_view text) noexcept
{
    std::size_t width = 0;
    while (!text.empty())
    {
        const std::size_t plain = plainPrefix(text);
        width += plain;
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const DisplayCharacter next = firstDisplayCharacter(text);
        width += next.width;
        text.remove_prefix(next.bytes);
    }
    return width;
}

std::size_t appendDisplayText(std::string& out, std::string_view text)
{
    std::size_t width = 0;
    while (!text.empty())
    {
        const std::size_t plain = plainPrefix(text);
        out.append(text.substr(0, plain));
        width += plain;
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const DisplayCharacter next = firstDisplayCharacter(text);
        if (next.kind == DisplayCharacter::Kind::Control)
            out += Escape(next.value).view();
        else
            out += next.kind == DisplayCharacter::Kind::Shown ? text.substr(0, next.baseBytes) : replacementText;
        out += text.substr(next.baseBytes, next.bytes - next.baseBytes);
        width += next.width;
        text.remove_prefix(next.bytes);
    }
    return width;
}

Fitting fittingPrefix(std::string_view text, std::size_t width) noexcept
{
    Fitting fitting;
    while (fitting.bytes < text.size())
    {
        const DisplayCharacter next = firstDisplayCharacter(text.substr(fitting.bytes));
        if (next.width > width - fitting.width)
            break;
        fitting.bytes += next.bytes;
        fitting.width += next.width;
    }
    return fitting;
}

} // namespace ky::impl
