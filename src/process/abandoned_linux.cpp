// SPDX-License-Identifier: MIT
#include "process/abandoned_linux.h"

#include "platform/posix_retry.h"
#include "process/process_linux.h"

#include <atomic>
#include <new>
#include <sys/wait.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

struct Abandoned
{
    Process process;
    Abandoned* next = nullptr;
};

// Without a lock, which a forked child might find taken for ever.
std::atomic<Abandoned*> sAbandoned{nullptr};

void push(Abandoned* entry) noexcept
{
    entry->next = sAbandoned.load();
    while (!sAbandoned.compare_exchange_weak(entry->next, entry))
    {
    }
}

void closeDescriptor(const Process& process) noexcept
{
    if (process.handle >= 0)
        ::close(static_cast<int>(process.handle));
}

} // namespace

Collected collect(const Process& process, int flags, int& status) noexcept
{
    siginfo_t info = {};
    const bool byDescriptor = process.handle >= 0;
    const idtype_t kind = byDescriptor ? P_PIDFD : P_PID;
    const id_t id = byDescriptor ? static_cast<id_t>(process.handle) : process.id;
    if (retryInterrupted([&] { return ::waitid(kind, id, &info, flags | WEXITED | WNOHANG); }) != 0)
        return Collected::NotOurs;
    if (info.si_pid == 0)
        return Collected::StillRuns;
    status = info.si_code == CLD_EXITED ? (info.si_status & 0xFF) << 8 : info.si_status & 0x7F;
    return Collected::Ended;
}

void abandon(const Process& process) noexcept
{
    if (process.handle == alreadyGone)
        return;
    int status = 0;
    if (collect(process, 0, status) == Collected::StillRuns)
    {
        Abandoned* const entry = new (std::nothrow) Abandoned;
        if (entry != nullptr)
        {
            entry->process = process;
            push(entry);
            return;
        }
    }
    closeDescriptor(process);
}

void collectEnded() noexcept
{
    if (sAbandoned.load(std::memory_order_relaxed) == nullptr)
        return;
    for (Abandoned* entry = sAbandoned.exchange(nullptr); entry != nullptr;)
    {
        Abandoned* const next = entry->next;
        int status = 0;
        if (collect(entry->process, 0, status) == Collected::StillRuns)
        {
            push(entry);
        }
        else
        {
            closeDescriptor(entry->process);
            delete entry;
        }
        entry = next;
    }
}

} // namespace ky::impl::native
