// SPDX-License-Identifier: MIT
#pragma once

#include "diagnostics/frame_walk_linux.h"

namespace ky::impl::native
{

/// Notes where the allocator and the run-time linker are. Not in a signal handler.
void locateAllocator() noexcept;

/// Whether a call that was given up at these frames cannot hold a lock of the allocator or of the run-time linker. Safe
/// in a signal handler.
bool isMemorySafe(const WalkedCall& call) noexcept;

} // namespace ky::impl::native
