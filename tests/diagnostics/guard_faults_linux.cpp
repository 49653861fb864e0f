// SPDX-License-Identifier: MIT
#include "diagnostics/guard_faults.h"

#include "support/sanitizer.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ky::test
{

void breakpoint() { asm volatile("int3"); }
void illegalInstruction() { asm volatile("ud2"); }

bool throwsAreStructured() { return false; }

bool canEndThread() { return canUnwindThreads; }
void endThread() { pthread_exit(nullptr); }

Disposition faultDisposition()
{
    struct sigaction found = {};
    sigaction(SIGSEGV, nullptr, &found);
    return found.sa_handler == SIG_DFL ? Disposition::Default : Disposition::Other;
}

bool deliverFault(std::thread& thread) { return pthread_kill(thread.native_handle(), SIGSEGV) == 0; }

bool spoilArenaOf(void* block)
{
    // Arenas of threads start at such multiples, with the lock and the lists in the first page.
    constexpr std::uintptr_t arena = 64 * 1024 * 1024;
    const std::uintptr_t blocks = reinterpret_cast<std::uintptr_t>(block) / arena * arena + 4096;
    return mprotect(reinterpret_cast<void*>(blocks), 128 * 1024, PROT_READ) == 0;
}

bool exitAtFault(int code)
{
    static int sCode = 0;
    sCode = code;
    struct sigaction action = {};
    action.sa_sigaction = [](int, siginfo_t* info, void*) { _exit(info->si_addr == nullptr ? sCode : 1); };
    action.sa_flags = SA_SIGINFO;
    return sigaction(SIGSEGV, &action, nullptr) == 0;
}

void* useOwnSignalStack()
{
    stack_t own = {};
    own.ss_size = 64 * 1024;
    // The address sanitizer unmaps what it finds when the thread ends.
    own.ss_sp = mmap(nullptr, own.ss_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return sigaltstack(&own, nullptr) == 0 ? own.ss_sp : nullptr;
}

void* signalStack()
{
    stack_t present = {};
    sigaltstack(nullptr, &present);
    return (present.ss_flags & SS_DISABLE) != 0 ? nullptr : present.ss_sp;
}

void failWith(int code) { errno = code; }

} // namespace ky::test
