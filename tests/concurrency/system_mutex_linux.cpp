// SPDX-License-Identifier: MIT
// Files behind the named mutexes, the folder they live in, and fork().
#include "concurrency/event_pair_native.h"
#include "concurrency/full_library.h"
#include "concurrency/mutex_file_linux.h"
#include "concurrency/threads.h"
#include "platform/private_folder.h"
#include "support/child_process.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyMutex.h>
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

using ky::kyMutexSystem;
using ky::test::ChildProcess;
using ky::test::eventually;
using ky::test::Threads;
using namespace std::chrono_literals;
namespace native = ky::impl::native;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

std::string unique(const std::string& name) { return ky::kySystemUtils::CreateUuid(false) + name; }

std::string fileOf(const std::string& name)
{
    return native::privateFolderPath() + "/" + native::mutexFileName(native::hashName("Global\\" + name));
}

/// Runs `body` in a forked child, whose exit code is its result.
pid_t forked(const std::function<int()>& body)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(body());
    return child;
}

[[noreturn]] int pauseForEver()
{
    for (;;)
        ::pause();
}

int exitCode(pid_t child)
{
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool hasEnded(pid_t child)
{
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == child;
}

/// The error code of opening it as a private folder; 0 when it was opened.
int refusalOf(const std::string& folder)
{
    int error = 0;
    const int opened = native::openPrivateFolderAt(folder, error);
    EXPECT_EQ(opened == -1, error != 0);
    ::close(opened);
    return error;
}

TEST(PrivateFolder, IsForItsUserAloneOrRefused)
{
    const ky::test::TempDir parent;
    const std::string folder = parent.file("folder");
    struct stat found;
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_EQ(refusalOf(folder), 0);
        ASSERT_EQ(::stat(folder.c_str(), &found), 0);
        EXPECT_EQ(found.st_mode & 0777u, 0700u);
    }
    ASSERT_EQ(::symlink(folder.c_str(), parent.file("link").c_str()), 0);
    const int linkError = refusalOf(parent.file("link"));
    EXPECT_TRUE(linkError == ENOTDIR || linkError == ELOOP) << linkError;
    ky::test::writeFile(parent.file("file"), "");
    EXPECT_EQ(refusalOf(parent.file("file")), ENOTDIR);
    EXPECT_EQ(refusalOf(parent.file("missing/folder")), ENOENT);
    ::chmod(folder.c_str(), 0750);
    EXPECT_EQ(refusalOf(folder), EACCES);
    if (::geteuid() == 0)
    {
        ASSERT_EQ(::chown(folder.c_str(), 12345, 12345), 0);
        EXPECT_EQ(refusalOf(folder), EPERM);
    }
}

