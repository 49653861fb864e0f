// SPDX-License-Identifier: MIT
#include "concurrency/full_library.h"
#include "concurrency/thread_support.h"
#include "concurrency/threads.h"
#include "support/child_process.h"

#include <ky/kySemaphore.h>
#include <ky/kyWorkThread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyJob;
using ky::kySemaphore;
using ky::kyWorkThread;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new FullLibrary);

static_assert(std::is_abstract_v<kyWorkThread> && std::is_copy_constructible_v<kyJob>);

/// A job that runs a function and counts what happens to it.
struct Job : kyJob
{
    explicit Job(std::function<void()> call = [] {}) : work(std::move(call)) {}
    void onDelete() override
    {
        ++discarded;
        if (discardOrder != nullptr)
            discardOrder->push_back(this);
    }

    std::function<void()> work;
    std::vector<Job*>* discardOrder = nullptr;
    std::atomic<int> processed{0};
    std::atomic<int> discarded{0};
};

class Worker : public kyWorkThread
{
public:
    ~Worker() override { stop(); }

    using kyWorkThread::mustStop;
    using kyWorkThread::setIdle;

    void add(std::initializer_list<kyJob*> jobs)
    {
        beginWake();
        for (kyJob* const job : jobs)
            addJob(job);
        endWake();
    }

    void clear()
    {
        lock();
        clearJobs();
        unlock();
    }

    /// Waits until so many jobs have been processed.
    bool hasProcessed(int count)
    {
        return eventually([=, this] { return processed == count; });
    }

    std::vector<kyJob*> order; ///< of processing; written by the worker
    std::atomic<int> processed{0};

protected:
    void processJob(kyJob* job) override
    {
        order.push_back(job);
        auto& own = static_cast<Job&>(*job);
        ++own.processed;
        own.work();
        ++processed;
    }
};

TEST(WorkThread, ProcessesBatchesInOrderAndEachJobOnce)
{
    Job jobs[100];
    Worker worker;
    // The first batch waits for the thread, the others find it asleep or at work.
    for (int i = 0; i < 100; i += 4)
    {
        worker.add({&jobs[i], &jobs[i + 1], &jobs[i + 2], &jobs[i + 3]});
        if (i == 0)
            worker.startThread("worker");
        EXPECT_TRUE(i % 8 != 0 || worker.hasProcessed(i + 4));
    }
    EXPECT_TRUE(worker.hasProcessed(100));
    worker.stop();
    ASSERT_EQ(worker.order.size(), 100U);
    for (std::size_t i = 0; i < 100; ++i)
        EXPECT_EQ(worker.order[i], &jobs[i]) << i;
}

TEST(WorkThread, ABatchIsNotBegunBeforeItsEnd)
{
    Job jobs[2];
    Worker worker;
    worker.startThread(nullptr);
    worker.beginWake();
    worker.addJob(&jobs[0]);
    std::this_thread::sleep_for(grace);
    EXPECT_EQ(worker.processed, 0);
    worker.addJob(&jobs[1]);
    worker.endWake();
    EXPECT_TRUE(worker.hasProcessed(2));
}

TEST(WorkThread, JobsAreQueuedWhileOneRunsAndTheEndOfABatchWaitsForIt)
{
    kySemaphore entered(0);
    kySemaphore queued(0);
    std::atomic<bool> hasEnded{false};
    std::atomic<bool> endedTooEarly{true};
    Job slow(
        [&]
        {
            entered.release(1);
            queued.acquire(1);
            std::this_thread::sleep_for(grace);
            endedTooEarly = hasEnded.load();
        });
    Job next[2];
    Worker worker;
    worker.add({&slow});
    worker.startThread(nullptr);
    entered.acquire(1);
    worker.lock();
    worker.addJob(&next[0]);
    worker.unlock();
    worker.beginWake();
    worker.addJob(&next[1]);
    queued.release(1);
    worker.endWake();
    hasEnded = true;
    EXPECT_FALSE(endedTooEarly);
    EXPECT_TRUE(worker.hasProcessed(3));
}

TEST(WorkThread, AnIdleWorkerSleepsWithJobsQueuedUntilItIsWoken)
{
    Worker worker;
    Job idling([&] { worker.setIdle(true); });
    Job second;
    Job third;
    worker.add({&idling, &second});
    worker.startThread(nullptr);
    EXPECT_TRUE(worker.hasProcessed(1));
    std::this_thread::sleep_for(grace);
    EXPECT_EQ(worker.processed, 1);
    worker.add({&third});
    EXPECT_TRUE(worker.hasProcessed(3));
}

