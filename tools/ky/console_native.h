// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace ky::tool::native
{

/// The arguments behind the program's name in UTF-8.
std::vector<std::string> utf8Arguments(int argc, char** argv);

/// Makes the console show UTF-8, and standard streams pass bytes as they are.
void prepareConsole();

} // namespace ky::tool::native
