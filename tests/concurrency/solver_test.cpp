// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/pool_of.h"
#include "concurrency/solver_batch.h"
#include "concurrency/sync_native.h"
#include "concurrency/threads.h"
#include "diagnostics/guard_faults.h"
#include "support/child_process.h"
#include "support/sanitizer.h"
#include "support/soak.h"

#include <ky/kyConcurrent.h>

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace
{

using ky::ConcurrentPool;
using ky::kyMutex;
using ky::kyWaitCondition;
using ky::test::eventually;
using ky::test::PoolOf;
using ky::test::Threads;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new ky::test::FullLibrary);

constexpr unsigned long wakeLimitMs = 60'000;

bool isHeldOnce(kyMutex& mutex)
{
    namespace native = ky::impl::native;
    auto& lock = *static_cast<native::RecursiveLock*>(mutex.getMutexData());
    if (!native::isInside(lock))
        return false;
    mutex.unlock();
    const bool isHeldStill = native::isInside(lock);
    mutex.lock();
    return !isHeldStill;
}

/// A task that does what a function says.
class FunctionTask final : public ConcurrentPool::Task
{
public:
    using Function = std::function<void(kyMutex&, kyWaitCondition&)>;
    explicit FunctionTask(Function function) : mFunction(std::move(function)) {}
    void execute(kyMutex* poolMutex, kyWaitCondition* taskCondition) override { mFunction(*poolMutex, *taskCondition); }

private:
    Function mFunction;
};

struct Solver : ConcurrentPool::SolverBase
{
    void add(int count, const FunctionTask::Function& function)
    {
        for (; count > 0; --count)
            addTask(&mOwned.emplace_back(function));
    }

private:
    std::deque<FunctionTask> mOwned;
};

/// Executes `function` so often as tasks on the pool.
void solveOn(ConcurrentPool& pool, int count, const FunctionTask::Function& function)
{
    Solver solver;
    solver.add(count, function);
    solver.solve(pool);
}

