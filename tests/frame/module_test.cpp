// SPDX-License-Identifier: MIT
// Loads a module that uses the library, into a program that does not.
#include "support/child_process.h"
#include "support/process_state.h"
#include "support/soak.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace
{

void loadUseAndUnload(int times)
{
    for (int i = 0; i < times && !testing::Test::HasFailure(); ++i)
    {
        void* const module = ky::test::loadModule("ky_test_module");
        ASSERT_NE(module, nullptr);
        const auto use = ky::test::moduleFunction(module, "useLibrary");
        ASSERT_NE(use, nullptr);
        // A thread that has used variants keeps the library until it ends.
        std::thread(
            [use]
            {
                EXPECT_EQ(use(), 0);
                EXPECT_EQ(use(), 0);
            })
            .join();
        ky::test::unloadModule(module);
        EXPECT_FALSE(ky::test::isModuleLoaded("ky_test_module"));
        EXPECT_FALSE(ky::test::isModuleLoaded("kySystem"));
    }
}

TEST(Module, UnloadedAfterTerminationLeavesNothing)
{
    loadUseAndUnload(20);
    const ky::test::ProcessState before = ky::test::processState();
    const int loads = ky::test::isSoak() ? 1000 : 200;
    loadUseAndUnload(loads);
    const ky::test::ProcessState after = ky::test::settledState(before);
    // A load keeps the description of the processor, which static objects may ask for until the end.
    EXPECT_LT(after.heapBytes, before.heapBytes + static_cast<std::size_t>(loads) * 2000);
    ky::test::account("start and end", {loads, "loads and unloads"}, {},
                      {ky::test::leftOver(before, after), "threads and descriptors left"});
}

TEST(Module, TheProgramEndsAlthoughTheModuleIsInUse)
{
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(ky::test::ChildProcess::program("frame_module_test", {"leave"}).wait(), 0);
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc < 2 || std::strcmp(argv[1], "leave") != 0)
        return RUN_ALL_TESTS();
    const auto use = ky::test::moduleFunction(ky::test::loadModule("ky_test_module"), "keepUsingLibrary");
    return use != nullptr ? use() : 1;
}
