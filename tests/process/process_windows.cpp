// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyProcess.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "process/child_program.h"

namespace
{

using ky::kyProcess;
using ky::test::amplyMs;
using ky::test::childProgram;
using ky::test::eventually;
using ky::test::TempDir;

TEST(ProcessWindows, BatchFilesRunThroughTheInterpreter)
{
    const TempDir dir;
    const std::string batch = dir.file("run it.bat");
    ky::test::writeFile(batch, "@echo off\r\necho got>\"%~dp0mark\"\r\nexit /b 5\r\n");
    EXPECT_EQ(kyProcess::ExecUtf8(batch, {"a b", "c&d"}, "", true, amplyMs), 5);
    EXPECT_TRUE(ky::test::exists(dir.file("mark")));
}

TEST(ProcessWindows, NoArgumentMakesTheInterpreterRunSomethingElse)
{
    const TempDir dir;
    const std::string batch = dir.file("run.bat");
    ky::test::writeFile(batch, "@echo off\r\nexit /b 0\r\n");
    const std::string command = "echo x>" + dir.file("mark");
    const std::string refused[] = {"\"&" + command,
                                   "%CMDCMDLINE:~-1%&" + command,
                                   "a\" & " + command + " & \"",
                                   "a\r\n" + command,
                                   "a\n" + command,
                                   "%PATH%",
                                   "\\\"&" + command + "&"};
    for (const std::string& attack : refused)
    {
        std::string error;
        EXPECT_EQ(kyProcess::ExecUtf8(batch, {attack}, dir.path(), true, amplyMs, &error), -1) << attack;
        EXPECT_EQ(kyProcess::ExecUtf8(batch + ". .", {attack}, dir.path(), false, amplyMs, &error), -1) << attack;
    }
    const std::string carried[] = {"&" + command, "|" + command,         "^&" + command,
                                   "!PATH!",      "& " + command + " &", "(x)\\"};
    for (const std::string& attack : carried)
        EXPECT_EQ(kyProcess::ExecUtf8(batch, {attack}, dir.path(), true, amplyMs), 0) << attack;
    EXPECT_FALSE(ky::test::exists(dir.file("mark")));
}

TEST(ProcessWindows, NoHandleIsInherited)
{
    HANDLE ours = nullptr;
    HANDLE theirs = nullptr;
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    ASSERT_TRUE(CreatePipe(&ours, &theirs, &inherit, 0));
    const TempDir dir;
    kyProcess plain;
    kyProcess captured;
    captured.setOutputHandler([](kyProcess::OutputChannel, std::string_view) {});
    ASSERT_TRUE(plain.startProcess(childProgram(), {"process_hold", dir.file("a")}, true));
    ASSERT_TRUE(captured.startProcess(childProgram(), {"process_hold", dir.file("b")}, true));
    EXPECT_TRUE(eventually([&] { return ky::test::isHeld(dir.file("a")) && ky::test::isHeld(dir.file("b")); }));
    CloseHandle(theirs);
    // The last writer is gone although both children live.
    char byte = 0;
    DWORD got = 0;
    EXPECT_FALSE(ReadFile(ours, &byte, 1, &got, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
    CloseHandle(ours);
    for (kyProcess* const process : {&plain, &captured})
    {
        process->killProcess();
        EXPECT_TRUE(process->waitForFinished(amplyMs));
    }
}

TEST(ProcessWindows, PrioritiesAreClasses)
{
    if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr)
        GTEST_SKIP() << "this system starts every process with the normal class";
    const TempDir dir;
    const struct
    {
        kyProcess::ProcessPriority priority;
        DWORD priorityClass;
    } cases[] = {{kyProcess::Low, BELOW_NORMAL_PRIORITY_CLASS},
                 {kyProcess::Normal, NORMAL_PRIORITY_CLASS},
                 {kyProcess::High, ABOVE_NORMAL_PRIORITY_CLASS},
                 {kyProcess::Inherit, GetPriorityClass(GetCurrentProcess())}};
    for (const auto& row : cases)
    {
        kyProcess process;
        ASSERT_TRUE(process.startProcess(childProgram(), {"process_hold", dir.file("lock")}, true, row.priority));
        const HANDLE handle = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, static_cast<DWORD>(process.getPid()));
        EXPECT_EQ(GetPriorityClass(handle), row.priorityClass);
        CloseHandle(handle);
        process.killProcess();
        EXPECT_TRUE(process.waitForFinished(amplyMs));
    }
}

} // namespace
