// SPDX-License-Identifier: MIT
// The examples of docs/processes.md. Started with arguments, the program is its own child.
#include "expect.h"

#include <ky/ky.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace
{

int beChild(const std::string& mode)
{
    std::cout << "3 rows" << std::endl;
    for (int i = 0; i < 10000 && mode == "patient" && !ky::kyDirUtils::FileExistsUtf8("seen"); ++i)
        ky::kyThread::msleep(5);
    return mode == "fail" ? 4 : 0;
}

int run(const std::string& program, const std::string& mode, std::string& error)
{
    const std::string folder;
    // [exec]
    const int result = ky::kyProcess::ExecUtf8(program, {"count", mode}, folder, false, 60000, &error);
    // [exec]
    return result;
}

std::string output;

void showThatItRuns(std::uint64_t) { std::ofstream("seen") << "yes"; }

int watch(const std::string& program)
{
    // [watch]
    ky::kyProcess process;
    process.setOutputHandler([](ky::kyProcess::OutputChannel, std::string_view bytes) { output += bytes; });
    if (process.startProcess(program, {"count", "patient"}, false, ky::kyProcess::Low))
        while (!process.waitForFinished(10)) // milliseconds
            showThatItRuns(process.getCurrentRamInUse());
    // [watch]
    return process.exitCode();
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 2)
        return beChild(argv[2]);
    ky::initializeKySystem(ky::InitType::Full, false);
    const std::string self = ky::kySystemUtils::GetProgramFullPath();

    std::string error;
    expect(run(self, "well", error) == 0 && error.empty(), "a program that succeeds");
    expect(run(self, "fail", error) == 4 && error == "process return an error", "a program that fails");
    expect(run(self + "-missing.exe", "well", error) == -1 && error == "Fail to start process",
           "a program that is not there");

    std::remove("seen");
    expect(watch(self) == 0, "the program runs until somebody has seen it");
    expect(output.rfind("3 rows", 0) == 0, "its output is collected");

    ky::terminateKySystem();
    return failures;
}