TEST(MutexFile, HasTheRightsOfItsUserAndNeverFollowsALink)
{
    const std::string name = unique("file");
    const kyMutexSystem mutex(name.c_str());
    struct stat found;
    ASSERT_EQ(::lstat(fileOf(name).c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777u, 0600u);
    ::unlink(fileOf(name).c_str());

    const auto refusal = [&]
    {
        int error = 0;
        EXPECT_EQ(native::openMutexFile(native::hashName("Global\\" + name), error), -1);
        ::unlink(fileOf(name).c_str());
        return error;
    };
    const ky::test::TempDir folder;
    ASSERT_EQ(::symlink(folder.file("elsewhere").c_str(), fileOf(name).c_str()), 0);
    EXPECT_EQ(refusal(), ELOOP);
    EXPECT_FALSE(ky::test::exists(folder.file("elsewhere")));
    ASSERT_EQ(::mkfifo(fileOf(name).c_str(), 0600), 0);
    EXPECT_EQ(refusal(), EACCES);
}

TEST(MutexFile, ARemovedFileIsReplacedForEarlyAndLateUsers)
{
    const ky::test::TempDir folder;
    const std::string name = unique("removed");
    kyMutexSystem mutex(name.c_str());
    mutex.lock();
    mutex.unlock();
    ASSERT_EQ(::unlink(fileOf(name).c_str()), 0);
    std::this_thread::sleep_for(20ms); // more than one tick of the clock: the file is not looked at more often
    ChildProcess owner("mutex_hold", {name, folder.file("owned")});
    ASSERT_TRUE(eventually([&] { return ky::test::exists(folder.file("owned")); }));
    std::atomic<bool> entered{false};
    const auto enter = [&](int)
    {
        mutex.lock();
        entered = true;
        mutex.unlock();
    };
    const Threads waiting(1, enter);
    std::this_thread::sleep_for(30ms);
    EXPECT_FALSE(entered);
    owner.kill();
}

TEST(Fork, AMutexOfTheForkingThreadStaysItsOwn)
{
    ky::kyMutex mutex;
    mutex.lock();
    mutex.lock();
    const auto use = [&]
    {
        if (!mutex.tryLock())
            return 1;
        for (int level = 0; level < 3; ++level)
            mutex.unlock();
        return mutex.tryLock() ? 0 : 2;
    };
    EXPECT_EQ(exitCode(forked(use)), 0);
    mutex.unlock();
    mutex.unlock();
}

TEST(Fork, ANamedMutexIsNotInherited)
{
    const std::string name = unique("inherited");
    kyMutexSystem mutex(name.c_str());
    mutex.lock();
    const auto use = [&]
    {
        mutex.unlock(); // not the child's
        mutex.lock();
        mutex.unlock();
        return 0;
    };
    const pid_t child = forked(use);
    std::this_thread::sleep_for(30ms);
    EXPECT_FALSE(hasEnded(child));
    EXPECT_EQ(ChildProcess("mutex_pass", {unique("other")}).wait(), 0);
    EXPECT_FALSE(hasEnded(child));
    mutex.unlock();
    EXPECT_EQ(exitCode(child), 0);
}

TEST(Fork, AKilledOwnersChildDoesNotKeepTheMutex)
{
    const std::string name = unique("child");
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const auto own = [&]
    {
        kyMutexSystem mutex(name.c_str());
        mutex.lock();
        const pid_t survivor = forked(&pauseForEver);
        return ::write(ready[1], &survivor, sizeof survivor) == sizeof survivor ? pauseForEver() : 1;
    };
    const pid_t owner = forked(own);
    pid_t survivor = 0;
    ASSERT_EQ(::read(ready[0], &survivor, sizeof survivor), static_cast<ssize_t>(sizeof survivor));
    ::kill(owner, SIGKILL);
    exitCode(owner);
    kyMutexSystem mutex(name.c_str());
    mutex.lock();
    mutex.unlock();
    EXPECT_EQ(::kill(survivor, SIGKILL), 0) << "it was alive";
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(Fork, NeverFindsALockThatNobodyWillGiveBack)
{
    const std::string name = unique("busy");
    std::atomic<bool> stop{false};
    const auto lockBoth = [&](const std::string& ownName)
    {
        kyMutexSystem common(name.c_str());
        kyMutexSystem own((name + ownName).c_str());
        common.lock();
        own.lock();
        own.unlock();
        common.unlock();
        return 0;
    };
    const auto goOn = [&](int thread)
    {
        while (!stop)
            lockBoth(std::to_string(thread));
    };
    const Threads threads(3, goOn);
    const int forks = ky::test::isSoak() ? 1000 : 50;
    int stuck = 0;
    for (int round = 0; round < forks; ++round)
        stuck += exitCode(forked([&] { return lockBoth("child"); })) != 0;
    stop = true;
    ky::test::account("fork", {forks, "children that lock"}, {forks, "forks while 3 threads lock"},
                      {stuck, "children stuck"});
}

/// Whether the thread sleeps in the kernel.
bool isAsleep(std::uint32_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text;
    std::getline(file, text);
    return text.find(") S ") != std::string::npos;
}

TEST(EventPair, ABroadcastReachesEveryWaiterWhateverFollows)
{
    const native::Owned<native::EventPair> events(native::createEventPair());
    std::atomic<int> released{0};
    std::atomic<std::uint32_t> ids[3] = {};
    const auto await = [&](int thread)
    {
        ids[thread] = native::currentThreadId();
        if (native::waitEither(*events, native::noTimeLimit) == native::Woken::ByAll)
            ++released;
    };
    Threads threads(3, await);
    for (auto& id : ids)
        EXPECT_TRUE(eventually([&] { return id != 0 && isAsleep(id); }));
    native::signalAll(*events);
    native::resetAll(*events);
    threads.join();
    EXPECT_EQ(released, 3);
    EXPECT_EQ(native::waitEither(*events, 0), native::Woken::TimedOut);
}

} // namespace
