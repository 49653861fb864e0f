// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace ky::impl
{

/// Whether the name stands for one pipe and nothing else. Windows resolves names of pipes like paths, so that one with
/// a component of dots and blanks could lead to files and devices; a NUL would end it early.
bool isPipeName(std::string_view name);

} // namespace ky::impl
