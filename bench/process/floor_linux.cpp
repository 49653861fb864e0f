// SPDX-License-Identifier: MIT
#include "process/floor.h"

#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ky::bench
{

std::string trueProgram() { return "/bin/true"; }

int runByBareCalls(const std::string& program)
{
    std::string name = program;
    char* arguments[] = {name.data(), nullptr};
    pid_t id = 0;
    if (posix_spawn(&id, program.c_str(), nullptr, nullptr, arguments, environ) != 0)
        return -1;
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, id, 0U));
    pollfd entry = {descriptor, POLLIN, 0};
    poll(&entry, 1, -1);
    int status = 0;
    waitpid(id, &status, 0);
    close(descriptor);
    return status;
}

} // namespace ky::bench
