// SPDX-License-Identifier: MIT
#include "platform/process_id_native.h"

#include <unistd.h>

namespace ky::impl::native
{

std::uint64_t currentProcessId() noexcept { return static_cast<std::uint64_t>(getpid()); }

} // namespace ky::impl::native
