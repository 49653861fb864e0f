// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kyLockFile.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace
{

using Arguments = std::vector<std::string>;
using ky::kyLockFile;

std::filesystem::path toPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

/// LOCK FILE ROUNDS: adds 1 to the number in the file ROUNDS times, each time under the exclusive lock.
int countUnderLock(const Arguments& arguments)
{
    kyLockFile lock;
    for (int round = std::stoi(arguments[2]); round > 0; --round)
    {
        while (!lock.takeLockUtf8(arguments[0], nullptr, kyLockFile::LockExclusive))
            std::this_thread::yield();
        long value = 0;
        std::ifstream(toPath(arguments[1])) >> value;
        std::ofstream(toPath(arguments[1]), std::ios::trunc) << value + 1;
        lock.releaseLock(round % 2 == 0);
    }
    return 0;
}

/// LOCK FILE KIND: creates the file when it holds the lock, 0 exclusive or 1 shared, and keeps it until it is killed.
int holdLock(const Arguments& arguments)
{
    kyLockFile lock;
    if (!lock.takeLockUtf8(arguments[0], nullptr, static_cast<kyLockFile::LockType>(std::stoi(arguments[2]))))
        return 1;
    std::ofstream(toPath(arguments[1])) << "held";
    for (;;)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}

const ky::test::RegisterChildMode sCount("lock_count", &countUnderLock);
const ky::test::RegisterChildMode sHold("lock_hold", &holdLock);

} // namespace
