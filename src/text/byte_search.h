// SPDX-License-Identifier: MIT
// All places of a text within another, for work that visits every one of them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ky::impl
{

struct VectorText;

/// Finds the occurrences of a needle from left to right; they do not overlap. The text up to the end of the last
/// occurrence may change while the search goes on.
class ByteSearch
{
public:
    static constexpr std::size_t npos = std::string_view::npos;

    /// The needle must not be empty. Both must outlive the search.
    ByteSearch(std::string_view text, std::string_view needle) noexcept;

    /// Position of the next occurrence; npos when there is none, and from then on.
    std::size_t next() noexcept
    {
        do
        {
            while (mCandidates != 0)
            {
                const std::size_t position = mBlock + static_cast<std::size_t>(std::countr_zero(mCandidates));
                mCandidates &= mCandidates - 1;
                if (position < mEarliest || !fitsBetween(position))
                    continue;
                mEarliest = position + mNeedle.size();
                return position;
            }
        } while (loadBlock());
        return npos;
    }

private:
    /// Whether the bytes between the first and the last one fit as well. Short needles are worth no call.
    bool fitsBetween(std::size_t position) const noexcept
    {
        const char* const text = mText.data() + position;
        const char* const needle = mNeedle.data();
        const std::size_t size = mNeedle.size();
        if (size <= 2)
            return true;
        if (size < sizeof(std::uint32_t))
            return text[1] == needle[1];
        if (size <= 2 * sizeof(std::uint32_t))
            return sameEnds<std::uint32_t>(text, needle, size);
        if (size <= 2 * sizeof(std::uint64_t))
            return sameEnds<std::uint64_t>(text, needle, size);
        return std::memcmp(text, needle, size) == 0;
    }

    /// Compares two words that overlap as the size demands.
    template <typename Word>
    static bool sameEnds(const char* a, const char* b, std::size_t size) noexcept
    {
        Word words[4];
        std::memcpy(&words[0], a, sizeof(Word));
        std::memcpy(&words[1], b, sizeof(Word));
        std::memcpy(&words[2], a + size - sizeof(Word), sizeof(Word));
        std::memcpy(&words[3], b + size - sizeof(Word), sizeof(Word));
        return ((words[0] ^ words[1]) | (words[2] ^ words[3])) == 0;
    }

    bool loadBlock() noexcept;

    const VectorText* mVector;
    std::string_view mText;
    std::string_view mNeedle;
    std::size_t mBlock = 0; ///< first of the 64 positions that mCandidates stands for
    std::size_t mNextBlock = 0;
    std::size_t mEarliest = 0;     ///< behind the last occurrence
    std::uint64_t mCandidates = 0; ///< positions not yet looked at whose first and last byte fit
};

/// Bit i is set when first[i] == firstByte and last[i] == lastByte, for i below `count`, at most 64.
std::uint64_t portableMatchMask(const char* first, char firstByte, const char* last, char lastByte,
                                std::size_t count) noexcept;

} // namespace ky::impl
