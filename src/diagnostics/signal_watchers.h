// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl
{

/// Installs the process-wide watchers for SIGFPE, SIGILL and SIGSEGV, in this order. Without effect when they are in
/// place.
void registerWatchers();

/// Takes them back, in the same order. Without effect when they are not in place.
void unregisterWatchers();

} // namespace ky::impl
