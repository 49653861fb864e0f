// SPDX-License-Identifier: MIT
// Every allocation of every operation fails once: nothing leaks, nothing breaks, nobody terminates.
#include "ky/kyVariant.h"
#include "variant/block_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

namespace
{

std::atomic<long> allocationsLeft{-1}; // negative: no limit

void* allocate(std::size_t size)
{
    if (allocationsLeft.load() >= 0 && allocationsLeft.fetch_sub(1) == 0)
    {
        allocationsLeft = 0;
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

#if KY_KEEP_BLOCKS
// In place of the pool's own: shelves that stay empty, so that every block is an allocation that can fail.
namespace ky::impl
{
thread_local constinit BlockStore tBlocks{};
void* refillShelf(std::size_t, std::size_t size) { return ::operator new(size); }
void makeRoomOnShelf(void* block, std::size_t) noexcept { ::operator delete(block); }
} // namespace ky::impl
#endif

namespace
{

using ky::kyVariant;
using Type = kyVariant::Type;
using List = kyVariant::kyVariantListImpl;
using Map = kyVariant::kyVariantMapImpl;

Map sampleTree()
{
    const double numbers[] = {1, 2, 3};
    return Map{{"a key that does not fit inline, surely", Map{{"x", "a text that does not fit inline either"}}},
               {"list", List{1, "two words here, and some more", kyVariant(List{3, Map{{"k", 4}}})}},
               {"numbers", kyVariant(numbers, 3)},
               {"strings", std::vector<std::string>{"one string", "another string, longer than the first"}},
               {"text", "text"}};
}

TEST(VariantMemory, EveryFailingAllocationLeavesEverythingValid)
{
    const Map tree = sampleTree();
    const std::function<void(Map&)> operations[] = {
        [](Map& map) { const Map copy(map); },
        [](Map& map) { map["list"] = map["strings"]; },
        [](Map& map) { map["text"] = kyVariant(map); },
        [](Map& map) { map.editValuePath("list/b/c/d", "some text that has to go to the heap", '/'); },
        [](Map& map) { map.mergeWith(map, false); },
        [](Map& map) { map.mergeWith(map, true); },
        [](Map& map) { map.multiInsert("text", "another", false); },
        [](Map& map) { map.multiInsert("strings", "another text that has to go to the heap", false); },
        [](Map& map)
        {
            Map out;
            map.toFlattenMap(out, '/');
            out.toFlattenMap(map, '/');
        },
        [](Map& map) { map.erasePathRegEx("list/.*", true); },
        [](Map& map) { map["list"].editList().push_back(map["list"]); },
        [](Map& map) { map["list"].editList().resize(100, map["text"]); },
        [](Map& map) { (void)map["list"].toStringList(); },
        [](Map& map) { (void)map["strings"].toList(); },
        [](Map& map) { map["text"].setType(Type::Map); },
        [](Map& map) { (void)(map == Map(map) && map < map); },
        [](Map& map) { map["text"] = kyVariant::BuildFromString("1" + std::string(100, '0') + ",5"); },
        [](Map& map) { (void)map.toString(); }};
    std::size_t failures = 0;
    for (const auto& operation : operations)
    {
        Map undisturbed(tree);
        operation(undisturbed);
        for (long allowed = 0;; ++allowed)
        {
            Map map(tree);
            bool failed = false;
            allocationsLeft = allowed;
            try
            {
                operation(map);
            }
            catch (const std::bad_alloc&)
            {
                failed = true;
            }
            allocationsLeft = -1;
            // Whatever is there can be read, copied and extended.
            const Map copy(map);
            EXPECT_EQ(copy, map);
            map["text"] = copy.toString();
            EXPECT_GE(map.size(), 1U);
            if (!failed)
            {
                EXPECT_EQ(copy, undisturbed);
                break;
            }
            ++failures;
        }
    }
    EXPECT_GT(failures, 200U);
}

TEST(VariantMemory, AssignmentKeepsTheOldValueWhenMemoryRunsOut)
{
    const kyVariant source(sampleTree());
    for (long allowed = 0; allowed < 5; ++allowed)
    {
        kyVariant target("a text that does not fit inline either");
        allocationsLeft = allowed;
        EXPECT_THROW(target = source, std::bad_alloc);
        allocationsLeft = -1;
        EXPECT_EQ(target, kyVariant("a text that does not fit inline either"));
        allocationsLeft = 0;
        EXPECT_THROW(target.setType(Type::Map), std::bad_alloc);
        allocationsLeft = -1;
        EXPECT_EQ(target.getType(), Type::String);
    }
}

TEST(VariantMemory, DestroyingNeedsNoMemory)
{
    kyVariant tree(1);
    for (int level = 0; level < 5000; ++level)
        tree = kyVariant(level % 2 == 0 ? kyVariant(List{std::move(tree), 2}) : kyVariant(Map{{"k", std::move(tree)}}));
    allocationsLeft = 0;
    tree.clear();
    allocationsLeft = -1;
    EXPECT_TRUE(tree.isNull());
}

} // namespace
