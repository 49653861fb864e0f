// SPDX-License-Identifier: MIT
#include "support/failing_new.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace ky::test
{

constinit MemoryRequests memoryRequests;

} // namespace ky::test

namespace
{

using ky::test::memoryRequests;

void* allocate(std::size_t size) noexcept
{
    const int request = ++memoryRequests.made;
    if (request >= memoryRequests.failFrom && request < memoryRequests.failTo)
        return nullptr;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    memoryRequests.live += memory != nullptr ? 1 : 0;
    return memory;
}

void* allocateOrThrow(std::size_t size)
{
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void release(void* memory) noexcept
{
    memoryRequests.live -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
// A sanitizer's own would not call the ones above.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
