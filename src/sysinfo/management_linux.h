// SPDX-License-Identifier: MIT
// The Linux answers to the management queries, on any root.
#pragma once

#include "sysinfo/management.h"
#include "sysinfo/system_files_linux.h"

namespace ky::impl::native
{

std::vector<ManagementRow> selectFrom(const SystemFiles& files, const ManagementQuery& query);

} // namespace ky::impl::native
