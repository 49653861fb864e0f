// SPDX-License-Identifier: MIT
#include "frame/process_end_native.h"

namespace ky::impl::native
{

// Threads run on while the static objects of a program are destroyed.
bool processIsEnding() noexcept { return false; }

} // namespace ky::impl::native
