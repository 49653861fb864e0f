// SPDX-License-Identifier: MIT
// Where the threads' block caches get their blocks from and bring them back to: slabs, each cut into blocks of one
// size. A slab whose last block comes back is free for any size; a few of those are kept, the others go to the system.
#pragma once

#include <cstddef>

namespace ky::impl
{

struct FreeBlock
{
    FreeBlock* next;
};

/// Sizes go up in steps of 16 bytes; size class n holds blocks of n * 16 bytes, n from 1 to 8.
constexpr std::size_t blockStep = 16;
constexpr std::size_t largestBlockClass = 8;

constexpr std::size_t slabSize = std::size_t{2} << 20;
/// Free slabs that the process keeps.
constexpr std::size_t keptSlabs = 8;

/// Blocks for one cache: a chain of used ones, or a run of untouched memory.
struct BlockSupply
{
    FreeBlock* chain = nullptr;
    std::size_t chainLength = 0;
    char* fresh = nullptr;
    char* freshEnd = nullptr;
};

/// One block at least, `wanted` at most. Throws std::bad_alloc.
BlockSupply takeBlocks(std::size_t sizeClass, std::size_t wanted);
/// From whatever slabs, in whatever order, on whatever thread; null does nothing.
void returnBlocks(std::size_t sizeClass, FreeBlock* chain) noexcept;
/// Slabs that hold living blocks of any size.
std::size_t slabsInUse() noexcept;

} // namespace ky::impl
