// SPDX-License-Identifier: MIT
// For *_linux.cpp files only.
#pragma once

#include "process/process_native.h"

namespace ky::impl::native
{

/// Instead of a descriptor, where the system does not give one: the process is known by its id alone.
inline constexpr std::intptr_t withoutDescriptor = -2;
/// It has ended, and somebody else has waited for it: the id may belong to another one by now.
inline constexpr std::intptr_t alreadyGone = -3;

/// Fills the handle of a process from its id.
void openHandle(Process& process) noexcept;

/// Exit code as it is told to callers, from a status of the wait functions. `killed`: whether we have killed it.
int exitCodeOf(int status, bool killed) noexcept;

} // namespace ky::impl::native
