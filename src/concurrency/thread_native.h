// SPDX-License-Identifier: MIT
// What a platform owes to threads. (currentThreadId() is in sync_native.h.)
#pragma once

#include <cstdint>
#include <string>

namespace ky::impl::native
{

/// A thread and what it runs. Keeps its address from startThread() until it has been joined.
struct Thread
{
    void (*body)(void*);
    void* argument;
    std::uintptr_t handle = 0; ///< 0: no thread. For those who started it only: the thread may run before it is set.
};

/// False when the system makes no thread.
bool startThread(Thread& thread) noexcept;

/// Waits for the end of the thread and gives its resources back. False when the system knows no such thread.
bool joinThread(Thread& thread) noexcept;

/// Gives the calling thread a name for debuggers and system tools; UTF-8.
void nameCurrentThread(const std::string& name) noexcept;

/// 0 gives other threads a turn.
void sleepMs(std::uint64_t milliseconds) noexcept;

} // namespace ky::impl::native
