// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyConcurrentPool.h>

#include <exception>
#include <list>
#include <memory>

namespace ky::impl
{

using TaskList = std::list<ConcurrentPool::Task*>;

/// Takes tasks from a list and executes them; any number of threads at once.
class TaskQueue
{
public:
    /// `mutex` guards the list from here on. Nothing is owned.
    TaskQueue(TaskList& tasks, kyMutex& mutex, kyWaitCondition& taskCondition);

    /// Until the list is empty. The mutex is held once on entry and on return.
    void workOff();

    /// Throws what the first of the failed tasks has thrown.
    void rethrow() const;

private:
    void executeTasks();

    TaskList& mTasks;
    kyMutex& mMutex;
    kyWaitCondition& mTaskCondition;
    std::exception_ptr mThrown;
};

/// One call of SolverBase::solve() with the help of workers: the dispatching side of the pool.
///
/// A worker is given a Share, not a single task: it takes tasks from the list as long as there are some. So a share
/// that no worker has come to begin can be taken back, and nobody waits for a thread that the system has not run yet.
class Batch
{
public:
    /// Both outlive the batch.
    Batch(ConcurrentPool& pool, TaskList& tasks);
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    /// Executes the tasks. Throws what the first of the failed ones has thrown.
    void run();

private:
    class Share;

    void invite(std::size_t wanted);
    void withdraw();
    void awaitHelpers();

    ConcurrentPool& mPool;
    TaskList& mTasks;
    TaskQueue mQueue;
    std::unique_ptr<Share[]> mShares;
    std::size_t mShareCount; ///< handed out
    std::size_t mHelpers;    ///< shares that workers are inside of
};

} // namespace ky::impl
