// SPDX-License-Identifier: MIT
// What a thread has for guarded calls: its innermost one, and a stack for the handler when its own is used up.
#pragma once

#include "diagnostics/guard_native.h"
#include "platform/compiler.h"

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstddef>
#include <cstdint>

namespace ky::impl::native
{

/// One guarded call; lives on the stack of its thread.
struct GuardRecord
{
    sigjmp_buf jump;
    GuardRecord* outer;
};

struct ThreadGuard
{
    std::atomic<GuardRecord*> current; ///< innermost guarded call, null outside; the thread itself writes it
    bool isWalking;                    ///< from a fault until the jump back: a second one is of the walk
    Fault fault;
    sigset_t mask; ///< signals that were blocked when it happened
    stack_t signalStack;
    std::uintptr_t stackLow; ///< 0 when unknown
    std::uintptr_t stackHigh;
    stack_t ownSignalStack; ///< empty while the thread uses one of its own making
    ThreadGuard* next;
    ThreadGuard* previous;
};

/// Null until makeThreadGuard(). A handler reads it.
extern thread_local constinit ThreadGuard* tGuard KY_STATIC_TLS;

/// For the calling thread, for the rest of its life. Null when there is no memory.
ThreadGuard* makeThreadGuard() noexcept;

/// Whether any thread is in a guarded call.
bool anyThreadGuarded() noexcept;

} // namespace ky::impl::native
