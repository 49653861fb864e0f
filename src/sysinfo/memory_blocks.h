// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/system_tree.h"

namespace ky::impl
{

/// Physically installed memory in bytes, as a Linux kernel tells it; 0 when it does not.
std::uint64_t installedMemory(const SystemTree& tree);

} // namespace ky::impl
