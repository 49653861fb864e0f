// SPDX-License-Identifier: MIT
#pragma once

#include "frame/early_use.h"

namespace ky::impl
{

inline void checkEarlyMutex() noexcept { checkEarlyUse("Mutex created before full init of kySystem"); }

} // namespace ky::impl
