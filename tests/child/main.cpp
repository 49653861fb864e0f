// SPDX-License-Identifier: MIT
// The helper program of the multi-process tests: ky_child MODE ARGUMENTS...
#include "child/child_mode.h"

#include <cstdio>
#include <map>

#include "child/utf8_arguments.h"

namespace ky::test
{

namespace
{

std::map<std::string, ChildMode>& modes()
{
    static std::map<std::string, ChildMode> all;
    return all;
}

} // namespace

RegisterChildMode::RegisterChildMode(const char* name, ChildMode mode) { modes()[name] = mode; }

} // namespace ky::test

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments = ky::test::utf8Arguments(argc, argv);
    const auto found = arguments.empty() ? ky::test::modes().end() : ky::test::modes().find(arguments[0]);
    if (found == ky::test::modes().end())
    {
        std::fprintf(stderr, "unknown mode\n");
        return 2;
    }
    return found->second(std::vector<std::string>(arguments.begin() + 1, arguments.end()));
}
