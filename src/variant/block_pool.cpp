// SPDX-License-Identifier: MIT
#include "variant/block_pool.h"

namespace ky::impl
{

void* allocateBlock(std::size_t size) { return ::operator new(size); }

void freeBlock(void* block, std::size_t size) noexcept { ::operator delete(block, size); }

} // namespace ky::impl
