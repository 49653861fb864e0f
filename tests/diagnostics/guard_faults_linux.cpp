// SPDX-License-Identifier: MIT
#include "diagnostics/guard_faults.h"

#include <cerrno>
#include <csignal>
#include <pthread.h>

namespace ky::test
{

void breakpoint() { asm volatile("int3"); }
void illegalInstruction() { asm volatile("ud2"); }

std::vector<FaultSample> faultSamples()
{
    return {{FaultKind::NullWrite, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
            {FaultKind::NullCall, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
            {FaultKind::DivisionByZero, "EXCEPTION_INT_DIVIDE_BY_ZERO", "c0000094"},
            {FaultKind::IllegalInstruction, "EXCEPTION_ILLEGAL_INSTRUCTION", "c000001d"},
            {FaultKind::StackOverflow, "EXCEPTION_STACK_OVERFLOW", "c00000fd"},
            {FaultKind::Breakpoint, "EXCEPTION_BREAKPOINT", "80000003"},
            {FaultKind::TextOfNull, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
            {FaultKind::FreeOfNothing, "EXCEPTION_ACCESS_VIOLATION", "c0000005"}};
}

bool throwsAreStructured() { return false; }

bool canEndThread() { return true; }
void endThread() { pthread_exit(nullptr); }

Disposition faultDisposition()
{
    struct sigaction found = {};
    sigaction(SIGSEGV, nullptr, &found);
    return found.sa_handler == SIG_DFL ? Disposition::Default : Disposition::Other;
}

void failWith(int code) { errno = code; }

} // namespace ky::test
