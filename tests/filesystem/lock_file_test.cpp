// SPDX-License-Identifier: MIT
#include "support/child_process.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyLockFile.h>
#include <ky/kyThread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyLockFile;

constexpr auto exclusive = kyLockFile::LockExclusive;
constexpr auto shared = kyLockFile::LockShared;

std::filesystem::path toPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

class LockFile : public testing::Test
{
protected:
    /// Whether somebody else can have it now; what it took it gives back, the file staying.
    bool isFree(kyLockFile::LockType type)
    {
        kyLockFile taker;
        return taker.takeLockUtf8(path, nullptr, type) && taker.releaseLock(false);
    }

    TempDir dir;
    const std::string path = dir.file("w\xC3\xA4rter.lock");
};

TEST_F(LockFile, ExclusiveExcludesAll)
{
    kyLockFile first;
    kyLockFile second;
    bool existed = true;
    EXPECT_FALSE(first.isLocked());
    EXPECT_FALSE(first.releaseLock(true));
    ASSERT_TRUE(first.takeLockUtf8(path, &existed, exclusive));
    EXPECT_FALSE(existed);
    EXPECT_TRUE(first.isLocked());
    for (const int type : {0, 1, 2, -1})
    {
        EXPECT_FALSE(second.takeLockUtf8(path, &existed, static_cast<kyLockFile::LockType>(type)));
        EXPECT_TRUE(existed);
        EXPECT_FALSE(second.isLocked());
        EXPECT_FALSE(second.releaseLock(true));
    }
    EXPECT_TRUE(first.releaseLock(false));
    EXPECT_FALSE(first.isLocked());
    EXPECT_EQ(readFile(path), "Lock from thread : " + ky::kyThread::CurrentThreadId());
    EXPECT_TRUE(second.takeLockUtf8(path, &existed, exclusive));
    EXPECT_TRUE(existed);
    EXPECT_TRUE(second.releaseLock(true));
    EXPECT_FALSE(exists(path));
}

TEST_F(LockFile, SharedOnesExcludeAnExclusiveOneUntilTheLastHasGone)
{
    kyLockFile first;
    kyLockFile second;
    bool existed = false;
    ASSERT_TRUE(first.takeLockUtf8(path, &existed, shared));
    ASSERT_TRUE(second.takeLockUtf8(path, &existed, shared));
    EXPECT_TRUE(existed);
    EXPECT_FALSE(isFree(exclusive));
    EXPECT_TRUE(isFree(shared));
    EXPECT_TRUE(first.releaseLock(true));
    EXPECT_TRUE(exists(path));
    EXPECT_FALSE(isFree(exclusive));
    EXPECT_TRUE(isFree(shared));
    EXPECT_TRUE(second.releaseLock(true));
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(isFree(exclusive));
}

TEST_F(LockFile, AnOlderLongerTextIsReplaced)
{
    writeFile(path, std::string(5000, 'x'));
    kyLockFile lock;
    bool existed = false;
    EXPECT_TRUE(lock.takeLockUtf8(path, &existed, exclusive));
    EXPECT_TRUE(existed);
    lock.releaseLock(false);
    EXPECT_EQ(readFile(path), "Lock from thread : " + ky::kyThread::CurrentThreadId());
}

TEST_F(LockFile, ANewLockGivesUpTheOldOneFirst)
{
    const std::string other = dir.file("other.lock");
    kyLockFile lock;
    ASSERT_TRUE(lock.takeLockUtf8(path, nullptr, exclusive));
    ASSERT_TRUE(lock.takeLockUtf8(other, nullptr, exclusive));
    EXPECT_FALSE(exists(path));
    EXPECT_FALSE(lock.takeLockUtf8(dir.file("no-such-folder/x.lock"), nullptr, exclusive));
    EXPECT_FALSE(lock.isLocked());
    EXPECT_FALSE(exists(other));
    EXPECT_FALSE(lock.takeLockUtf8("", nullptr, exclusive));
    EXPECT_FALSE(lock.takeLockUtf8(dir.path(), nullptr, exclusive));
    EXPECT_FALSE(lock.takeLockUtf8(dir.path() + "/", nullptr, shared));
}

TEST_F(LockFile, CopiesHoldOneLock)
{
    kyLockFile first;
    ASSERT_TRUE(first.takeLockUtf8(path, nullptr, exclusive));
    {
        kyLockFile moved(std::move(first));
        EXPECT_TRUE(moved.isLocked());
        first = std::move(moved);
    }
    EXPECT_TRUE(first.isLocked());
    kyLockFile assigned;
    ASSERT_TRUE(assigned.takeLockUtf8(dir.file("other.lock"), nullptr, exclusive));
    assigned = first;
    EXPECT_FALSE(exists(dir.file("other.lock")));
    const kyLockFile again = first;
    assigned = again;
    EXPECT_TRUE(assigned.isLocked());
    EXPECT_TRUE(first.isLocked());
    EXPECT_TRUE(assigned.releaseLock(true));
    EXPECT_FALSE(first.isLocked());
    kyLockFile other;
    ASSERT_TRUE(other.takeLockUtf8(path, nullptr, exclusive));
    EXPECT_FALSE(first.releaseLock(true)) << "the lock of somebody else by now";
    EXPECT_TRUE(exists(path));
    EXPECT_FALSE(isFree(shared));
}

