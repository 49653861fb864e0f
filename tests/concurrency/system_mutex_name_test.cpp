// SPDX-License-Identifier: MIT
// What the named mutex asks of the system, and what it does when the system refuses. A fake stands in its place.
#include "concurrency/named_mutex_native.h"
#include "diagnostics/error_text.h"

#include <ky/kyLog.h>
#include <ky/kyMutex.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

constexpr int refusal = 5;

std::vector<std::string> sCalls;
bool sRefuses = false;

} // namespace

namespace ky::impl::native
{

struct NamedMutex
{
};

NamedMutex* openNamedMutex(const std::string& name, ErrorCode& error)
{
    sCalls.push_back(name);
    error = sRefuses ? refusal : 0;
    return sRefuses ? nullptr : new NamedMutex;
}
void closeNamedMutex(NamedMutex* mutex) noexcept
{
    sCalls.push_back("close");
    delete mutex;
}
void acquire(NamedMutex&) noexcept { sCalls.push_back("acquire"); }
void release(NamedMutex&) noexcept { sCalls.push_back("release"); }

} // namespace ky::impl::native

namespace
{

using Lines = std::vector<std::string>;

Lines callsOf(const char* name)
{
    sCalls.clear();
    {
        ky::kyMutexSystem mutex(name);
        mutex.lock();
        mutex.unlock();
    }
    return sCalls;
}

void collect(const std::string& message, ky::kyLogType type, const std::string& qualifier, void* lines)
{
    static_cast<Lines*>(lines)->push_back(ky::toText(type) + ("(" + qualifier + ") ") + message);
}

class SystemMutexName : public testing::Test
{
protected:
    SystemMutexName()
    {
        ky::initializeKySystem(ky::InitType::Light, false);
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().installCustomHandler(&collect, &logged);
    }
    ~SystemMutexName() override
    {
        sRefuses = false;
        ky::terminateKySystem();
    }

    Lines logged;
};

TEST_F(SystemMutexName, IsGlobalAndHasNoBackslashes)
{
    EXPECT_EQ(callsOf("\\a\\b/c"), (Lines{"Global\\/a/b/c", "acquire", "release", "close"}));
    EXPECT_EQ(callsOf(""), (Lines{"Global\\", "acquire", "release", "close"}));
    const std::string first = callsOf(nullptr).front();
    EXPECT_EQ(first.size(), std::string("Global\\").size() + 32);
    EXPECT_NE(callsOf(nullptr).front(), first);
}

TEST_F(SystemMutexName, ARefusalIsLoggedAndLeavesAnIdleObject)
{
    sRefuses = true;
    EXPECT_EQ(callsOf("name"), Lines{"Global\\name"});
    EXPECT_EQ(logged, (Lines{"WARNING() Fail to create system mutex " + ky::impl::systemErrorText(refusal),
                             "CRITICAL() Mutex created before full init of kySystem"}));
}

TEST_F(SystemMutexName, AllLocksWarnBeforeFullInitialization)
{
    const ky::kyMutex mutex;
    EXPECT_EQ(logged.size(), 1U);
    const ky::kyMutex2 mutex2;
    EXPECT_EQ(logged.size(), 2U);
    callsOf("name");
    EXPECT_EQ(logged, Lines(3, "CRITICAL() Mutex created before full init of kySystem"));
}

} // namespace
