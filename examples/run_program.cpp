// SPDX-License-Identifier: MIT
// Runs a program: to its end with its output collected, and watched while it works. The program is this one.
#include <ky/ky.h>

#include <iostream>

namespace
{

using ky::kyProcess;

/// What the child does: upper case of what it reads.
int beChild()
{
    std::string line;
    while (std::getline(std::cin, line))
        std::cout << ky::kyStringUtils::toUpper(line) << std::endl;
    return 3;
}

int runPrograms(const std::string& self)
{
    // To its end, with everything that it writes.
    std::string output;
    std::string error;
    const int result = kyProcess::ExecCapturedUtf8(self, {"child"}, "", false, 30000, output, nullptr, &error,
                                                   "first line\nsecond line\n");
    std::cout << "exit code " << result << " (" << error << "), output:\n" << output;

    // Watched: what it writes is there at once.
    kyProcess process;
    std::size_t bytes = 0;
    process.setInput("third line\n");
    process.setOutputHandler(
        [&](kyProcess::OutputChannel channel, std::string_view text)
        {
            bytes += text.size();
            (channel == kyProcess::StandardOutput ? std::cout : std::cerr) << "child: " << text;
        });
    if (!process.startProcess(self, {"child"}, false, kyProcess::Low))
        return 1;
    while (!process.waitForFinished(1000))
        std::cout << "process " << process.getPid() << " uses " << process.getCurrentRamInUse() << " bytes\n";
    return result == 3 && process.exitCode() == 3 && bytes >= 11 ? 0 : 1;
}

} // namespace

int main(int argc, char**)
{
    if (argc > 1)
        return beChild();
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);
    const int result = runPrograms(ky::kySystemUtils::GetProgramFullPath());
    ky::terminateKySystem();
    return result;
}
