// SPDX-License-Identifier: MIT
#include "variant/block_pool.h"

namespace ky::impl
{

#if KY_KEEP_BLOCKS
thread_local constinit BlockStore tBlocks{};

namespace
{

constexpr std::size_t stackBytes = 32 * 1024;

constexpr std::uint32_t stackLimit(std::size_t sizeClass) noexcept
{
    return static_cast<std::uint32_t>(stackBytes / (sizeClass * blockStep));
}

struct StoreKeeper
{
    ~StoreKeeper() { stopKeepingBlocks(); }
};

void openStore() noexcept
{
    static thread_local StoreKeeper keeper;
    static_cast<void>(&keeper);
    tBlocks.state = BlockStoreState::Open;
    for (std::size_t i = 1; i <= largestBlockClass; ++i)
        tBlocks.shelves[i].room = stackLimit(i);
}

} // namespace

void* refillShelf(std::size_t sizeClass, std::size_t size)
{
    if (sizeClass == 0)
        return ::operator new(size);
    if (tBlocks.state == BlockStoreState::New)
        openStore();
    BlockShelf& shelf = tBlocks.shelves[sizeClass];
    FreeBlock* block = std::exchange(shelf.full, nullptr);
    shelf.room = block != nullptr ? 0 : shelf.room;
    if (block == nullptr)
    {
        const bool open = tBlocks.state == BlockStoreState::Open;
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
    shelf.room += tBlocks.state == BlockStoreState::Open ? 1 : 0;
    return block;
}

void makeRoomOnShelf(void* memory, std::size_t sizeClass) noexcept
{
    if (sizeClass == 0)
    {
        ::operator delete(memory);
        return;
    }
    if (tBlocks.state == BlockStoreState::New)
        openStore();
    BlockShelf& shelf = tBlocks.shelves[sizeClass];
    if (tBlocks.state == BlockStoreState::Closed)
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

void stopKeepingBlocks() noexcept
{
    tBlocks.state = BlockStoreState::Closed;
    for (std::size_t i = 1; i <= largestBlockClass; ++i)
    {
        BlockShelf& shelf = tBlocks.shelves[i];
        for (; shelf.fresh != shelf.freshEnd; shelf.fresh += i * blockStep)
            shelf.first = ::new (shelf.fresh) FreeBlock{shelf.first};
        returnBlocks(i, shelf.first);
        returnBlocks(i, shelf.full);
        shelf = BlockShelf{};
    }
}
#else
void stopKeepingBlocks() noexcept {}
#endif

} // namespace ky::impl
