// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace ky::test
{

/// Whether this platform forks processes.
bool canFork();

/// Forks; the child runs `body` and leaves at once. True when it ended well within ten seconds (a blocked child never
/// does).
bool forkAndRun(const std::function<void()>& body);

} // namespace ky::test
