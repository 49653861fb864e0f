// SPDX-License-Identifier: MIT
#include "diagnostics/guard_faults.h"

#include <csignal>
#include <windows.h>

namespace ky::test
{

void breakpoint() { DebugBreak(); }
void illegalInstruction() { asm volatile("ud2"); }

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
