// SPDX-License-Identifier: MIT
// Files of programs. For *_linux.cpp files only.
#pragma once

#include <string>

namespace ky::impl::native
{

/// The path of a program: a path as it is, a name from the absolute folders of PATH. Empty when there is none.
std::string findProgram(const std::string& program);

/// Whether the start of a file looks like text, so that a shell can make something of it.
bool isText(const std::string& path);

} // namespace ky::impl::native
