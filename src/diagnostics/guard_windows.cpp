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
    CONTEXT registers;
};

/// The filter has next to no stack left when it is full, so it only keeps the registers. The innermost frames lie far
/// below the guarded call and are still whole after the jump back to it.
void noteFrames(void* argument)
{
    Call& call = *static_cast<Call*>(argument);
    StackFrames& frames = call.fault.frames;
    CONTEXT& at = call.registers;
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

LONG giveUp(EXCEPTION_POINTERS*, void*) { return EXCEPTION_EXECUTE_HANDLER; }

LONG filter(EXCEPTION_POINTERS* exception, void* context)
{
    Call& call = *static_cast<Call*>(context);
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    call.fault.code = code;
    if (code == static_cast<DWORD>(EXCEPTION_STACK_OVERFLOW))
    {
        call.stackIsFull = true;
        call.registers = *exception->ContextRecord;
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

/// Whether this is called from the system's exception dispatch, and not by raise().
SignalOrigin originOfSignal() noexcept
{
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    const FARPROC dispatcher = ntdll == nullptr ? nullptr : GetProcAddress(ntdll, "KiUserExceptionDispatcher");
    DWORD64 base = 0;
    const auto functionAt = [&base](const void* address)
    { return RtlLookupFunctionEntry(reinterpret_cast<DWORD64>(address), &base, nullptr); };
    const RUNTIME_FUNCTION* const dispatch = functionAt(reinterpret_cast<const void*>(dispatcher));
    void* frames[62];
    const WORD count = RtlCaptureStackBackTrace(0, 62, frames, nullptr);
    for (WORD n = 0; n < count; ++n)
    {
        if (dispatch == nullptr || functionAt(frames[n]) == dispatch)
            return SignalOrigin::Fault;
    }
    return SignalOrigin::Raised;
}

// The C runtime has put the default disposition back by now: a fault that comes again ends the process.
extern "C" void onSignal(int number)
{
    if (const SignalReport report = watchOf(number).report)
        report(number, originOfSignal());
}

/// So much of the stack is left for the filter when the rest is used up.
constexpr ULONG keptForFilter = 32 * 1024;

} // namespace

bool runGuarded(void (*fn)(void*), void* arg, FaultReport report)
{
    prepareThread();
    Call call;
    call.report = report;
    call.stackIsFull = false;
    if (callFiltered(fn, arg, &filter, &call))
        return true;
    if (!call.stackIsFull)
        return false;
    callFiltered(&noteFrames, &call, &giveUp, nullptr);
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

void prepareThread() noexcept
{
    ULONG kept = 0;
    SetThreadStackGuarantee(&kept);
    if (kept >= keptForFilter)
        return;
    kept = keptForFilter;
    SetThreadStackGuarantee(&kept);
}

} // namespace ky::impl::native
