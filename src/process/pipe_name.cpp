// SPDX-License-Identifier: MIT
#include "process/pipe_name.h"

#include <algorithm>
#include <string>

namespace ky::impl
{

bool isPipeName(std::string_view name)
{
    bool hasComponent = false;
    for (std::size_t start = 0; start < name.size();)
    {
        const std::string_view component = name.substr(start, name.find_first_of("/\\", start) - start);
        start += component.size() + 1;
        if (component.empty())
            continue;
        if (component.find_first_not_of(". ") == std::string_view::npos)
            return false;
        hasComponent = true;
    }
    return hasComponent && name.find('\0') == std::string_view::npos;
}

} // namespace ky::impl
