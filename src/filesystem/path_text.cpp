// SPDX-License-Identifier: MIT
#include "filesystem/path_text.h"

#include <algorithm>

namespace ky::impl
{

std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string withBackslashes(std::string path)
{
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

void appendPath(std::string& path, std::string_view tail)
{
    if (!path.empty() && !tail.empty())
    {
        const bool isSeparated = isSeparator(path.back());
        if (isSeparated && isSeparator(tail.front()))
            tail.remove_prefix(1);
        else if (!isSeparated && !isSeparator(tail.front()))
            path += '/';
    }
    path += tail;
}

} // namespace ky::impl