TEST(WorkThread, DiscardsQueuedJobsOnceInOrderAndKeepsThem)
{
    Worker worker;
    std::vector<Job*> order;
    Job jobs[3];
    for (Job& job : jobs)
        job.discardOrder = &order;
    worker.add({&jobs[1], &jobs[0], &jobs[2]});
    worker.clear();
    EXPECT_EQ(order, (std::vector<Job*>{&jobs[1], &jobs[0], &jobs[2]}));
    worker.clear();
    EXPECT_EQ(order.size(), 3u);

    struct Mortal : kyJob
    {
        void onDelete() override { delete this; }
    };
    worker.add({new Mortal, new Mortal});
    worker.clear();
    worker.startThread(nullptr);
    worker.stop();
    EXPECT_EQ(worker.processed, 0);
}

TEST(WorkThread, StopsAfterTheJobInProgressAndForgetsTheRest)
{
    Worker worker;
    kySemaphore entered(0);
    const auto runUntilStopped = [&]
    {
        entered.release(1);
        EXPECT_TRUE(eventually([&] { return worker.mustStop(); }));
    };
    Job running(runUntilStopped);
    Job waiting;
    worker.add({&running, &waiting});
    EXPECT_FALSE(worker.mustStop());
    worker.startThread(nullptr);
    entered.acquire(1);
    worker.stop();
    EXPECT_TRUE(worker.isFinished());
    EXPECT_EQ(worker.processed, 1);
    EXPECT_EQ(waiting.processed + waiting.discarded, 0);

    worker.startThread(nullptr);
    EXPECT_TRUE(worker.waitThread(forEver));
    EXPECT_EQ(waiting.processed + waiting.discarded, 0);
    worker.clear();
    EXPECT_EQ(waiting.discarded, 1);
}

TEST(WorkThread, AJobThatFailsEndsTheWorkerAndLeavesNothingLocked)
{
    const Silence silence;
    for (const auto& failure : failures())
    {
        Worker worker;
        Job failing(failure);
        Job next;
        worker.add({&failing, &next});
        worker.startThread(nullptr);
        EXPECT_TRUE(worker.waitThread(forEver));
        worker.add({});
        worker.clear();
        EXPECT_EQ(next.discarded, 1);
        worker.stop();
        EXPECT_EQ(worker.order.size(), 1u);
    }
}

TEST(WorkThread, IsStoppedRightAfterItsStart)
{
    Job job;
    int processed = 0;
    const int rounds = isSoak() ? 10'000 : 300;
    for (int round = 0; round < rounds; ++round)
    {
        Worker worker;
        worker.startThread(nullptr);
        if (round % 3 == 0)
            worker.add({&job});
        worker.stop();
        processed += worker.processed;
        EXPECT_LE(worker.processed, round % 3 == 0 ? 1 : 0);
    }
    account("work threads", {rounds, "starts and stops"}, {}, {std::abs(job.processed - processed), "jobs"});
}

/// Producers queue batches of different sizes. The worker is stopped when it has processed `stopAfter` jobs; what is
/// queued then, or later, is discarded.
void accountForEveryJob(int producers, int jobsEach, int stopAfter)
{
    Worker worker;
    worker.order.reserve(static_cast<std::size_t>(producers * jobsEach));
    std::vector<Job> jobs(static_cast<std::size_t>(producers * jobsEach));
    worker.startThread("worker");
    const auto produce = [&](int producer)
    {
        int next = producer * jobsEach;
        const int end = next + jobsEach;
        for (int size = 1 + producer % 7; next < end; size = size % 7 + 1)
        {
            worker.beginWake();
            for (int i = 0; i < size && next < end; ++i)
                worker.addJob(&jobs[static_cast<std::size_t>(next++)]);
            worker.endWake();
        }
    };
    Threads threads(producers, produce);
    EXPECT_TRUE(eventually([&] { return worker.processed >= stopAfter; }, std::chrono::minutes(4)));
    worker.stop();
    const int processed = worker.processed;
    threads.join();
    EXPECT_EQ(worker.processed, processed) << "a job after the stop";
    worker.clear();
    int wrong = 0;
    int discarded = 0;
    for (const Job& job : jobs)
    {
        wrong += job.processed + job.discarded != 1;
        discarded += job.discarded;
    }
    EXPECT_EQ(processed + discarded, producers * jobsEach);
    EXPECT_GE(processed, stopAfter);
    account("work threads", {jobs.size(), "jobs of 32 producers"}, {}, {wrong, "jobs"});
}

TEST(WorkThread, EveryJobIsProcessedOrDiscardedOnce)
{
    const int each = isSoak() ? 31'250 : 300;
    for (const int stopAfter : {0, 32 * each / 2, 32 * each})
        accountForEveryJob(32, each, stopAfter);
}

} // namespace
