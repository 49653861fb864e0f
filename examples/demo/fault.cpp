// SPDX-License-Identifier: MIT
#include "fault.h"

#include <ky/ky.h>

#include <atomic>
#include <vector>

namespace demo
{

namespace
{

/// A bug as it happens: nobody has asked whether there is a place to write to.
void storeResult(volatile int* place, int result) { *place = result; }

/// The report is to name the function, which no compiler shall therefore inline.
void (*volatile sStoreResult)(volatile int*, int) = &storeResult;

} // namespace

int runFaultyJobs(int jobs, int faulty)
{
    std::vector<int> results(static_cast<std::size_t>(jobs));
    std::atomic<int> done{0};
    ky::concurrent::parallelFor(
        0, jobs,
        [&](int job)
        {
            // Each job is guarded for itself, so that the bad one costs itself only.
            ky::exception::ExecGuardedCode(
                [&]
                {
                    sStoreResult(job == faulty ? nullptr : &results[static_cast<std::size_t>(job)], job);
                    ++done;
                });
        },
        1);
    return done;
}

} // namespace demo
