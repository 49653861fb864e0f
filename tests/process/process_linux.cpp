// SPDX-License-Identifier: MIT
#include "support/sanitizer.h"
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>
#include <ky/kyProcess.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "process/child_program.h"

namespace
{

using ky::kyProcess;
using ky::test::amplyMs;
using ky::test::childProgram;
using ky::test::eventually;
using ky::test::isHeld;
using ky::test::TempDir;
using Texts = std::vector<std::string>;

std::string outputOf(const std::string& program, const Texts& arguments, const std::string& folder = {})
{
    std::string output;
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(program, arguments, folder, false, amplyMs, output), 0) << program;
    return output;
}

/// Nothing is left of earlier children, those that nobody waited for included.
bool allChildrenGone()
{
    return eventually([] { return kyProcess().resetState() && ::waitpid(-1, nullptr, WNOHANG | WNOWAIT) == -1; });
}

void writeScript(const std::string& path, const std::string& content, mode_t mode = 0755)
{
    ky::test::writeFile(path, content);
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
}

int runs(const std::string& program, const Texts& arguments = {}, const std::string& folder = {})
{
    return kyProcess::ExecUtf8(program, arguments, folder, false, amplyMs, nullptr);
}

TEST(ProcessLinux, FilesThatAreRunAndFilesThatAreNot)
{
    const TempDir dir;
    const std::string script = dir.file("plain \"$(touch x)\".sh");
    writeScript(script, "printf '%s|' \"$@\"\nexit 0\n");
    EXPECT_EQ(outputOf(script, {"a b", "$(touch y)", "-c", "touch z"}, dir.path()), "a b|$(touch y)|-c|touch z|");
    for (const char* const name : {"x", "y", "z"})
        EXPECT_FALSE(ky::test::exists(dir.file(name)));
    writeScript(dir.file("with"), "#!/bin/sh\nexit 9\n");
    EXPECT_EQ(runs(dir.file("with")), 9);
    EXPECT_EQ(runs("./with", {}, "/"), -1) << "relative to the caller, not to the folder of the child";
    writeScript(dir.file("locked"), "#!/bin/sh\nexit 0\n", 0644);
    EXPECT_EQ(runs(dir.file("locked")), -1);
    writeScript(dir.file("binary"), std::string("\x7F\x45LF\0garbage", 12));
    EXPECT_EQ(runs(dir.file("binary")), -1);
    EXPECT_EQ(runs(dir.path()), -1);
    writeScript(dir.file("nobody"), "#!/no/such/interpreter\n");
    EXPECT_EQ(runs(dir.file("nobody")), -1);
}

TEST(ProcessLinux, NamesAreLookedUpInThePathAlone)
{
    const TempDir dir;
    writeScript(dir.file("ky_planted"), "#!/bin/sh\nexit 7\n");
    writeScript(dir.file("true"), "#!/bin/sh\nexit 7\n");
    const std::string before = ky::kyDirUtils::GetCurrentWorkingDirUtf8();
    const std::string path = std::getenv("PATH");
    ASSERT_TRUE(ky::kyDirUtils::SetCurrentWorkingDirUtf8(dir.path()));
    for (const char* const prefix : {":", ".:", "./:", "::"})
    {
        ::setenv("PATH", (std::string(prefix) + path).c_str(), 1);
        EXPECT_EQ(runs("ky_planted"), -1) << prefix;
        EXPECT_EQ(runs("true"), 0) << prefix;
    }
    EXPECT_EQ(runs("./ky_planted"), 7);
    EXPECT_EQ(runs(".\\ky_planted"), 7);
    EXPECT_EQ(kyProcess::ExecUtf8("ky_planted", {}, "/", true, amplyMs), 7) << "resolved on demand";
    ::setenv("PATH", ("/nowhere:" + dir.path()).c_str(), 1);
    EXPECT_EQ(runs("ky_planted"), 7);
    ::setenv("PATH", path.c_str(), 1);
    ky::kyDirUtils::SetCurrentWorkingDirUtf8(before);
}

