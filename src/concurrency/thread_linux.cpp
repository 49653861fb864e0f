// SPDX-License-Identifier: MIT
#include "concurrency/thread_native.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <ctime>
#include <pthread.h>
#include <sched.h>

namespace ky::impl::native
{

static_assert(sizeof(pthread_t) == sizeof(std::uintptr_t));

namespace
{

/// The kernel's limit, without the NUL.
constexpr std::size_t longestName = 15;

void* runBody(void* thread)
{
    const auto* const self = static_cast<const Thread*>(thread);
    self->body(self->argument);
    return nullptr;
}

} // namespace

bool startThread(Thread& thread) noexcept
{
    pthread_t handle{};
    if (pthread_create(&handle, nullptr, &runBody, &thread) != 0)
        return false;
    thread.handle = handle;
    return true;
}

bool joinThread(Thread& thread) noexcept { return pthread_join(thread.handle, nullptr) == 0; }

void nameCurrentThread(const std::string& name) noexcept
{
    const auto continuesCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80; };
    std::size_t length = std::min(name.size(), longestName);
    while (length < name.size() && length > 0 && continuesCharacter(name[length]))
        --length;
    std::array<char, longestName + 1> text{};
    std::copy_n(name.begin(), length, text.begin());
    pthread_setname_np(pthread_self(), text.data());
}

void sleepMs(std::uint64_t milliseconds) noexcept
{
    if (milliseconds == 0)
    {
        sched_yield();
        return;
    }
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += static_cast<time_t>(milliseconds / 1000);
    end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (end.tv_nsec >= 1'000'000'000)
    {
        end.tv_nsec -= 1'000'000'000;
        ++end.tv_sec;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR)
    {
    }
}

} // namespace ky::impl::native
