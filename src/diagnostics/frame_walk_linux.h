// SPDX-License-Identifier: MIT
#pragma once

#include "diagnostics/guard_native.h"

#include <ucontext.h>

namespace ky::impl::native
{

/// What the walk found out about the frames of the guarded call.
struct WalkedCall
{
    const StackFrames* frames;
    std::size_t count;    ///< how many of them belong to the call
    bool isWhole;         ///< the walk reached the call's beginning, or filled all the room there is
    bool startsFrameless; ///< the innermost function has put nothing on the stack yet
};

/// Walks the stack from the interrupted instruction. `end`: where the guarded call began. Safe in a signal handler;
/// faults when the stack is damaged: `frames` then holds what was found before.
WalkedCall walkFrames(const ucontext_t& context, std::uintptr_t end, StackFrames& frames) noexcept;

} // namespace ky::impl::native
