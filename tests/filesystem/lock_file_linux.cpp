// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyLockFile.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace ky::test;
using ky::kyLockFile;

constexpr auto exclusive = kyLockFile::LockExclusive;

int openDescriptors()
{
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        count += fcntl(descriptor, F_GETFD) != -1;
    return count;
}

TEST(LockFileOnLinux, OnlyRegularFilesAreTaken)
{
    const TempDir dir;
    writeFile(dir.file("target"), "content");
    ASSERT_EQ(symlink(dir.file("target").c_str(), dir.file("link").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", dir.file("dangling").c_str()), 0);
    ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0666), 0);
    const int before = openDescriptors();
    kyLockFile lock;
    for (const std::string& path : {dir.file("link"), dir.file("dangling"), dir.file("fifo"), std::string("/dev/null")})
    {
        bool existed = false;
        EXPECT_FALSE(lock.takeLockUtf8(path, &existed, exclusive)) << path;
        EXPECT_TRUE(existed) << path;
    }
    EXPECT_EQ(readFile(dir.file("target")), "content");
    EXPECT_FALSE(exists(dir.file("nowhere")));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(LockFileOnLinux, TheTextOfTheHolderIsThereWhateverOthersTry)
{
    const TempDir dir;
    kyLockFile holder;
    ASSERT_TRUE(holder.takeLockUtf8(dir.file("a.lock"), nullptr, exclusive));
    const std::string text = readFile(dir.file("a.lock"));
    EXPECT_NE(text, "");
    // Another user's process has no claim in common with the holder; only the lock on the file keeps it away.
    const std::string alias = dir.file("alias.lock");
    ASSERT_EQ(link(dir.file("a.lock").c_str(), alias.c_str()), 0);
    kyLockFile loser;
    EXPECT_FALSE(loser.takeLockUtf8(dir.file("a.lock"), nullptr, kyLockFile::LockShared));
    EXPECT_FALSE(loser.takeLockUtf8(alias, nullptr, exclusive));
    EXPECT_EQ(readFile(alias), text);
}

TEST(LockFileOnLinux, TheFolderMayChangeMeanwhile)
{
    const TempDir dir;
    makeFolder(dir.file("before"));
    kyLockFile lock;
    ASSERT_TRUE(lock.takeLockUtf8(dir.file("before\\a.lock"), nullptr, exclusive));
    ASSERT_EQ(rename(dir.file("before").c_str(), dir.file("after").c_str()), 0);
    kyLockFile other;
    EXPECT_FALSE(other.takeLockUtf8(dir.file("after/a.lock"), nullptr, exclusive));
    EXPECT_TRUE(lock.releaseLock(true));
    EXPECT_FALSE(exists(dir.file("after/a.lock")));
}

TEST(LockFileOnLinux, AForkedChildHoldsNothing)
{
    const TempDir dir;
    const std::string path = dir.file("a.lock");
    {
        kyLockFile lock;
        ASSERT_TRUE(lock.takeLockUtf8(path, nullptr, exclusive));
        const pid_t child = fork();
        if (child == 0)
        {
            const bool heldNothing = !lock.isLocked() && !lock.releaseLock(true);
            kyLockFile own;
            _exit(heldNothing && !own.takeLockUtf8(path, nullptr, exclusive) ? 0 : 1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_TRUE(lock.isLocked());
        EXPECT_TRUE(exists(path));
    }
    EXPECT_FALSE(exists(path));
}

TEST(LockFileOnLinux, AChildThatOutlivesAKilledHolderKeepsNothing)
{
    const TempDir dir;
    int ready[2] = {-1, -1};
    ASSERT_EQ(pipe2(ready, O_CLOEXEC), 0);
    const pid_t holder = fork();
    if (holder == 0)
    {
        kyLockFile lock;
        if (!lock.takeLockUtf8(dir.file("a.lock"), nullptr, exclusive))
            _exit(1);
        const pid_t grandchild = fork();
        if (grandchild == 0)
        {
            pause();
            _exit(0);
        }
        static_cast<void>(write(ready[1], &grandchild, sizeof grandchild) + 1);
        kill(getpid(), SIGKILL);
    }
    pid_t grandchild = 0;
    ASSERT_EQ(read(ready[0], &grandchild, sizeof grandchild), static_cast<ssize_t>(sizeof grandchild));
    waitpid(holder, nullptr, 0);
    kyLockFile lock;
    bool existed = false;
    // The grandchild closes what it inherited before fork() returns in it, which may be a moment later.
    bool isTaken = false;
    for (int i = 0; i < 10000 && !isTaken; ++i)
    {
        isTaken = lock.takeLockUtf8(dir.file("a.lock"), &existed, exclusive);
        usleep(isTaken ? 0 : 1000);
    }
    EXPECT_TRUE(isTaken);
    EXPECT_TRUE(existed);
    kill(grandchild, SIGKILL);
    close(ready[0]);
    close(ready[1]);
}

} // namespace
