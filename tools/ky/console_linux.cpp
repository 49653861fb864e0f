// SPDX-License-Identifier: MIT
#include "ky/console_native.h"

namespace ky::tool::native
{

std::vector<std::string> utf8Arguments(int argc, char** argv)
{
    return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

void prepareConsole() {}

} // namespace ky::tool::native
