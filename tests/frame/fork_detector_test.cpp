// SPDX-License-Identifier: MIT
#include "frame/early_use.h"
#include "frame/library_state.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <vector>

namespace
{

void collect(const std::string& message, ky::kyLogType type, const std::string&, void* messages)
{
    EXPECT_EQ(type, ky::kyLogType::CRITICAL);
    static_cast<std::vector<std::string>*>(messages)->push_back(message);
}

// A recorded id of another process is what a forked child sees.
TEST(ForkDetector, WarnsAtEveryCheckInAForeignProcess)
{
    std::vector<std::string> messages;
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().setEchoToConsole(false);
    ky::kyLog::edit().installCustomHandler(&collect, &messages);
    const std::uint64_t own = ky::impl::recordedProcessId();
    EXPECT_EQ(own, ky::kySystemUtils::GetCurrentProcessID());
    ky::CheckIfProcessForkAfterThreadSafeInit();
    EXPECT_TRUE(messages.empty());

    ky::impl::setRecordedProcessId(own + 1);
    ky::CheckIfProcessForkAfterThreadSafeInit();
    EXPECT_TRUE(ky::IsKySystemThreadSafe());
    ky::impl::checkEarlyUse("not written, the library is full");
    const std::string expected = "Detect process fork after thread initialization from " + std::to_string(own + 1) +
                                 " to " + std::to_string(own);
    EXPECT_EQ(messages, std::vector<std::string>(3, expected));
    EXPECT_EQ(ky::impl::recordedProcessId(), own + 1);

    ky::impl::setLibraryState(ky::impl::LibraryState::Light);
    ky::CheckIfProcessForkAfterThreadSafeInit();
    EXPECT_EQ(messages.size(), 3u) << "only a fully initialized library looks";
    ky::impl::setLibraryState(ky::impl::LibraryState::Full);
    ky::impl::setRecordedProcessId(own);
    ky::terminateKySystem();
    EXPECT_EQ(ky::impl::recordedProcessId(), own) << "the id is kept";
}

} // namespace
