// SPDX-License-Identifier: MIT
// Search for the next byte that means something in an unquoted part of a CSV text.
#pragma once

#include "platform/compiler.h"

#include <bit>

#if KY_ARCH_X64
#include <emmintrin.h>
#endif

namespace ky::impl
{

/// Quote, column delimiter, line feed and carriage return.
class CsvSpecials
{
public:
    CsvSpecials(char quote, char delimiter) : mQuote(quote), mDelimiter(delimiter) {}

    /// The first of them in [from, end), or `end`.
    const char* find(const char* from, const char* end) const
    {
#if KY_ARCH_X64
        for (; end - from >= 16; from += 16)
        {
            if (const unsigned found = mask(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))))
                return from + std::countr_zero(found);
        }
#endif
        while (from != end && *from != mQuote && *from != mDelimiter && *from != '\n' && *from != '\r')
            ++from;
        return from;
    }

private:
#if KY_ARCH_X64
    unsigned mask(__m128i bytes) const
    {
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

} // namespace ky::impl
