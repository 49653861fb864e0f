// SPDX-License-Identifier: MIT
#include "concurrency/solver_batch.h"

#include "concurrency/dispatch_guard.h"
#include "concurrency/dispatch_worker.h"
#include "concurrency/sync_native.h"
#include "concurrency/wait_limits.h"

#include <algorithm>
#include <utility>

namespace ky::impl
{

TaskQueue::TaskQueue(TaskList& tasks, kyMutex& mutex, kyWaitCondition& taskCondition)
    : mTasks(tasks),
      mMutex(mutex),
      mTaskCondition(taskCondition)
{
}

void TaskQueue::workOff()
{
    auto executeAll = [this] { executeTasks(); };
    std::exception_ptr thrown = callGuarded(executeAll);
    if (!thrown)
        return;
    // A task may fail while it has released the mutex.
    if (!native::isInside(*static_cast<native::RecursiveLock*>(mMutex.getMutexData())))
        mMutex.lock();
    mTasks.clear();
    if (!mThrown)
        mThrown = std::move(thrown);
}

void TaskQueue::executeTasks()
{
    while (!mTasks.empty())
    {
        ConcurrentPool::Task& task = *mTasks.front();
        mTasks.pop_front();
        task.execute(&mMutex, &mTaskCondition);
    }
}

void TaskQueue::rethrow() const
{
    if (mThrown)
        std::rethrow_exception(mThrown);
}

/// What a worker's task slot holds for a batch.
class Batch::Share final : public ConcurrentPool::Task
{
public:
    void handOut(Batch& batch, ConcurrentPool::Worker& worker)
    {
        mBatch = &batch;
        mWorker = &worker;
    }

    void execute(kyMutex*, kyWaitCondition*) override
    {
        mHasBegun = true;
        ++mBatch->mHelpers;
        mBatch->mQueue.workOff();
        // When nothing else is outstanding, the worker itself wakes those who wait.
        if (--mBatch->mHelpers == 0 && mBatch->mPool.mOutstanding > 1)
            mBatch->mPool.mAllDone.wakeAll();
    }

    [[nodiscard]] bool hasBegun() const { return mHasBegun; }
    [[nodiscard]] ConcurrentPool::Worker& worker() const { return *mWorker; }

private:
    Batch* mBatch = nullptr;
    ConcurrentPool::Worker* mWorker = nullptr;
    bool mHasBegun = false;
};

Batch::Batch(ConcurrentPool& pool, TaskList& tasks)
    : mPool(pool),
      mTasks(tasks),
      mQueue(tasks, pool.mMutex, pool.mTaskCondition),
      mShareCount(0),
      mHelpers(0)
{
}

Batch::~Batch() = default;

void Batch::run()
{
    // One task is for the calling thread.
    if (mTasks.size() > 1)
        invite(std::min(mTasks.size() - 1, mPool.mWorkers.size()));
    {
        const kyMutexLocker locker(mPool.mMutex);
        mQueue.workOff();
        withdraw();
        awaitHelpers();
    }
    mQueue.rethrow();
}

void Batch::invite(std::size_t wanted)
{
    mShares = std::make_unique<Share[]>(wanted);
    {
        const kyMutexLocker locker(mPool.mMutex);
        for (ConcurrentPool::Worker* const worker : mPool.mWorkers)
        {
            if (mShareCount == wanted)
                break;
            if (worker->mTask != nullptr)
                continue;
            Share& share = mShares[mShareCount++];
            share.handOut(*this, *worker);
            worker->mTask = &share;
            ++mPool.mOutstanding;
        }
    }
    // Outside the mutex, which is the first thing that the workers need.
    if (mShareCount != 0)
        mPool.mWorkAvailable.wakeAll();
}

/// Takes back what no worker has come to begin.
void Batch::withdraw()
{
    for (std::size_t i = 0; i < mShareCount; ++i)
    {
        const Share& share = mShares[i];
        if (share.hasBegun())
            continue;
        share.worker().mTask = nullptr;
        if (--mPool.mOutstanding == 0)
            mPool.mAllDone.wakeAll();
    }
}

/// Not until the whole pool is idle: other batches may run for long, or wait for what the calling thread does next.
void Batch::awaitHelpers()
{
    while (mHelpers != 0)
        mPool.mAllDone.wait(&mPool.mMutex, waitWithoutLimit);
}

} // namespace ky::impl
