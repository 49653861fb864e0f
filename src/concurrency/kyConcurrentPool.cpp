// SPDX-License-Identifier: MIT
#include <ky/kyConcurrentPool.h>

#include "concurrency/dispatch_worker.h"
#include "concurrency/wait_limits.h"

#include <memory>

namespace ky
{

namespace
{

thread_local const impl::WorkerContext* sCurrentWorker = nullptr;

} // namespace

namespace impl
{

const WorkerContext* currentWorker() noexcept { return sCurrentWorker; }

} // namespace impl

ConcurrentPool::Task::~Task() = default;

ConcurrentPool::Worker::Worker(ConcurrentPool& pool) : mTask(nullptr), mPool(&pool), mAlive(true) {}

ConcurrentPool::Worker::~Worker() { waitThread(impl::joinWithoutLimit); }

void ConcurrentPool::Worker::run()
{
    const impl::WorkerContext context{&mPool->mMutex, &mPool->mTaskCondition};
    sCurrentWorker = &context;
    const kyMutexLocker locker(mPool->mMutex);
    while (mAlive)
    {
        if (mTask != nullptr)
            executeTask();
        else
            mPool->mWorkAvailable.wait(&mPool->mMutex, impl::waitWithoutLimit);
    }
}

void ConcurrentPool::Worker::executeTask()
{
    mTask->execute(&mPool->mMutex, &mPool->mTaskCondition);
    mTask = nullptr;
    if (--mPool->mOutstanding == 0)
        mPool->mAllDone.wakeAll();
}

ConcurrentPool::ConcurrentPool(unsigned int workers)
    : mOutstanding(0),
      mWorkerCount(workers == 0 ? 1 : workers),
      mReserved(0)
{
    try
    {
        startWorkers();
    }
    catch (...)
    {
        endWorkers();
        throw;
    }
}

ConcurrentPool::~ConcurrentPool() { endWorkers(); }

void ConcurrentPool::startWorkers()
{
    mWorkers.reserve(mWorkerCount);
    while (mWorkers.size() < mWorkerCount)
    {
        auto worker = std::make_unique<Worker>(*this);
        worker->startThread(nullptr);
        mWorkers.push_back(worker.release());
    }
}

void ConcurrentPool::endWorkers()
{
    {
        const kyMutexLocker locker(mMutex);
        for (Worker* const worker : mWorkers)
            worker->mAlive = false;
        mWorkAvailable.wakeAll();
    }
    for (const Worker* const worker : mWorkers)
        delete worker;
    mWorkers.clear();
}

unsigned int ConcurrentPool::getWorkerCount() const { return mWorkerCount; }

} // namespace ky
