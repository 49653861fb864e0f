// SPDX-License-Identifier: MIT
// The examples of docs/threads.md.
#include "expect.h"

#include <ky/ky.h>

#include <atomic>

namespace
{

std::atomic<int> scanned{0};

void scanOneFile()
{
    ++scanned;
    ky::kyThread::msleep(1);
}

// [thread]
class Scanner : public ky::kyThread
{
public:
    ~Scanner() override
    {
        mStop = true;
        waitThread(0x7FFFFFFF);
    }

    void run() override
    {
        while (!mStop)
            scanOneFile();
    }

private:
    std::atomic<bool> mStop{false};
};
// [thread]

void scanForAWhile()
{
    // [thread]
    Scanner scanner;
    scanner.startThread("scanner");
    // [thread]
    while (scanned == 0)
        ky::kyThread::msleep(1);
}

// [worker]
struct LoadJob : ky::kyJob
{
    int loaded = 0;
};

class Loader : public ky::kyWorkThread
{
public:
    ~Loader() override { stop(); } // before processJob() is gone

protected:
    void processJob(ky::kyJob* job) override { static_cast<LoadJob*>(job)->loaded = 1; }
};
// [worker]

int loadTwo()
{
    Loader worker;
    LoadJob first;
    LoadJob second;
    // [batch]
    worker.startThread("loader");
    worker.beginWake(); // locks the queue
    worker.addJob(&first);
    worker.addJob(&second);
    worker.endWake(); // waits for the job in progress, unlocks, wakes the worker
    // [batch]
    LoadJob last;
    while (last.loaded == 0)
    {
        worker.beginWake();
        if (last.loaded == 0)
            worker.addJob(&last);
        worker.endWake();
    }
    worker.stop();
    return first.loaded + second.loaded;
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);

    scanForAWhile();
    expect(scanned > 0, "the thread has scanned");
    expect(loadTwo() == 2, "both jobs are done");

    ky::terminateKySystem();
    return failures;
}
