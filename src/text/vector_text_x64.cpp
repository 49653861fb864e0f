// SPDX-License-Identifier: MIT
#include "text/vector_text.h"

#include "platform/compiler.h"
#include "platform/processor.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <tmmintrin.h>

namespace ky::impl
{

namespace
{

// Two neighbouring bytes are judged by three nibbles: both of the first byte and the high one of the second. Each rule
// is a product of three sets of nibbles and owns one bit, so that three table look-ups and two ANDs try all of them.
struct PairRule
{
    unsigned firstHigh;
    unsigned firstLow;
    unsigned secondHigh;
};

constexpr unsigned nibbles(unsigned from, unsigned to) { return ((2U << to) - 1) & ~((1U << from) - 1); }

constexpr unsigned anyNibble = nibbles(0x0, 0xF);
constexpr unsigned continuation = nibbles(0x8, 0xB);

constexpr std::array<PairRule, 8> pairRules = {{
    {nibbles(0xC, 0xF), anyNibble, anyNibble & ~continuation},             // sequence cut short
    {nibbles(0x0, 0x7), anyNibble, continuation},                          // continuation behind ASCII
    {nibbles(0xC, 0xC), nibbles(0x0, 0x1), continuation},                  // overlong, two bytes
    {nibbles(0xE, 0xE), nibbles(0x0, 0x0), nibbles(0x8, 0x9)},             // overlong, three bytes
    {nibbles(0xE, 0xE), nibbles(0xD, 0xD), nibbles(0xA, 0xB)},             // surrogate
    {nibbles(0xF, 0xF), nibbles(0x4, 0xF), nibbles(0x9, 0xB)},             // above U+10FFFF
    {nibbles(0xF, 0xF), nibbles(0x0, 0x0) | nibbles(0x5, 0xF), 1U << 0x8}, // overlong, four bytes; above U+10FFFF
    {continuation, anyNibble, continuation}, // an error unless a third or fourth byte is due
}};
constexpr unsigned char twoContinuations = 0x80;

using Table = std::array<unsigned char, 16>;

constexpr Table tableOf(unsigned PairRule::*nibble)
{
    Table table{};
    for (std::size_t value = 0; value < table.size(); ++value)
        for (std::size_t rule = 0; rule < pairRules.size(); ++rule)
            if ((pairRules[rule].*nibble >> value) & 1U)
                table[value] = static_cast<unsigned char>(table[value] | (1U << rule));
    return table;
}

alignas(16) constexpr Table firstHighTable = tableOf(&PairRule::firstHigh);
alignas(16) constexpr Table firstLowTable = tableOf(&PairRule::firstLow);
alignas(16) constexpr Table secondHighTable = tableOf(&PairRule::secondHigh);

KY_TARGET("ssse3") inline __m128i load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }

KY_TARGET("ssse3") inline void store(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

KY_TARGET("ssse3") inline __m128i fill(unsigned value) { return _mm_set1_epi8(static_cast<char>(value)); }

KY_TARGET("ssse3") inline __m128i highNibbles(__m128i bytes)
{
    return _mm_and_si128(_mm_srli_epi16(bytes, 4), fill(0x0F));
}

/// Non-zero where a byte does not fit the three before it.
KY_TARGET("ssse3") inline __m128i sequenceErrors(__m128i bytes, __m128i before)
{
    const __m128i back1 = _mm_alignr_epi8(bytes, before, 15);
    const __m128i back2 = _mm_alignr_epi8(bytes, before, 14);
    const __m128i back3 = _mm_alignr_epi8(bytes, before, 13);
    const __m128i pairs =
        _mm_and_si128(_mm_and_si128(_mm_shuffle_epi8(load(firstHighTable.data()), highNibbles(back1)),
                                    _mm_shuffle_epi8(load(firstLowTable.data()), _mm_and_si128(back1, fill(0x0F)))),
                      _mm_shuffle_epi8(load(secondHighTable.data()), highNibbles(bytes)));
    // Saturating subtraction leaves the top bit set exactly for leads of three or four bytes, and of four bytes.
    const __m128i thirdOrFourth =
        _mm_or_si128(_mm_subs_epu8(back2, fill(0xE0 - 0x80)), _mm_subs_epu8(back3, fill(0xF0 - 0x80)));
    return _mm_xor_si128(pairs, _mm_and_si128(thirdOrFourth, fill(twoContinuations)));
}

/// 255 where a byte begins a sequence, 0 at continuations.
KY_TARGET("ssse3") inline __m128i sequenceStarts(__m128i bytes)
{
    return _mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xBF)));
}

constexpr std::size_t utf8Block = 64;

struct Utf8State
{
    __m128i before; ///< the 16 bytes before the block
    __m128i starts; ///< two 64-bit sums
};

/// Whether the block continues well-formed text.
KY_TARGET("ssse3") inline bool scanBlock(const char* block, Utf8State& state)
{
    const __m128i a = load(block);
    const __m128i b = load(block + 16);
    const __m128i c = load(block + 32);
    const __m128i d = load(block + 48);
    const __m128i any = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    const __m128i zero = _mm_setzero_si128();
    const __m128i firstErrors = sequenceErrors(a, state.before);
    state.before = d;
    if (_mm_movemask_epi8(any) == 0)
    {
        state.starts = _mm_add_epi64(state.starts, _mm_set1_epi64x(utf8Block / 2));
        return _mm_movemask_epi8(_mm_cmpeq_epi8(firstErrors, zero)) == 0xFFFF;
    }
    const __m128i errors = _mm_or_si128(_mm_or_si128(firstErrors, sequenceErrors(b, a)),
                                        _mm_or_si128(sequenceErrors(c, b), sequenceErrors(d, c)));
    const __m128i marks = _mm_add_epi8(_mm_add_epi8(sequenceStarts(a), sequenceStarts(b)),
                                       _mm_add_epi8(sequenceStarts(c), sequenceStarts(d)));
    state.starts = _mm_add_epi64(state.starts, _mm_sad_epu8(_mm_sub_epi8(zero, marks), zero));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(errors, zero)) == 0xFFFF;
}

