// SPDX-License-Identifier: MIT
// Waiting for children. For *_linux.cpp files only.
#pragma once

#include "process/process_native.h"

namespace ky::impl::native
{

enum class Collected
{
    Ended,
    StillRuns,
    NotOurs ///< no child, or somebody else has waited for it
};

/// Waits for the child without blocking, and for no other. `flags` may hold WNOWAIT. The status is one of the wait
/// functions.
Collected collect(const Process& process, int flags, int& status) noexcept;

/// Lets go of a process. A child that still runs is remembered: somebody has to wait for it, or it stays in the
/// process table.
void abandon(const Process& process) noexcept;

} // namespace ky::impl::native
