// SPDX-License-Identifier: MIT
// The pool of the process. Private, but meant for the lifecycle too.
#pragma once

#include <ky/kyConcurrentPool.h>

namespace ky::impl
{

/// Makes the pool of the process with a worker for every processor, at most `maxPoolWorkers`.
inline constexpr unsigned int maxPoolWorkers = 1024;
void createConcurrentPool(unsigned int processors);

/// Ends it, after the calls that use it have come to their end. Without effect when there is none.
void destroyConcurrentPool();

/// Keeps the pool of the process alive for a scope.
class PoolUse
{
public:
    PoolUse() noexcept;
    ~PoolUse();
    PoolUse(const PoolUse&) = delete;
    PoolUse& operator=(const PoolUse&) = delete;

    /// Null when there is none.
    [[nodiscard]] ConcurrentPool* pool() const noexcept { return mPool; }

private:
    ConcurrentPool* mPool;
};

} // namespace ky::impl
