// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <cstdint>

namespace ky::impl::native
{

/// The Windows exception code that corresponds to the signal. `stackLow`: lowest address of the thread's stack, 0 when
/// unknown. Safe in a signal handler.
std::uint32_t codeOf(int number, const siginfo_t& info, std::uintptr_t stackLow) noexcept;

} // namespace ky::impl::native
