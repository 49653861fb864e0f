// SPDX-License-Identifier: MIT
#pragma once

#include <thread>
#include <utility>
#include <vector>

namespace ky::test
{

/// Threads that run `body(0)`, `body(1)` and so on; waited for at the end of the scope.
class Threads
{
public:
    template <typename Body>
    Threads(int count, const Body& body)
    {
        for (int i = 0; i < count; ++i)
            mThreads.emplace_back(body, i);
    }
    ~Threads() { join(); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    void join()
    {
        for (std::thread& thread : std::exchange(mThreads, {}))
            thread.join();
    }

private:
    std::vector<std::thread> mThreads;
};

} // namespace ky::test
