// SPDX-License-Identifier: MIT
#include "diagnostics/debug_info_linux.h"

namespace ky::impl::native
{

bool openDebugInfo() noexcept { return false; }

void closeDebugInfo() noexcept {}

void abandonDebugInfo() noexcept {}

const char* readDebugInfo(std::uintptr_t, FrameText&) noexcept { return nullptr; }

} // namespace ky::impl::native
