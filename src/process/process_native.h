// SPDX-License-Identifier: MIT
// A process that was started or opened: watching it, ending it, letting go of it.
#pragma once

#include <cstdint>

namespace ky::impl::native
{

inline constexpr std::intptr_t noHandle = -1;

struct Process
{
    std::intptr_t handle = noHandle;
    std::intptr_t tree = noHandle;   ///< what keeps it and its descendants together
    std::intptr_t leader = noHandle; ///< what the tree needs of it after releaseHandle()
    std::uint32_t id = 0;            ///< 0 when there is none
    std::uint32_t mainThreadId = 0;
    bool killed = false; ///< by killProcess()
};

/// Exit code of a process that killProcess() or killTree() has ended.
inline constexpr int killedExitCode = 65535;

/// Whether the process has ended. Its handle is still there then.
bool hasEnded(Process& process, int& exitCode) noexcept;

/// Until the process has ended or the time is over; may return early.
void waitForEnd(const Process& process, unsigned int limitMs) noexcept;

void askToClose(const Process& process) noexcept;
void killProcess(Process& process) noexcept;

/// Ends what is left of the tree. Needs `tree` alone.
bool killTree(Process& process) noexcept;

/// Gives the handle back, and the id with it. The process may go on: the system keeps nothing for us once it has ended.
void releaseHandle(Process& process) noexcept;
void releaseTree(Process& process) noexcept;

/// Lets go of processes that were released while they ran and have ended since.
void collectEnded() noexcept;

} // namespace ky::impl::native
