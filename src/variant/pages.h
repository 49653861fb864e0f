// SPDX-License-Identifier: MIT
// Memory straight from the system, for the slabs that small blocks are cut from.
#pragma once

#include <cstddef>

namespace ky::impl::native
{

/// `size` zeroed bytes at a multiple of `size`, which is a power of two and a multiple of the page size; null when the
/// system has none. `large` asks for large pages where the system grants them: all of the memory is about to be used.
void* allocatePages(std::size_t size, bool large) noexcept;
void freePages(void* pages, std::size_t size) noexcept;

} // namespace ky::impl::native
