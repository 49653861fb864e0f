// SPDX-License-Identifier: MIT
#include "sysinfo/os_native.h"

#include "sysinfo/system_tree_linux.h"

namespace ky::impl::native
{

OsFacts queryOs() { return linuxFacts(systemTree()); }

} // namespace ky::impl::native
