// SPDX-License-Identifier: MIT
// Rows: thread/start_join, job_queue/1000_jobs.
#include <ky/kySemaphore.h>
#include <ky/kyWorkThread.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

#if defined(KY_PEER_QT)
#include <QThread>
#include <QThreadPool>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Thread.h>
#endif
#if defined(KY_PEER_ASIO)
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#endif

namespace
{

std::atomic<long> sRuns{0};

struct Empty : ky::kyThread
{
    void run() override { sRuns.fetch_add(1, std::memory_order_relaxed); }
};

void kyStartJoin(benchmark::State& state)
{
    Empty thread;
    for (auto _ : state)
    {
        thread.startThread("bench");
        thread.waitThread(0x7FFFFFFF);
    }
}

void stdStartJoin(benchmark::State& state)
{
    for (auto _ : state)
        std::thread([] { sRuns.fetch_add(1, std::memory_order_relaxed); }).join();
}

constexpr int batchSize = 1000;

/// Counts down on the worker; the last job tells the producer.
struct Batch
{
    void runOne()
    {
        if (left.fetch_sub(1, std::memory_order_acq_rel) == 1)
            done.release(1);
    }
    std::atomic<int> left{0};
    ky::kySemaphore done{0};
};

struct Job : ky::kyJob
{
    Batch* batch = nullptr;
};

struct Worker : ky::kyWorkThread
{
    void processJob(ky::kyJob* job) override { static_cast<Job*>(job)->batch->runOne(); }
};

/// One producer hands 1000 jobs to one worker and waits until they are done.
template <typename Submit>
void runBatches(benchmark::State& state, Batch& batch, Submit submit)
{
    for (auto _ : state)
    {
        batch.left = batchSize;
        submit();
        batch.done.acquire(1);
    }
    state.SetItemsProcessed(state.iterations() * batchSize);
}

void kyJobs(benchmark::State& state)
{
    Batch batch;
    std::vector<Job> jobs(batchSize);
    for (Job& job : jobs)
        job.batch = &batch;
    Worker worker;
    worker.startThread("bench");
    runBatches(state, batch,
               [&]
               {
                   worker.beginWake();
                   for (Job& job : jobs)
                       worker.addJob(&job);
                   worker.endWake();
               });
    worker.stop();
}

BENCHMARK(kyStartJoin)->Name("thread/start_join/ky")->UseRealTime();
BENCHMARK(stdStartJoin)->Name("thread/start_join/std")->UseRealTime();
BENCHMARK(kyJobs)->Name("job_queue/1000_jobs/ky")->UseRealTime();

#if defined(KY_PEER_QT)
void qtStartJoin(benchmark::State& state)
{
    struct Thread : QThread
    {
        void run() override { sRuns.fetch_add(1, std::memory_order_relaxed); }
    };
    Thread thread;
    for (auto _ : state)
    {
        thread.start();
        thread.wait();
    }
}

void qtJobs(benchmark::State& state)
{
    Batch batch;
    QThreadPool pool;
    pool.setMaxThreadCount(1);
    pool.setExpiryTimeout(-1);
    runBatches(state, batch,
               [&]
               {
                   for (int i = 0; i < batchSize; ++i)
                       pool.start([&batch] { batch.runOne(); });
               });
    pool.waitForDone();
}

BENCHMARK(qtStartJoin)->Name("thread/start_join/qt")->UseRealTime();
BENCHMARK(qtJobs)->Name("job_queue/1000_jobs/qt_thread_pool")->UseRealTime();
#endif

#if defined(KY_PEER_POCO)
void pocoStartJoin(benchmark::State& state)
{
    Poco::Thread thread;
    for (auto _ : state)
    {
        thread.startFunc([] { sRuns.fetch_add(1, std::memory_order_relaxed); });
        thread.join();
    }
}

BENCHMARK(pocoStartJoin)->Name("thread/start_join/poco")->UseRealTime();
#endif

#if defined(KY_PEER_ASIO)
void asioJobs(benchmark::State& state)
{
    Batch batch;
    boost::asio::thread_pool pool(1);
    runBatches(state, batch,
               [&]
               {
                   for (int i = 0; i < batchSize; ++i)
                       boost::asio::post(pool, [&batch] { batch.runOne(); });
               });
    pool.join();
}

BENCHMARK(asioJobs)->Name("job_queue/1000_jobs/boost_asio")->UseRealTime();
#endif

} // namespace
