// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace ky::impl::native
{

/// Logical processors that the process may run on; 0 when the system does not tell.
std::uint64_t processorsInAffinity();

/// Processors' worth of time that the process may use, rounded up; 0 when nothing bounds it.
std::uint64_t processorsInQuota();

/// Sets the environment variable, which programs started later inherit, unless it already holds a text. False when it
/// did or when the system refuses.
bool setVariableIfEmpty(const char* name, const char* value);

} // namespace ky::impl::native
