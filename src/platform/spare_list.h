// SPDX-License-Identifier: MIT
// Memory that is kept for its next user, because giving it back to the system and asking for it again costs more.
#pragma once

#include <cstddef>

namespace ky::impl
{

/// Pieces of one size, linked by their `next`. Callers exclude each other. Never torn down itself: pieces come back
/// until the very end of the process.
template <typename Piece>
class SpareList
{
public:
    explicit constexpr SpareList(std::size_t most) noexcept : mRoom(most) {}

    /// Null when there is none.
    Piece* take() noexcept
    {
        Piece* const piece = mFirst;
        if (piece != nullptr)
        {
            mFirst = piece->next;
            ++mRoom;
        }
        return piece;
    }

    /// False when as many are kept as may be.
    bool keep(Piece& piece) noexcept
    {
        if (mRoom == 0)
            return false;
        --mRoom;
        piece.next = mFirst;
        mFirst = &piece;
        return true;
    }

    /// Hands out all of them and keeps none from now on.
    template <typename Free>
    void close(Free free) noexcept
    {
        while (Piece* const piece = take())
            free(piece);
        mRoom = 0;
    }

private:
    Piece* mFirst = nullptr;
    std::size_t mRoom; ///< how many more may be kept
};

} // namespace ky::impl
