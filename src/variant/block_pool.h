// SPDX-License-Identifier: MIT
// Small fixed blocks for payloads and map nodes. Each thread has a bounded number of blocks of every size at hand and
// exchanges them in batches with the slabs that they are cut from; it gives all of them back when it ends.
#pragma once

#include "platform/compiler.h"

#include <cstddef>
#include <new>
#include <utility>

// Where thread-local variables cost next to nothing. Sanitizers see every block.
#if KY_HAS_STATIC_TLS && !defined(KY_SANITIZED)
#define KY_KEEP_BLOCKS 1
#include "variant/slab_store.h"

#include <array>
#include <cstdint>
#else
#define KY_KEEP_BLOCKS 0
#endif

namespace ky::impl
{

#if KY_KEEP_BLOCKS
/// The blocks of one size that a thread has at hand. Two stacks, so that a thread that allocates and frees around the
/// brim of one does not run to the slabs each time.
struct BlockShelf
{
    FreeBlock* first;
    char* fresh;
    char* freshEnd;
    FreeBlock* full; ///< a second stack, filled to the limit, or null
    std::uint32_t room;
};

enum class BlockStoreState : std::uint32_t
{
    New,
    Open,
    Closed
};

/// Trivially destructible, so that it can be asked until the very end of its thread. All zeros: nothing is there, and
/// the first block to be allocated or freed opens the store. Shelf 0 stands for the sizes that are not pooled.
struct BlockStore
{
    std::array<BlockShelf, largestBlockClass + 1> shelves;
    BlockStoreState state;
};

extern thread_local constinit BlockStore tBlocks KY_STATIC_TLS;

constexpr std::size_t blockClassOf(std::size_t size) noexcept
{
    return size <= largestBlockClass * blockStep ? (size + blockStep - 1) / blockStep : 0;
}

/// Where the shelf has no block at hand, or no room for one.
void* refillShelf(std::size_t sizeClass, std::size_t size);
void makeRoomOnShelf(void* block, std::size_t sizeClass) noexcept;

/// Throws std::bad_alloc.
inline void* allocateBlock(std::size_t size)
{
    const std::size_t sizeClass = blockClassOf(size);
    BlockShelf& shelf = tBlocks.shelves[sizeClass];
    if (FreeBlock* const block = shelf.first)
    {
        shelf.first = block->next;
        ++shelf.room;
        return block;
    }
    if (KY_UNLIKELY(shelf.fresh == shelf.freshEnd))
        return refillShelf(sizeClass, size);
    void* const block = shelf.fresh;
    shelf.fresh += sizeClass * blockStep;
    return block;
}

/// `size` as it was asked for. Any thread may free a block, also while it ends.
inline void freeBlock(void* block, std::size_t size) noexcept
{
    const std::size_t sizeClass = blockClassOf(size);
    BlockShelf& shelf = tBlocks.shelves[sizeClass];
    if (KY_UNLIKELY(shelf.room == 0))
    {
        makeRoomOnShelf(block, sizeClass);
        return;
    }
    --shelf.room;
    shelf.first = ::new (block) FreeBlock{shelf.first};
}
#else
inline void* allocateBlock(std::size_t size) { return ::operator new(size); }
inline void freeBlock(void* block, std::size_t) noexcept { ::operator delete(block); }
#endif

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
