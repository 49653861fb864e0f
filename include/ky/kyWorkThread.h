// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A thread that works through a queue of jobs.
///
/// \code
/// class Loader : public ky::kyWorkThread
/// {
///     void processJob(ky::kyJob* job) override { ... }
/// };
///
/// Loader loader;
/// loader.startThread("loader");
/// loader.beginWake();
/// loader.addJob(&first);
/// loader.addJob(&second);
/// loader.endWake();
/// ...
/// loader.stop();
/// \endcode

#include <ky/kyExport.h>
#include <ky/kyMutex.h>
#include <ky/kyThread.h>
#include <ky/kyWaitCondition.h>

#include <atomic>
#include <list>

namespace ky
{

/// Work for a kyWorkThread. Subclasses hold what is to be done.
class KY_API kyJob
{
public:
    kyJob() = default;
    /// For subclasses whose values may be copied.
    /// @{
    kyJob(const kyJob&) = default;
    kyJob& operator=(const kyJob&) = default;
    /// @}
    virtual ~kyJob();

    /// Called when kyWorkThread::clearJobs() discards the job, which may destroy itself then. Does nothing here.
    virtual void onDelete();
};

/// One worker with a queue. Subclasses say what a job is in processJob(); the owner starts it with startThread() and
/// must call stop() before it is destroyed.
///
/// Jobs are queued in batches: beginWake(), any number of addJob(), endWake(), all on one thread. Several threads may
/// do that at the same time. The worker takes the jobs in the order in which they were queued and holds the queue's
/// lock only while it takes one, so that more can be queued while a job is processed.
///
/// Jobs belong to whoever queues them; the work thread never destroys one.
///
/// Once stopped it stays so: when it is started again its body ends at once. When processJob() throws or crashes, that
/// is logged and the thread ends; what is queued stays queued.
class KY_API kyWorkThread : public kyThread
{
public:
    /// Before full initialization of the library the messages of kyThread, kyMutex and kyWaitCondition are written.
    kyWorkThread();

    /// Forgets the queued jobs: neither destroys them nor calls their onDelete(). A worker that has not been stopped is
    /// then waited for, for ever.
    ~kyWorkThread() override;

    /// The worker's body.
    void run() override;

    /// Makes the worker end after the job in progress, if there is one, and joins it. Jobs that are still queued stay
    /// so. From processJob() it throws what kyThread::waitThread() throws on the thread itself.
    virtual void stop();

    /// Locks the queue; recursive.
    void lock();

    /// Unlocks the queue.
    void unlock();

    /// Begins a batch: locks the queue.
    void beginWake();

    /// Appends a job. Only between beginWake() and endWake(), or between lock() and unlock(); in the latter case the
    /// worker is not woken.
    /// \param job not owned; must live until it has been processed or discarded
    /// \throws std::length_error "list too long" when the queue cannot take more
    void addJob(kyJob* job);

    /// Ends a batch: waits until the job in progress, if there is one, has been processed, unlocks the queue and wakes
    /// the worker. The queue stays locked while it waits; so processJob() must neither queue jobs nor lock the queue
    /// while others do.
    void endWake();

    /// Calls onDelete() of every queued job, in order, and takes it off the queue. Only between lock() and unlock().
    void clearJobs();

protected:
    /// Does the work of one job, on the worker's thread, without the queue's lock.
    virtual void processJob(kyJob* job) = 0;

    /// Whether stop() has been called; for long jobs that want to end early.
    [[nodiscard]] bool mustStop() const;

    /// True makes the worker sleep at its next turn, until it is woken, even when jobs are queued.
    void setIdle(bool idle);

private:
    struct Turns;
    static void RunTurns(void* turns);
    bool waitForTurn(kyMutexLocker& queueLock);

    kyWaitCondition mWake;
    kyMutex mQueueMutex; ///< guards the queue and the flags
    kyMutex mJobMutex;   ///< held while a job is processed
    std::atomic<bool> mMustStop;
    std::atomic<bool> mIdle;
    std::list<kyJob*> mQueue; ///< jobs not owned
};

} // namespace ky
