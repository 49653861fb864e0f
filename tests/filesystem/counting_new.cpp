// SPDX-License-Identifier: MIT
// The operators stand apart from their users: a compiler that sees one of a pair only takes it for a mismatch.
#include "filesystem/counting_new.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<int> sRequests{0};

void* allocate(std::size_t size) noexcept
{
    ++sRequests;
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

int ky::test::memoryRequests() { return sRequests; }

void* operator new(std::size_t size)
{
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
