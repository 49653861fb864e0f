// SPDX-License-Identifier: MIT
#pragma once

#include "diagnostics/frame_rules_linux.h"

namespace ky::impl::native
{

/// Computes an expression of the unwinding tables, which starts with its length. False when it is not understood.
/// `start` lies on the expression's stack at the beginning when it is not null.
bool evaluate(const std::uint8_t* expression, const FrameRegisters& registers, const std::uintptr_t* start,
              std::uintptr_t& result) noexcept;

} // namespace ky::impl::native
