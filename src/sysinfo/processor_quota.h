// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/system_tree.h"

namespace ky::impl
{

/// Processors that the control groups of the process (versions 1 and 2, with all groups above it) let it use, rounded
/// up; 0 when they set no bound.
std::uint64_t processorQuota(const SystemTree& tree);

} // namespace ky::impl
