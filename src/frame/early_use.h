// SPDX-License-Identifier: MIT
// The meeting point of locks and log: constructors of locks, wait conditions and threads report here, so that they need
// not include the logger.
#pragma once

namespace ky::impl
{

/// Runs the fork detector, then writes the CRITICAL `warning` when the library is not fully initialized. Never throws.
void checkEarlyUse(const char* warning) noexcept;

/// Runs the fork detector alone. Never throws. Called by destructors.
void checkFork() noexcept;

/// Writes `message` as a CRITICAL of the library itself: to the logger, and to the system's event log under "kySystem".
void reportCritical(const char* message) noexcept;

} // namespace ky::impl
