// SPDX-License-Identifier: MIT
#include "sysinfo/main_disk.h"
#include "sysinfo/main_disk_native.h"
#include "sysinfo/system_tree_linux.h"

namespace ky::impl::native
{

std::string mainDisk() { return diskOfRoot(systemTree()); }

} // namespace ky::impl::native