class SolverOn : public testing::TestWithParam<unsigned>
{
protected:
    PoolOf mPool{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Workers, SolverOn, testing::ValuesIn(ky::test::workerCounts),
                         testing::PrintToStringParamName());

TEST(ConcurrentPool, HasAtLeastOneWorkerAndIsThereWhileItIsWanted)
{
    for (const unsigned asked : {0U, 1U, 5U})
        EXPECT_EQ(ConcurrentPool(asked).getWorkerCount(), std::max(1U, asked));
    {
        const PoolOf pool(2);
        ASSERT_NE(ky::concurrent::GetConcurrentPool(), nullptr);
        EXPECT_EQ(ky::concurrent::GetConcurrentPool()->getWorkerCount(), 2U);
    }
    EXPECT_EQ(ky::concurrent::GetConcurrentPool(), nullptr);
    ky::impl::destroyConcurrentPool();
}

/// As many tasks as there are threads meet: none of them can end unless every worker has been woken and works.
TEST(ConcurrentPool, BringsAllWorkersToWorkAgainAndAgain)
{
    for (const unsigned workers : {1U, 3U, 8U})
    {
        ConcurrentPool pool(workers);
        const int rounds = ky::test::isSoak() ? 5000 : 50;
        int wrong = 0;
        for (int round = 0; round < rounds; ++round)
        {
            unsigned present = 0;
            int missed = 0;
            const auto meet = [&](kyMutex& mutex, kyWaitCondition& condition)
            {
                if (++present == workers + 1)
                    condition.wakeAll();
                while (present <= workers && missed == 0)
                    missed += condition.wait(&mutex, wakeLimitMs) ? 0 : 1;
            };
            solveOn(pool, static_cast<int>(workers) + 1, meet);
            wrong += missed;
        }
        ky::test::account("worker pool", {rounds, "batches that need every worker"}, {}, {wrong, "wakes"});
    }
}

TEST_P(SolverOn, ExecutesEveryTaskOnceWithTheMutexHeld)
{
    for (const unsigned count : {0U, 1U, 2U, 500U})
    {
        std::vector<int> executed(count, 0); // guarded by the mutex of the pool
        int wrongly = 0;
        Solver solver;
        for (unsigned i = 0; i < count; ++i)
            solver.add(1,
                       [&, i](kyMutex& mutex, kyWaitCondition&)
                       {
                           wrongly += isHeldOnce(mutex) ? 0 : 1;
                           ++executed[i];
                       });
        solver.solve();
        EXPECT_EQ(executed, std::vector<int>(count, 1));
        EXPECT_EQ(wrongly, 0);
        solver.solve();
        EXPECT_EQ(executed, std::vector<int>(count, 1)) << "the list is to be empty";
    }
}

/// Every task waits for the one before it.
TEST_P(SolverOn, BeginsTasksInOrderSoThatLaterOnesMayWaitForEarlierOnes)
{
    constexpr int count = 200;
    int finished = 0;
    int missed = 0;
    Solver solver;
    for (int i = 0; i < count; ++i)
        solver.add(1,
                   [&, i](kyMutex& mutex, kyWaitCondition& condition)
                   {
                       {
                           const ConcurrentPool::Unlocked unlocked(mutex);
                           std::this_thread::yield();
                       }
                       while (finished < i && missed == 0)
                           missed += condition.wait(&mutex, wakeLimitMs) ? 0 : 1;
                       ++finished;
                       condition.wakeAll();
                   });
    solver.solve();
    EXPECT_EQ(finished, count);
    EXPECT_EQ(missed, 0);
}

TEST_P(SolverOn, HandsOnTheFirstExceptionWhenAllHaveEnded)
{
    for (const bool whileReleased : {false, true})
    {
        int begun = 0;
        int ended = 0;
        const auto work = [&](kyMutex& mutex, kyWaitCondition&)
        {
            const bool isGuilty = ++begun == 21;
            if (isGuilty && !whileReleased)
                throw std::out_of_range("task 20");
            mutex.unlock();
            if (isGuilty)
                throw std::out_of_range("task 20");
            std::this_thread::yield();
            mutex.lock();
            ++ended;
        };
        Solver solver;
        solver.add(300, work);
        EXPECT_THROW(solver.solve(), std::out_of_range);
        EXPECT_EQ(begun, ended + 1);
        EXPECT_TRUE(whileReleased || begun == 21) << "nothing is begun after a failure";
        solver.add(1, [&](kyMutex& mutex, kyWaitCondition&) { ended = isHeldOnce(mutex) ? -1 : -2; });
        solver.solve();
        EXPECT_EQ(ended, -1) << "solver and pool go on as before";
    }
}

/// On a worker and on the calling thread, with the mutex of the pool held and released.
TEST_P(SolverOn, SurvivesFaultsOnEveryThread)
{
    if (!ky::test::canSurviveFaults)
        GTEST_SKIP() << "no faults under this sanitizer";
    for (int round = 0; round < 4; ++round)
    {
        int begun = 0;
        const auto crash = [&](kyMutex& mutex, kyWaitCondition&)
        {
            ++begun;
            if (round % 2 == 0)
                mutex.unlock();
            ky::test::commit(ky::test::FaultKind::NullWrite);
        };
        Solver solver;
        solver.add(20, crash);
        EXPECT_THROW(solver.solve(), std::runtime_error);
        EXPECT_GE(begun, 1);
        EXPECT_THROW(
            ky::concurrent::parallelFor(0, 1000, [&](int) { ky::test::commit(ky::test::FaultKind::DivisionByZero); }),
            std::runtime_error);
        std::atomic<int> bodies{0};
        EXPECT_TRUE(ky::concurrent::parallelFor(0, 1000, [&](int) { ++bodies; }));
        EXPECT_EQ(bodies, 1000);
    }
}

TEST(TaskQueue, HoldsTheMutexAgainWhenATaskHasFailedWithoutIt)
{
    if (!ky::test::canSurviveFaults)
        GTEST_SKIP() << "no faults under this sanitizer";
    kyMutex mutex;
    kyWaitCondition condition;
    for (const bool isThrown : {false, true})
    {
        FunctionTask failing(
            [&](kyMutex& held, kyWaitCondition&)
            {
                held.unlock();
                if (isThrown)
                    throw std::runtime_error("failed");
                ky::test::commit(ky::test::FaultKind::NullWrite);
            });
        ky::impl::TaskList tasks{&failing};
        ky::impl::TaskQueue queue(tasks, mutex, condition);
        mutex.lock();
        queue.workOff();
        EXPECT_TRUE(isHeldOnce(mutex));
        mutex.unlock();
        EXPECT_THROW(queue.rethrow(), std::runtime_error);
    }
}

TEST_P(SolverOn, MayBeUsedByTasks)
{
    std::atomic<int> executed{0};
    const std::function<void(int)> descend = [&](int depth)
    {
        ++executed;
        if (depth == 0)
            return;
        const auto goOn = [&](kyMutex& mutex, kyWaitCondition&)
        {
            const ConcurrentPool::Unlocked unlocked(mutex);
            descend(depth - 1);
        };
        Solver solver;
        solver.add(4, goOn);
        solver.solve();
    };
    descend(5);
    EXPECT_EQ(executed, 1 + 4 + 16 + 64 + 256 + 1024);
}

/// A batch ends when its own tasks have, whatever else the pool does.
TEST(ConcurrentPool, ABatchDoesNotWaitForOthers)
{
    ConcurrentPool pool(2);
    std::atomic<bool> isInside{false};
    std::atomic<bool> release{false};
    const auto stay = [&](kyMutex& mutex, kyWaitCondition&)
    {
        const ConcurrentPool::Unlocked unlocked(mutex);
        isInside = true;
        EXPECT_TRUE(eventually([&] { return release.load(); }));
    };
    const Threads other(1, [&](int) { solveOn(pool, 2, stay); });
    EXPECT_TRUE(eventually([&] { return isInside.load(); }));
    for (int round = 0; round < 100; ++round)
    {
        int executed = 0;
        solveOn(pool, 3, [&](kyMutex&, kyWaitCondition&) { ++executed; });
        EXPECT_EQ(executed, 3);
    }
    release = true;
}

TEST(ConcurrentPool, EndsIdleOrBusyAndAtOnce)
{
    for (unsigned round = 0; round < 200; ++round)
    {
        ConcurrentPool pool(1 + round % 4);
        if (round % 2 == 0)
            continue;
        int executed = 0;
        solveOn(pool, 6, [&](kyMutex&, kyWaitCondition&) { ++executed; });
        EXPECT_EQ(executed, 6);
    }
}

/// The pool of the process comes and goes while threads use it.
TEST(ConcurrentPool, OfTheProcessMayEndWhileBatchesRun)
{
    std::atomic<bool> stop{false};
    std::atomic<int> batches{0};
    const auto solve = [&](int)
    {
        while (!stop)
        {
            std::atomic<int> executed{0};
            const auto work = [&](kyMutex& mutex, kyWaitCondition&)
            {
                const ConcurrentPool::Unlocked unlocked(mutex);
                ++executed;
            };
            Solver solver;
            solver.add(5, work);
            solver.solve();
            EXPECT_EQ(executed, 5);
            ++batches;
            std::this_thread::yield();
        }
    };
    const Threads threads(3, solve);
    for (int round = 0; round < 40; ++round)
    {
        const PoolOf pool(3);
        const int before = batches;
        EXPECT_TRUE(eventually([&] { return batches > before + 2; }));
    }
    stop = true;
}

} // namespace
