// SPDX-License-Identifier: MIT
#include "support/process_state.h"
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>
#include <ky/kyLog.h>
#include <ky/kyProcess.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "process/child_program.h"

namespace
{

using ky::kyProcess;
using ky::test::amplyMs;
using ky::test::childProgram;
using ky::test::eventually;
using ky::test::isHeld;
using ky::test::TempDir;
using testing::HasSubstr;
using testing::StartsWith;

bool startHolding(kyProcess& process, const std::string& lock)
{
    return process.startProcess(childProgram(), {"process_hold", lock}, true, kyProcess::Inherit) &&
           eventually([&] { return isHeld(lock); });
}

/// The messages of a scope, all types included.
class Messages
{
public:
    Messages()
    {
        ky::initializeKySystem(ky::InitType::Light, false);
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().setLogTypeEnabled(ky::kyLogType::DEBUG, true);
        ky::kyLog::edit().installCustomHandler(&collect, this);
    }
    ~Messages() { ky::terminateKySystem(); }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    std::vector<std::pair<ky::kyLogType, std::string>> all;

private:
    static void collect(const std::string& message, ky::kyLogType type, const std::string&, void* self)
    {
        static_cast<Messages*>(self)->all.emplace_back(type, message);
    }
};

TEST(Process, OutcomesOfAnExecution)
{
    const TempDir dir;
    const std::string lock = dir.file("lock");
    const struct
    {
        std::vector<std::string> arguments;
        unsigned int timeoutMs;
        int result;
        const char* error;
    } cases[] = {
        {{"process_end", "0"}, amplyMs, 0, "untouched"},
        {{"process_end", "0"}, 0xFFFFFFFF, 0, "untouched"},
        {{"process_end", "3"}, amplyMs, 3, "process return an error"},
        {{"process_end", "3"}, 0xFFFFFFFE, 3, "process return an error"},
        {{"process_hold", lock}, 200, -2, "timeout"},
        {{"process_hold", lock}, 0, -2, "timeout"},
    };
    for (const auto& row : cases)
    {
        std::string error = "untouched";
        EXPECT_EQ(kyProcess::ExecUtf8(childProgram(), row.arguments, "", true, row.timeoutMs, &error), row.result);
        EXPECT_EQ(error, row.error);
        EXPECT_TRUE(eventually([&] { return !isHeld(lock); })) << "the program is gone";
    }
    EXPECT_EQ(kyProcess::ExecUtf8(childProgram(), {"process_end", "4"}, dir.path(), true, amplyMs, nullptr), 4);
}

TEST(Process, AProgramThatCannotStartIsReported)
{
    const Messages messages;
    const TempDir dir;
    ky::test::makeFolder(dir.file("folder.exe"));
    ky::test::writeFile(dir.file("text.exe"), "no program");
    const std::string bad[] = {dir.file("missing.exe"), dir.file("folder.exe"), dir.file("text.exe"), "",
                               childProgram() + std::string(1, '\0')};
    for (const std::string& program : bad)
    {
        const std::size_t before = messages.all.size();
        std::string error;
        EXPECT_EQ(kyProcess::ExecUtf8(program, {}, "", false, amplyMs, &error), -1) << program;
        EXPECT_EQ(error, "Fail to start process");
        ASSERT_EQ(messages.all.size(), before + 1) << program;
        EXPECT_EQ(messages.all.back().first, ky::kyLogType::DEBUG);
        EXPECT_THAT(messages.all.back().second, StartsWith("CreateProcessW return an error "));
        EXPECT_FALSE(kyProcess::StartDetachedUtf8(program, {}, "", false));
    }
    EXPECT_EQ(kyProcess::ExecUtf8(bad[4], {}, "", true, amplyMs), -1) << "the path before the NUL is another one";
    EXPECT_EQ(kyProcess::ExecUtf8(childProgram(), {"process_end", std::string("0\0", 2)}, "", true, amplyMs), -1);
    for (const std::string& folder : {dir.file("no folder"), dir.path() + '\0', dir.path() + '\0' + "rest"})
        EXPECT_EQ(kyProcess::ExecUtf8(childProgram(), {"process_end", "0"}, folder, true, amplyMs), -1);
}

TEST(Process, StatesAndWhatMayBeChangedInThem)
{
    const TempDir dir;
    kyProcess process;
    EXPECT_EQ(process.getState(), kyProcess::NotRunning);
    EXPECT_TRUE(process.hasFailedToStart());
    EXPECT_TRUE(process.waitForFinished(0));
    process.killProcess();
    process.terminateProcess();

    ASSERT_TRUE(startHolding(process, dir.file("lock")));
    EXPECT_EQ(process.getState(), kyProcess::Running);
    EXPECT_FALSE(process.hasFailedToStart());
    EXPECT_GT(process.getPid(), 0);
    EXPECT_FALSE(process.waitForFinished(0));
    EXPECT_FALSE(process.waitForFinished(150));
    EXPECT_FALSE(process.startProcess(childProgram(), {"process_end", "0"}, true, kyProcess::Inherit));
    EXPECT_FALSE(process.resetState());
    EXPECT_FALSE(process.setWorkingDirectory(dir.path()));
    EXPECT_FALSE(process.setProcessEnvironmentUtf8({"A=1"}));
    EXPECT_FALSE(process.killProcessTree()) << "not started as a tree";
    EXPECT_EQ(process.getArgumentsUtf8(), (std::vector<std::string>{"process_hold", dir.file("lock")}));
    EXPECT_GT(process.getCurrentRamInUse(), 1000U);

    process.killProcess();
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(process.getState(), kyProcess::Finished);
    EXPECT_EQ(process.exitCode(), 65535);
    EXPECT_FALSE(process.hasCrashed());
    EXPECT_EQ(process.getPid(), 0);
    EXPECT_EQ(process.getCurrentRamInUse(), 0U);
    process.killProcess();
    process.terminateProcess();

    EXPECT_TRUE(process.resetState());
    EXPECT_EQ(process.getState(), kyProcess::NotRunning);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(process.hasFailedToStart());

    EXPECT_TRUE(process.setWorkingDirectory(dir.path()));
    EXPECT_TRUE(process.startProcess(childProgram(), {"process_end", "7"}, true, kyProcess::Low));
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(process.exitCode(), 7);
    EXPECT_FALSE(process.startProcess(dir.file("missing.exe"), {}, false, kyProcess::Inherit));
    EXPECT_EQ(process.getState(), kyProcess::Finished);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(process.hasFailedToStart());
    EXPECT_EQ(process.getProgramUtf8(), dir.file("missing.exe"));

    process.clearProcess();
    EXPECT_EQ(process.getState(), kyProcess::NotRunning);
    EXPECT_EQ(process.getProgramUtf8() + process.getWorkingDirectoryUtf8(), "");
    EXPECT_TRUE(process.getArgumentsUtf8().empty());
}

TEST(Process, ExitCodesThatLookLikeStates)
{
    // 259 is what Windows tells of a process that still runs; Linux passes eight bits on.
    for (const int code : {259, 255, 1, 128, -1})
    {
        kyProcess process;
        ASSERT_TRUE(process.startProcess(childProgram(), {"process_end", std::to_string(code)}, true, kyProcess::High));
        EXPECT_TRUE(process.waitForFinished(amplyMs)) << code;
        EXPECT_THAT(process.exitCode(), testing::AnyOf(code, code & 0xFF));
    }
}

TEST(Process, FolderAndEnvironment)
{
    const TempDir dir;
    const std::string shown = ky::kyDirUtils::GetAbsolutePathUtf8(dir.path());
    std::string output;
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_surroundings", "PATH"}, dir.path(), true, amplyMs,
                                          output),
              0);
    std::replace(output.begin(), output.end(), '\\', '/');
    EXPECT_THAT(output, StartsWith(shown + "|PATH=")) << "the environment of the caller";

    std::vector<std::string> environment = kyProcess::CurrentEnvironmentUtf8();
    environment.push_back("KY_TEST=gr\xC3\xBC\xC3\x9F=\xE6\x97\xA5 \"");
    environment.push_back("");
    environment.push_back("KY_LAST=1");
    std::string text;
    kyProcess process;
    process.setOutputHandler([&](kyProcess::OutputChannel, std::string_view bytes) { text += bytes; });
    for (const char* const name : {"KY_TEST", "KY_LAST"})
    {
        EXPECT_TRUE(process.setProcessEnvironmentUtf8(environment));
        ASSERT_TRUE(process.startProcess(childProgram(), {"process_surroundings", name}, true, kyProcess::Inherit));
        EXPECT_TRUE(process.waitForFinished(amplyMs));
    }
    EXPECT_THAT(text, HasSubstr("|KY_TEST=gr\xC3\xBC\xC3\x9F=\xE6\x97\xA5 \""));
    EXPECT_THAT(text, HasSubstr("|KY_LAST=1"));
    std::vector<std::string> same;
    process.getProcessEnvironmentUtf8(same);
    EXPECT_EQ(same, environment);
}

