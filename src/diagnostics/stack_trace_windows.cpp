// SPDX-License-Identifier: MIT
#include "diagnostics/stack_trace_native.h"

#include "diagnostics/bounded_wait.h"
#include "platform/demangle.h"
#include "platform/win32.h"

#include <atomic>
#include <cstring>
#include <dbghelp.h>

namespace ky::impl::native
{

namespace
{

struct DebugHelp
{
    decltype(&::SymInitialize) symInitialize = nullptr;
    decltype(&::StackWalk64) stackWalk = nullptr;
    decltype(&::SymFunctionTableAccess64) functionTable = nullptr;
    decltype(&::SymGetModuleBase64) moduleBase = nullptr;
    decltype(&::SymGetSymFromAddr64) symbolOf = nullptr;
    decltype(&::SymGetLineFromAddr64) lineOf = nullptr;
};

DebugHelp sHelp;
std::atomic<DWORD> sUser{0}; ///< the library is for one thread at a time
bool sInitialized = false;
std::atomic<bool> sBroken{false};

template <typename Function>
bool find(HMODULE library, const char* name, Function& function) noexcept
{
    const FARPROC found = GetProcAddress(library, name);
    static_assert(sizeof(found) == sizeof(function));
    std::memcpy(&function, &found, sizeof(function));
    return found != nullptr;
}

TraceSupport load() noexcept
{
    const HMODULE library = LoadLibraryExW(L"DbgHelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr)
        return TraceSupport::NoLibrary;
    const bool all =
        find(library, "SymInitialize", sHelp.symInitialize) && find(library, "StackWalk64", sHelp.stackWalk) &&
        find(library, "SymFunctionTableAccess64", sHelp.functionTable) &&
        find(library, "SymGetModuleBase64", sHelp.moduleBase) && find(library, "SymGetSymFromAddr64", sHelp.symbolOf) &&
        find(library, "SymGetLineFromAddr64", sHelp.lineOf);
    if (!all)
        return TraceSupport::NoFunctions;
    if (!sInitialized)
        sInitialized = sHelp.symInitialize(GetCurrentProcess(), ".;bin;", TRUE) != FALSE;
    return TraceSupport::Ready;
}

/// Waits for a while, then goes on: two threads in the library at worst garble their symbols.
void enter() noexcept
{
    constexpr int patience = 5000;
    tryFor(patience,
           []
           {
               DWORD nobody = 0;
               return sUser.compare_exchange_strong(nobody, GetCurrentThreadId());
           });
}

/// Whether the library was this thread's.
bool leave() noexcept
{
    DWORD self = GetCurrentThreadId();
    return sUser.compare_exchange_strong(self, 0);
}

void describeModule(std::uintptr_t address, FrameText& text) noexcept
{
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH];
    char name[MAX_PATH * 3];
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCWSTR>(address), &module) ||
        address < reinterpret_cast<std::uintptr_t>(module)) // it takes null for the program
        return;
    const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, path, static_cast<int>(length), name, sizeof(name), nullptr, nullptr);
    const std::string_view whole(name, static_cast<std::size_t>(size));
    text.module << whole.substr(whole.find_last_of("\\/") + 1);
    text.moduleOffset = address - reinterpret_cast<std::uintptr_t>(module);
}

void describeSymbol(std::uintptr_t address, FrameText& text) noexcept
{
    constexpr DWORD room = 480;
    alignas(IMAGEHLP_SYMBOL64) char memory[sizeof(IMAGEHLP_SYMBOL64) + room] = {};
    auto* const symbol = reinterpret_cast<IMAGEHLP_SYMBOL64*>(memory);
    symbol->SizeOfStruct = sizeof(IMAGEHLP_SYMBOL64);
    symbol->MaxNameLength = room;
    DWORD64 distance = 0;
    if (sHelp.symbolOf(GetCurrentProcess(), address, &distance, symbol))
    {
        const auto readable = demangle(symbol->Name);
        text.symbol << (readable == nullptr ? symbol->Name : readable.get());
    }
    IMAGEHLP_LINE64 line = {};
    line.SizeOfStruct = sizeof(line);
    DWORD column = 0;
    if (!sHelp.lineOf(GetCurrentProcess(), address, &column, &line))
        return;
    text.line = line.LineNumber;
    const std::string_view file(line.FileName);
    text.file << file.substr(file.find_last_of("\\/") + 1);
}

} // namespace

TraceSupport openTrace(const Fault&) noexcept
{
    enter();
    const TraceSupport support = load();
    if (support != TraceSupport::Ready)
        leave();
    return support;
}

void closeTrace() noexcept { leave(); }

void abandonTrace() noexcept
{
    if (leave())
        sBroken = true;
}

StackFrames framesOf(const Fault& fault) noexcept
{
    if (fault.context == nullptr)
        return fault.frames;
    CONTEXT context = *static_cast<const CONTEXT*>(fault.context);
    StackFrames frames;
    if (sHelp.moduleBase(GetCurrentProcess(), context.Rip) == 0)
    {
        // A call to where no code is: its return address is on top of the stack.
        frames.at[frames.count++] = context.Rip;
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
    }
    STACKFRAME64 at = {};
    at.AddrPC = {context.Rip, 0, AddrModeFlat};
    at.AddrFrame = {context.Rbp, 0, AddrModeFlat};
    at.AddrStack = {context.Rsp, 0, AddrModeFlat};
    while (frames.count < StackFrames::capacity &&
           sHelp.stackWalk(IMAGE_FILE_MACHINE_AMD64, GetCurrentProcess(), GetCurrentThread(), &at, &context, nullptr,
                           sHelp.functionTable, sHelp.moduleBase, nullptr) &&
           at.AddrPC.Offset != 0)
    {
        frames.at[frames.count++] = at.AddrPC.Offset;
    }
    return frames;
}

void describeFrame(const Fault&, const StackFrames& frames, std::size_t index, FrameText& text) noexcept
{
    // Behind a call that never returns the next function begins.
    const std::uintptr_t address = frames.at[index] - (index == 0 ? 0 : 1);
    describeModule(frames.at[index], text);
    if (sInitialized && !sBroken)
        describeSymbol(address, text);
}

} // namespace ky::impl::native
