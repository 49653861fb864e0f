// SPDX-License-Identifier: MIT
#include "variant/slab_store.h"

#include "platform/fork_native.h"
#include "platform/spare_list.h"
#include "variant/pages.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <mutex>
#include <new>

namespace ky::impl
{

namespace
{

/// The first bytes of a slab.
struct Slab
{
    Slab* next = nullptr;
    Slab* previous = nullptr;
    FreeBlock* freed = nullptr;
    char* fresh = nullptr; ///< from here to `end` no block was ever handed out
    char* end = nullptr;
    std::size_t freedCount = 0;
    std::size_t living = 0; ///< handed out and not back
    bool listed = false;

    [[nodiscard]] bool hasRoom() const noexcept { return freed != nullptr || fresh != end; }
};

constexpr std::size_t headerSize = 128;
static_assert(sizeof(Slab) <= headerSize);

Slab* slabOf(FreeBlock* block) noexcept
{
    const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(block) & (slabSize - 1);
    return reinterpret_cast<Slab*>(reinterpret_cast<char*>(block) - place);
}

/// Slabs of one size class; those with room are in the list.
struct SlabClass
{
    Slab* first = nullptr;
    std::size_t slabs = 0;

    void add(Slab& slab) noexcept
    {
        slab.listed = true;
        slab.previous = nullptr;
        slab.next = first;
        if (first != nullptr)
            first->previous = &slab;
        first = &slab;
    }
    void remove(Slab& slab) noexcept
    {
        slab.listed = false;
        (slab.previous != nullptr ? slab.previous->next : first) = slab.next;
        if (slab.next != nullptr)
            slab.next->previous = slab.previous;
    }
};

/// Never torn down itself: blocks come back until the very end of the process.
struct SlabStore
{
    std::mutex mutex;
    std::array<SlabClass, largestBlockClass + 1> classes;
    SpareList<Slab> kept{keptSlabs};

    Slab& roomyFor(std::size_t sizeClass);
    void putBack(std::size_t sizeClass, Slab& slab, FreeBlock* first, FreeBlock* last, std::size_t count) noexcept;
    void retire(Slab& slab) noexcept;
};

constinit SlabStore store;

/// Gives the kept slabs back when the library is unloaded.
struct StoreCloser
{
    ~StoreCloser()
    {
        const std::lock_guard lock(store.mutex);
        store.kept.close([](Slab* slab) { native::freePages(slab, slabSize); });
    }
};
const StoreCloser closer;

/// A child of a fork gets the store whole and free.
const bool heldForForks = (native::onFork([] { store.mutex.lock(); }, [] { store.mutex.unlock(); }), true);

Slab& SlabStore::roomyFor(std::size_t sizeClass)
{
    SlabClass& slabs = classes[sizeClass];
    if (slabs.first != nullptr)
        return *slabs.first;
    void* pages = kept.take();
    if (pages == nullptr) // the first slab of a size may stay as good as empty
        pages = native::allocatePages(slabSize, slabs.slabs != 0);
    if (pages == nullptr)
        throw std::bad_alloc();
    Slab& slab = *::new (pages) Slab;
    const std::size_t blockSize = sizeClass * blockStep;
    slab.fresh = static_cast<char*>(pages) + headerSize;
    slab.end = slab.fresh + (slabSize - headerSize) / blockSize * blockSize;
    ++slabs.slabs;
    slabs.add(slab);
    return slab;
}

void SlabStore::putBack(std::size_t sizeClass, Slab& slab, FreeBlock* first, FreeBlock* last,
                        std::size_t count) noexcept
{
    SlabClass& slabs = classes[sizeClass];
    slab.living -= count;
    if (slab.living == 0)
    {
        if (slab.listed)
            slabs.remove(slab);
        --slabs.slabs;
        retire(slab);
        return;
    }
    last->next = slab.freed;
    slab.freed = first;
    slab.freedCount += count;
    if (!slab.listed)
        slabs.add(slab);
}

void SlabStore::retire(Slab& slab) noexcept
{
    if (!kept.keep(slab))
        native::freePages(&slab, slabSize);
}

} // namespace

BlockSupply takeBlocks(std::size_t sizeClass, std::size_t wanted)
{
    const std::lock_guard lock(store.mutex);
    Slab& slab = store.roomyFor(sizeClass);
    BlockSupply supply;
    std::size_t count = std::min(wanted, slab.freedCount);
    if (slab.freed != nullptr)
    {
        FreeBlock* last = slab.freed;
        for (std::size_t i = 1; i < count; ++i)
            last = last->next;
        supply.chain = slab.freed;
        supply.chainLength = count;
        slab.freed = last->next;
        slab.freedCount -= count;
        last->next = nullptr;
    }
    else
    {
        const std::size_t blockSize = sizeClass * blockStep;
        count = std::min(wanted, static_cast<std::size_t>(slab.end - slab.fresh) / blockSize);
        supply.fresh = slab.fresh;
        slab.fresh += count * blockSize;
        supply.freshEnd = slab.fresh;
    }
    slab.living += count;
    if (!slab.hasRoom())
        store.classes[sizeClass].remove(slab);
    return supply;
}

void returnBlocks(std::size_t sizeClass, FreeBlock* chain) noexcept
{
    if (chain == nullptr)
        return;
    const std::lock_guard lock(store.mutex);
    while (chain != nullptr)
    {
        // Neighbours in the chain mostly come from one slab and stay linked.
        Slab& slab = *slabOf(chain);
        FreeBlock* const first = chain;
        FreeBlock* last = chain;
        std::size_t count = 1;
        while (last->next != nullptr && slabOf(last->next) == &slab)
        {
            last = last->next;
            ++count;
        }
        chain = last->next;
        store.putBack(sizeClass, slab, first, last, count);
    }
}

std::size_t slabsInUse() noexcept
{
    const std::lock_guard lock(store.mutex);
    std::size_t count = 0;
    for (const SlabClass& slabs : store.classes)
        count += slabs.slabs;
    return count;
}

} // namespace ky::impl
