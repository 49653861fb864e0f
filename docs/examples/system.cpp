// SPDX-License-Identifier: MIT
// The examples of docs/system.md.
#include "expect.h"

#include <ky/ky.h>

#include <string>

namespace
{

void runApplication()
{
    expect(ky::kyLog::editPtr() != nullptr, "there is a logger");
    expect(ky::concurrent::GetConcurrentPool() != nullptr, "there is a pool");
    expect(std::string(ky::kySystem::Version::GetDescStringMajorMinor()) == "3.0", "the library's version");
}

} // namespace

int main()
{
    // [main]
    ky::kySystemUtils::ExportProcessorCount();         // Linux: how many workers the pool gets
    ky::initializeKySystem(ky::InitType::Full, false); // false: do not look up the main disk
    runApplication();
    ky::terminateKySystem();
    // [main]
    expect(ky::kyLog::editPtr() == nullptr, "the logger is gone");
    return failures;
}
