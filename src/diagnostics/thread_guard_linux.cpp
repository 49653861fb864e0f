// SPDX-License-Identifier: MIT
#include "diagnostics/thread_guard_linux.h"

#include "platform/spare_list.h"

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

/// Mapping and unmapping its memory costs more than the rest of starting a thread: that much is kept for others.
constexpr std::size_t mostSpares = 32;

struct AllGuards
{
    std::mutex mutex;
    ThreadGuard* first = nullptr;
    SpareList<ThreadGuard> spares{mostSpares}; ///< of threads that have ended
};

constinit AllGuards sAll;

void* mapGuard() noexcept
{
    void* const memory =
        mmap(nullptr, wholeSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    mprotect(memory, page, PROT_NONE);
    return static_cast<char*>(memory) + page + signalStackSize;
}

void unmapGuard(ThreadGuard* guard) noexcept
{
    munmap(reinterpret_cast<char*>(guard) - signalStackSize - page, wholeSize);
}

void addToAll(ThreadGuard* guard) noexcept
{
    const std::lock_guard lock(sAll.mutex);
    guard->next = sAll.first;
    if (guard->next != nullptr)
        guard->next->previous = guard;
    sAll.first = guard;
}

/// Whether the memory is kept for another thread.
bool removeFromAll(ThreadGuard* guard) noexcept
{
    const std::lock_guard lock(sAll.mutex);
    (guard->previous == nullptr ? sAll.first : guard->previous->next) = guard->next;
    if (guard->next != nullptr)
        guard->next->previous = guard->previous;
    return sAll.spares.keep(*guard);
}

void* takeSpare() noexcept
{
    const std::lock_guard lock(sAll.mutex);
    return sAll.spares.take();
}

/// Gives the spares back when the library is unloaded.
struct SpareKeeper
{
    ~SpareKeeper()
    {
        const std::lock_guard lock(sAll.mutex);
        sAll.spares.close(&unmapGuard);
    }
};
const SpareKeeper spareKeeper;

/// A signal stack that the thread has made for itself stays.
void offerSignalStack(ThreadGuard& guard) noexcept
{
    stack_t& own = guard.ownSignalStack;
    own.ss_sp = reinterpret_cast<char*>(&guard) - signalStackSize;
    own.ss_size = signalStackSize;
    stack_t present = {};
    if (sigaltstack(&own, &present) == 0)
    {
        if ((present.ss_flags & SS_DISABLE) != 0)
            return;
        sigaltstack(&present, nullptr);
    }
    own = {};
}

void takeBackSignalStack(const ThreadGuard& guard) noexcept
{
    stack_t none = {};
    none.ss_flags = SS_DISABLE;
    stack_t present = {};
    sigaltstack(&none, &present);
    if (present.ss_sp != guard.ownSignalStack.ss_sp)
        sigaltstack(&present, nullptr);
}

/// At the end of the thread.
struct Release
{
    ~Release()
    {
        ThreadGuard* const guard = tGuard;
        if (guard == nullptr)
            return;
        if (guard->ownSignalStack.ss_sp != nullptr)
            takeBackSignalStack(*guard);
        tGuard = nullptr;
        if (!removeFromAll(guard))
            unmapGuard(guard);
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
    void* const spare = takeSpare();
    void* const place = spare != nullptr ? spare : mapGuard();
    if (place == nullptr)
        return nullptr;
    auto* const guard = new (place) ThreadGuard{};
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
