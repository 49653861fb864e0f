// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

namespace
{

/// Ends without terminating the library: nothing may hang or crash then.
int exitInitialized(const std::vector<std::string>&)
{
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().setEchoToConsole(false);
    ky::logInfo() << "going";
    return 0;
}

const ky::test::RegisterChildMode registration("exit-initialized", &exitInitialized);

} // namespace
