// SPDX-License-Identifier: MIT
#include "process/floor.h"

#include <windows.h>

namespace ky::bench
{

std::string trueProgram() { return "C:/windows/system32/whoami.exe"; }

int runByBareCalls(const std::string& program)
{
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION info = {};
    if (!CreateProcessA(program.c_str(), nullptr, nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &startup,
                        &info))
        return -1;
    WaitForSingleObject(info.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(info.hProcess, &code);
    CloseHandle(info.hThread);
    CloseHandle(info.hProcess);
    return static_cast<int>(code);
}

} // namespace ky::bench
