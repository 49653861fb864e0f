// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/system_tree.h"

#include <ky/kySystemUtils.h>

namespace ky::impl
{

/// What the folders of /sys/class/power_supply tell. Batteries of mice, keyboards and so on do not count.
kySystemUtils::PowerStatus powerFromSupplies(const SystemTree& tree);

} // namespace ky::impl
