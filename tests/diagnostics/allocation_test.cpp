// SPDX-License-Identifier: MIT
// Memory that runs out at the n-th request while a message is made, filled and delivered.
#include "support/temp_dir.h"

#include <ky/kyLog.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

namespace
{

std::atomic<int> sRequests{0};
std::atomic<int> sFailFrom{0};
std::atomic<int> sFailTo{0};
std::atomic<long> sLive{0};

void* allocate(std::size_t size) noexcept
{
    const int request = ++sRequests;
    if (request >= sFailFrom && request < sFailTo)
        return nullptr;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    sLive += memory != nullptr ? 1 : 0;
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
    sLive -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace
{

using ky::kyLog;

struct Streamed
{
    friend std::ostream& operator<<(std::ostream& out, const Streamed&) { return out << "streamed " << 3.5; }
};

void makeFillAndDeliver(const std::string& longText)
{
    ky::kyLogObject object(ky::kyLogType::CRITICAL, "a qualifier that is too long to be kept inline", kyLog::editPtr(),
                           "a source that is too long to be kept inline");
    object << "text that is too long to be kept inline " << 1 << 2.5 << &object << longText << Streamed() << std::hex
           << 255 << nullptr;
    ky::kyLogObject moved(std::move(object));
    moved << "end";
}

TEST(NoMemory, AtAnyRequestNothingEscapesAndNothingLeaks)
{
    const ky::test::TempDir dir;
    const std::string longText(3000, 'l');
    kyLog::createInstance(true);
    kyLog::edit().setEchoToConsole(false);
    kyLog::edit().installFileHandlerExUtf8(dir.file("a log with a long name, so that it needs memory.log"), 0, 4000, 3);
    kyLog::edit().setEchoToConsole(false);
    makeFillAndDeliver(longText);
    for (const bool forEver : {false, true})
    {
        bool failed = true;
        for (int n = 1; failed; ++n)
        {
            const long before = sLive;
            sRequests = 0;
            sFailFrom = n;
            sFailTo = forEver ? 1000000 : n + 1;
            makeFillAndDeliver(longText);
            failed = sRequests >= n;
            sFailFrom = sFailTo = 0;
            ASSERT_EQ(sLive, before) << "leak when request " << n << " fails";
            ASSERT_LT(n, 500);
        }
    }
    bool locked = true;
    std::thread(
        [&locked]
        {
            ky::logInfo() << "lock is free";
            locked = false;
        })
        .join();
    EXPECT_FALSE(locked);
    kyLog::destroyInstance();
}

TEST(NoMemory, ShortLinesNeedNone)
{
    const ky::test::TempDir dir;
    const std::string path = dir.file("short.log");
    const std::string message = "written without memory";
    kyLog::createInstance(true);
    kyLog::edit().installFileHandlerUtf8(path);
    sRequests = 0;
    sFailFrom = 1;
    sFailTo = 1000000;
    kyLog::edit().Write(message, ky::kyLogType::INFO, "");
    sFailFrom = sFailTo = 0;
    kyLog::edit().Write("behind", ky::kyLogType::INFO, "");
    kyLog::destroyInstance();
    const std::string content = ky::test::readFile(path);
    EXPECT_NE(content.find("behind\r\n"), std::string::npos);
    if (sRequests == 0)
    {
        EXPECT_NE(content.find(message), std::string::npos);
    }
}

} // namespace
