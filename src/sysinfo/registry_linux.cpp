// SPDX-License-Identifier: MIT
#include "sysinfo/registry_native.h"

namespace ky::impl::native
{

// There is no registry here.
bool readRegistry(RegistryHive, const std::string&, const std::string&, RegistryData&) { return false; }

} // namespace ky::impl::native
