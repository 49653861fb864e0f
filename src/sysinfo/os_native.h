// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/os_text.h"

namespace ky::impl::native
{

/// What the system tells about itself. What it does not tell, and what the registry tells, stays at
/// its initial value.
OsFacts queryOs();

} // namespace ky::impl::native
