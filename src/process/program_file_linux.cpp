// SPDX-License-Identifier: MIT
#include "process/program_file_linux.h"

#include "filesystem/system_path_linux.h"
#include "platform/posix_retry.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

bool isExecutable(const std::string& path)
{
    struct stat entry;
    return ::stat(path.c_str(), &entry) == 0 && S_ISREG(entry.st_mode) &&
           ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

} // namespace

std::string findProgram(const std::string& program)
{
    std::string path = systemPath(program);
    if (path.find('/') != std::string::npos)
        return path;
    // An empty or relative folder would mean the current one.
    const char* const variable = std::getenv("PATH");
    std::string_view rest = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!rest.empty())
    {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
        if (folder.empty() || folder.front() != '/')
            continue;
        path.assign(folder).append("/").append(program);
        if (isExecutable(path))
            return path;
    }
    return {};
}

bool isText(const std::string& path)
{
    char start[256];
    const int file = openPath(path, O_RDONLY | O_CLOEXEC);
    const ssize_t size = file < 0 ? -1 : retryInterrupted([&] { return ::read(file, start, sizeof(start)); });
    if (file >= 0)
        ::close(file);
    return size >= 0 && std::memchr(start, 0, static_cast<std::size_t>(size)) == nullptr;
}

} // namespace ky::impl::native
