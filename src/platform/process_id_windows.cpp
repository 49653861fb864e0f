// SPDX-License-Identifier: MIT
#include "platform/process_id_native.h"

#include "platform/win32.h"

namespace ky::impl::native
{

std::uint64_t currentProcessId() noexcept { return GetCurrentProcessId(); }

} // namespace ky::impl::native
