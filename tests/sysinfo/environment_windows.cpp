// SPDX-License-Identifier: MIT
#include "environment.h"

#include <windows.h>

namespace ky::test
{

std::string environmentText(const char* name)
{
    char text[64] = {};
    const DWORD length = GetEnvironmentVariableA(name, text, sizeof(text));
    return std::string(text, length < sizeof(text) ? length : 0);
}

void setEnvironmentText(const char* name, const char* text) { SetEnvironmentVariableA(name, text); }

void removeEnvironmentText(const char* name) { SetEnvironmentVariableA(name, nullptr); }

unsigned processorsForThisProcess()
{
    SYSTEM_INFO info = {};
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors;
}

} // namespace ky::test