TEST(Process, TheCallerAndItsParent)
{
    kyProcess self;
    ASSERT_TRUE(kyProcess::GetCurrentProcess(self));
    EXPECT_EQ(self.getState(), kyProcess::Running);
    EXPECT_EQ(self.getProgramUtf8(), ky::kySystemUtils::GetProgramFullPath());
    EXPECT_GT(self.getCurrentRamInUse(), 1000U);
    EXPECT_FALSE(self.hasFailedToStart());
    EXPECT_FALSE(self.waitForFinished(0xFFFFFFFF)) << "at once";
    self.terminateProcess();
    self.killProcess();
    EXPECT_FALSE(self.startProcess(childProgram(), {}, true, kyProcess::Inherit));

    std::string output;
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_parent"}, "", true, amplyMs, output), 0);
    EXPECT_EQ(output, self.getProgramUtf8() + "|" + std::to_string(self.getPid()));
}

TEST(Process, WhatIsDetachedGoesOn)
{
    const TempDir dir;
    // A hundred megabytes that nobody reads do not hold it up. (A console that nobody sees is too slow for that.)
    const bool hasConsole = ky::test::exists(childProgram() + ".exe");
    const std::string size = hasConsole ? "0" : "50";
    const std::string program = childProgram() + (hasConsole ? ".exe" : "");
    EXPECT_TRUE(kyProcess::StartDetachedUtf8(program, {"process_write", size, "a"}, dir.path(), true));
    EXPECT_TRUE(kyProcess::StartDetachedUtf8("\"" + program + "\" process_write 0 \"" + dir.file("b c") + "\""));
    for (const char* const name : {"a", "b c"})
        EXPECT_TRUE(eventually([&] { return ky::test::exists(dir.file(name)); })) << name;
    EXPECT_FALSE(kyProcess::StartDetachedUtf8(" \t"));
    EXPECT_FALSE(kyProcess::StartDetachedUtf8("\"\" a"));
}

