// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <span>

namespace ky::impl
{

/// Queue of bytes. They are put in place by somebody else, in room that is handed out before, so that they are copied
/// only once, on their way out; nothing is moved when bytes leave at the front.
class ByteRing
{
public:
    std::size_t size() const { return mSize; }

    /// Room for up to `wanted` bytes behind the last one, at least for one. It stays where it is until the next call,
    /// whatever is taken meanwhile. The memory in use grows as needed up to `limit`, which must leave room for `wanted`
    /// more bytes.
    std::span<char> room(std::size_t wanted, std::size_t limit)
    {
        if (mSize == 0)
            mFront = 0;
        if (wanted > mCapacity - mSize || mCapacity > limit)
            resize(std::min(limit, std::max({mSize + wanted, mCapacity * 2, smallest})));
        const std::size_t back = mFront + mSize < mCapacity ? mFront + mSize : mFront + mSize - mCapacity;
        const std::size_t end = back < mFront ? mFront : mCapacity;
        return {mBytes.get() + back, std::min(wanted, end - back)};
    }

    /// The first `size` bytes of the room are filled.
    void append(std::size_t size) { mSize += size; }

    /// Moves up to `size` bytes out.
    std::size_t take(char* data, std::size_t size)
    {
        const std::size_t taken = std::min(size, mSize);
        copyOut(data, taken);
        mFront += taken;
        if (mFront >= mCapacity)
            mFront -= mCapacity;
        mSize -= taken;
        return taken;
    }

    /// Gives the memory back.
    void clear() { *this = ByteRing(); }

private:
    static constexpr std::size_t smallest = 4096;

    void copyOut(char* data, std::size_t size) const
    {
        const std::size_t first = std::min(size, mCapacity - mFront);
        if (first != 0)
            std::memcpy(data, mBytes.get() + mFront, first);
        if (size != first)
            std::memcpy(data + first, mBytes.get(), size - first);
    }

    void resize(std::size_t capacity)
    {
        auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
        copyOut(bytes.get(), mSize);
        mBytes = std::move(bytes);
        mCapacity = capacity;
        mFront = 0;
    }

    std::unique_ptr<char[]> mBytes;
    std::size_t mCapacity = 0;
    std::size_t mFront = 0;
    std::size_t mSize = 0;
};

} // namespace ky::impl
