// SPDX-License-Identifier: MIT
// Blocks that change threads, and values that outlive the store of their thread.
#include "ky/kyVariant.h"
#include "variant/block_pool.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace
{

using ky::kyVariant;

/// Destroyed with its thread, after the blocks that the thread keeps.
struct Late
{
    ~Late() { value = kyVariant("replaced by another text while the thread ends"); }
    kyVariant value;
};

TEST(BlockPool, ValuesMoveBetweenThreads)
{
    std::vector<kyVariant> handedOver;
    for (int round = 0; round < 4; ++round)
    {
        std::thread(
            [&handedOver]
            {
                static thread_local Late late;
                late.value = kyVariant("some text");
                handedOver.clear();
                for (int i = 0; i < 20000; ++i)
                    handedOver.emplace_back("text " + std::to_string(i));
            })
            .join();
    }
    EXPECT_EQ(handedOver.back(), kyVariant("text 19999"));
}

TEST(BlockPool, LivingBlocksNeverOverlap)
{
    std::set<void*> living;
    std::vector<std::pair<void*, std::size_t>> blocks;
    for (std::size_t i = 0; i < 30000; ++i)
    {
        const std::size_t size = 1 + i * 37 % 200;
        void* const block = ky::impl::allocateBlock(size);
        EXPECT_TRUE(living.insert(block).second);
        blocks.emplace_back(block, size);
        if (i % 3 != 0)
        {
            const auto [freed, freedSize] = blocks[i * 13 % blocks.size()];
            blocks[i * 13 % blocks.size()] = blocks.back();
            blocks.pop_back();
            living.erase(freed);
            ky::impl::freeBlock(freed, freedSize);
        }
    }
    for (const auto& [block, size] : blocks)
        ky::impl::freeBlock(block, size);
}

} // namespace
