// SPDX-License-Identifier: MIT
// The tool under Ctrl+Break, which reaches a process group of its own as Ctrl+C reaches all of a console.
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

namespace
{

std::wstring widen(const std::string& text)
{
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                                             wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

struct RunningTool
{
    explicit RunningTool(const std::string& arguments)
    {
        HANDLE childIn = nullptr;
        HANDLE childOut = nullptr;
        SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
        EXPECT_TRUE(CreatePipe(&childIn, &in, &inherit, 0) && CreatePipe(&out, &childOut, &inherit, 0));
        SetHandleInformation(in, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(out, HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = childIn;
        startup.hStdOutput = childOut;
        startup.hStdError = childOut;
        std::wstring line = widen("\"" + ky::test::binFolder() + "/ky.exe\" " + arguments);
        EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP, nullptr,
                                   nullptr, &startup, &info));
        CloseHandle(childIn);
        CloseHandle(childOut);
    }

    ~RunningTool()
    {
        TerminateProcess(info.hProcess, 0xDEAD);
        for (const HANDLE handle : {in, out, info.hThread, info.hProcess})
            CloseHandle(handle);
    }

    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    void send(const std::string& bytes) const
    {
        DWORD written = 0;
        WriteFile(in, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    }

    bool hasEnded(DWORD& exitCode) const
    {
        return WaitForSingleObject(info.hProcess, 0) == WAIT_OBJECT_0 && GetExitCodeProcess(info.hProcess, &exitCode);
    }

    std::string readAll() const
    {
        std::string text;
        char block[4096];
        for (DWORD got = 0; ReadFile(out, block, sizeof block, &got, nullptr) && got != 0;)
            text.append(block, got);
        return text;
    }

    HANDLE in = nullptr;
    HANDLE out = nullptr;
    PROCESS_INFORMATION info = {};
};

TEST(ToolInterrupted, StopsWaitingForLogLines)
{
    const ky::test::TempDir dir;
    const std::string file = dir.file("a.log");
    const RunningTool tool("log \"" + file + "\" --stdin");
    tool.send("one\n");
    ASSERT_TRUE(ky::test::eventually(
        [&] { return ky::test::exists(file) && ky::test::readFile(file).find("one\r\n") != std::string::npos; }));
    if (!GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, tool.info.dwProcessId))
        GTEST_SKIP() << "no console that passes events on, error " << GetLastError();
    // The event is handled beside the reading of a pipe, which goes on: lines until it is seen.
    DWORD exitCode = 0;
    EXPECT_TRUE(ky::test::eventually(
        [&]
        {
            tool.send("more\n");
            return tool.hasEnded(exitCode);
        }));
    EXPECT_EQ(exitCode, 1U);
    EXPECT_THAT(tool.readAll(), testing::HasSubstr("a.log: cancelled"));
    EXPECT_EQ(ky::test::readFile(file).back(), '\n');
}

} // namespace
