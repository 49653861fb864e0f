// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl
{

/// Installs the process-wide watchers for SIGFPE, SIGILL and SIGSEGV, in this order. They must not be in place.
void registerWatchers();

/// Takes them back, in the same order.
void unregisterWatchers();

} // namespace ky::impl
