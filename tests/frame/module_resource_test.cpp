// SPDX-License-Identifier: MIT
#include "support/process_state.h"

#include <ky/kyLog.h>
#include <ky/kyResource.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

namespace
{

void countMessage(const std::string&, ky::kyLogType, const std::string&, void* count) { ++*static_cast<int*>(count); }

TEST(ModuleResources, AreThereWhileTheModuleIsLoaded)
{
    std::string text;
    for (const bool loadedFirst : {true, false})
    {
        void* module = loadedFirst ? ky::test::loadModule("ky_test_module") : nullptr;
        ky::initializeKySystem(ky::InitType::Full, false);
        int messages = 0;
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().installCustomHandler(&countMessage, &messages);
        if (!loadedFirst)
            module = ky::test::loadModule("ky_test_module");
        EXPECT_TRUE(ky::rc::GetResource("module/CMakeLists.txt", text));
        EXPECT_NE(text.find("ky_test_module"), text.npos);
        ky::test::unloadModule(module);
        EXPECT_EQ(messages, 0);
        EXPECT_FALSE(ky::rc::GetResource("module/CMakeLists.txt", text));
        EXPECT_EQ(messages, 1);
        ky::terminateKySystem();
    }
}

} // namespace