TEST_F(LockFile, AFileThatSomebodyReplacesIsNotTakenTwice)
{
    for (const auto type : {exclusive, shared})
    {
        kyLockFile holder;
        ASSERT_TRUE(holder.takeLockUtf8(path, nullptr, type));
        std::error_code ignored;
        std::filesystem::remove(toPath(path), ignored);
        EXPECT_FALSE(isFree(exclusive)) << "removed";
        writeFile(dir.file("foreign"), "foreign");
        std::filesystem::rename(toPath(dir.file("foreign")), toPath(path), ignored);
        const bool isReplaced = !ignored;
        EXPECT_FALSE(isFree(exclusive)) << "replaced";
        EXPECT_TRUE(holder.releaseLock(true));
        EXPECT_EQ(exists(path), isReplaced) << "a file that is not the holder's stays";
        EXPECT_TRUE(isFree(exclusive));
        std::filesystem::remove(toPath(path), ignored);
    }
}

TEST_F(LockFile, SelfTest)
{
    writeFile(dir.file("file_shared.lock"), "stale");
    EXPECT_TRUE(kyLockFile::UnitTestUtf8(dir.path()));
    EXPECT_TRUE(std::filesystem::is_empty(toPath(dir.path())));
    kyLockFile foreign;
    ASSERT_TRUE(foreign.takeLockUtf8(dir.file("file_ex.lock"), nullptr, shared));
    EXPECT_FALSE(kyLockFile::UnitTestUtf8(dir.path()));
    EXPECT_FALSE(kyLockFile::UnitTestUtf8(dir.file("missing")));
}

TEST_F(LockFile, ThreadsWithObjectsOfTheirOwn)
{
    const int rounds = isSoak() ? 5000 : 300;
    std::atomic<int> holders{0};
    std::atomic<int> faults{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                kyLockFile lock;
                for (int round = 0; round < rounds; ++round)
                {
                    // Shared holders count 1, an exclusive one 100.
                    const bool isShared = (round + i) % 3 != 0;
                    if (!lock.takeLockUtf8(path, nullptr, isShared ? shared : exclusive))
                        continue;
                    const int before = holders.fetch_add(isShared ? 1 : 100);
                    faults += isShared ? before >= 100 : before != 0;
                    holders -= isShared ? 1 : 100;
                    lock.releaseLock(round % 2 == 0);
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    account("lock files", {4 * rounds, "takes of 4 threads"}, {}, {faults.load(), "takes beside an exclusive holder"});
}

TEST_F(LockFile, ProcessesNeverHoldItTogether)
{
    const int processes = isSoak() ? 32 : 6;
    const int rounds = isSoak() ? 3125 : 100;
    const std::string counter = dir.file("counter");
    writeFile(counter, "0");
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int i = 0; i < processes; ++i)
        children.push_back(std::make_unique<ChildProcess>(
            "lock_count", std::vector<std::string>{path, counter, std::to_string(rounds)}));
    for (const auto& child : children)
        EXPECT_EQ(child->wait(std::chrono::seconds(isSoak() ? 1800 : 200)), 0);
    account("lock files", {processes * rounds, "takes of many processes"}, {},
            {processes * rounds - std::stol(readFile(counter)), "increments"});
}

TEST_F(LockFile, WhatAKilledHolderLeavesIsTakenAtOnce)
{
    const int kills = isSoak() ? 1000 : 10;
    int stuck = 0;
    for (int i = 0; i < kills; ++i)
    {
        const std::string marker = dir.file("marker" + std::to_string(i));
        const kyLockFile::LockType type = i % 2 == 0 ? exclusive : shared;
        ChildProcess holder("lock_hold", {path, marker, std::to_string(type)});
        ASSERT_TRUE(eventually([&] { return exists(marker); }));
        ASSERT_FALSE(isFree(exclusive));
        holder.kill();
        holder.wait();
        kyLockFile lock;
        bool existed = false;
        stuck += !lock.takeLockUtf8(path, &existed, exclusive);
        EXPECT_TRUE(existed);
    }
    account("lock files", {kills, "takes after a kill"}, {kills, "holders killed"}, {stuck, "takes refused"});
}

} // namespace
