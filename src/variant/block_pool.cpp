// SPDX-License-Identifier: MIT
#include "variant/block_pool.h"

#include "platform/compiler.h"

// KY_KEEP_BLOCKS is set by the build where thread-local variables cost next to nothing. Sanitizers see every block.
#if defined(KY_KEEP_BLOCKS) && !defined(KY_SANITIZED)
#include "variant/slab_store.h"

#include <array>
#include <cstdint>
#include <utility>
#endif

namespace ky::impl
{

#if defined(KY_KEEP_BLOCKS) && !defined(KY_SANITIZED)
namespace
{

constexpr std::size_t largestBlock = largestBlockClass * blockStep;
constexpr std::size_t stackBytes = 32 * 1024;

constexpr std::uint32_t stackLimit(std::size_t sizeClass) noexcept
{
    return static_cast<std::uint32_t>(stackBytes / (sizeClass * blockStep));
}

/// The blocks of one size that a thread has at hand. Two stacks, so that a thread that allocates and frees around the
/// brim of one does not run to the slabs each time.
struct Shelf
{
    FreeBlock* first;
    char* fresh;
    char* freshEnd;
    FreeBlock* full; ///< a second stack, filled to the limit, or null
    std::uint32_t room;
};

enum class StoreState : std::uint32_t
{
    New,
    Open,
    Closed
};

/// Trivially destructible, so that it can be asked until the very end of its thread. All zeros: nothing is there, and
/// the first block to be allocated or freed opens the store.
struct Store
{
    std::array<Shelf, largestBlockClass + 1> shelves;
    StoreState state;
};

constinit thread_local Store store{};

/// 0 stands for the sizes that are not pooled.
std::size_t classOf(std::size_t size) noexcept { return size <= largestBlock ? (size + blockStep - 1) / blockStep : 0; }

struct StoreKeeper
{
    ~StoreKeeper() { stopKeepingBlocks(); }
};

void openStore() noexcept
{
    static thread_local StoreKeeper keeper;
    static_cast<void>(&keeper);
    store.state = StoreState::Open;
    for (std::size_t i = 1; i <= largestBlockClass; ++i)
        store.shelves[i].room = stackLimit(i);
}

KY_NOINLINE void* refill(std::size_t sizeClass, std::size_t size)
{
    if (sizeClass == 0)
        return ::operator new(size);
    if (store.state == StoreState::New)
        openStore();
    Shelf& shelf = store.shelves[sizeClass];
    FreeBlock* block = std::exchange(shelf.full, nullptr);
    shelf.room = block != nullptr ? 0 : shelf.room;
    if (block == nullptr)
    {
        const bool open = store.state == StoreState::Open;
        const BlockSupply supply = takeBlocks(sizeClass, open ? stackLimit(sizeClass) : 1);
        if (supply.chain == nullptr)
        {
            shelf.freshEnd = supply.freshEnd;
            shelf.fresh = supply.fresh + sizeClass * blockStep;
            return supply.fresh;
        }
        block = supply.chain;
        shelf.room -= open ? static_cast<std::uint32_t>(supply.chainLength) : 0;
    }
    shelf.first = block->next;
    shelf.room += store.state == StoreState::Open ? 1 : 0;
    return block;
}

KY_NOINLINE void makeRoom(void* memory, std::size_t sizeClass) noexcept
{
    if (sizeClass == 0)
    {
        ::operator delete(memory);
        return;
    }
    if (store.state == StoreState::New)
        openStore();
    Shelf& shelf = store.shelves[sizeClass];
    if (store.state == StoreState::Closed)
    {
        returnBlocks(sizeClass, ::new (memory) FreeBlock{nullptr});
        return;
    }
    if (shelf.room == 0)
    {
        returnBlocks(sizeClass, std::exchange(shelf.full, std::exchange(shelf.first, nullptr)));
        shelf.room = stackLimit(sizeClass);
    }
    --shelf.room;
    shelf.first = ::new (memory) FreeBlock{shelf.first};
}

} // namespace

void* allocateBlock(std::size_t size)
{
    const std::size_t sizeClass = classOf(size);
    Shelf& shelf = store.shelves[sizeClass];
    if (FreeBlock* const block = shelf.first)
    {
        shelf.first = block->next;
        ++shelf.room;
        return block;
    }
    if (KY_UNLIKELY(shelf.fresh == shelf.freshEnd))
        return refill(sizeClass, size);
    void* const block = shelf.fresh;
    shelf.fresh += sizeClass * blockStep;
    return block;
}

void freeBlock(void* block, std::size_t size) noexcept
{
    const std::size_t sizeClass = classOf(size);
    Shelf& shelf = store.shelves[sizeClass];
    if (KY_UNLIKELY(shelf.room == 0))
    {
        makeRoom(block, sizeClass);
        return;
    }
    --shelf.room;
    shelf.first = ::new (block) FreeBlock{shelf.first};
}

void stopKeepingBlocks() noexcept
{
    store.state = StoreState::Closed;
    for (std::size_t i = 1; i <= largestBlockClass; ++i)
    {
        Shelf& shelf = store.shelves[i];
        for (; shelf.fresh != shelf.freshEnd; shelf.fresh += i * blockStep)
            shelf.first = ::new (shelf.fresh) FreeBlock{shelf.first};
        returnBlocks(i, shelf.first);
        returnBlocks(i, shelf.full);
        shelf = Shelf{};
    }
}
#else
void* allocateBlock(std::size_t size) { return ::operator new(size); }

void freeBlock(void* block, std::size_t) noexcept { ::operator delete(block); }

void stopKeepingBlocks() noexcept {}
#endif

} // namespace ky::impl
