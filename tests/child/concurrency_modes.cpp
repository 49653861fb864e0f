// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kyLog.h>
#include <ky/kyMutex.h>
#include <ky/kySystem.h>

#include <chrono>
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

const ky::test::RegisterChildMode sCount("mutex_count", &count);
const ky::test::RegisterChildMode sHold("mutex_hold", &hold);
const ky::test::RegisterChildMode sPass("mutex_pass", &pass);

} // namespace
