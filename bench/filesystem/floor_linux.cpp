// SPDX-License-Identifier: MIT
#include "floor.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace ky::bench
{

namespace
{

std::size_t countBelow(int folder)
{
    std::size_t files = 0;
    DIR* const listing = fdopendir(folder);
    while (const dirent* const entry = readdir(listing))
    {
        const char* const name = entry->d_name;
        if (entry->d_type != DT_DIR)
            ++files;
        else if (name[0] != '.' || (name[1] != '\0' && (name[1] != '.' || name[2] != '\0')))
            files += countBelow(openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    closedir(listing);
    return files;
}

} // namespace

std::size_t countByBareCalls(const std::string& root)
{
    return countBelow(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

} // namespace ky::bench
