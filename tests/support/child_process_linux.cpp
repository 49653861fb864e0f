// SPDX-License-Identifier: MIT
#include "support/child_process_impl.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace ky::test
{

ChildProcess::Process::~Process() = default;

std::unique_ptr<ChildProcess::Process> ChildProcess::start(const std::string& program,
                                                           const std::vector<std::string>& arguments,
                                                           const std::string& outputFile)
{
    std::vector<std::string> copies{program};
    copies.insert(copies.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : copies)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!outputFile.empty())
    {
        posix_spawn_file_actions_addopen(&actions, 1, outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
    }
    pid_t pid = 0;
    const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
    {
        ADD_FAILURE() << "cannot start " << program << ", error " << error;
        return nullptr;
    }
    auto process = std::make_unique<Process>();
    process->handle = pid;
    return process;
}

bool ChildProcess::poll(Process& process, int& exitCode)
{
    int status = 0;
    if (!process.ended && waitpid(static_cast<pid_t>(process.handle), &status, WNOHANG) != 0)
    {
        process.ended = true;
        process.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    exitCode = process.exitCode;
    return process.ended;
}

void ChildProcess::terminate(Process& process)
{
    if (!process.ended)
        ::kill(static_cast<pid_t>(process.handle), SIGKILL);
}

} // namespace ky::test
