// SPDX-License-Identifier: MIT
// Files behind the named mutexes, the folder they live in, and fork().
#include "concurrency/event_pair_native.h"
#include "concurrency/full_library.h"
#include "concurrency/mutex_file_linux.h"
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
#include <vector>

namespace
{

using ky::kyMutexSystem;
using ky::test::ChildProcess;
using ky::test::eventually;
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

TEST(PrivateFolder, IsMadeForItsUserAlone)
{
    const ky::test::TempDir parent;
    const std::string path = parent.file("folder");
    int error = 0;
    for (int round = 0; round < 2; ++round)
    {
        const int folder = native::openPrivateFolderAt(path, error);
        ASSERT_NE(folder, -1) << error;
        struct stat found;
        ASSERT_EQ(::fstat(folder, &found), 0);
        EXPECT_EQ(found.st_mode & 0777u, 0700u);
        ::close(folder);
    }
}

TEST(PrivateFolder, IsRefusedWhenOthersHaveAHandInIt)
{
    const ky::test::TempDir parent;
    int error = 0;
    const std::string open = parent.file("open");
    ::mkdir(open.c_str(), 0700);
    ::chmod(open.c_str(), 0750);
    EXPECT_EQ(native::openPrivateFolderAt(open, error), -1);
    EXPECT_EQ(error, EACCES);
    const std::string link = parent.file("link");
    ::chmod(open.c_str(), 0700);
    ASSERT_EQ(::symlink(open.c_str(), link.c_str()), 0);
    EXPECT_EQ(native::openPrivateFolderAt(link, error), -1);
    EXPECT_TRUE(error == ENOTDIR || error == ELOOP) << error;
    ky::test::writeFile(parent.file("file"), "");
    EXPECT_EQ(native::openPrivateFolderAt(parent.file("file"), error), -1);
    EXPECT_EQ(error, ENOTDIR);
    EXPECT_EQ(native::openPrivateFolderAt(parent.file("missing/folder"), error), -1);
    EXPECT_EQ(error, ENOENT);
    if (::geteuid() == 0)
    {
        ASSERT_EQ(::chown(open.c_str(), 12345, 12345), 0);
        EXPECT_EQ(native::openPrivateFolderAt(open, error), -1);
        EXPECT_EQ(error, EPERM);
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

    const ky::test::TempDir folder;
    ASSERT_EQ(::symlink(folder.file("elsewhere").c_str(), fileOf(name).c_str()), 0);
    int error = 0;
    EXPECT_EQ(native::openMutexFile(native::hashName("Global\\" + name), error), -1);
    EXPECT_EQ(error, ELOOP);
    EXPECT_FALSE(ky::test::exists(folder.file("elsewhere")));
    ::unlink(fileOf(name).c_str());
    ASSERT_EQ(::mkfifo(fileOf(name).c_str(), 0600), 0);
    EXPECT_EQ(native::openMutexFile(native::hashName("Global\\" + name), error), -1);
    EXPECT_EQ(error, EACCES);
    ::unlink(fileOf(name).c_str());
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
    std::thread waiting(
        [&]
        {
            mutex.lock();
            entered = true;
            mutex.unlock();
        });
    std::this_thread::sleep_for(30ms);
    EXPECT_FALSE(entered);
    owner.kill();
    waiting.join();
}

TEST(Fork, AMutexOfTheForkingThreadStaysItsOwn)
{
    ky::kyMutex mutex;
    mutex.lock();
    mutex.lock();
    const pid_t child = forked(
        [&]
        {
            if (!mutex.tryLock())
                return 1;
            for (int level = 0; level < 3; ++level)
                mutex.unlock();
            return mutex.tryLock() ? 0 : 2;
        });
    EXPECT_EQ(exitCode(child), 0);
    mutex.unlock();
    mutex.unlock();
}

TEST(Fork, ANamedMutexIsNotInherited)
{
    const std::string name = unique("inherited");
    kyMutexSystem mutex(name.c_str());
    mutex.lock();
    const pid_t child = forked(
        [&]
        {
            mutex.unlock(); // not the child's
            mutex.lock();
            mutex.unlock();
            return 0;
        });
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
    const pid_t owner = forked(
        [&]
        {
            kyMutexSystem mutex(name.c_str());
            mutex.lock();
            const pid_t survivor = forked(
                []
                {
                    for (;;)
                        ::pause();
                    return 0;
                });
            if (::write(ready[1], &survivor, sizeof survivor) != sizeof survivor)
                return 1;
            for (;;)
                ::pause();
        });
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
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                while (!stop)
                {
                    kyMutexSystem common(name.c_str());
                    kyMutexSystem own((name + std::to_string(i)).c_str());
                    common.lock();
                    own.lock();
                    own.unlock();
                    common.unlock();
                }
            });
    }
    const int forks = ky::test::isSoak() ? 1000 : 50;
    int stuck = 0;
    for (int round = 0; round < forks; ++round)
    {
        const pid_t child = forked(
            [&]
            {
                kyMutexSystem common(name.c_str());
                kyMutexSystem fresh((name + "child").c_str());
                common.lock();
                fresh.lock();
                fresh.unlock();
                common.unlock();
                return 0;
            });
        stuck += exitCode(child) != 0;
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
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
    std::vector<std::thread> threads;
    for (auto& id : ids)
    {
        threads.emplace_back(
            [&]
            {
                id = native::currentThreadId();
                if (native::waitEither(*events, native::noTimeLimit) == native::Woken::ByAll)
                    ++released;
            });
    }
    for (auto& id : ids)
        ASSERT_TRUE(eventually([&] { return id != 0 && isAsleep(id); }));
    native::signalAll(*events);
    native::resetAll(*events);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(released, 3);
    EXPECT_EQ(native::waitEither(*events, 0), native::Woken::TimedOut);
}

} // namespace
