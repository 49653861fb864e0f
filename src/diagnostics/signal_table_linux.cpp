// SPDX-License-Identifier: MIT
#include "diagnostics/signal_table_linux.h"

#include "concurrency/sync_native.h"
#include "diagnostics/bounded_wait.h"
#include "platform/processor.h"

#include <atomic>
#include <cstdint>
#include <pthread.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

struct Entry
{
    int number;
    struct sigaction previous;
    std::atomic<SignalReport> report{nullptr};
};

Entry sEntries[] = {{SIGFPE, {}}, {SIGILL, {}}, {SIGSEGV, {}}, {SIGBUS, {}}, {SIGTRAP, {}}};

Entry& entryOf(int number) noexcept
{
    for (Entry& entry : sEntries)
    {
        if (entry.number == number)
            return entry;
    }
    return sEntries[0];
}

bool isFunction(const struct sigaction& action) noexcept
{
    return (action.sa_flags & SA_SIGINFO) != 0 || (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
}

void callPrevious(const struct sigaction& previous, int number, siginfo_t* info, void* context) noexcept
{
    sigset_t blocked = previous.sa_mask;
    if ((previous.sa_flags & SA_NODEFER) == 0)
        sigaddset(&blocked, number);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    if ((previous.sa_flags & SA_SIGINFO) != 0)
        previous.sa_sigaction(number, info, context);
    else
        previous.sa_handler(number);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

/// Whether the interrupted code is the very system call by which the thread signals itself, as raise() makes it.
bool raisedByThread(int number, const siginfo_t& info, const void* context) noexcept
{
    if (info.si_pid != getpid())
        return false;
#if KY_ARCH_X64
    const auto& registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
    const auto* const code = reinterpret_cast<const unsigned char*>(registers[REG_RIP]);
    if (code[-2] != 0x0F || code[-1] != 0x05 || registers[REG_RAX] != 0)
        return false;
    const bool isToThread = info.si_code == SI_TKILL && registers[REG_RDX] == number && registers[REG_RSI] == gettid();
    const bool isToProcess = info.si_code == SI_USER && registers[REG_RSI] == number && registers[REG_RDI] == getpid();
    return isToThread || isToProcess;
#else
    return false;
#endif
}

/// Ends the process by the signal, as without a handler: the instruction is run again, or the signal sent again.
void endBy(int number, bool willFaultAgain) noexcept
{
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(number, &byDefault, nullptr);
    if (willFaultAgain)
        return;
    syscall(SYS_tgkill, getpid(), gettid(), number);
}

/// Milliseconds that a thread waits for another one's report, before it writes its own and ends the process. With the
/// second that the last message may take the process ends in time.
constexpr int patience = 700;

/// The thread whose signal is being reported.
std::atomic<std::uint32_t> sReporter{0};

/// One thread at a time: what ends the process would also cut off the report that another thread is writing.
class Turn
{
public:
    Turn() noexcept
    {
        const std::uint32_t self = currentThreadId();
        tryFor(patience,
               [&]
               {
                   std::uint32_t reporter = 0;
                   mIsOwn = sReporter.compare_exchange_strong(reporter, self);
                   return mIsOwn || reporter == self; // a fault of the report itself
               });
    }
    ~Turn()
    {
        if (mIsOwn)
            sReporter = 0;
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    bool mIsOwn = false;
};

/// Reported at most once. Whether it was, by this call.
bool reportOnce(Entry& entry, SignalOrigin origin) noexcept
{
    const Turn turn;
    const SignalReport report = entry.report.exchange(nullptr);
    if (report != nullptr)
        report(entry.number, origin);
    return report != nullptr;
}

} // namespace

void installHandlers(SignalHandler handler) noexcept
{
    for (Entry& entry : sEntries)
    {
        struct sigaction action = {};
        action.sa_sigaction = handler;
        // A fault of the handler's own is to reach it.
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
        struct sigaction found = {};
        sigaction(entry.number, nullptr, &found);
        if ((found.sa_flags & SA_SIGINFO) != 0 && found.sa_sigaction == handler)
            continue;
        entry.previous = found;
        sigaction(entry.number, &action, nullptr);
    }
}

void removeHandlers(SignalHandler handler) noexcept
{
    for (const Entry& entry : sEntries)
    {
        struct sigaction found = {};
        sigaction(entry.number, nullptr, &found);
        if ((found.sa_flags & SA_SIGINFO) != 0 && found.sa_sigaction == handler)
            sigaction(entry.number, &entry.previous, nullptr);
    }
}

void setReport(int number, SignalReport report) noexcept { entryOf(number).report = report; }

void passOn(int number, siginfo_t* info, void* context) noexcept
{
    Entry& entry = entryOf(number);
    const bool fault = isFault(*info);
    const bool raised = !fault && raisedByThread(number, *info, context);
    const bool isReported = reportOnce(entry, raised ? SignalOrigin::Raised : SignalOrigin::Fault);
    if (isFunction(entry.previous))
        return callPrevious(entry.previous, number, info, context);
    const bool isOver = raised && isReported;
    const bool isIgnored = !fault && entry.previous.sa_handler == SIG_IGN;
    if (!isOver && !isIgnored)
        endBy(number, fault && number != SIGTRAP);
}

} // namespace ky::impl::native
