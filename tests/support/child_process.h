// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace ky::test
{

/// A run of the helper program `ky_child` (see tests/child), or of another program. Killed when the object dies before
/// the child has ended.
class ChildProcess
{
public:
    /// `mode` and `arguments` (UTF-8) for ky_child. With `outputFile` its standard output and error go into that file.
    ChildProcess(const std::string& mode, const std::vector<std::string>& arguments,
                 const std::string& outputFile = {});
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Exit code; 128 + N after signal N (Linux); 0xDEAD after kill() on Windows. Fails the test and kills the child
    /// when it has not ended in time, and then returns -1.
    int wait(std::chrono::seconds limit = std::chrono::seconds(120));

    bool isRunning();

    /// Ends the child at once, without any clean-up on its side.
    void kill();

    /// A run of another program of the build's bin folder, for example "ky".
    static ChildProcess program(const std::string& name, const std::vector<std::string>& arguments,
                                const std::string& outputFile = {});

private:
    struct Process;
    explicit ChildProcess(std::unique_ptr<Process> process);
    std::unique_ptr<Process> mProcess;

    // What a platform owes.
    static std::unique_ptr<Process> start(const std::string& program, const std::vector<std::string>& arguments,
                                          const std::string& outputFile);
    static bool poll(Process& process, int& exitCode);
    static void terminate(Process& process);
};

/// Folder of the programs that the build made.
std::string binFolder();

/// Waits until `condition` holds, checking every few milliseconds; false when it did not within `limit`.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(60));

void sleepBriefly();

template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        sleepBriefly();
    }
    return true;
}

} // namespace ky::test