TEST(Process, ManyStartsLeaveNothingBehind)
{
    const Messages messages;
    const TempDir dir;
    const auto startSome = [&](int count)
    {
        for (int i = 0; i < count; ++i)
        {
            kyProcess process;
            const bool streams = i % 4 == 1;
            process.setOwnTree(i % 4 == 2);
            if (streams)
            {
                process.setInput("some");
                process.setOutputHandler([](kyProcess::OutputChannel, std::string_view) {});
            }
            ASSERT_TRUE(process.startProcess(childProgram(), {"process_end", "5"}, true, kyProcess::Inherit));
            // Every third is left to itself.
            if (i % 3 != 0)
            {
                EXPECT_TRUE(process.waitForFinished(amplyMs));
                EXPECT_EQ(process.exitCode(), 5);
            }
            EXPECT_FALSE(kyProcess().startProcess(dir.file("none.exe"), {}, false, kyProcess::Inherit));
        }
    };
    const auto handles = [] { return ky::test::processState().handles; };
    startSome(6);
    const std::size_t before = handles();
    // Those left to themselves are collected by any later query once they have ended.
    const int children = ky::test::isSoak() ? 10000 : 40;
    startSome(children);
    EXPECT_TRUE(eventually([&] { return kyProcess().resetState() && handles() <= before; }))
        << before << " handles before, " << handles() << " after";
    ky::test::account("processes", {children, "children one after the other"}, {children, "starts that fail"},
                      {std::max(handles(), before) - before, "descriptors left open"});
}

TEST(Process, ManyAtOnceEndAsTheyShould)
{
    const int rounds = ky::test::isSoak() ? 32 : 1;
    std::size_t started = 0;
    int lost = 0;
    for (int round = 0; round < rounds; ++round)
    {
        std::vector<kyProcess> children(ky::test::isSoak() ? 64 : 16);
        for (std::size_t i = 0; i < children.size(); ++i)
        {
            ASSERT_TRUE(
                children[i].startProcess(childProgram(), {"process_end", std::to_string(i)}, true, kyProcess::Inherit));
        }
        for (std::size_t i = 0; i < children.size(); ++i)
            lost += !children[i].waitForFinished(amplyMs) || children[i].exitCode() != static_cast<int>(i);
        started += children.size();
    }
    ky::test::account("processes", {started, "children at once"}, {}, {lost, "exit codes"});
}

TEST(Process, ObjectsOfDifferentThreadsAreIndependent)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            [i]
            {
                for (int round = 0; round < 10; ++round)
                {
                    kyProcess left;
                    EXPECT_TRUE(left.startProcess(childProgram(), {"process_end", "0"}, true, kyProcess::Inherit));
                    EXPECT_EQ(
                        kyProcess::ExecUtf8(childProgram(), {"process_end", std::to_string(i)}, "", true, amplyMs), i);
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Process, PrioritiesHaveNames)
{
    const char* const names[] = {"Low", "Normal", "High", "Inherit", "Unknown", "Unknown"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(kyProcess::ProcessPriorityToString(static_cast<kyProcess::ProcessPriority>(i)), names[i]);
    EXPECT_EQ(kyProcess::ProcessPriorityToString(static_cast<kyProcess::ProcessPriority>(7)), "Unknown");
    EXPECT_EQ(kyProcess::ProcessPriorityToString(static_cast<kyProcess::ProcessPriority>(-1)), "Unknown");
}

} // namespace
