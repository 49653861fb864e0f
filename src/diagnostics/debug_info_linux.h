// SPDX-License-Identifier: MIT
// What debug information and symbol tables in files tell of code, beyond what the run-time linker knows. Optional.
#pragma once

#include "diagnostics/stack_trace_native.h"

namespace ky::impl::native
{

/// Reads nothing yet. False, with nothing to be closed, when the library for it is missing or another thread is at it,
/// or when the calling thread's stack has too little room left. Needs memory.
bool openDebugInfo() noexcept;
void closeDebugInfo() noexcept;

/// After a fault: what the calling thread had open is given up, and nobody reads debug information from now on.
void abandonDebugInfo() noexcept;

/// Symbol of the function at `address`, as the linker knows it, until the next close; null when unknown or when nothing
/// is open. Fills in file and line where they are known.
const char* readDebugInfo(std::uintptr_t address, FrameText& text) noexcept;

} // namespace ky::impl::native
