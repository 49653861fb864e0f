// SPDX-License-Identifier: MIT
#include "diagnostics/fork_while_logging.h"

namespace ky::test
{

bool canFork() { return false; }

bool forkAndRun(const std::function<void()>&) { return false; }

} // namespace ky::test
