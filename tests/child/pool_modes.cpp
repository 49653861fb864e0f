// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kyConcurrent.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <numeric>
#include <thread>

namespace
{

using Arguments = std::vector<std::string>;

/// Uses the pool while static objects are destroyed, when the library was not terminated.
struct LateUser
{
    ~LateUser()
    {
        if (isWanted && ky::concurrent::reduce(
                            0, 1000, 0, [](int i) { return i; }, std::plus<>()) != 499'500)
            std::_Exit(3);
    }
    bool isWanted = false;
};
LateUser sLateUser;

/// idle | busy: leaves by exit(7) with the library still initialized and its workers asleep or at work.
int exitWithPool(const Arguments& arguments)
{
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().setEchoToConsole(false);
    sLateUser.isWanted = true;
    if (arguments[0] == "busy")
    {
        static std::atomic<bool> isInside{false};
        std::thread(
            []
            {
                const auto body = [](int)
                {
                    isInside = true;
                    std::this_thread::sleep_for(std::chrono::seconds(1));
                };
                ky::concurrent::parallelFor(0, 1'000'000, body, 1);
            })
            .detach();
        while (!isInside)
            std::this_thread::yield();
    }
    std::exit(7);
}

/// ROUNDS: initializes, works and terminates as often.
int comeAndGo(const Arguments& arguments)
{
    for (int round = std::stoi(arguments[0]); round > 0; --round)
    {
        ky::initializeKySystem(ky::InitType::Full, false);
        ky::kyLog::edit().setEchoToConsole(false);
        if (ky::concurrent::GetConcurrentPool() == nullptr ||
            ky::concurrent::reduce(
                0, 1000, 0, [](int i) { return i; }, std::plus<>()) != 499'500)
            return 1;
        ky::terminateKySystem();
        if (ky::concurrent::GetConcurrentPool() != nullptr)
            return 2;
    }
    return 0;
}

const ky::test::RegisterChildMode sExit("pool_exit", &exitWithPool);
const ky::test::RegisterChildMode sComeAndGo("pool_come_and_go", &comeAndGo);

} // namespace
