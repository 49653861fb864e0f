// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

namespace ky::bench
{

/// The library, fully initialized and silent, for as long as the program runs. Locks and wait conditions take their
/// final implementation then, and the pool has a worker for every processor.
struct Library
{
    Library()
    {
        kySystemUtils::ExportProcessorCount();
        initializeKySystem(InitType::Full, false);
        kyLog::edit().setEchoToConsole(false);
    }
    ~Library() { terminateKySystem(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

} // namespace ky::bench
