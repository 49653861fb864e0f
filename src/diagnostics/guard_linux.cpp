// SPDX-License-Identifier: MIT
// A guarded call is a record on the stack, linked from the thread. A fault inside is caught by a signal handler, which
// notes what it was and where, and jumps back to the record; the report comes after the jump, outside the handler.
//
// The handlers are in place while the watchers are, and otherwise while some thread is in a guarded call, so that
// nothing of them remains when the library is not in use.
#include "diagnostics/guard_native.h"

#include "diagnostics/fault_code_linux.h"
#include "diagnostics/frame_walk_linux.h"
#include "diagnostics/memory_safety_linux.h"
#include "diagnostics/signal_table_linux.h"
#include "diagnostics/thread_guard_linux.h"
#include "platform/compiler.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <mutex>
#include <pthread.h>
#include <ucontext.h>

namespace ky::impl::native
{

namespace
{

/// SS_AUTODISARM of the kernel: such a signal stack is gone after a jump out of its handler.
constexpr int disarmsItself = INT_MIN;

struct Handlers
{
    std::mutex mutex;
    std::atomic<bool> installed{false};
    /// Whether they go with the last guarded call.
    std::atomic<bool> temporary{true};
    int watched = 0;
};

constinit Handlers sHandlers;

void note(ThreadGuard& guard, int number, const siginfo_t& info, const ucontext_t& context) noexcept
{
    guard.mask = context.uc_sigmask;
    guard.signalStack = context.uc_stack;
    guard.fault.code = codeOf(number, info, guard.stackLow);
    guard.fault.frames.count = 0;
    guard.fault.memoryIsSafe = false;
    guard.fault.frames.firstGuess = StackFrames::capacity;
    // What cannot be read ends the walk.
    sigjmp_buf escape;
    if (sigsetjmp(escape, 0) == 0)
    {
        guard.escape = &escape;
        WalkedCall walked{guard.fault.frames, reinterpret_cast<std::uintptr_t>(guard.current)};
        walkFrames(context, walked);
        guard.fault.memoryIsSafe = isMemorySafe(walked);
    }
    guard.escape = nullptr;
}

void handle(int number, siginfo_t* info, void* context)
{
    const int error = errno;
    ThreadGuard* const guard = tGuard;
    if (guard != nullptr && guard->current != nullptr && isFault(*info))
    {
        if (guard->escape != nullptr)
            siglongjmp(*guard->escape, 1);
        note(*guard, number, *info, *static_cast<const ucontext_t*>(context));
        siglongjmp(guard->current->jump, 1);
    }
    passOn(number, info, context);
    errno = error;
}

KY_COLD void installForCall() noexcept
{
    const std::lock_guard lock(sHandlers.mutex);
    installHandlers(&handle);
    sHandlers.installed = true;
}

KY_COLD void removeAfterCall() noexcept
{
    const std::lock_guard lock(sHandlers.mutex);
    if (!sHandlers.temporary || anyThreadGuarded())
        return;
    sHandlers.installed = false;
    removeHandlers(&handle);
}

/// Links the record for the time of the call.
class Link
{
public:
    Link(ThreadGuard& guard, GuardRecord& record) noexcept : mGuard(guard)
    {
        record.outer = guard.current;
        guard.current = &record;
        // A signal handler of this thread reads it.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        if (KY_UNLIKELY(!sHandlers.installed.load(std::memory_order_acquire)))
            installForCall();
    }
    ~Link() { unlink(mGuard); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    static void unlink(ThreadGuard& guard) noexcept
    {
        guard.current = guard.current->outer;
        std::atomic_signal_fence(std::memory_order_seq_cst);
        if (KY_UNLIKELY(sHandlers.temporary.load(std::memory_order_relaxed)) && guard.current == nullptr)
            removeAfterCall();
    }

private:
    ThreadGuard& mGuard;
};

/// Apart from the jump: nothing of it lives in registers when the jump comes back.
KY_NOINLINE void callLinked(ThreadGuard& guard, GuardRecord& record, void (*fn)(void*), void* arg)
{
    const Link link(guard, record);
    fn(arg);
}

/// Back on the thread's own stack.
KY_COLD void land(FaultReport report) noexcept
{
    ThreadGuard& guard = *tGuard;
    Fault fault = guard.fault;
    pthread_sigmask(SIG_SETMASK, &guard.mask, nullptr);
    if ((guard.signalStack.ss_flags & disarmsItself) != 0)
        sigaltstack(&guard.signalStack, nullptr);
    Link::unlink(guard);
    report(fault);
}

ThreadGuard* ownGuard() noexcept
{
    if (KY_UNLIKELY(tGuard == nullptr))
        prepareThread();
    return tGuard;
}

} // namespace

bool runGuarded(void (*fn)(void*), void* arg, FaultReport report)
{
    ThreadGuard* const guard = ownGuard();
    if (KY_UNLIKELY(guard == nullptr))
    {
        fn(arg);
        return true;
    }
    GuardRecord record;
    if (sigsetjmp(record.jump, 0) == 0)
    {
        callLinked(*guard, record, fn, arg);
        return true;
    }
    land(report);
    return false;
}

void watchSignal(int number, SignalReport report)
{
    const std::lock_guard lock(sHandlers.mutex);
    setReport(number, report);
    installHandlers(&handle);
    sHandlers.installed = true;
    sHandlers.temporary = false;
    ++sHandlers.watched;
}

void unwatchSignal(int number)
{
    setReport(number, nullptr);
    {
        const std::lock_guard lock(sHandlers.mutex);
        if (--sHandlers.watched != 0)
            return;
        sHandlers.temporary = true;
    }
    removeAfterCall();
}

void prepareThread() noexcept
{
    locateAllocator();
    if (tGuard == nullptr)
        makeThreadGuard();
}

} // namespace ky::impl::native
