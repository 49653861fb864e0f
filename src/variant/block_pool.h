// SPDX-License-Identifier: MIT
// Small fixed blocks for payloads and map nodes.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace ky::impl
{

/// Throws std::bad_alloc.
void* allocateBlock(std::size_t size);
/// `size` as it was asked for. Any thread may free a block.
void freeBlock(void* block, std::size_t size) noexcept;

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
