// SPDX-License-Identifier: MIT
#pragma once

#include "support/child_process.h"

#include <cstdint>

namespace ky::test
{

struct ChildProcess::Process
{
    ~Process();
    std::intptr_t handle = 0;
    bool ended = false;
    int exitCode = -1;
};

} // namespace ky::test
