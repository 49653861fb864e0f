// SPDX-License-Identifier: MIT
#include "diagnostics/crash_output_native.h"

#include "platform/posix_retry.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

std::atomic<int> sFatal{0};
struct sigaction sAlarmBefore;

/// Whatever thread it runs on: the process ends now, by the signal that began it.
void endProcess(int) noexcept
{
    const int number = sFatal;
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(number, &byDefault, nullptr);
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, number);
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    syscall(SYS_tgkill, getpid(), gettid(), number);
    _exit(128 + number);
}

} // namespace

void printDirectly(std::string_view text) noexcept
{
    while (!text.empty())
    {
        const ssize_t written = retryInterrupted([&] { return ::write(STDOUT_FILENO, text.data(), text.size()); });
        if (written <= 0)
            return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void pauseBriefly() noexcept
{
    const timespec time = {0, 1000000};
    nanosleep(&time, nullptr);
}

void beginLifeLimit(int signal) noexcept
{
    sFatal = signal;
    struct sigaction action = {};
    action.sa_handler = &endProcess;
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGALRM, &action, &sAlarmBefore);
    sigset_t alarmOnly;
    sigemptyset(&alarmOnly);
    sigaddset(&alarmOnly, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarmOnly, nullptr);
    alarm(1);
}

void endLifeLimit() noexcept
{
    alarm(0);
    sigaction(SIGALRM, &sAlarmBefore, nullptr);
}

} // namespace ky::impl::native
