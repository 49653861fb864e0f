// SPDX-License-Identifier: MIT
// Slabs that several threads cut up and bring back in any order.
#include "variant/slab_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace
{

using ky::impl::BlockSupply;
using ky::impl::FreeBlock;

/// The blocks of a supply, each filled with `mark`.
std::vector<char*> blocksOf(BlockSupply supply, std::size_t size, char mark)
{
    std::vector<char*> blocks;
    for (const FreeBlock* block = supply.chain; block != nullptr; block = block->next)
        blocks.push_back(reinterpret_cast<char*>(const_cast<FreeBlock*>(block)));
    EXPECT_EQ(blocks.size(), supply.chainLength);
    for (char* block = supply.fresh; block != supply.freshEnd; block += size)
        blocks.push_back(block);
    for (char* const block : blocks)
        std::memset(block, mark, size);
    return blocks;
}

void giveBack(std::vector<char*>& blocks, std::size_t first, std::size_t sizeClass, char mark)
{
    const std::size_t size = sizeClass * ky::impl::blockStep;
    FreeBlock* chain = nullptr;
    for (std::size_t i = first; i < blocks.size(); ++i)
    {
        ASSERT_EQ(std::count(blocks[i], blocks[i] + size, mark), static_cast<std::ptrdiff_t>(size));
        chain = ::new (blocks[i]) FreeBlock{chain};
    }
    blocks.resize(first);
    ky::impl::returnBlocks(sizeClass, chain);
}

void takeAndReturn(unsigned seed, std::size_t sizeClass, std::vector<char*>& leftOver)
{
    std::mt19937 random(seed);
    const std::size_t size = sizeClass * ky::impl::blockStep;
    const char mark = static_cast<char>(seed);
    std::vector<char*>& living = leftOver;
    for (int round = 0; round < 300; ++round)
    {
        const std::size_t wanted = 1 + random() % 2000;
        const std::vector<char*> more = blocksOf(ky::impl::takeBlocks(sizeClass, wanted), size, mark);
        ASSERT_GE(more.size(), 1U);
        ASSERT_LE(more.size(), wanted);
        living.insert(living.end(), more.begin(), more.end());
        std::shuffle(living.begin(), living.end(), random);
        if (random() % 3 != 0)
            giveBack(living, random() % (living.size() + 1), sizeClass, mark);
    }
}

TEST(SlabStore, BlocksOfSeveralThreadsStayApartAndAllSlabsComeFree)
{
    const std::size_t before = ky::impl::slabsInUse();
    constexpr std::size_t classes[] = {1, 2, 2, 8};
    std::vector<char*> living[4];
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i)
        threads.emplace_back([&, i] { takeAndReturn(i + 1, classes[i], living[i]); });
    for (std::thread& thread : threads)
        thread.join();
    // More than is kept, so that slabs go back to the system as well.
    std::vector<char*> many;
    while (ky::impl::slabsInUse() < before + 3 * ky::impl::keptSlabs)
    {
        const std::vector<char*> more = blocksOf(ky::impl::takeBlocks(4, 4096), 64, 'm');
        many.insert(many.end(), more.begin(), more.end());
    }
    giveBack(many, 0, 4, 'm');
    for (unsigned i = 0; i < 4; ++i)
        giveBack(living[i], 0, classes[i], static_cast<char>(i + 1));
    EXPECT_EQ(ky::impl::slabsInUse(), before);
}

} // namespace
