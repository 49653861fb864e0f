// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kySystemUtils.h>

namespace ky::impl::native
{

kySystemUtils::PowerStatus powerStatus();

} // namespace ky::impl::native
