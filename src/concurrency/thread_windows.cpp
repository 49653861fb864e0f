// SPDX-License-Identifier: MIT
#include "concurrency/thread_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <algorithm>
#include <new>
#include <process.h>

namespace ky::impl::native
{

namespace
{

unsigned __stdcall runBody(void* thread)
{
    const auto* const self = static_cast<const Thread*>(thread);
    self->body(self->argument);
    return 0;
}

HANDLE handleOf(const Thread& thread) noexcept { return reinterpret_cast<HANDLE>(thread.handle); }

/// The agreement between programs and debuggers.
constexpr DWORD namingException = 0x406D1388;

struct NamingRecord
{
    DWORD type = 0x1000;
    const char* name = nullptr;
    DWORD threadId = static_cast<DWORD>(-1); ///< the current thread
    DWORD flags = 0;
};

LONG CALLBACK ignoreNaming(EXCEPTION_POINTERS* raised)
{
    return raised->ExceptionRecord->ExceptionCode == namingException ? EXCEPTION_CONTINUE_EXECUTION
                                                                     : EXCEPTION_CONTINUE_SEARCH;
}

/// Without a debugger the exception comes back to the handler first in line, and the thread goes on.
void nameForDebugger(const char* name) noexcept
{
    PVOID const handler = AddVectoredExceptionHandler(1, &ignoreNaming);
    if (handler == nullptr)
        return;
    const NamingRecord record{.name = name};
    RaiseException(namingException, 0, sizeof record / sizeof(ULONG_PTR), reinterpret_cast<const ULONG_PTR*>(&record));
    RemoveVectoredExceptionHandler(handler);
}

void describe(const std::string& name) noexcept
{
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    const HMODULE library = GetModuleHandleW(L"kernel32.dll");
    const FARPROC found = library != nullptr ? GetProcAddress(library, "SetThreadDescription") : nullptr;
    if (found == nullptr)
        return;
    try
    {
        // By way of void*: compilers warn about a direct cast between unlike function types.
        reinterpret_cast<SetDescription>(reinterpret_cast<void*>(found))(GetCurrentThread(), widen(name).c_str());
    }
    catch (const std::bad_alloc&)
    {
        // A thread without a name is better than none.
    }
}

} // namespace

bool startThread(Thread& thread) noexcept
{
    thread.handle = _beginthreadex(nullptr, 0, &runBody, &thread, 0, nullptr);
    return thread.handle != 0;
}

bool joinThread(Thread& thread) noexcept
{
    if (WaitForSingleObject(handleOf(thread), INFINITE) != WAIT_OBJECT_0)
        return false;
    CloseHandle(handleOf(thread));
    return true;
}

void nameCurrentThread(const std::string& name) noexcept
{
    nameForDebugger(name.c_str());
    describe(name);
}

void sleepMs(std::uint64_t milliseconds) noexcept
{
    constexpr std::uint64_t longest = 0xFFFFFFFE;
    do
    {
        const std::uint64_t part = std::min(milliseconds, longest);
        Sleep(static_cast<DWORD>(part));
        milliseconds -= part;
    } while (milliseconds != 0);
}

} // namespace ky::impl::native
