// SPDX-License-Identifier: MIT
#pragma once

#include "concurrency/dispatch_pool.h"

namespace ky::test
{

/// Gives the process a pool of `workers` for a scope; none at all for 0.
class PoolOf
{
public:
    explicit PoolOf(unsigned workers)
    {
        impl::destroyConcurrentPool();
        if (workers != 0)
            impl::createConcurrentPool(workers);
    }
    ~PoolOf() { impl::destroyConcurrentPool(); }
    PoolOf(const PoolOf&) = delete;
    PoolOf& operator=(const PoolOf&) = delete;
};

/// Without workers, with one, with as many as a small machine has, and with more than there are processors.
inline constexpr unsigned workerCounts[] = {0, 1, 2, 7};

} // namespace ky::test
