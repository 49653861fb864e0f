// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace ky::test
{

/// What the helper program does for one mode; the result is its exit code. Arguments are UTF-8.
using ChildMode = int (*)(const std::vector<std::string>& arguments);

/// Registers a mode by a static object in a file of its room: `static const RegisterChildMode reg("name", &function);`
struct RegisterChildMode
{
    RegisterChildMode(const char* name, ChildMode mode);
};

} // namespace ky::test
