// SPDX-License-Identifier: MIT
#include "support/process_state.h"

#include "support/child_process.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <csignal>
#include <initializer_list>

namespace ky::test
{

namespace
{

std::size_t countThreads()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != FALSE; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
    CloseHandle(snapshot);
    return count;
}

std::size_t usedHeap()
{
    const HANDLE heap = GetProcessHeap();
    PROCESS_HEAP_ENTRY entry = {};
    std::size_t bytes = 0;
    HeapLock(heap);
    while (HeapWalk(heap, &entry) != FALSE)
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    HeapUnlock(heap);
    return bytes;
}

} // namespace

ProcessState processState()
{
    ProcessState state;
    const int signals[] = {SIGFPE, SIGILL, SIGSEGV};
    for (int i = 0; i < 3; ++i)
    {
        // Only setting one tells what it was.
        state.dispositions[i] = std::signal(signals[i], SIG_DFL);
        std::signal(signals[i], state.dispositions[i]);
    }
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    state.threads = countThreads();
    state.handles = handles;
    state.heapBytes = usedHeap();
    PROCESS_MEMORY_COUNTERS counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    state.ramBytes = counters.WorkingSetSize;
    return state;
}

bool isModuleLoaded(const std::string& name) { return GetModuleHandleA(name.c_str()) != nullptr; }

void* loadModule(const std::string& name)
{
    // The system's own libraries do not give everything back when they are unloaded: they stay.
    for (const char* const own : {"advapi32.dll", "ole32.dll", "oleaut32.dll", "rpcrt4.dll", "shell32.dll"})
    {
        static_cast<void>(LoadLibraryA(own));
    }
    void* const module = LoadLibraryA((binFolder() + "/" + name + ".dll").c_str());
    EXPECT_NE(module, nullptr) << GetLastError();
    return module;
}

void unloadModule(void* module) { EXPECT_NE(FreeLibrary(static_cast<HMODULE>(module)), FALSE); }

ModuleFunction moduleFunction(void* module, const char* name)
{
    return reinterpret_cast<ModuleFunction>(
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name)));
}

} // namespace ky::test
