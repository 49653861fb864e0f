// SPDX-License-Identifier: MIT
#include "diagnostics/fork_guard_native.h"

namespace ky::impl::native
{

void onFork(void (*)(), void (*)()) {}

} // namespace ky::impl::native
