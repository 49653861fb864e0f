// SPDX-License-Identifier: MIT
#include "sysinfo/power_native.h"
#include "sysinfo/power_supply.h"
#include "sysinfo/system_tree_linux.h"

namespace ky::impl::native
{

kySystemUtils::PowerStatus powerStatus() { return powerFromSupplies(systemTree()); }

} // namespace ky::impl::native
