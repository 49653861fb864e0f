// SPDX-License-Identifier: MIT
// Memory that runs out at the n-th request of an initialization.
#include "support/failing_new.h"

#include <ky/kyLog.h>
#include <ky/kyResource.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <new>

namespace
{

using ky::test::memoryRequests;

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
            const long before = memoryRequests.live;
            memoryRequests.failAt(n);
            good = initialize(type);
            memoryRequests.failNoMore();
            ky::terminateKySystem();
            ASSERT_EQ(memoryRequests.live, before) << "leak when request " << n << " fails";
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
