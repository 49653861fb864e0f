// SPDX-License-Identifier: MIT
#include "variant/pages.h"

#include <cstdint>

#include <sys/mman.h>

namespace ky::impl::native
{

void* allocatePages(std::size_t size, bool large) noexcept
{
    void* const mapped = ::mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    char* const begin = static_cast<char*>(mapped);
    const std::size_t before = (0 - reinterpret_cast<std::uintptr_t>(mapped)) & (size - 1);
    if (before != 0)
        ::munmap(begin, before);
    ::munmap(begin + before + size, size - before);
    if (large)
        ::madvise(begin + before, size, MADV_HUGEPAGE); // refused where the system has no large pages
    return begin + before;
}

void freePages(void* pages, std::size_t size) noexcept { ::munmap(pages, size); }

} // namespace ky::impl::native
