// SPDX-License-Identifier: MIT
#include "ky/console_native.h"

#include <cerrno>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace ky::tool::native
{

namespace
{

// A signal that arrives just before the wait for input begins is seen after this time.
constexpr int longestWaitMs = 500;

void (*sInterruptCall)() = nullptr;

void handleSignal(int) { sInterruptCall(); }

} // namespace

std::vector<std::string> utf8Arguments(int argc, char** argv)
{
    return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

void prepareConsole() {}

bool isOutputTerminal() { return isatty(STDOUT_FILENO) == 1; }

void onInterrupt(void (*call)())
{
    sInterruptCall = call;
    for (const int signal : {SIGINT, SIGTERM})
    {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = &handleSignal;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

Input readInput(char* buffer, std::size_t capacity, std::size_t& size)
{
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, longestWaitMs) <= 0)
        return Input::Nothing;
    const ssize_t got = read(STDIN_FILENO, buffer, capacity);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return Input::Nothing;
    size = got > 0 ? static_cast<std::size_t>(got) : 0;
    return got > 0 ? Input::Bytes : Input::End;
}

} // namespace ky::tool::native
