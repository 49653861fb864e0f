// SPDX-License-Identifier: MIT
// Dispositions of the signals that faults arrive as: ours while somebody needs them, and those found before us.
#pragma once

#include "diagnostics/guard_native.h"

#include <csignal>

namespace ky::impl::native
{

using SignalHandler = void (*)(int number, siginfo_t* info, void* context);

/// Puts `handler` in place for every signal of the table. The caller excludes other callers.
void installHandlers(SignalHandler handler) noexcept;

/// Puts back what was found before, where our handler is still in place.
void removeHandlers(SignalHandler handler) noexcept;

/// The report that waits for this signal, null when there is none.
void setReport(int number, SignalReport report) noexcept;

/// A signal that no guarded code took: reports it if somebody waits for it, then leaves it to whoever was there before.
/// Safe in a handler.
void passOn(int number, siginfo_t* info, void* context) noexcept;

/// Whether the instruction that was interrupted caused the signal.
inline bool isFault(const siginfo_t& info) noexcept { return info.si_code > 0; }

} // namespace ky::impl::native
