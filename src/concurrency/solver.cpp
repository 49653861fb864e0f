// SPDX-License-Identifier: MIT
#include "concurrency/dispatch_pool.h"
#include "concurrency/dispatch_worker.h"
#include "concurrency/solver_batch.h"

namespace ky
{

namespace
{

void solveAlone(impl::TaskList& tasks, kyMutex& mutex, kyWaitCondition& taskCondition)
{
    impl::TaskQueue queue(tasks, mutex, taskCondition);
    {
        const kyMutexLocker locker(mutex);
        queue.workOff();
    }
    queue.rethrow();
}

/// On a worker, which must not wait for other workers.
bool solveOnWorker(impl::TaskList& tasks)
{
    const impl::WorkerContext* const worker = impl::currentWorker();
    if (worker == nullptr)
        return false;
    solveAlone(tasks, *worker->poolMutex, *worker->taskCondition);
    return true;
}

} // namespace

ConcurrentPool::SolverBase::SolverBase() = default;

ConcurrentPool::SolverBase::~SolverBase() = default;

void ConcurrentPool::SolverBase::addTask(Task* task) { mTasks.push_back(task); }

void ConcurrentPool::SolverBase::solve()
{
    if (solveOnWorker(mTasks))
        return;
    const impl::PoolUse use;
    if (use.pool() != nullptr)
    {
        impl::Batch(*use.pool(), mTasks).run();
        return;
    }
    kyMutex mutex;
    kyWaitCondition taskCondition;
    solveAlone(mTasks, mutex, taskCondition);
}

void ConcurrentPool::SolverBase::solve(ConcurrentPool& pool)
{
    if (!solveOnWorker(mTasks))
        impl::Batch(pool, mTasks).run();
}

} // namespace ky
