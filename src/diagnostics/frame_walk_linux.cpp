// SPDX-License-Identifier: MIT
#include "diagnostics/frame_walk_linux.h"

#include <unwind.h>

namespace ky::impl::native
{

namespace
{

struct Walk
{
    StackFrames& frames;
    std::uintptr_t start;
    std::uintptr_t end;
    WalkedCall result;
};

_Unwind_Reason_Code visit(_Unwind_Context* context, void* argument)
{
    Walk& walk = *static_cast<Walk*>(argument);
    const std::uintptr_t address = _Unwind_GetIP(context);
    if (walk.frames.count == 0 && address != walk.start)
        return _URC_NO_REASON;
    if (walk.frames.count == StackFrames::capacity)
    {
        walk.result.isWhole = true;
        return _URC_END_OF_STACK;
    }
    walk.frames.at[walk.frames.count++] = address;
    if (_Unwind_GetCFA(context) >= walk.end)
        walk.result.isWhole = true;
    else if (!walk.result.isWhole)
        walk.result.count = walk.frames.count;
    return _URC_NO_REASON;
}

} // namespace

WalkedCall walkFrames(const ucontext_t& context, std::uintptr_t end, StackFrames& frames) noexcept
{
    const auto start = static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RIP]);
    Walk walk{frames, start, end, {&frames, 0, false, false}};
    _Unwind_Backtrace(&visit, &walk);
    return walk.result;
}

} // namespace ky::impl::native
