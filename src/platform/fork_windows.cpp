// SPDX-License-Identifier: MIT
#include "platform/fork_native.h"

namespace ky::impl::native
{

void onFork(void (*)(), void (*)()) {}

} // namespace ky::impl::native
