// SPDX-License-Identifier: MIT
#include "diagnostics/thread_guard_linux.h"

#include <mutex>
#include <new>
#include <pthread.h>
#include <sys/mman.h>

namespace ky::impl::native
{

thread_local constinit ThreadGuard* tGuard = nullptr;

namespace
{

constexpr std::size_t page = 4096;
constexpr std::size_t signalStackSize = 64 * 1024;
constexpr std::size_t guardSize = (sizeof(ThreadGuard) + page - 1) / page * page;
/// Lowest page, signal stack, the thread's record.
constexpr std::size_t wholeSize = page + signalStackSize + guardSize;

struct AllGuards
{
    std::mutex mutex;
    ThreadGuard* first = nullptr;
};

constinit AllGuards sAll;

void* lowestPageOf(ThreadGuard* guard) noexcept { return reinterpret_cast<char*>(guard) - signalStackSize - page; }

void addToAll(ThreadGuard* guard) noexcept
{
    const std::lock_guard lock(sAll.mutex);
    guard->next = sAll.first;
    if (guard->next != nullptr)
        guard->next->previous = guard;
    sAll.first = guard;
}

void removeFromAll(const ThreadGuard* guard) noexcept
{
    const std::lock_guard lock(sAll.mutex);
    (guard->previous == nullptr ? sAll.first : guard->previous->next) = guard->next;
    if (guard->next != nullptr)
        guard->next->previous = guard->previous;
}

/// At the end of the thread.
struct Release
{
    ~Release()
    {
        ThreadGuard* const guard = tGuard;
        if (guard == nullptr)
            return;
        stack_t present = {};
        sigaltstack(nullptr, &present);
        if (guard->ownSignalStack.ss_sp != nullptr && present.ss_sp == guard->ownSignalStack.ss_sp)
        {
            stack_t none = {};
            none.ss_flags = SS_DISABLE;
            sigaltstack(&none, nullptr);
        }
        tGuard = nullptr;
        removeFromAll(guard);
        munmap(lowestPageOf(guard), wholeSize);
    }
    void arm() const noexcept {}
};

thread_local const Release tRelease;

void measureStack(ThreadGuard& guard) noexcept
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return;
    void* low = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &low, &size);
    pthread_attr_destroy(&attributes);
    guard.stackLow = reinterpret_cast<std::uintptr_t>(low);
    guard.stackHigh = guard.stackLow + size;
}

/// A signal stack that the thread has made for itself stays.
void offerSignalStack(ThreadGuard& guard) noexcept
{
    stack_t present = {};
    sigaltstack(nullptr, &present);
    if ((present.ss_flags & SS_DISABLE) == 0)
        return;
    guard.ownSignalStack.ss_sp = reinterpret_cast<char*>(&guard) - signalStackSize;
    guard.ownSignalStack.ss_size = signalStackSize;
    sigaltstack(&guard.ownSignalStack, nullptr);
}

void holdForFork() noexcept { sAll.mutex.lock(); }
void releaseAfterFork() noexcept { sAll.mutex.unlock(); }

/// The threads of the parent are not in the child.
void keepOwnInChild() noexcept
{
    sAll.first = tGuard;
    if (tGuard != nullptr)
        tGuard->next = tGuard->previous = nullptr;
    sAll.mutex.unlock();
}

const int registered = pthread_atfork(&holdForFork, &releaseAfterFork, &keepOwnInChild);

} // namespace

ThreadGuard* makeThreadGuard() noexcept
{
    void* const memory =
        mmap(nullptr, wholeSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    mprotect(memory, page, PROT_NONE);
    auto* const guard = new (static_cast<char*>(memory) + page + signalStackSize) ThreadGuard{};
    measureStack(*guard);
    offerSignalStack(*guard);
    tRelease.arm();
    addToAll(guard);
    tGuard = guard;
    return guard;
}

bool anyThreadGuarded() noexcept
{
    const std::lock_guard lock(sAll.mutex);
    const ThreadGuard* guard = sAll.first;
    while (guard != nullptr && guard->current.load(std::memory_order_relaxed) == nullptr)
        guard = guard->next;
    return guard != nullptr;
}

} // namespace ky::impl::native