TEST(ProcessLinux, OfTheDescriptorsTheChildHasItsStreamsAlone)
{
    const int open = ::open("/dev/null", O_RDONLY); // not closed on exec
    const std::string listed = "0\n1\n2\n3\n";      // the last is that of the list itself
    EXPECT_EQ(outputOf("ls", {"/proc/self/fd"}), listed);
    const TempDir dir;
    EXPECT_EQ(runs("/bin/sh", {"-c", "exec ls /proc/self/fd > '" + dir.file("fds") + "'"}), 0);
    EXPECT_EQ(ky::test::readFile(dir.file("fds")), listed);
    const std::string shown = "readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2 > '" + dir.file("links") + "'";
    EXPECT_TRUE(kyProcess::StartDetachedUtf8("/bin/sh", {"-c", shown + "; echo end >> '" + dir.file("links") + "'"}, "",
                                             false));
    EXPECT_TRUE(eventually([&] { return ky::test::readFile(dir.file("links")).find("end") != std::string::npos; }));
    EXPECT_THAT(ky::test::readFile(dir.file("links")), testing::StartsWith("/dev/null\n"));
    ::close(open);
}

TEST(ProcessLinux, AMissingStreamIsNotTakenByTheFirstFile)
{
    const TempDir dir;
    const int input = ::fcntl(0, F_DUPFD_CLOEXEC, 3);
    ::close(0);
    std::string output;
    kyProcess process;
    process.setOutputHandler([&](kyProcess::OutputChannel, std::string_view bytes) { output += bytes; });
    EXPECT_TRUE(process.startProcess("/bin/sh", {"-c", "readlink /proc/$$/fd/0; echo out; echo err >&2"}, false));
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_THAT(output, testing::AllOf(testing::HasSubstr("/dev/null\n"), testing::HasSubstr("out\n"),
                                       testing::HasSubstr("err\n")));
    ::dup2(input, 0);
    ::close(input);
}

TEST(ProcessLinux, EndsBySignals)
{
    EXPECT_EQ(runs("/bin/sh", {"-c", "kill -SEGV $$"}), 128 + SIGSEGV);
    EXPECT_EQ(runs("/bin/sh", {"-c", "kill -KILL $$"}), 128 + SIGKILL) << "by somebody else";
    const TempDir dir;
    for (const bool ignores : {false, true})
    {
        const std::string lock = dir.file(ignores ? "a" : "b");
        kyProcess process;
        ASSERT_TRUE(process.startProcess(
            childProgram(), ignores ? Texts{"process_hold", lock, "ignore"} : Texts{"process_hold", lock}, false));
        EXPECT_TRUE(eventually([&] { return isHeld(lock); }));
        process.terminateProcess();
        EXPECT_EQ(process.waitForFinished(ignores ? 100 : amplyMs), !ignores);
        process.killProcess();
        EXPECT_TRUE(process.waitForFinished(amplyMs));
        EXPECT_EQ(process.exitCode(), ignores ? 65535 : 128 + SIGTERM);
    }
    kyProcess ended;
    ASSERT_TRUE(ended.startProcess("/bin/sh", {"-c", "exit 4"}, false));
    ::sleep(1);
    ended.killProcess();
    EXPECT_TRUE(ended.waitForFinished(amplyMs));
    EXPECT_EQ(ended.exitCode(), 4) << "it was dead already";
}

TEST(ProcessLinux, TheChildStartsWithItsSignalsAtDefault)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    const auto pipe = std::signal(SIGPIPE, SIG_IGN);
    const auto hangUp = std::signal(SIGHUP, SIG_IGN);
    EXPECT_EQ(runs("/bin/sh", {"-c", "kill -TERM $$"}), 128 + SIGTERM);
    EXPECT_EQ(runs("/bin/sh", {"-c", "kill -PIPE $$"}), 128 + SIGPIPE);
    EXPECT_EQ(runs("/bin/sh", {"-c", "kill -HUP $$"}), 0) << "that of the terminal stays as it is";
    std::signal(SIGPIPE, pipe);
    std::signal(SIGHUP, hangUp);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(ProcessLinux, OtherChildrenAreLeftToTheApplication)
{
    const char* arguments[] = {"sh", "-c", "exit 6", nullptr};
    pid_t other = 0;
    ASSERT_EQ(::posix_spawn(&other, "/bin/sh", nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(runs("/bin/true"), 0);
    int status = 0;
    EXPECT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(WEXITSTATUS(status), 6);
    // And those that were left to themselves are gone after a query.
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(kyProcess::StartDetachedUtf8("/bin/true", {}, "", false));
    EXPECT_TRUE(allChildrenGone());
}

TEST(ProcessLinux, AnApplicationThatReapsEverythingHangsNothing)
{
    // An application that ignores the signal has the kernel wait for its children.
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_THAT(runs("/bin/sh", {"-c", "exit 3"}), testing::AnyOf(3, -1));
    EXPECT_THAT(runs("/bin/sh", {"-c", "trap : CHLD; /bin/true; exit $?"}), testing::AnyOf(0, -1));
    kyProcess process;
    ASSERT_TRUE(process.startProcess("/bin/sh", {"-c", "sleep 0.2; exit 5"}, false));
    EXPECT_FALSE(process.waitForFinished(10));
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_THAT(process.exitCode(), testing::AnyOf(5, -1));
    EXPECT_TRUE(kyProcess::StartDetachedUtf8("/bin/true", {}, "", false));
    std::signal(SIGCHLD, before);

    ASSERT_TRUE(process.startProcess("/bin/sh", {"-c", "exit 8"}, false));
    EXPECT_EQ(::waitpid(static_cast<pid_t>(process.getPid()), nullptr, 0), process.getPid());
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_THAT(process.exitCode(), testing::AnyOf(8, -1));
}

TEST(ProcessLinux, PrioritiesAreNiceValues)
{
    const int own = ::getpriority(PRIO_PROCESS, 0);
    const struct
    {
        kyProcess::ProcessPriority priority;
        int nice;
    } cases[] = {{kyProcess::Inherit, own},
                 {kyProcess::Normal, ::geteuid() == 0 ? 0 : std::max(own, 0)},
                 {kyProcess::Low, std::max(own, 10)},
                 {static_cast<kyProcess::ProcessPriority>(4), own}};
    const TempDir dir;
    for (const auto& row : cases)
    {
        kyProcess process;
        ASSERT_TRUE(process.startProcess("/bin/sleep", {"60"}, false, row.priority));
        EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(process.getPid())), row.nice);
        process.killProcess();
        process.waitForFinished(amplyMs);
    }
}

