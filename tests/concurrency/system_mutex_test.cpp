// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/threads.h"
#include "support/child_process.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyMutex.h>
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace
{

using ky::kyMutexSystem;
using ky::test::ChildProcess;
using namespace std::chrono_literals;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

/// A name that no other run uses.
std::string unique(const std::string& name) { return ky::kySystemUtils::CreateUuid(false) + name; }

/// Whether a thread can own `second` while another one owns `first`. Both are free afterwards.
bool excludes(kyMutexSystem& first, kyMutexSystem& second)
{
    std::atomic<bool> entered{false};
    first.lock();
    std::thread other(
        [&]
        {
            second.lock();
            entered = true;
            second.unlock();
        });
    // Too short a wait can only hide a fault, never report one where there is none.
    for (int i = 0; i < 20 && !entered; ++i)
        std::this_thread::sleep_for(1ms);
    const bool excluded = !entered;
    first.unlock();
    other.join();
    return excluded;
}

TEST(SystemMutex, NamesThatMeanTheSame)
{
    const std::string prefix = unique("");
    const struct
    {
        std::string first, second;
        bool same;
    } cases[] = {
        {"plain", "plain", true},
        {"with\\two\\parts", "with/two/parts", true},
        {"C:\\Logs\\Übung 日本.log", "C:/Logs/Übung 日本.log", true},
        {"case", "CASE", false},
        {"a", "a ", false},
        {std::string(200, 'x') + "1", std::string(200, 'x') + "2", false},
    };
    for (const auto& one : cases)
    {
        kyMutexSystem first((prefix + one.first).c_str());
        kyMutexSystem second((prefix + one.second).c_str());
        EXPECT_EQ(excludes(first, second), one.same) << one.first << " " << one.second;
    }
}

TEST(SystemMutex, OddNamesAreUsable)
{
    kyMutexSystem nameless(nullptr);
    kyMutexSystem alsoNameless(nullptr);
    EXPECT_TRUE(excludes(nameless, nameless));
    EXPECT_FALSE(excludes(nameless, alsoNameless));
    const std::string longName = unique(std::string(10000, 'n'));
    for (const char* name : {"", longName.c_str(), "\\", "\xFF\xFE not UTF-8"})
    {
        kyMutexSystem mutex(name);
        mutex.lock();
        mutex.unlock();
    }
}

TEST(SystemMutex, ObjectsOfOneNameShareTheRecursionAndOnlyTheOwnerUnlocks)
{
    const std::string name = unique("nested");
    kyMutexSystem first(name.c_str());
    kyMutexSystem second(name.c_str());
    first.unlock();
    first.lock();
    second.lock();
    first.unlock();
    std::thread([&] { second.unlock(); }).join();
    ChildProcess child("mutex_pass", {name});
    std::this_thread::sleep_for(30ms);
    EXPECT_TRUE(child.isRunning()) << "two levels and one unlock leave it owned";
    second.unlock();
    EXPECT_EQ(child.wait(), 0);
}

TEST(SystemMutex, AThreadThatEndsWhileOwningLeavesItToTheNext)
{
    const std::string name = unique("thread");
    kyMutexSystem mutex(name.c_str());
    std::thread(
        [&]
        {
            mutex.lock();
            mutex.lock();
        })
        .join();
    mutex.lock();
    mutex.unlock();
    EXPECT_EQ(ChildProcess("mutex_pass", {name}).wait(), 0);
}

TEST(SystemMutex, KeepsProcessesAndThreadsApart)
{
    constexpr int processCount = 16;
    constexpr int threadCount = 3;
    const int rounds = ky::test::isSoak() ? 6'000 : 60;
    const ky::test::TempDir folder;
    const std::string name = folder.file("counter");
    ky::test::writeFile(name, "0");
    std::vector<ChildProcess> children;
    for (int i = 0; i < processCount; ++i)
        children.emplace_back("mutex_count", std::vector<std::string>{name, name, std::to_string(rounds)});
    const auto count = [&](int)
    {
        kyMutexSystem mutex(name.c_str());
        for (int round = 0; round < rounds; ++round)
        {
            mutex.lock();
            ky::test::writeFile(name, std::to_string(std::stol(ky::test::readFile(name)) + 1));
            mutex.unlock();
        }
    };
    ky::test::Threads(threadCount, count).join();
    for (ChildProcess& child : children)
        EXPECT_EQ(child.wait(1000s), 0);
    const int expected = (processCount + threadCount) * rounds;
    ky::test::account("named mutex", {expected, "lock pairs of 16 processes"}, {},
                      {expected - std::stol(ky::test::readFile(name)), "increments"});
}

TEST(SystemMutex, AKilledOwnerLeavesItToTheNext)
{
    const ky::test::TempDir folder;
    const std::string name = unique("killed");
    kyMutexSystem mutex(name.c_str());
    const int kills = ky::test::isSoak() ? 1000 : 3;
    int stuck = 0;
    for (int round = 0; round < kills; ++round)
    {
        const std::string sign = folder.file("owned" + std::to_string(round));
        ChildProcess owner("mutex_hold", {name, sign});
        ASSERT_TRUE(ky::test::eventually([&] { return ky::test::exists(sign); }));
        ChildProcess waiting("mutex_pass", {name});
        std::this_thread::sleep_for(10ms);
        EXPECT_TRUE(waiting.isRunning());
        owner.kill();
        mutex.lock();
        mutex.unlock();
        stuck += waiting.wait() != 0;
    }
    ky::test::account("named mutex", {2 * kills, "takes after a kill"}, {kills, "owners killed"},
                      {stuck, "waiting processes stuck"});
}

} // namespace
