// SPDX-License-Identifier: MIT
#include "support/child_process.h"
#include "support/child_process_impl.h"

#include <gtest/gtest.h>

#include <thread>

namespace ky::test
{

ChildProcess::ChildProcess(const std::string& mode, const std::vector<std::string>& arguments,
                           const std::string& outputFile)
{
    std::vector<std::string> all{mode};
    all.insert(all.end(), arguments.begin(), arguments.end());
    mProcess = start(binFolder() + "/ky_child", all, outputFile);
}

ChildProcess::ChildProcess(std::unique_ptr<Process> process) : mProcess(std::move(process)) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept = default;

ChildProcess ChildProcess::program(const std::string& name, const std::vector<std::string>& arguments,
                                   const std::string& outputFile)
{
    return ChildProcess(start(binFolder() + "/" + name, arguments, outputFile));
}

ChildProcess::~ChildProcess()
{
    if (mProcess && isRunning())
    {
        kill();
        wait();
    }
}

bool ChildProcess::isRunning()
{
    int ignored = 0;
    return mProcess && !poll(*mProcess, ignored);
}

void ChildProcess::kill()
{
    if (mProcess)
        terminate(*mProcess);
}

int ChildProcess::wait(std::chrono::seconds limit)
{
    if (!mProcess)
        return -1;
    int exitCode = -1;
    if (eventually([&] { return poll(*mProcess, exitCode); }, limit))
        return exitCode;
    ADD_FAILURE() << "child has not ended in time";
    terminate(*mProcess);
    eventually([&] { return poll(*mProcess, exitCode); });
    return -1;
}

std::string binFolder() { return KY_TEST_BIN_DIR; }

void sleepBriefly() { std::this_thread::sleep_for(std::chrono::milliseconds(2)); }

} // namespace ky::test
