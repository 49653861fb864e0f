// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kyLog.h>
#include <ky/kyMutex.h>
#include <ky/kySystem.h>
#include <ky/kyThreadPeriodicalUpdater.h>
#include <ky/kyWorkThread.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace
{

using Arguments = std::vector<std::string>;

std::filesystem::path toPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

struct Library
{
    Library()
    {
        ky::initializeKySystem(ky::InitType::Full, false);
        ky::kyLog::edit().setEchoToConsole(false);
    }
    ~Library() { ky::terminateKySystem(); }
};

/// NAME FILE ROUNDS: adds 1 to the number in the file ROUNDS times, each time under the mutex.
int count(const Arguments& arguments)
{
    const Library library;
    ky::kyMutexSystem mutex(arguments[0].c_str());
    for (int round = std::stoi(arguments[2]); round > 0; --round)
    {
        mutex.lock();
        long value = 0;
        std::ifstream(toPath(arguments[1])) >> value;
        std::ofstream(toPath(arguments[1]), std::ios::trunc) << value + 1;
        mutex.unlock();
    }
    return 0;
}

/// NAME FILE: creates the file when it owns the mutex, and keeps it until it is killed.
int hold(const Arguments& arguments)
{
    const Library library;
    ky::kyMutexSystem mutex(arguments[0].c_str());
    mutex.lock();
    std::ofstream(toPath(arguments[1])) << "owned";
    for (;;)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}

/// NAME: ends when it has owned the mutex.
int pass(const Arguments& arguments)
{
    const Library library;
    ky::kyMutexSystem mutex(arguments[0].c_str());
    mutex.lock();
    mutex.unlock();
    return 0;
}

struct Worker : ky::kyWorkThread
{
    void processJob(ky::kyJob*) override {}
};

struct Logger : ky::kyThread
{
    void run() override
    {
        for (;;)
            ky::kyLogObject(ky::kyLogType::INFO, "thread", ky::kyLog::editPtr(), nullptr) << "line";
    }
};

void spin(void* rounds)
{
    for (int i = 0; i < 1'000'000; ++i)
        ++*static_cast<std::atomic<int>*>(rounds);
}

/// HOW: leaves while a worker waits for work and an updater is in a round. "exit" leaves a thread that logs as well;
/// "terminate" ends the library first.
int leaveRunning(const Arguments& arguments)
{
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().setEchoToConsole(false);
    // Objects that nobody destroys, as those of a program that just leaves.
    static std::atomic<int> rounds{0};
    auto& worker = *new Worker;
    auto& logger = *new Logger;
    auto& updater = *new ky::kyThreadPeriodicalUpdater(1);
    worker.startThread(nullptr);
    updater.addCallback(&spin, &rounds);
    while (rounds == 0)
        ky::kyThread::msleep(1);
    if (arguments[0] == "exit")
        logger.startThread(nullptr);
    else
        ky::terminateKySystem();
    std::exit(7);
}

const ky::test::RegisterChildMode sLeave("threads_left_running", &leaveRunning);
const ky::test::RegisterChildMode sCount("mutex_count", &count);
const ky::test::RegisterChildMode sHold("mutex_hold", &hold);
const ky::test::RegisterChildMode sPass("mutex_pass", &pass);

} // namespace
