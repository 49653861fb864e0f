// SPDX-License-Identifier: MIT
#pragma once

namespace demo
{

/// Runs jobs on the worker pool, one of which (from 0) writes through a null pointer.
/// \return how many were done
int runFaultyJobs(int jobs, int faulty);

} // namespace demo
