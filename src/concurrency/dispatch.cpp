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
constexpr std::size_t cacheLine = 64;

std::uint64_t divideUp(std::uint64_t value, std::uint64_t divisor) noexcept
{
    return value / divisor + (value % divisor != 0 ? 1 : 0);
}

} // namespace

/// What all threads that work at a loop share. One object is added to the solver once for each of them.
class LoopTask final : public ConcurrentPool::Task
{
public:
    explicit LoopTask(BlockLoop& loop) : mLoop(loop), mBlocks(loop.blockCount()), mCaller(std::this_thread::get_id()) {}

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
        while (!mStop.load(std::memory_order_relaxed))
        {
            const std::uint64_t block = mNext.fetch_add(1, std::memory_order_relaxed);
            if (block >= mBlocks)
                return;
            const std::uint64_t first = block * mLoop.mGrain;
            const std::uint64_t size = std::min(mLoop.mGrain, mLoop.mCount - first);
            mLoop.runBlock(block, first, first + size);
            if (mLoop.mNotifier != nullptr)
                report(size);
        }
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
    const std::thread::id mCaller;
    std::atomic<std::uint64_t> mDone{0}; ///< indices; counted for the notifier only
    std::atomic<bool> mStop{false};
    alignas(cacheLine) std::atomic<std::uint64_t> mNext{0}; ///< block
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
    LoopTask task(*this);
    runShared(task);
    return task.isComplete();
}

/// The calling thread takes the place of one worker where there are several.
void BlockLoop::runShared(LoopTask& task)
{
    const std::uint64_t blocks = blockCount();
    if (blocks > 1 && currentWorker() == nullptr)
    {
        const PoolUse use;
        if (ConcurrentPool* const pool = use.pool())
        {
            const unsigned int helpers = std::max(2u, pool->getWorkerCount()) - 1;
            for (std::uint64_t threads = std::min<std::uint64_t>(blocks, helpers + 1u); threads != 0; --threads)
                addTask(&task);
            solve(*pool);
            return;
        }
    }
    task.work();
}

} // namespace ky::impl
