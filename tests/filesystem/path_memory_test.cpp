// SPDX-License-Identifier: MIT
#include <ky/kyDirUtils.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<int> sRequests{0};

} // namespace

void* operator new(std::size_t size)
{
    ++sRequests;
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace
{

template <typename Work>
int requestsOf(Work work)
{
    const int before = sRequests;
    const std::string result = work();
    EXPECT_FALSE(result.empty());
    return sRequests - before;
}

TEST(PathMemory, OneRequestAtMost)
{
    using ky::kyDirUtils;
    const std::string folder(100, 'f');
    const std::string name = std::string(80, 'n') + "." + std::string(60, 'E');
    EXPECT_EQ(requestsOf([&] { return kyDirUtils::JoinPath(folder, name); }), 1);
    EXPECT_EQ(requestsOf([&] { return kyDirUtils::JoinPath(folder, folder, name); }), 1);
    EXPECT_EQ(requestsOf([&] { return kyDirUtils::JoinPath(folder, folder, folder, name); }), 1);
    EXPECT_EQ(requestsOf([&] { return kyDirUtils::ExtractFileExtension(name); }), 1);
    EXPECT_EQ(requestsOf([&] { return kyDirUtils::ExtractFileBaseName(name); }), 1);
}

} // namespace
