// SPDX-License-Identifier: MIT
#include "platform/fork_native.h"

#include <pthread.h>

namespace ky::impl::native
{

// The C library drops the handlers when this code is unloaded.
void onFork(void (*before)(), void (*after)()) { pthread_atfork(before, after, after); }

} // namespace ky::impl::native
