// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kySystemUtils.h>

#include <vector>

namespace ky::impl::native
{

/// The display adapters in the system's order; none when it does not tell. At most 64.
std::vector<kySystemUtils::DirectXDeviceInfo> listAdapters();

} // namespace ky::impl::native
