// SPDX-License-Identifier: MIT
// Texts of the system's error codes. Used by every room that reports a failed system call.
#pragma once

#include <string>

namespace ky::impl
{

/// The system's text for `code` (errno on Linux, GetLastError() on Windows) in UTF-8, as the system words it, line end
/// included where it has one. "Unknown Error" when the system has no text for the code.
std::string systemErrorText(int code);

} // namespace ky::impl
