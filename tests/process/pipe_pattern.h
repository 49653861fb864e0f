// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ky::test
{

/// An endless sequence of bytes that a receiver can check: none is like the ones some time before.
class PipePattern
{
public:
    explicit PipePattern(std::uint64_t seed) : mSeed(seed) {}

    void fill(char* data, std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i)
            data[i] = next();
    }

    /// Whether these are the next bytes of the sequence.
    bool check(const char* data, std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i)
        {
            if (data[i] != next())
                return false;
        }
        return true;
    }

    std::uint64_t position() const { return mPosition; }

    /// Bytes that were produced and not accepted.
    void goBack(std::size_t count) { mPosition -= count; }

private:
    char next()
    {
        const std::uint64_t index = mPosition++;
        if (index / 8 != mIndex)
        {
            mIndex = index / 8;
            mWord = (mIndex + mSeed) * 0x9E3779B97F4A7C15;
            mWord ^= mWord >> 29;
        }
        return static_cast<char>(mWord >> (index % 8 * 8));
    }

    std::uint64_t mSeed;
    std::uint64_t mPosition = 0;
    std::uint64_t mIndex = ~std::uint64_t{0};
    std::uint64_t mWord = 0;
};

} // namespace ky::test
