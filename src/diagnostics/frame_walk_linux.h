// SPDX-License-Identifier: MIT
#pragma once

#include "diagnostics/guard_native.h"

#include <ucontext.h>

namespace ky::impl::native
{

/// What a walk finds out about the frames of a guarded call.
struct WalkedCall
{
    StackFrames& frames;
    std::uintptr_t end;           ///< where the call began
    std::size_t count = 0;        ///< how many of the frames belong to the call
    bool isWhole = false;         ///< the walk reached the call's beginning, or filled all the room there is
    bool startsFrameless = false; ///< the innermost function has put nothing on the stack
};

/// Walks the stack from the interrupted instruction. Safe in a signal handler; faults when the stack is damaged, and
/// `walked` then holds what was found before.
void walkFrames(const ucontext_t& context, WalkedCall& walked) noexcept;

} // namespace ky::impl::native
