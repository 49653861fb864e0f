// SPDX-License-Identifier: MIT
// Walks by the unwinding tables of the modules, read in place: no lock, no memory, and from any instruction.
#include "diagnostics/frame_walk_linux.h"

#include "diagnostics/frame_expression_linux.h"
#include "diagnostics/frame_rules_linux.h"

#include <algorithm>

namespace ky::impl::native
{

namespace
{

std::uintptr_t load(std::uintptr_t address) { return *reinterpret_cast<const std::uintptr_t*>(address); }

std::uintptr_t moved(std::uintptr_t address, std::int64_t distance)
{
    return address + static_cast<std::uintptr_t>(distance);
}

FrameRegisters registersOf(const ucontext_t& context) noexcept
{
    constexpr int order[] = {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI, REG_RBP, REG_RSP, REG_R8,
                             REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP};
    FrameRegisters registers;
    for (unsigned n = 0; n < FrameRegisters::count; ++n)
        registers.at[n] = static_cast<std::uintptr_t>(context.uc_mcontext.gregs[order[n]]);
    return registers;
}

bool apply(const RegisterRule& rule, const FrameRegisters& registers, std::uintptr_t end, std::uintptr_t& value)
{
    switch (rule.kind)
    {
    case RegisterRule::Same: return true;
    case RegisterRule::Undefined: value = 0; return true;
    case RegisterRule::Saved: value = load(moved(end, rule.value)); return true;
    case RegisterRule::Distance: value = moved(end, rule.value); return true;
    case RegisterRule::InRegister:
        value = registers.at[static_cast<std::size_t>(rule.value) % FrameRegisters::count];
        return true;
    case RegisterRule::Expression: return evaluate(rule.expression, registers, &end, value);
    case RegisterRule::SavedAt:
        if (!evaluate(rule.expression, registers, &end, value))
            return false;
        value = load(value);
        return true;
    }
    return false;
}

/// One frame of the walk.
class Frame
{
public:
    explicit Frame(const ucontext_t& context) : mRegisters(registersOf(context)) {}

    std::uintptr_t instruction() const { return mRegisters.at[FrameRegisters::instruction]; }
    std::uintptr_t stackPointer() const { return mRegisters.at[FrameRegisters::stackPointer]; }
    /// Address behind the frame; known after stepping out of it.
    std::uintptr_t end() const { return mEnd; }

    /// Makes this the caller's frame. False at the outermost one, and where the tables are not understood.
    bool stepOut()
    {
        FrameEntry entry;
        // Behind a call that never returns the next function begins.
        const std::uintptr_t covered = instruction() - (mIsExact ? 0 : 1);
        FrameRules rules;
        if (!findFrameEntry(covered, entry) || !findRules(entry, covered, rules))
            return false;
        if (rules.of[FrameRegisters::instruction].kind == RegisterRule::Undefined)
            return false;
        std::uintptr_t end = moved(mRegisters.at[rules.endRegister], rules.endDistance);
        if (rules.endExpression != nullptr && !evaluate(rules.endExpression, mRegisters, nullptr, end))
            return false;
        FrameRegisters caller = mRegisters;
        caller.at[FrameRegisters::stackPointer] = end;
        for (unsigned n = 0; n < FrameRegisters::count; ++n)
        {
            if (!apply(rules.of[n], mRegisters, end, caller.at[n]))
                return false;
        }
        return moveTo(caller, end, entry.isSignalFrame);
    }

    /// From where no table covers the instruction: the return address lies on top of the stack, as right after a call.
    bool stepOutOfNowhere()
    {
        FrameRegisters caller = mRegisters;
        caller.at[FrameRegisters::instruction] = load(stackPointer());
        caller.at[FrameRegisters::stackPointer] += sizeof(std::uintptr_t);
        return moveTo(caller, caller.at[FrameRegisters::stackPointer], false);
    }

    /// By the chain of frame pointers, where there is one.
    bool stepByFramePointer()
    {
        const std::uintptr_t frame = mRegisters.at[FrameRegisters::framePointer];
        if (frame < stackPointer() || frame % sizeof(std::uintptr_t) != 0)
            return false;
        FrameRegisters caller = mRegisters;
        caller.at[FrameRegisters::framePointer] = load(frame);
        caller.at[FrameRegisters::instruction] = load(frame + sizeof(std::uintptr_t));
        caller.at[FrameRegisters::stackPointer] = frame + 2 * sizeof(std::uintptr_t);
        return moveTo(caller, caller.at[FrameRegisters::stackPointer], false);
    }

private:
    bool moveTo(const FrameRegisters& caller, std::uintptr_t end, bool isExact)
    {
        const bool movesOn = end > stackPointer() || isExact;
        mRegisters = caller;
        mEnd = end;
        mIsExact = isExact;
        return movesOn && instruction() != 0;
    }

    FrameRegisters mRegisters;
    std::uintptr_t mEnd = 0;
    bool mIsExact = true;
};

/// Known by the tables, or a guess from then on.
bool step(Frame& frame, StackFrames& frames) noexcept
{
    if (frame.stepOut())
        return true;
    FrameEntry entry;
    if (findFrameEntry(frame.instruction() - 1, entry))
        return false;
    if (frames.count == 1)
        return frame.stepOutOfNowhere();
    frames.firstGuess = std::min(frames.firstGuess, frames.count);
    return frame.stepByFramePointer();
}

} // namespace

void walkFrames(const ucontext_t& context, WalkedCall& walked) noexcept
{
    StackFrames& frames = walked.frames;
    Frame frame(context);
    const std::uintptr_t top = frame.stackPointer();
    frames.at[frames.count++] = frame.instruction();
    while (frames.count < StackFrames::capacity && step(frame, frames))
    {
        if (frames.count == 1)
            walked.startsFrameless = frame.end() == top + sizeof(std::uintptr_t);
        if (!walked.isWhole && frame.end() < walked.end)
            walked.count = frames.count;
        walked.isWhole = walked.isWhole || frame.end() >= walked.end;
        frames.at[frames.count++] = frame.instruction();
    }
    if (frames.count == StackFrames::capacity)
        walked.isWhole = true;
}

} // namespace ky::impl::native
