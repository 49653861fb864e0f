// SPDX-License-Identifier: MIT
// Locks and wait conditions: one thread produces, two consume.
#include <ky/ky.h>

#include <iostream>
#include <thread>
#include <vector>

namespace
{

/// A queue of numbers that consumers wait on.
class Queue
{
public:
    void put(int value)
    {
        ky::kyMutexLocker lock(mMutex, true);
        mValues.push_back(value);
        mChanged.wakeOne();
    }

    void close()
    {
        ky::kyMutexLocker lock(mMutex, true);
        mClosed = true;
        mChanged.wakeAll();
    }

    /// False once the queue is closed and empty.
    bool take(int& value)
    {
        ky::kyMutexLocker lock(mMutex, true);
        while (mValues.empty() && !mClosed)
            mChanged.wait(&mMutex, 0xFFFFFFFF);
        if (mValues.empty())
            return false;
        value = mValues.back();
        mValues.pop_back();
        return true;
    }

private:
    ky::kyMutex mMutex;
    ky::kyWaitCondition mChanged;
    std::vector<int> mValues;
    bool mClosed = false;
};

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    long long sums[2] = {0, 0};
    {
        Queue queue;
        std::vector<std::thread> consumers;
        for (long long& sum : sums)
        {
            consumers.emplace_back(
                [&queue, &sum]
                {
                    int value = 0;
                    while (queue.take(value))
                        sum += value;
                });
        }
        for (int i = 1; i <= 1000; ++i)
            queue.put(i);
        queue.close();
        for (std::thread& consumer : consumers)
            consumer.join();
    }
    std::cout << "sum " << sums[0] + sums[1] << '\n';
    ky::terminateKySystem();
    return sums[0] + sums[1] == 500500 ? 0 : 1;
}