/// Start of the sequence that the byte before `position` belongs to, if that sequence may reach beyond `position`.
std::size_t sequenceStartBefore(const char* data, std::size_t position)
{
    for (std::size_t back = 1; back <= 3 && back <= position; ++back)
    {
        const unsigned char byte = static_cast<unsigned char>(data[position - back]);
        if (byte >= 0xC0)
            return position - back;
        if (byte < 0x80)
            break;
    }
    return position;
}

KY_TARGET("ssse3") std::size_t scanUtf8(const char* data, std::size_t size, std::size_t& starts) noexcept
{
    Utf8State state{_mm_setzero_si128(), _mm_setzero_si128()};
    std::size_t position = 0;
    for (; size - position >= utf8Block; position += utf8Block)
        if (KY_UNLIKELY(!scanBlock(data + position, state)))
            return sequenceStartBefore(data, position);
    // The zeros behind the rest end a sequence that is cut short by the end of the text.
    char rest[utf8Block] = {};
    const std::size_t restSize = size - position;
    if (restSize > 0)
        std::memcpy(rest, data + position, restSize);
    if (KY_UNLIKELY(!scanBlock(rest, state)))
        return sequenceStartBefore(data, position);
    std::uint64_t sums[2];
    store(sums, state.starts);
    starts = static_cast<std::size_t>(sums[0] + sums[1]) - (utf8Block - restSize);
    return size;
}

KY_TARGET("ssse3")
std::size_t encodeHex(const char* bytes, std::size_t size, const char* sixteenDigits, char* out) noexcept
{
    const __m128i digits = load(sixteenDigits);
    std::size_t done = 0;
    for (; size - done >= 16; done += 16)
    {
        const __m128i block = load(bytes + done);
        const __m128i high = _mm_shuffle_epi8(digits, highNibbles(block));
        const __m128i low = _mm_shuffle_epi8(digits, _mm_and_si128(block, fill(0x0F)));
        store(out + 2 * done, _mm_unpacklo_epi8(high, low));
        store(out + 2 * done + 16, _mm_unpackhi_epi8(high, low));
    }
    return done;
}

/// Values of 16 digits; anything above 15 is no digit. Saturation keeps what lies beside either range out of it.
KY_TARGET("ssse3") inline __m128i digitValues(__m128i text)
{
    const __m128i decimal = _mm_sub_epi8(_mm_subs_epu8(_mm_add_epi8(text, fill(0xFF - '9')), fill(6)), fill(0xF0));
    const __m128i upper = _mm_and_si128(text, fill(0xDF));
    const __m128i letter = _mm_adds_epu8(_mm_sub_epi8(upper, fill('A')), fill(10));
    return _mm_min_epu8(decimal, letter);
}

KY_TARGET("ssse3") std::size_t decodeHex(const char* text, std::size_t pairs, char* out) noexcept
{
    const __m128i weights = _mm_set1_epi16(0x0110); // 16 for the first digit of a pair, 1 for the second
    std::size_t done = 0;
    for (; pairs - done >= 16; done += 16)
    {
        const __m128i a = digitValues(load(text + 2 * done));
        const __m128i b = digitValues(load(text + 2 * done + 16));
        if (_mm_movemask_epi8(_mm_adds_epu8(_mm_max_epu8(a, b), fill(0x7F - 15))) != 0)
            break;
        store(out + done, _mm_packus_epi16(_mm_maddubs_epi16(a, weights), _mm_maddubs_epi16(b, weights)));
    }
    return done;
}

KY_TARGET("ssse3")
std::uint64_t matchMask(const char* first, char firstByte, const char* last, char lastByte) noexcept
{
    const __m128i firstBytes = _mm_set1_epi8(firstByte);
    const __m128i lastBytes = _mm_set1_epi8(lastByte);
    std::uint64_t mask = 0;
    for (unsigned part = 0; part < 64; part += 16)
    {
        const __m128i both =
            _mm_and_si128(_mm_cmpeq_epi8(load(first + part), firstBytes), _mm_cmpeq_epi8(load(last + part), lastBytes));
        mask |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(both))) << part;
    }
    return mask;
}

constexpr VectorText ssse3{&scanUtf8, &encodeHex, &decodeHex, &matchMask};
constexpr VectorText none{};

/// Null until the processor has been asked. Asking twice does no harm; the guard of a local static, held by another
/// thread at a fork, would block the child.
constinit std::atomic<const VectorText*> sChosen{nullptr};

} // namespace

const VectorText* vectorText() noexcept
{
    const VectorText* chosen = sChosen.load(std::memory_order_relaxed);
    if (chosen == nullptr)
    {
        chosen = processorHasSsse3() ? &ssse3 : &none;
        sChosen.store(chosen, std::memory_order_relaxed);
    }
    return chosen != &none ? chosen : nullptr;
}

} // namespace ky::impl
