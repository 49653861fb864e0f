// SPDX-License-Identifier: MIT
// What a platform owes to guarded execution and to the signal watchers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ky::impl::native
{

/// Addresses of code, the faulting instruction first, then where each caller goes on.
struct StackFrames
{
    static constexpr std::size_t capacity = 64;

    std::uintptr_t at[capacity];
    std::size_t count = 0;
    /// Frames from this one on were guessed, without unwinding tables that cover them.
    std::size_t firstGuess = capacity;
};

struct Fault
{
    std::uint32_t code = 0;   ///< as Windows numbers its exceptions
    void* context = nullptr;  ///< the processor's registers, where the stack is still there to be walked
    bool memoryIsSafe = true; ///< false when the allocator may have been interrupted
    StackFrames frames;       ///< when there is no context
};

using FaultReport = void (*)(Fault& fault) noexcept;

/// Runs `fn(arg)`. True when it returned; false when a hardware fault ended it, which has then been handed to `report`.
///
/// Thrown objects pass. On Windows `report` sees them on their way, before the stack unwinds.
/// Linux: `report` runs after the function has been abandoned, and outside the signal handler.
bool runGuarded(void (*fn)(void*), void* arg, FaultReport report);

/// Where a signal comes from.
enum class SignalOrigin
{
    Raised, ///< the thread raised it itself, in code that may call anything
    Fault   ///< anything may have been interrupted, and the process ends after the report
};

using SignalReport = void (*)(int number, SignalOrigin origin) noexcept;

/// Reports the next signal of this number that guarded code does not take.
void watchSignal(int number, SignalReport report);

/// Back to what was before; to the default disposition where the system does not tell.
void unwatchSignal(int number);

/// Gives the calling thread what it needs to report the exhaustion of its own stack.
void prepareThread() noexcept;

} // namespace ky::impl::native
