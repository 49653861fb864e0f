// SPDX-License-Identifier: MIT
#include "concurrency/dispatch_pool.h"

#include "platform/fork_native.h"
#include "platform/process_id_native.h"

#include <ky/kyThread.h>

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace ky
{

namespace
{

// Constant from the start and without destructors: clients may use the pool from static objects, and an exit without
// termination leaves the workers to the system. No lock guards the pointer, so a fork cannot leave one held.
constinit std::atomic<ConcurrentPool*> sPool{nullptr};
constinit std::atomic<std::uint32_t> sUses{0};
constinit std::atomic<std::uint64_t> sOwnerProcess{0};
/// What a forked child inherited: its workers and their users exist in the parent only, so it can never be destroyed.
constinit std::atomic<ConcurrentPool*> sAbandoned{nullptr};

void abandonInChild()
{
    if (impl::native::currentProcessId() == sOwnerProcess.load())
        return;
    if (ConcurrentPool* const inherited = sPool.exchange(nullptr))
        sAbandoned = inherited;
    sUses = 0;
}

} // namespace

namespace impl
{

void createConcurrentPool(unsigned int processors)
{
    static const bool registered = (native::onFork([] {}, &abandonInChild), true);
    static_cast<void>(registered);
    if (sPool.load() != nullptr)
        return;
    auto* const pool = new ConcurrentPool(std::min(processors, maxPoolWorkers));
    sOwnerProcess = native::currentProcessId();
    sPool = pool;
}

void destroyConcurrentPool()
{
    // Whoever counts itself after this finds no pool.
    ConcurrentPool* const pool = sPool.exchange(nullptr);
    for (std::uint32_t uses = sUses; uses != 0; uses = sUses)
        kyThread::msleep(1);
    delete pool;
}

PoolUse::PoolUse() noexcept : mPool(nullptr)
{
    // Those who come when it is gone do not keep the one who waits for the others.
    if (sPool == nullptr)
        return;
    ++sUses;
    mPool = sPool;
    if (mPool == nullptr)
        --sUses;
}

PoolUse::~PoolUse()
{
    if (mPool != nullptr)
        --sUses;
}

} // namespace impl

namespace concurrent
{

ConcurrentPool* GetConcurrentPool() { return sPool; }

} // namespace concurrent

} // namespace ky
