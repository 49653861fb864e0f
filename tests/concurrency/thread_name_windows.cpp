// SPDX-License-Identifier: MIT
#include "concurrency/thread_support.h"

#include <windows.h>

namespace ky::test
{

std::string systemNameOfThisThread()
{
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*);
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription");
    PWSTR wide = nullptr;
    if (found == nullptr ||
        reinterpret_cast<GetDescription>(reinterpret_cast<void*>(found))(GetCurrentThread(), &wide) < 0)
        return {};
    char name[512] = "";
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, name, sizeof name - 1, nullptr, nullptr);
    LocalFree(wide);
    return name;
}

bool cutsThreadNames() { return false; }

} // namespace ky::test
