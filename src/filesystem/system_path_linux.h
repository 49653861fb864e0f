// SPDX-License-Identifier: MIT
// Paths that callers pass, as the system takes them. For *_linux.cpp files only.
#pragma once

#include <string>
#include <string_view>

namespace ky::impl::native
{

/// Every '\' turned into '/'.
std::string systemPath(std::string_view path);

/// open() without a limit to the length of the path. `flags` are passed on for the last component alone; O_CLOEXEC
/// should be among them. A descriptor, or -1 with errno.
int openPath(std::string_view path, int flags, unsigned mode = 0);

} // namespace ky::impl::native
