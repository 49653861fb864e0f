// SPDX-License-Identifier: MIT
#include "diagnostics/fork_while_logging.h"

#include "support/child_process.h"
#include "support/sanitizer.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace ky::test
{

bool canFork() { return canForkAnyTime; }

bool forkAndRun(const std::function<void()>& body)
{
    const pid_t child = fork();
    if (child == 0)
    {
        body();
        _exit(0);
    }
    int status = -1;
    const bool ended = eventually([&] { return waitpid(child, &status, WNOHANG) == child; }, std::chrono::seconds(10));
    if (!ended)
    {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
    }
    return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace ky::test
