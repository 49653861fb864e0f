// SPDX-License-Identifier: MIT
// For *_windows.cpp files only.
#pragma once

#include "platform/win32.h"
#include "process/process_native.h"

namespace ky::impl::native
{

inline HANDLE asHandle(std::intptr_t handle) noexcept { return reinterpret_cast<HANDLE>(handle); }
inline std::intptr_t asNumber(HANDLE handle) noexcept { return reinterpret_cast<std::intptr_t>(handle); }

} // namespace ky::impl::native
