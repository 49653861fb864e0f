// SPDX-License-Identifier: MIT
#include "support/failing_new.h"

#include <ky/kyDirUtils.h>

#include <gtest/gtest.h>

namespace
{

template <typename Work>
int requestsOf(Work work)
{
    const int before = ky::test::memoryRequests.made;
    const std::string result = work();
    EXPECT_FALSE(result.empty());
    return ky::test::memoryRequests.made - before;
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
