// SPDX-License-Identifier: MIT
// A program of which one runs at a time. The lock ends with the program, however that ends; a file left behind by a
// crash is taken over.
#include <ky/ky.h>

#include <iostream>

namespace
{

int runProgram(const std::string& lockPath)
{
    ky::kyLockFile lock;
    bool leftBehind = false;
    if (!lock.takeLockUtf8(lockPath, &leftBehind, ky::kyLockFile::LockExclusive))
    {
        std::cout << "already running\n";
        return 1;
    }
    if (leftBehind)
        std::cout << "the last run did not end properly\n";
    std::cout << "running\n";

    // A second start meanwhile finds the lock taken.
    ky::kyLockFile second;
    const bool refused = !second.takeLockUtf8(lockPath, nullptr, ky::kyLockFile::LockExclusive);
    return refused ? 0 : 1; // the lock is released and its file removed here
}

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);
    const int result = runProgram("single_instance.lock");
    ky::terminateKySystem();
    return result;
}
