// SPDX-License-Identifier: MIT
// Processes are held by descriptors: an id alone may belong to another process once somebody has waited for ours, and
// the kernel waits by itself for all children while SIGCHLD is ignored.
#include "process/process_linux.h"
#include "process/abandoned_linux.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr int waitAttemptMs = 10;

bool isReadable(int descriptor, int limitMs) noexcept
{
    pollfd entry = {descriptor, POLLIN, 0};
    return ::poll(&entry, 1, limitMs) > 0;
}

/// What the kernel keeps with a descriptor after somebody else has waited (Linux 6.15).
int keptExitCode(const Process& process) noexcept
{
    struct Information // pidfd_info
    {
        std::uint64_t mask;
        std::uint64_t others[6];
        std::uint32_t other;
        std::int32_t status;
    };
    constexpr std::uint64_t exitBit = 8;
    constexpr unsigned long request = _IOWR(0xFF, 11, Information);
    static_assert(sizeof(Information) == 64);
    Information information = {};
    information.mask = exitBit;
    if (process.handle < 0 || ::ioctl(static_cast<int>(process.handle), request, &information) != 0 ||
        (information.mask & exitBit) == 0)
        return -1;
    return exitCodeOf(information.status, process.killed);
}

void sendSignal(const Process& process, int signal) noexcept
{
    if (process.handle >= 0)
        ::syscall(SYS_pidfd_send_signal, static_cast<int>(process.handle), signal, nullptr, 0U);
    else if (process.handle == withoutDescriptor)
        ::kill(static_cast<pid_t>(process.id), signal);
}

} // namespace

void openHandle(Process& process) noexcept
{
    const long descriptor = ::syscall(SYS_pidfd_open, static_cast<pid_t>(process.id), 0U);
    if (descriptor >= 0)
        process.handle = descriptor;
    else
        process.handle = errno == ESRCH ? alreadyGone : withoutDescriptor;
}

int exitCodeOf(int status, bool killed) noexcept
{
    if (!WIFSIGNALED(status))
        return WEXITSTATUS(status);
    return killed && WTERMSIG(status) == SIGKILL ? killedExitCode : 128 + WTERMSIG(status);
}

bool hasEnded(Process& process, int& exitCode) noexcept
{
    // The leader of a tree keeps its place in the process table, so that the number of the group stays taken.
    int status = 0;
    if (process.handle == alreadyGone)
    {
        exitCode = -1;
        return true;
    }
    const Collected result = collect(process, process.tree != noHandle ? WNOWAIT : 0, status);
    if (result == Collected::StillRuns)
        return false;
    if (result == Collected::Ended)
    {
        exitCode = exitCodeOf(status, process.killed);
        return true;
    }
    if (process.handle >= 0 && !isReadable(static_cast<int>(process.handle), 0))
        return false;
    exitCode = keptExitCode(process);
    return true;
}

void waitForEnd(const Process& process, unsigned int limitMs) noexcept
{
    const int limit = static_cast<int>(std::min(limitMs, 0x7FFFFFFFU));
    if (process.handle >= 0)
        isReadable(static_cast<int>(process.handle), limit);
    else
        ::poll(nullptr, 0, std::min(limit, waitAttemptMs));
}

void askToClose(const Process& process) noexcept { sendSignal(process, SIGTERM); }

void killProcess(Process& process) noexcept
{
    process.killed = true;
    sendSignal(process, SIGKILL);
}

bool killTree(Process& process) noexcept
{
    process.killed = true;
    return ::kill(-static_cast<pid_t>(process.tree), SIGKILL) == 0;
}

void releaseHandle(Process& process) noexcept
{
    if (process.tree != noHandle)
        process.leader = process.handle;
    else if (process.handle != noHandle)
        abandon(process);
    process.handle = noHandle;
    process.id = 0;
    process.killed = false;
}

void releaseTree(Process& process) noexcept
{
    if (process.tree == noHandle)
        return;
    // From here on an ordinary child, which may have ended long ago.
    Process leader;
    leader.id = static_cast<std::uint32_t>(process.tree);
    leader.handle = process.handle != noHandle ? process.handle : process.leader;
    process.handle = process.leader = process.tree = noHandle;
    releaseHandle(leader);
}

} // namespace ky::impl::native
