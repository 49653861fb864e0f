// SPDX-License-Identifier: MIT
// Every allocation of every operation fails once: nothing leaks, nothing breaks, nobody terminates.
#include "ky/kyVariant.h"
#include "support/failing_new.h"
#include "variant/block_pool.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>

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
using ky::test::memoryRequests;
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
        const long before = memoryRequests.live;
        for (int n = 1;; ++n)
        {
            Map map(tree);
            bool failed = false;
            memoryRequests.failAt(n, true);
            try
            {
                operation(map);
            }
            catch (const std::bad_alloc&)
            {
                failed = true;
            }
            memoryRequests.failNoMore();
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
        EXPECT_EQ(memoryRequests.live, before) << "something leaked";
    }
    EXPECT_GT(failures, 200U);
}

TEST(VariantMemory, AssignmentKeepsTheOldValueWhenMemoryRunsOut)
{
    const kyVariant source(sampleTree());
    for (int n = 1; n <= 5; ++n)
    {
        kyVariant target("a text that does not fit inline either");
        memoryRequests.failAt(n, true);
        EXPECT_THROW(target = source, std::bad_alloc);
        memoryRequests.failNoMore();
        EXPECT_EQ(target, kyVariant("a text that does not fit inline either"));
        memoryRequests.failAt(1, true);
        EXPECT_THROW(target.setType(Type::Map), std::bad_alloc);
        memoryRequests.failNoMore();
        EXPECT_EQ(target.getType(), Type::String);
    }
}

TEST(VariantMemory, DestroyingNeedsNoMemory)
{
    kyVariant tree(1);
    for (int level = 0; level < 5000; ++level)
        tree = kyVariant(level % 2 == 0 ? kyVariant(List{std::move(tree), 2}) : kyVariant(Map{{"k", std::move(tree)}}));
    memoryRequests.failAt(1, true);
    tree.clear();
    memoryRequests.failNoMore();
    EXPECT_TRUE(tree.isNull());
}

} // namespace
