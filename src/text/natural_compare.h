// SPDX-License-Identifier: MIT
// The natural order of texts, over whatever collation a platform has for texts without digits.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

class Collation
{
public:
    static constexpr wchar_t levelSeparator = 1;

    Collation() = default;
    Collation(const Collation&) = delete;
    Collation& operator=(const Collation&) = delete;
    virtual ~Collation() = default;

    /// The weights of a text of code points above 1, level by level, the most significant level first, with a
    /// separator between levels. A level that a text has nothing for is empty.
    virtual void weigh(const std::wstring& text, std::wstring& weights) const = 0;
    virtual wchar_t lower(wchar_t character) const = 0;
};

/// A strict weak order. Texts have a key, and keys are compared like words: first the weights of the first level, with
/// blanks and punctuation of ASCII before all others and every run of digits as one item in the place of the digit 0,
/// then those of the other levels, last the code points without leading zeros. So an accent or a capital decides only
/// between texts that are otherwise the same.
class NaturalOrder
{
public:
    /// The collation must outlive this object.
    explicit NaturalOrder(const Collation& collation);

    /// -1, 0 or 1. Values that are no code points are allowed.
    int compare(std::wstring_view a, std::wstring_view b, bool caseSensitive) const;

    /// The same at a small part of the cost; false, with `result` unspecified, when the key has to decide: for anything
    /// but ASCII characters above 0, for texts that differ beyond the first level, and where a collation does not weigh
    /// ASCII characters one by one.
    bool compareAscii(std::string_view a, std::string_view b, bool caseSensitive, int& result) const;

private:
    static constexpr std::size_t asciiCount = 128;
    using Weight = std::uint32_t;

    /// A character's weight of the first level, 0 for none, above one byte: the folded character, and whether it is a
    /// digit.
    using Entry = std::uint64_t;
    struct AsciiTable
    {
        bool usable = true;
        std::array<Entry, asciiCount> entries{};
    };
    struct Key;

    Key keyOf(std::wstring_view text, bool caseSensitive) const;
    void appendRun(std::wstring_view run, Key& key) const;
    void appendNumber(std::wstring_view digits, Key& key) const;
    std::vector<Weight> firstLevel(std::wstring_view text) const;
    AsciiTable tableFor(bool caseSensitive) const;
    bool weighsOneByOne(const AsciiTable& table) const;

    const Collation& mCollation;
    Weight mNumberWeight = 1;
    AsciiTable mSensitive;
    AsciiTable mInsensitive;
};

} // namespace ky::impl
