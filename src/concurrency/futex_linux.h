// SPDX-License-Identifier: MIT
// Sleeping on a word of memory until it is changed and woken. For *_linux.cpp files only.
#pragma once

#include "concurrency/sync_native.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ky::impl::native
{

/// A moment of the monotonic clock, or never.
class Deadline
{
public:
    explicit Deadline(std::uint32_t limitMs) noexcept : mNever(limitMs == noTimeLimit)
    {
        if (mNever)
            return;
        ::clock_gettime(CLOCK_MONOTONIC, &mTime);
        mTime.tv_sec += static_cast<time_t>(limitMs / 1000);
        mTime.tv_nsec += static_cast<long>(limitMs % 1000) * 1'000'000;
        if (mTime.tv_nsec >= 1'000'000'000)
        {
            mTime.tv_nsec -= 1'000'000'000;
            ++mTime.tv_sec;
        }
    }

    /// Null for never.
    const timespec* time() const noexcept { return mNever ? nullptr : &mTime; }

private:
    bool mNever;
    timespec mTime{};
};

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

/// Sleeps while `word` holds `expected`. 0 when woken, otherwise an errno value: EAGAIN (another value already), EINTR
/// or ETIMEDOUT.
inline int futexWait(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const Deadline& deadline) noexcept
{
    const long result = ::syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, expected, deadline.time(), nullptr,
                                  FUTEX_BITSET_MATCH_ANY);
    return result == 0 ? 0 : errno;
}

/// Uses only the address: the word may be gone already.
inline void futexWake(const std::atomic<std::uint32_t>& word, int count) noexcept
{
    ::syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, count);
}

} // namespace ky::impl::native
