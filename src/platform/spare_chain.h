// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <utility>

namespace ky::impl
{

/// Objects kept for reuse, at most a fixed number of them, chained by their member `next`. Whoever owns it locks it.
template <class Object>
class SpareChain
{
public:
    explicit constexpr SpareChain(std::size_t room) noexcept : mRoom(room) {}

    /// False when there is no room: the object stays the caller's.
    bool keep(Object* object) noexcept
    {
        if (mRoom == 0)
            return false;
        --mRoom;
        object->next = std::exchange(mFirst, object);
        return true;
    }

    /// Null when there is none.
    Object* take() noexcept
    {
        if (mFirst == nullptr)
            return nullptr;
        ++mRoom;
        return std::exchange(mFirst, mFirst->next);
    }

    /// Frees what is kept, and keeps nothing more.
    template <class Free>
    void close(Free free) noexcept
    {
        while (Object* const object = take())
            free(object);
        mRoom = 0;
    }

private:
    Object* mFirst = nullptr;
    std::size_t mRoom;
};

} // namespace ky::impl
