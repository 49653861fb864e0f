// SPDX-License-Identifier: MIT
#pragma once

#include "support/child_process.h"
#include "support/soak.h"

#include <ky/kyLockFile.h>

#include <string>

namespace ky::test
{

/// Path of the helper program, to be resolved.
inline std::string childProgram() { return binFolder() + "/ky_child"; }

/// More than enough for what ends by itself, and the time-out where nothing is to time out.
inline constexpr unsigned int amplyMs = 120000;

/// Whether a process holds the lock file: it lives. While it is taking the lock a look may find it held, and make it
/// try once more: ask eventually.
inline bool isHeld(const std::string& lockPath)
{
    kyLockFile lock;
    bool existed = false;
    return !lock.takeLockUtf8(lockPath, &existed) && existed;
}

} // namespace ky::test
