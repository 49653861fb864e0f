// SPDX-License-Identifier: MIT
// Small fixed blocks for payloads and map nodes. Each thread has a bounded number of blocks of every size at hand and
// exchanges them in batches with the slabs that they are cut from; it gives all of them back when it ends.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace ky::impl
{

/// Throws std::bad_alloc.
void* allocateBlock(std::size_t size);
/// `size` as it was asked for. Any thread may free a block, also while it ends.
void freeBlock(void* block, std::size_t size) noexcept;
/// Gives back what the calling thread keeps and makes it keep nothing more.
void stopKeepingBlocks() noexcept;

template <class T, class... Arguments>
T* createInBlock(Arguments&&... arguments)
{
    void* const block = allocateBlock(sizeof(T));
    try
    {
        return ::new (block) T(std::forward<Arguments>(arguments)...);
    }
    catch (...)
    {
        freeBlock(block, sizeof(T));
        throw;
    }
}

template <class T>
void destroyInBlock(T* object) noexcept
{
    object->~T();
    freeBlock(object, sizeof(T));
}

} // namespace ky::impl
