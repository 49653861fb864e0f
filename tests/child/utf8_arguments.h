// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace ky::test
{

/// The arguments behind the program's name, in UTF-8 whatever the system's code page is.
std::vector<std::string> utf8Arguments(int argc, char** argv);

} // namespace ky::test
