// SPDX-License-Identifier: MIT
// The Linux side of the record's queries, on any root.
#pragma once

#include "sysinfo/os_text.h"
#include "sysinfo/system_files_linux.h"

namespace ky::impl::native
{

/// As queryInstalledMemory().
std::uint32_t installedMemory(const SystemFiles& files, std::uint64_t& kilobytes);

LinuxFacts linuxFacts(const SystemFiles& files);

} // namespace ky::impl::native
