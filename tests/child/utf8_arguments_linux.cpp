// SPDX-License-Identifier: MIT
#include "child/utf8_arguments.h"

namespace ky::test
{

std::vector<std::string> utf8Arguments(int argc, char** argv)
{
    return std::vector<std::string>(argv + 1, argv + argc);
}

} // namespace ky::test
