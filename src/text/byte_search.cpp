// SPDX-License-Identifier: MIT
#include "text/byte_search.h"

#include "text/vector_text.h"

#include <algorithm>

namespace ky::impl
{

namespace
{

constexpr std::size_t blockSize = 64;

} // namespace

std::uint64_t portableMatchMask(const char* first, char firstByte, const char* last, char lastByte,
                                std::size_t count) noexcept
{
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < count; ++i)
        mask |= static_cast<std::uint64_t>(first[i] == firstByte && last[i] == lastByte) << i;
    return mask;
}

ByteSearch::ByteSearch(std::string_view text, std::string_view needle) noexcept
    : mVector(vectorText()),
      mText(text),
      mNeedle(needle)
{
}

bool ByteSearch::loadBlock() noexcept
{
    const std::size_t positions = mText.size() < mNeedle.size() ? 0 : mText.size() - mNeedle.size() + 1;
    mBlock = std::max(mNextBlock, mEarliest);
    if (mBlock >= positions)
        return false;
    const std::size_t count = std::min(blockSize, positions - mBlock);
    const char* const first = mText.data() + mBlock;
    const char* const last = first + mNeedle.size() - 1;
    mCandidates = mVector != nullptr && count == blockSize
                      ? mVector->matchMask(first, mNeedle.front(), last, mNeedle.back())
                      : portableMatchMask(first, mNeedle.front(), last, mNeedle.back(), count);
    mNextBlock = mBlock + count;
    return true;
}

} // namespace ky::impl
