// SPDX-License-Identifier: MIT
#include "support/child_process_impl.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace ky::test
{

namespace
{

std::wstring widen(const std::string& text)
{
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), length);
    wide.resize(static_cast<std::size_t>(length - 1));
    return wide;
}

/// Quoting as the C runtime of the child undoes it.
std::wstring quoted(const std::wstring& argument)
{
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument)
    {
        if (c == L'"')
            result.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        result += c;
    }
    result.append(backslashes, L'\\');
    return result + L"\"";
}

HANDLE openOutput(const std::string& path)
{
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    return CreateFileW(widen(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, &inherit, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

ChildProcess::Process::~Process() { CloseHandle(reinterpret_cast<HANDLE>(handle)); }

std::unique_ptr<ChildProcess::Process> ChildProcess::start(const std::string& program,
                                                           const std::vector<std::string>& arguments,
                                                           const std::string& outputFile)
{
    std::wstring line = quoted(widen(program + ".exe"));
    for (const std::string& argument : arguments)
        line += L" " + quoted(widen(argument));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    HANDLE output = INVALID_HANDLE_VALUE;
    if (!outputFile.empty())
    {
        output = openOutput(outputFile);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
    }
    PROCESS_INFORMATION info = {};
    const BOOL ok = CreateProcessW(nullptr, line.data(), nullptr, nullptr, outputFile.empty() ? FALSE : TRUE, 0,
                                   nullptr, nullptr, &startup, &info);
    if (output != INVALID_HANDLE_VALUE)
        CloseHandle(output);
    if (!ok)
    {
        ADD_FAILURE() << "cannot start " << program << ", error " << GetLastError();
        return nullptr;
    }
    CloseHandle(info.hThread);
    auto process = std::make_unique<Process>();
    process->handle = reinterpret_cast<std::intptr_t>(info.hProcess);
    return process;
}

bool ChildProcess::poll(Process& process, int& exitCode)
{
    const HANDLE handle = reinterpret_cast<HANDLE>(process.handle);
    if (!process.ended && WaitForSingleObject(handle, 0) == WAIT_OBJECT_0)
    {
        DWORD code = 0;
        GetExitCodeProcess(handle, &code);
        process.ended = true;
        process.exitCode = static_cast<int>(code);
    }
    exitCode = process.exitCode;
    return process.ended;
}

void ChildProcess::terminate(Process& process)
{
    if (!process.ended)
        TerminateProcess(reinterpret_cast<HANDLE>(process.handle), 0xDEAD);
}

} // namespace ky::test
