// SPDX-License-Identifier: MIT
#pragma once

#include "diagnostics/fixed_text.h"
#include "diagnostics/guard_native.h"

namespace ky::impl
{

/// Room for the longest report: 64 frames of about 200 bytes.
using FaultText = FixedText<14 * 1024>;

/// The system's name of an exception code; "Unknown Exception Code" for any other.
std::string_view exceptionName(std::uint32_t code) noexcept;

/// "Catch SEH Exception ..." with the stack trace. Needs no memory when the fault says that there is none to be had.
void composeFault(FaultText& text, native::Fault& fault) noexcept;

/// "SIGFPE", "SIGILL", "SIGSEGV"; empty for any other.
std::string_view signalName(int number) noexcept;

} // namespace ky::impl
