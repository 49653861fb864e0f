// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A fixed set of worker threads, and the base class of what is handed to them. Loops and reductions over the pool are
/// in kyConcurrent.h; this header is for those who write tasks of their own.

#include <ky/kyExport.h>
#include <ky/kyMutex.h>
#include <ky/kyWaitCondition.h>

#include <cstdint>
#include <list>
#include <vector>

namespace ky
{

namespace impl
{
class Batch;
}

/// A fixed set of worker threads that run tasks. Full initialization of the library makes one with a worker for every
/// processor; see concurrent::GetConcurrentPool().
///
/// Workers sleep until a solver hands them a task; see SolverBase. Thread safety: everything but construction and
/// destruction may be used from any thread.
class KY_API ConcurrentPool
{
public:
    class Worker; ///< private to the library

    /// A piece of work for one thread at a time. The destructor and execute() are the first two virtual operations.
    class KY_API Task
    {
    public:
        virtual ~Task();

        /// Does the work, on a worker or on the thread that called SolverBase::solve().
        ///
        /// The mutex of the pool is held once on entry, and must be held once on return; an implementation releases it
        /// while it computes (see Unlocked), since nobody else comes to work before it does. What is guarded by the
        /// mutex may be shared with the other tasks without another lock.
        ///
        /// An exception is handed on to the caller of SolverBase::solve().
        ///
        /// \param poolMutex the mutex of the pool, not owned
        /// \param taskCondition belongs to `poolMutex`, not owned; for tasks of a batch that wait for each other. All
        ///        batches share it: wait in a loop on a predicate, and wake with wakeAll(). A task may wait only for
        ///        what tasks before it in the list do: later ones may not have been started.
        virtual void execute(kyMutex* poolMutex, kyWaitCondition* taskCondition) = 0;

    protected:
        Task() = default;
        /// For subclasses whose values may be copied.
        /// @{
        Task(const Task&) = default;
        Task& operator=(const Task&) = default;
        /// @}
    };

    /// Releases a mutex that is held for a scope, for the part of Task::execute() that computes.
    class Unlocked
    {
    public:
        /// `mutex`: held once by the calling thread; outlives this object.
        explicit Unlocked(kyMutex& mutex) : mMutex(mutex) { mMutex.unlock(); }
        ~Unlocked() { mMutex.lock(); }
        Unlocked(const Unlocked&) = delete;
        Unlocked& operator=(const Unlocked&) = delete;

    private:
        kyMutex& mMutex;
    };

    /// Base class of the objects that prepare parallel work and have it done: a list of tasks. For one thread at a
    /// time.
    class KY_API SolverBase
    {
    public:
        SolverBase();

        /// Frees the list, not the tasks.
        virtual ~SolverBase();
        SolverBase(const SolverBase&) = delete;
        SolverBase& operator=(const SolverBase&) = delete;

        /// Appends `task` to the prepared work. Not owned: it must live until solve() has returned. The same task may
        /// be added more than once; it is then executed as often, possibly by several threads at once.
        void addTask(Task* task);

        /// Executes every prepared task once, in the order of the list, on the idle workers of the process-wide pool
        /// and on the calling thread, and returns when all have ended. The list is empty afterwards.
        ///
        /// Everything runs on the calling thread, one task after another, when no worker is idle, when there is no
        /// pool, in a child made by `fork()`, and when the calling thread is a worker itself; so a task may call this.
        ///
        /// When a task throws, the tasks that have not begun are dropped, and the first exception is thrown here once
        /// the others have ended. A task that crashes is reported as guarded code is (see kyException.h) and counts as
        /// one that has thrown a std::runtime_error.
        void solve();

        /// As above on another pool, which must outlive the call.
        void solve(ConcurrentPool& pool);

    private:
        std::list<Task*> mTasks; ///< not owned
    };

    /// Starts `workers` threads (at least one), named after their class.
    /// \throws std::system_error when the system makes no thread; those made before have ended then
    explicit ConcurrentPool(unsigned int workers);

    /// Ends and joins the workers; a task in progress is finished first. Nobody may use the pool any more.
    ~ConcurrentPool();

    ConcurrentPool(const ConcurrentPool&) = delete;
    ConcurrentPool& operator=(const ConcurrentPool&) = delete;

    /// Number of workers.
    [[nodiscard]] unsigned int getWorkerCount() const;

private:
    friend class impl::Batch;

    void startWorkers();
    void endWorkers();

    std::vector<Worker*> mWorkers;  ///< owned
    kyMutex mMutex;                 ///< guards what the workers and their users share
    kyWaitCondition mTaskCondition; ///< for the tasks among themselves
    kyWaitCondition mWorkAvailable; ///< idle workers wait here
    kyWaitCondition mAllDone;       ///< those who have handed out tasks wait here
    std::int32_t mOutstanding;      ///< tasks that are handed out and not finished
    std::uint32_t mWorkerCount;
    std::uint32_t mReserved;
};

namespace concurrent
{

/// The pool of the process. Null before full initialization of the library, after its termination, and in a child made
/// by `fork()`, which has no workers. Owned by the library: it is gone after the last terminateKySystem().
KY_API ConcurrentPool* GetConcurrentPool();

} // namespace concurrent

} // namespace ky
