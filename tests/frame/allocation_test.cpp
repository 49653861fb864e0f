// SPDX-License-Identifier: MIT
// Memory that runs out at the n-th request of an initialization.
#include <ky/kyLog.h>
#include <ky/kyResource.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<int> sRequests{0};
std::atomic<int> sFailing{0};
std::atomic<long> sLive{0};

void* allocate(std::size_t size) noexcept
{
    void* const memory = ++sRequests == sFailing ? nullptr : std::malloc(size == 0 ? 1 : size);
    sLive += memory != nullptr ? 1 : 0;
    return memory;
}

void* allocateOrThrow(std::size_t size)
{
    void* const memory = allocate(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void release(void* memory) noexcept
{
    sLive -= memory != nullptr ? 1 : 0;
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

namespace
{

const char bytes[] = "bytes";
const ky::rc::impl::EmbeddedResource blocks[] = {{"a block with a name that needs memory of its own", bytes, bytes + 5},
                                                 {"short", bytes, bytes}};

bool initialize(ky::InitType type)
{
    try
    {
        ky::initializeKySystem(type, false);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

TEST(NoMemory, AFailedInitializationIsCountedAndLeavesNothing)
{
    const ky::rc::impl::EmbeddedResources resources(blocks, 2);
    for (const ky::InitType type : {ky::InitType::Light, ky::InitType::Full})
    {
        ky::initializeKySystem(type, false);
        ky::terminateKySystem();
        bool good = false;
        for (int n = 1; !good; ++n)
        {
            const long before = sLive;
            sRequests = 0;
            sFailing = n;
            good = initialize(type);
            sFailing = 0;
            ky::terminateKySystem();
            ASSERT_EQ(sLive, before) << "leak when request " << n << " fails";
            ASSERT_EQ(ky::kyLog::editPtr(), nullptr);
            ASSERT_LT(n, 1000);
        }
        // The next one is whole.
        ASSERT_TRUE(initialize(type));
        std::string text;
        EXPECT_TRUE(ky::rc::GetResource(blocks[0].name, text));
        EXPECT_EQ(ky::IsKySystemThreadSafe(), type == ky::InitType::Full);
        ky::terminateKySystem();
    }
}

} // namespace
