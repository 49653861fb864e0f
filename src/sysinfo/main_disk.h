// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/system_tree.h"

namespace ky::impl
{

/// "/dev/" and the name of the whole disk below the root file system, through partitions, volumes and arrays (the first
/// of several disks); empty when no disk is below it.
std::string diskOfRoot(const SystemTree& tree);

} // namespace ky::impl
