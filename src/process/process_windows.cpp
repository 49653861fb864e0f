// SPDX-License-Identifier: MIT
#include "process/process_windows.h"

namespace ky::impl::native
{

namespace
{

struct WindowSearch
{
    DWORD processId;
};

BOOL CALLBACK closeWindowOf(HWND window, LPARAM parameter)
{
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == reinterpret_cast<const WindowSearch*>(parameter)->processId)
        PostMessageA(window, WM_CLOSE, 0, 0);
    return TRUE;
}

void closeAndForget(std::intptr_t& handle) noexcept
{
    if (handle != noHandle)
        CloseHandle(asHandle(handle));
    handle = noHandle;
}

} // namespace

bool hasEnded(Process& process, int& exitCode) noexcept
{
    DWORD code = 0;
    if (!GetExitCodeProcess(asHandle(process.handle), &code))
        return false;
    // A process may end with this very code, or between the two calls with another one.
    if (code == STILL_ACTIVE && (WaitForSingleObject(asHandle(process.handle), 0) != WAIT_OBJECT_0 ||
                                 !GetExitCodeProcess(asHandle(process.handle), &code)))
        return false;
    exitCode = static_cast<int>(code);
    return true;
}

void waitForEnd(const Process& process, unsigned int limitMs) noexcept
{
    // A handle that may not be waited for leaves the plain wait.
    if (WaitForSingleObject(asHandle(process.handle), limitMs) == WAIT_FAILED)
        Sleep(limitMs);
}

void askToClose(const Process& process) noexcept
{
    WindowSearch search = {process.id};
    EnumWindows(&closeWindowOf, reinterpret_cast<LPARAM>(&search));
    PostThreadMessageA(process.mainThreadId, WM_CLOSE, 0, 0);
}

void killProcess(Process& process) noexcept { TerminateProcess(asHandle(process.handle), killedExitCode); }

bool killTree(Process& process) noexcept { return TerminateJobObject(asHandle(process.tree), killedExitCode) != FALSE; }

void releaseHandle(Process& process) noexcept
{
    closeAndForget(process.handle);
    process.id = 0;
    process.mainThreadId = 0;
}

void releaseTree(Process& process) noexcept { closeAndForget(process.tree); }

void collectEnded() noexcept {}

} // namespace ky::impl::native
