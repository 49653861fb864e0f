// SPDX-License-Identifier: MIT
#include "concurrency/dispatch_guard.h"
#include "concurrency/dispatch_pool.h"
#include "concurrency/dispatch_worker.h"

#include <ky/kyConcurrent.h>
#include <ky/kyProgressNotifier.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

namespace ky::impl
{

namespace
{

constexpr std::uint64_t defaultBlocks = 256;
/// A thread claims blocks by the dozen while there are many for every thread, and one by one towards the end.
constexpr std::uint64_t claimsPerThread = 16;
constexpr std::uint64_t largestClaim = 16;
constexpr std::size_t cacheLine = 64;

std::uint64_t divideUp(std::uint64_t value, std::uint64_t divisor) noexcept
{
    return value / divisor + (value % divisor != 0 ? 1 : 0);
}

/// The calling thread takes the place of one worker where there are several.
unsigned int threadsFor(const ConcurrentPool& pool) { return std::max(2U, pool.getWorkerCount()); }

} // namespace

/// What all threads that work at a loop share. One object is added to the solver once for each of them.
class LoopTask final : public ConcurrentPool::Task
{
public:
    LoopTask(BlockLoop& loop, std::uint64_t threads)
        : mLoop(loop),
          mBlocks(loop.blockCount()),
          mClaims(threads * claimsPerThread),
          mCaller(std::this_thread::get_id())
    {
    }

    void execute(kyMutex* poolMutex, kyWaitCondition*) override
    {
        const ConcurrentPool::Unlocked unlocked(*poolMutex);
        work();
    }

    /// Runs blocks until there are no more.
    void work()
    {
        auto run = [this] { runBlocks(); };
        const std::exception_ptr thrown = callGuarded(run);
        if (!thrown)
            return;
        mStop = true;
        std::rethrow_exception(thrown);
    }

    [[nodiscard]] bool isComplete() const { return mLoop.mNotifier == nullptr || mDone == mLoop.mCount; }

private:
    void runBlocks()
    {
        for (;;)
        {
            const std::uint64_t left = mBlocks - std::min(mBlocks, mNext.load(std::memory_order_relaxed));
            const std::uint64_t wanted = std::clamp<std::uint64_t>(left / mClaims, 1, largestClaim);
            const std::uint64_t claimed = mNext.fetch_add(wanted, std::memory_order_relaxed);
            const std::uint64_t end = std::min(mBlocks, claimed + wanted);
            if (claimed >= mBlocks)
                return;
            for (std::uint64_t block = claimed; block != end; ++block)
            {
                if (mStop.load(std::memory_order_relaxed))
                    return;
                runBlock(block);
            }
        }
    }

    void runBlock(std::uint64_t block)
    {
        const std::uint64_t first = block * mLoop.mGrain;
        const std::uint64_t size = std::min(mLoop.mGrain, mLoop.mCount - first);
        mLoop.runBlock(block, first, first + size);
        if (mLoop.mNotifier != nullptr)
            report(size);
    }

    /// A notifier may be asked by any thread; to report to it is for one.
    void report(std::uint64_t size)
    {
        const std::uint64_t done = mDone.fetch_add(size, std::memory_order_relaxed) + size;
        if (std::this_thread::get_id() == mCaller)
            mLoop.mNotifier->setCurrentStepProgress(static_cast<double>(done));
        if (mLoop.mNotifier->shouldCancel())
            mStop.store(true, std::memory_order_relaxed);
    }

    BlockLoop& mLoop;
    const std::uint64_t mBlocks;
    const std::uint64_t mClaims;
    const std::thread::id mCaller;
    std::atomic<bool> mStop{false};
    alignas(cacheLine) std::atomic<std::uint64_t> mNext{0}; ///< block
    alignas(cacheLine) std::atomic<std::uint64_t> mDone{0}; ///< indices; counted for the notifier only
};

BlockLoop::BlockLoop(std::uint64_t count, std::uint64_t grain, kyProgressNotifierInterface* notifier)
    : mCount(count),
      mGrain(grain != 0 ? grain : std::max<std::uint64_t>(1, divideUp(count, defaultBlocks))),
      mNotifier(notifier)
{
}

BlockLoop::~BlockLoop() = default;

std::uint64_t BlockLoop::blockCount() const { return divideUp(mCount, mGrain); }

bool BlockLoop::run()
{
    kyProgressNotifierGroupCloser closer;
    if (mNotifier != nullptr)
    {
        if (mNotifier->shouldCancel())
            return mCount == 0;
        mNotifier->beginStepGroup(1, static_cast<double>(mCount), &closer);
    }
    return runShared();
}

bool BlockLoop::runShared()
{
    const std::uint64_t blocks = blockCount();
    if (blocks > 1 && currentWorker() == nullptr)
    {
        const PoolUse use;
        if (use.pool() != nullptr)
            return runOn(*use.pool(), std::min<std::uint64_t>(blocks, threadsFor(*use.pool())));
    }
    LoopTask task(*this, 1);
    task.work();
    return task.isComplete();
}

bool BlockLoop::runOn(ConcurrentPool& pool, std::uint64_t threads)
{
    LoopTask task(*this, threads);
    for (std::uint64_t added = 0; added != threads; ++added)
        addTask(&task);
    solve(pool);
    return task.isComplete();
}

} // namespace ky::impl
