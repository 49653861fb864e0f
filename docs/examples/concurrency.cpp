// SPDX-License-Identifier: MIT
// The examples of docs/concurrency.md.
#include "expect.h"

#include <ky/ky.h>

#include <deque>
#include <thread>

namespace
{

struct Job
{
    int number = 0;
};

// [queue]
struct JobQueue
{
    void put(Job job)
    {
        const ky::kyMutexLocker locker(mutex);
        jobs.push_back(job);
        changed.wakeOne();
    }

    Job take()
    {
        const ky::kyMutexLocker locker(mutex);
        while (jobs.empty())                  // always in a loop: wakes may be spurious
            changed.wait(&mutex, 0xFFFFFFFF); // milliseconds; this value means for ever
        const Job job = jobs.front();
        jobs.pop_front();
        return job;
    }

    ky::kyMutex mutex;
    ky::kyWaitCondition changed;
    std::deque<Job> jobs;
};
// [queue]

int saves = 0;

void save() { ++saves; }

void saveSometimes(ky::kyTimer& lastSave)
{
    // [timer]
    if (lastSave.isElapsedSec(60)) // more than 60 seconds ago, or never
    {
        save();
        lastSave.snapTime();
    }
    // [timer]
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);
    {
        JobQueue queue;
        std::thread producer(
            [&]
            {
                for (int i = 1; i <= 100; ++i)
                    queue.put(Job{i});
            });
        int sum = 0;
        for (int i = 0; i < 100; ++i)
            sum += queue.take().number;
        producer.join();
        expect(sum == 5050, "every job is taken once");
    }

    ky::kyTimer lastSave(false); // not snapped: counts as elapsed for ever
    saveSometimes(lastSave);
    saveSometimes(lastSave);
    expect(saves == 1, "the second save is not due");

    ky::terminateKySystem();
    return failures;
}
