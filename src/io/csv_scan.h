// SPDX-License-Identifier: MIT
// Search for the bytes that mean something in a CSV text.
#pragma once

#include "platform/compiler.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if KY_ARCH_X64
#include <emmintrin.h>
#endif

namespace ky::impl
{

/// The first byte in [from, end) that is `a` or `b`, or `end`. Meant for short ways, where a call would cost more than
/// the search.
template <typename Char>
Char* findEither(Char* from, Char* end, char a, char b)
{
#if KY_ARCH_X64
    for (; end - from >= 16; from += 16)
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i same =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(a)), _mm_cmpeq_epi8(bytes, _mm_set1_epi8(b)));
        if (const int found = _mm_movemask_epi8(same))
            return from + std::countr_zero(static_cast<unsigned>(found));
    }
#endif
    while (from != end && *from != a && *from != b)
        ++from;
    return from;
}

/// Whether one of `size` bytes is `a` or `b`.
inline bool holdsEither(const char* data, std::size_t size, char a, char b)
{
#if KY_ARCH_X64
    const auto matches = [a, b](__m128i bytes)
    {
        const __m128i same =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(a)), _mm_cmpeq_epi8(bytes, _mm_set1_epi8(b)));
        return _mm_movemask_epi8(same);
    };
    // Most cells are short: two words that overlap as the size demands.
    if (size >= 8 && size <= 16)
    {
        const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(data));
        const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(data + size - 8));
        return matches(_mm_unpacklo_epi64(first, last)) != 0;
    }
    if (size >= 4 && size < 8)
    {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, data, sizeof first);
        std::memcpy(&last, data + size - sizeof last, sizeof last);
        const __m128i bytes = _mm_cvtsi64_si128(static_cast<long long>(std::uint64_t{first} << 32 | last));
        return (matches(bytes) & 0xFF) != 0;
    }
#endif
    return findEither(data, data + size, a, b) != data + size;
}

/// The first `wanted` in [from, end), or `end`.
template <typename Char>
Char* findByte(Char* from, Char* end, char wanted)
{
    return findEither(from, end, wanted, wanted);
}

/// Quote, column delimiter, line feed and carriage return.
class CsvSpecials
{
public:
    CsvSpecials(char quote, char delimiter) : mQuote(quote), mDelimiter(delimiter) {}

    /// The first of them in [from, end), or `end`.
    char* find(char* from, char* end) const
    {
#if KY_ARCH_X64
        for (; end - from >= 16; from += 16)
        {
            if (const unsigned found = mask(from))
                return from + std::countr_zero(found);
        }
#endif
        while (from != end && !isSpecial(*from))
            ++from;
        return from;
    }

    static constexpr std::ptrdiff_t blockSize = 64;

    /// Of the first `blockSize` bytes at most; bit n stands for byte n.
    std::uint64_t blockMask(const char* from, const char* end) const
    {
        std::uint64_t found = 0;
        std::ptrdiff_t i = 0;
        const std::ptrdiff_t size = end - from < blockSize ? end - from : blockSize;
#if KY_ARCH_X64
        for (; size - i >= 16; i += 16)
            found |= std::uint64_t{mask(from + i)} << i;
#endif
        for (; i < size; ++i)
            found |= std::uint64_t{isSpecial(from[i])} << i;
        return found;
    }

private:
    [[nodiscard]] bool isSpecial(char byte) const
    {
        return byte == mQuote || byte == mDelimiter || byte == '\n' || byte == '\r';
    }
#if KY_ARCH_X64
    unsigned mask(const char* from) const
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i delimiters = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(mQuote)),
                                                _mm_cmpeq_epi8(bytes, _mm_set1_epi8(mDelimiter)));
        const __m128i breaks =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')));
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(delimiters, breaks)));
    }
#endif

    char mQuote;
    char mDelimiter;
};

/// Goes from one special byte to the next. The text may change behind, not ahead.
class CsvWalk
{
public:
    CsvWalk(const CsvSpecials& specials, char* from, char* end) : mSpecials(specials), mBlock(from), mEnd(end)
    {
        mFound = mSpecials.blockMask(mBlock, mEnd);
    }

    /// Null when there is no further one.
    char* next()
    {
        while (mFound == 0)
        {
            if (mEnd - mBlock <= CsvSpecials::blockSize)
                return nullptr;
            mBlock += CsvSpecials::blockSize;
            mFound = mSpecials.blockMask(mBlock, mEnd);
        }
        char* const special = mBlock + std::countr_zero(mFound);
        mFound &= mFound - 1;
        return special;
    }

    /// The next one that is `wanted`.
    char* nextOf(char wanted)
    {
        char* special = next();
        while (special != nullptr && *special != wanted)
            special = next();
        return special;
    }

private:
    const CsvSpecials& mSpecials;
    char* mBlock;
    char* mEnd;
    std::uint64_t mFound;
};

} // namespace ky::impl
