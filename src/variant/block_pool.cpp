// SPDX-License-Identifier: MIT
#include "variant/block_pool.h"

#include "platform/compiler.h"

#include <array>
#include <cstdint>

namespace ky::impl
{

// KY_KEEP_BLOCKS is set by the build where thread-local variables cost next to nothing. Sanitizers see every block.
#if defined(KY_KEEP_BLOCKS) && !defined(KY_SANITIZED)
namespace
{

constexpr std::size_t kStep = 16;
constexpr std::size_t kLargest = 128;
constexpr std::size_t kKeptBytes = 128 * 1024; // of one size

struct FreeBlock
{
    FreeBlock* next;
};

struct Shelf
{
    FreeBlock* first;
    std::uint32_t room;
};

/// Trivially destructible, so that it can be asked until the very end of its thread. All zeros: nothing is kept, and
/// the first block to be freed finds no room and opens the store.
struct Store
{
    std::array<Shelf, kLargest / kStep + 1> shelves;
    bool opened;
};

constinit thread_local Store store{};

/// Blocks go up in steps of 16 bytes; 0 stands for those that are never kept.
std::size_t shelfOf(std::size_t size) noexcept { return size <= kLargest ? (size + kStep - 1) / kStep : 0; }
std::size_t roundedUp(std::size_t size) noexcept
{
    return size <= kLargest ? (size + kStep - 1) / kStep * kStep : size;
}

struct StoreKeeper
{
    ~StoreKeeper() { stopKeepingBlocks(); }
};

KY_COLD void freeUnkept(void* block) noexcept
{
    if (!store.opened)
    {
        static thread_local StoreKeeper keeper;
        static_cast<void>(&keeper);
        store.opened = true;
        for (std::size_t i = 1; i < store.shelves.size(); ++i)
            store.shelves[i].room = static_cast<std::uint32_t>(kKeptBytes / (i * kStep));
    }
    ::operator delete(block);
}

} // namespace

void* allocateBlock(std::size_t size)
{
    Shelf& shelf = store.shelves[shelfOf(size)];
    FreeBlock* const block = shelf.first;
    if (KY_UNLIKELY(block == nullptr))
        return ::operator new(roundedUp(size));
    shelf.first = block->next;
    ++shelf.room;
    return block;
}

void freeBlock(void* block, std::size_t size) noexcept
{
    Shelf& shelf = store.shelves[shelfOf(size)];
    if (KY_UNLIKELY(shelf.room == 0))
    {
        freeUnkept(block);
        return;
    }
    --shelf.room;
    shelf.first = ::new (block) FreeBlock{shelf.first};
}

void stopKeepingBlocks() noexcept
{
    store.opened = true;
    for (std::size_t i = 0; i < store.shelves.size(); ++i)
    {
        Shelf& shelf = store.shelves[i];
        shelf.room = 0;
        while (shelf.first != nullptr)
        {
            FreeBlock* const block = shelf.first;
            shelf.first = block->next;
            ::operator delete(block);
        }
    }
}
#else
void* allocateBlock(std::size_t size) { return ::operator new(size); }

void freeBlock(void* block, std::size_t) noexcept { ::operator delete(block); }

void stopKeepingBlocks() noexcept {}
#endif

} // namespace ky::impl
