// SPDX-License-Identifier: MIT
#pragma once

#include "platform/compiler.h"
#include <ky/kyConcurrentPool.h>
#include <ky/kyThread.h>

namespace ky
{

/// Executes what is put into its task slot. Slot and flag are guarded by the mutex of the pool.
class KY_HIDDEN ConcurrentPool::Worker final : public kyThread
{
public:
    explicit Worker(ConcurrentPool& pool);
    ~Worker() override;
    void run() override;

private:
    friend class ConcurrentPool;
    friend class impl::Batch;

    void executeTask();

    Task* mTask; ///< null when idle; not owned
    ConcurrentPool* mPool;
    bool mAlive;
};

namespace impl
{

/// The mutex and the condition that tasks executed by the calling thread are given, when it is a worker; null
/// otherwise.
struct WorkerContext
{
    kyMutex* poolMutex;
    kyWaitCondition* taskCondition;
};
const WorkerContext* currentWorker() noexcept;

} // namespace impl

} // namespace ky
