// SPDX-License-Identifier: MIT
#include <ky/kyWorkThread.h>

#include "concurrency/limited_list.h"
#include "concurrency/wait_limits.h"

#include <ky/kyException.h>

namespace ky
{

kyJob::~kyJob() = default;

void kyJob::onDelete() {}

/// The locks of the worker live outside the guarded part: a job that crashes leaves none of them locked.
struct kyWorkThread::Turns
{
    explicit Turns(kyWorkThread& worker)
        : thread(worker),
          queueLock(worker.mQueueMutex, false),
          jobLock(worker.mJobMutex, false)
    {
    }

    kyWorkThread& thread;
    kyMutexLocker queueLock;
    kyMutexLocker jobLock;
};

kyWorkThread::kyWorkThread() : mMustStop(false), mIdle(true) {}

kyWorkThread::~kyWorkThread() = default;

void kyWorkThread::run()
{
    if (mustStop())
        return;
    Turns turns(*this);
    exception::ExecGuardedCode(&RunTurns, &turns);
}

void kyWorkThread::RunTurns(void* turns)
{
    auto& [thread, queueLock, jobLock] = *static_cast<Turns*>(turns);
    while (thread.waitForTurn(queueLock))
    {
        if (thread.mQueue.empty())
        {
            queueLock.unlock();
            continue;
        }
        kyJob* const job = thread.mQueue.front();
        thread.mQueue.pop_front();
        queueLock.unlock();
        jobLock.lock();
        thread.processJob(job);
        jobLock.unlock();
    }
}

/// Locks the queue and waits once when there is nothing to do. False, with the queue unlocked, when the worker must
/// stop. (A stop while a job was processed has found nobody to wake.)
bool kyWorkThread::waitForTurn(kyMutexLocker& queueLock)
{
    queueLock.lock();
    if (!mMustStop && (mQueue.empty() || mIdle))
    {
        mIdle = true;
        mWake.wait(&mQueueMutex, impl::waitWithoutLimit);
    }
    if (!mMustStop)
        return true;
    queueLock.unlock();
    return false;
}

void kyWorkThread::stop()
{
    {
        const kyMutexLocker locker(mQueueMutex);
        mMustStop = true;
        mWake.wakeAll();
    }
    waitThread(impl::joinWithoutLimit);
}

void kyWorkThread::lock() { mQueueMutex.lock(); }

void kyWorkThread::unlock() { mQueueMutex.unlock(); }

void kyWorkThread::beginWake() { lock(); }

void kyWorkThread::addJob(kyJob* job) { impl::appendLimited(mQueue, job, mQueue.max_size()); }

void kyWorkThread::endWake()
{
    mJobMutex.lock();
    mJobMutex.unlock();
    mIdle = false;
    unlock();
    mWake.wakeAll();
}

void kyWorkThread::clearJobs()
{
    while (!mQueue.empty())
    {
        kyJob* const job = mQueue.front();
        mQueue.pop_front();
        job->onDelete();
    }
}

bool kyWorkThread::mustStop() const { return mMustStop; }

void kyWorkThread::setIdle(bool idle) { mIdle = idle; }

} // namespace ky