TEST(ProcessLinux, WhatIsDetachedHasASessionOfItsOwn)
{
    const TempDir dir;
    const std::string file = dir.file("ids");
    const std::string command =
        "set -- $(cat /proc/$$/stat); echo $1 $6 > '" + file + ".new'; mv '" + file + ".new' '" + file + "'";
    EXPECT_TRUE(kyProcess::StartDetachedUtf8("/bin/sh", {"-c", command}, "", false));
    EXPECT_TRUE(eventually([&] { return ky::test::exists(file); }));
    int id = 0;
    int session = 0;
    std::ifstream(file) >> id >> session;
    EXPECT_GT(id, 1);
    EXPECT_EQ(session, id);
}

TEST(ProcessLinux, AForkedWorkerDoesNotKeepTheInputOpen)
{
    const TempDir dir;
    const std::string gate = dir.file("gate");
    kyProcess process;
    process.setInput(std::string(std::size_t{1} << 20, 'x')); // more than a pipe holds: not all sent at once
    ASSERT_TRUE(process.startProcess(
        "/bin/sh", {"-c", "while [ ! -e '" + gate + "' ]; do sleep 0.01; done; cat > '" + dir.file("got") + "'"},
        false));
    const pid_t worker = ::fork();
    if (worker == 0)
    {
        for (;;)
            ::pause();
    }
    ky::test::writeFile(gate, "");
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(ky::test::readFile(dir.file("got")).size(), std::size_t{1} << 20);
    ::kill(worker, SIGKILL);
    ::waitpid(worker, nullptr, 0);
}

TEST(ProcessLinux, StartsThatFailAtAnyStepLeaveNothingOpen)
{
    if (!ky::test::canRunOutOfDescriptors)
        GTEST_SKIP() << "the sanitizer needs descriptors of its own";
    const auto count = []
    {
        int open = 0;
        for (int i = 0; i < 256; ++i)
            open += ::fcntl(i, F_GETFD) >= 0 ? 1 : 0;
        return open;
    };
    EXPECT_TRUE(allChildrenGone());
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int open = count();
    const int firstFree = ::fcntl(0, F_DUPFD_CLOEXEC, 0);
    ::close(firstFree);
    int failed = 0;
    for (int spare = 0; spare < 9; ++spare)
    {
        const rlimit tight = {static_cast<rlim_t>(firstFree + spare), before.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
        {
            kyProcess process;
            process.setInput("x");
            process.setOutputHandler([](kyProcess::OutputChannel, std::string_view) {});
            const bool started = process.startProcess("/bin/true", {}, false);
            failed += started ? 0 : 1;
            EXPECT_EQ(process.waitForFinished(amplyMs), true);
            EXPECT_EQ(process.hasFailedToStart(), !started);
        }
        EXPECT_EQ(count(), open) << spare;
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_GE(failed, 5);
    EXPECT_LT(failed, 9) << "a process that cannot have a descriptor is known by its number";
    EXPECT_TRUE(allChildrenGone());
}

} // namespace
