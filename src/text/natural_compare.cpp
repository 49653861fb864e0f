// SPDX-License-Identifier: MIT
#include "text/natural_compare.h"

#include "platform/compiler.h"
#include "text/byte_lanes.h"
#include "text/character_class.h"

#include <algorithm>
#include <bit>
#include <compare>

namespace ky::impl
{

namespace
{

template <typename Char>
bool isDigit(Char character)
{
    return character >= Char('0') && character <= Char('9');
}

/// Blanks and punctuation of ASCII. Many collations skip them on the first level, which would put "a.txt" behind
/// "a2.txt"; here they are letters before all others, in the order of their codes.
bool isMark(wchar_t character)
{
    return (character >= L' ' && character < L'0') || (character > L'9' && character < L'A') ||
           (character > L'Z' && character < L'a') || (character > L'z' && character <= L'~');
}

/// What a collation is asked about instead of characters that it need not know.
wchar_t weighable(wchar_t character)
{
    constexpr wchar_t replacement = 0xFFFD;
    const auto value = static_cast<std::uint32_t>(character);
    if (value <= static_cast<std::uint32_t>(Collation::levelSeparator))
        return Collation::levelSeparator + 1;
    const bool surrogate = sizeof(wchar_t) > 2 && value >= 0xD800 && value <= 0xDFFF;
    return surrogate || value > 0x10FFFF ? replacement : character;
}

// Room for the marks below the weights, and for the numbers between them.
std::uint32_t spread(wchar_t weight) { return 0x80U + (static_cast<std::uint32_t>(weight) << 1); }

template <typename Sequence>
int compareSequences(const Sequence& a, const Sequence& b)
{
    const auto order = a <=> b;
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

/// Whether all bytes lie between 1 and 127.
bool isPlainAscii(std::string_view text)
{
    constexpr std::uint64_t high = inEveryByte(0x80);
    const auto marksOf = [](std::uint64_t word) { return word | (word - inEveryByte(1)); };
    const char* at = text.data();
    const char* const end = at + text.size();
    std::uint64_t marks = 0;
    if (text.size() > 8)
    {
        for (; end - at > 8; at += 8)
            marks |= marksOf(wordAt<std::uint64_t>(at));
        marks |= marksOf(wordAt<std::uint64_t>(end - 8));
    }
    else if (text.size() >= 4)
        marks = marksOf(wordAt<std::uint32_t>(at) | wordAt<std::uint32_t>(end - 4) << 32);
    else
        for (; at != end; ++at)
            marks |= *at > 0 ? 0U : high;
    return (marks & high) == 0;
}

std::uint64_t withSmallLetters(std::uint64_t word) { return word | bytesBetween(word, 'A', 'Z') >> 2; }

/// How many ASCII characters two texts share at their start, as far as whole words tell, but for digits at the end:
/// those belong to a number that may go on.
std::size_t sharedStart(std::string_view a, std::string_view b, bool caseSensitive)
{
    const std::size_t shorter = std::min(a.size(), b.size());
    std::size_t shared = 0;
    for (bool same = std::endian::native == std::endian::little; same && shorter - shared >= 8;)
    {
        std::uint64_t left = wordAt<std::uint64_t>(a.data() + shared);
        std::uint64_t right = wordAt<std::uint64_t>(b.data() + shared);
        if (!caseSensitive)
        {
            left = withSmallLetters(left);
            right = withSmallLetters(right);
        }
        same = left == right;
        shared += same ? 8 : static_cast<std::size_t>(std::countr_zero(left ^ right)) / 8;
    }
    while (shared != 0 && isDigit(a[shared - 1]))
        --shared;
    return shared;
}

constexpr std::uint64_t digitFlag = 0x80;
constexpr int weightShift = 8;

/// Compares the runs of digits at the start of two texts and removes them.
int compareNumbers(const char*& a, const char* endA, const char*& b, const char* endB)
{
    while (a != endA && *a == '0')
        ++a;
    while (b != endB && *b == '0')
        ++b;
    int difference = 0;
    for (;; ++a, ++b)
    {
        const bool moreA = a != endA && isDigit(*a);
        const bool moreB = b != endB && isDigit(*b);
        if (!moreA || !moreB)
            return moreA == moreB ? difference : (moreA ? 1 : -1);
        if (difference == 0)
            difference = *a < *b ? -1 : (*a > *b ? 1 : 0);
    }
}

} // namespace

struct NaturalOrder::Key
{
    // Collations have up to four levels; further ones would be appended to the last.
    std::array<std::vector<Weight>, 4> levels;
    std::wstring text;
};

NaturalOrder::NaturalOrder(const Collation& collation) : mCollation(collation)
{
    std::wstring weights;
    collation.weigh(L"0", weights);
    if (!weights.empty() && weights.front() != Collation::levelSeparator)
        mNumberWeight = spread(weights.front()) + 1;
    mSensitive = tableFor(true);
    mInsensitive = tableFor(false);
}

void NaturalOrder::appendRun(std::wstring_view run, Key& key) const
{
    std::wstring known(run);
    std::transform(known.begin(), known.end(), known.begin(), weighable);
    std::wstring weights;
    mCollation.weigh(known, weights);
    std::size_t level = 0;
    for (const wchar_t weight : weights)
        if (weight == Collation::levelSeparator && level + 1 < key.levels.size())
            ++level;
        else
            key.levels[level].push_back(spread(weight));
    key.text += run;
}

void NaturalOrder::appendNumber(std::wstring_view digits, Key& key) const
{
    digits.remove_prefix(std::min(digits.find_first_not_of(L'0'), digits.size()));
    std::vector<Weight>& level = key.levels.front();
    level.push_back(mNumberWeight);
    level.push_back(static_cast<Weight>(digits.size()));
    level.insert(level.end(), digits.begin(), digits.end());
    key.text += digits;
}

NaturalOrder::Key NaturalOrder::keyOf(std::wstring_view text, bool caseSensitive) const
{
    std::wstring folded;
    if (!caseSensitive)
    {
        folded.resize(text.size());
        std::transform(text.begin(), text.end(), folded.begin(), [this](wchar_t c) { return mCollation.lower(c); });
        text = folded;
    }
    Key key;
    for (auto at = text.begin(); at != text.end();)
    {
        const auto start = at;
        if (isMark(*at))
        {
            key.levels.front().push_back(static_cast<Weight>(*at));
            key.text.push_back(*at++);
        }
        else if (isDigit(*at))
        {
            at = std::find_if_not(at, text.end(), isDigit<wchar_t>);
            appendNumber({start, at}, key);
        }
        else
        {
            at = std::find_if(at, text.end(), [](wchar_t c) { return isDigit(c) || isMark(c); });
            appendRun({start, at}, key);
        }
    }
    return key;
}

int NaturalOrder::compare(std::wstring_view a, std::wstring_view b, bool caseSensitive) const
{
    const Key left = keyOf(a, caseSensitive);
    const Key right = keyOf(b, caseSensitive);
    const int byLevels = compareSequences(left.levels, right.levels);
    return byLevels != 0 ? byLevels : compareSequences(left.text, right.text);
}

std::vector<NaturalOrder::Weight> NaturalOrder::firstLevel(std::wstring_view text) const
{
    return std::move(keyOf(text, true).levels.front());
}

NaturalOrder::AsciiTable NaturalOrder::tableFor(bool caseSensitive) const
{
    AsciiTable table;
    for (std::size_t i = 1; i < asciiCount; ++i)
    {
        const auto character = static_cast<wchar_t>(i);
        const wchar_t folded = caseSensitive ? character : mCollation.lower(character);
        if (folded != (caseSensitive ? character : static_cast<wchar_t>(lowerByte(static_cast<char>(i)))))
        {
            table.usable = false;
            return table;
        }
        table.entries[i] = static_cast<Entry>(folded);
        if (isDigit(character))
        {
            table.entries[i] |= digitFlag | static_cast<Entry>(mNumberWeight) << weightShift;
            continue;
        }
        const std::vector<Weight> weights = firstLevel({&folded, 1});
        if (!weights.empty())
            table.entries[i] |= static_cast<Entry>(weights.front()) << weightShift;
        table.usable = table.usable && weights.size() <= 1;
    }
    table.usable = table.usable && weighsOneByOne(table);
    return table;
}

bool NaturalOrder::weighsOneByOne(const AsciiTable& table) const
{
    for (wchar_t first = 1; first < static_cast<wchar_t>(asciiCount); ++first)
    {
        std::wstring pairs;
        std::vector<Weight> expected;
        const auto append = [&](wchar_t character)
        {
            const Entry entry = table.entries[static_cast<std::size_t>(character)];
            pairs.push_back(static_cast<wchar_t>(entry & (digitFlag - 1)));
            if (entry >> weightShift != 0)
                expected.push_back(static_cast<Weight>(entry >> weightShift));
        };
        for (wchar_t second = 1; second < static_cast<wchar_t>(asciiCount) && !isDigit(first); ++second)
            if (!isDigit(second))
            {
                append(first);
                append(second);
            }
        if (firstLevel(pairs) != expected)
            return false;
    }
    return true;
}

bool NaturalOrder::compareAscii(std::string_view a, std::string_view b, bool caseSensitive, int& result) const
{
    const AsciiTable& table = caseSensitive ? mSensitive : mInsensitive;
    if (KY_UNLIKELY(!table.usable || !isPlainAscii(a) || !isPlainAscii(b)))
        return false;
    const auto entryOf = [&table](const char* at) { return table.entries[static_cast<unsigned char>(*at)]; };
    const std::size_t shared = sharedStart(a, b, caseSensitive);
    const char* left = a.data() + shared;
    const char* right = b.data() + shared;
    const char* const endLeft = a.data() + a.size();
    const char* const endRight = b.data() + b.size();
    bool same = true;
    while (left != endLeft && right != endRight)
    {
        const Entry entryLeft = entryOf(left);
        const Entry entryRight = entryOf(right);
        if ((entryLeft & entryRight & digitFlag) != 0)
        {
            result = compareNumbers(left, endLeft, right, endRight);
            if (result != 0)
                return true;
            continue;
        }
        if (entryLeft != entryRight)
        {
            const bool skipLeft = entryLeft >> weightShift == 0;
            const bool skipRight = entryRight >> weightShift == 0;
            same = false;
            if (KY_UNLIKELY(skipLeft || skipRight))
            {
                left += skipLeft ? 1 : 0;
                right += skipRight ? 1 : 0;
                continue;
            }
            result = entryLeft >> weightShift < entryRight >> weightShift ? -1 : 1;
            if (entryLeft >> weightShift != entryRight >> weightShift)
                return true;
        }
        ++left;
        ++right;
    }
    const auto hasWeight = [&entryOf](const char& at) { return entryOf(&at) >> weightShift != 0; };
    const bool more = std::any_of(left, endLeft, hasWeight);
    if (more || std::any_of(right, endRight, hasWeight))
    {
        result = more ? 1 : -1;
        return true;
    }
    result = 0;
    return (same && left == endLeft && right == endRight) || a == b;
}

} // namespace ky::impl
