// SPDX-License-Identifier: MIT
#include "diagnostics/guard_native.h"

#include "platform/structured_windows.h"

#include <atomic>
#include <csignal>
#include <malloc.h>

namespace ky::impl::native
{

namespace
{

/// Under which the compilers throw.
bool isThrown(DWORD code) { return code == 0xE06D7363 || code == 0x20474343; }

struct Call
{
    FaultReport report;
    bool stackIsFull;
    Fault fault;
    /// Too large for what is left of a full stack.
    CONTEXT walked;
};

/// With little stack and no library.
void noteFrames(Call& call, const CONTEXT& start) noexcept
{
    StackFrames& frames = call.fault.frames;
    frames.count = 0;
    call.walked = start;
    CONTEXT& at = call.walked;
    while (frames.count < StackFrames::capacity && at.Rip != 0)
    {
        frames.at[frames.count++] = at.Rip;
        DWORD64 base = 0;
        RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(at.Rip, &base, nullptr);
        if (function == nullptr)
        {
            at.Rip = *reinterpret_cast<const DWORD64*>(at.Rsp);
            at.Rsp += sizeof(DWORD64);
            continue;
        }
        void* handlerData = nullptr;
        DWORD64 frame = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, at.Rip, function, &at, &handlerData, &frame, nullptr);
    }
}

LONG filter(EXCEPTION_POINTERS* exception, void* context)
{
    Call& call = *static_cast<Call*>(context);
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    call.fault.code = code;
    if (code == static_cast<DWORD>(EXCEPTION_STACK_OVERFLOW))
    {
        call.stackIsFull = true;
        noteFrames(call, *exception->ContextRecord);
        return EXCEPTION_EXECUTE_HANDLER;
    }
    call.fault.context = exception->ContextRecord;
    call.report(call.fault);
    return isThrown(code) ? EXCEPTION_CONTINUE_SEARCH : EXCEPTION_EXECUTE_HANDLER;
}

struct Watch
{
    int number;
    std::atomic<SignalReport> report{nullptr};
};

Watch sWatches[] = {{SIGFPE}, {SIGILL}, {SIGSEGV}};

Watch& watchOf(int number)
{
    for (Watch& watch : sWatches)
    {
        if (watch.number == number)
            return watch;
    }
    return sWatches[0];
}

// The C runtime has put the default disposition back by now: a fault that comes again ends the process.
extern "C" void onSignal(int number)
{
    if (const SignalReport report = watchOf(number).report)
        report(number, SignalOrigin::Unknown);
}

} // namespace

bool runGuarded(void (*fn)(void*), void* arg, FaultReport report)
{
    Call call;
    call.report = report;
    call.stackIsFull = false;
    if (callFiltered(fn, arg, &filter, &call))
        return true;
    if (!call.stackIsFull)
        return false;
    // The page that caught it guards again.
    _resetstkoflw();
    report(call.fault);
    return false;
}

void watchSignal(int number, SignalReport report)
{
    watchOf(number).report = report;
    std::signal(number, &onSignal);
}

void unwatchSignal(int number)
{
    std::signal(number, SIG_DFL);
    watchOf(number).report = nullptr;
}

// A full stack raises an exception of its own here.
void prepareThread() noexcept {}

} // namespace ky::impl::native
