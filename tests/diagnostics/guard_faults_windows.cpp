// SPDX-License-Identifier: MIT
#include "diagnostics/guard_faults.h"

#include <csignal>
#include <windows.h>

namespace ky::test
{

void breakpoint() { DebugBreak(); }
void illegalInstruction() { asm volatile("ud2"); }

std::vector<FaultSample> faultSamples()
{
    return {{FaultKind::NullWrite, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
            {FaultKind::NullCall, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
            {FaultKind::DivisionByZero, "EXCEPTION_INT_DIVIDE_BY_ZERO", "c0000094"},
            {FaultKind::IllegalInstruction, "EXCEPTION_ILLEGAL_INSTRUCTION", "c000001d"},
            {FaultKind::StackOverflow, "EXCEPTION_STACK_OVERFLOW", "c00000fd"},
            {FaultKind::Breakpoint, "EXCEPTION_BREAKPOINT", "80000003"},
            {FaultKind::TextOfNull, "EXCEPTION_ACCESS_VIOLATION", "c0000005"}};
}

bool throwsAreStructured() { return true; }

bool canEndThread() { return false; }
void endThread() {}

Disposition faultDisposition()
{
    void (*const found)(int) = std::signal(SIGSEGV, SIG_DFL);
    std::signal(SIGSEGV, found);
    return found == SIG_DFL ? Disposition::Default : Disposition::Other;
}

bool deliverFault(std::thread&) { return false; }
bool spoilArenaOf(void*) { return false; }
bool exitAtFault(int) { return false; }
void* useOwnSignalStack() { return nullptr; }
void* signalStack() { return nullptr; }

void failWith(int code) { SetLastError(static_cast<DWORD>(code)); }

} // namespace ky::test
