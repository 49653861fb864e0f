// SPDX-License-Identifier: MIT
#include "filesystem/system_path_linux.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace ky::impl::native
{

std::string systemPath(std::string_view path)
{
    std::string result(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

// The system takes at most PATH_MAX bytes at a time: a longer path is opened piece by piece.
int openPath(std::string_view path, int flags, unsigned mode)
{
    int from = AT_FDCWD;
    for (;;)
    {
        const bool isLast = path.size() < PATH_MAX;
        const std::size_t cut = isLast ? path.size() : path.rfind('/', PATH_MAX - 2);
        const std::string piece(path.substr(0, cut == 0 ? 1 : cut));
        const int pieceFlags = isLast ? flags : O_PATH | O_DIRECTORY | O_CLOEXEC;
        const int opened = retryInterrupted([&] { return openat(from, piece.c_str(), pieceFlags, mode); });
        const int code = errno;
        if (from != AT_FDCWD)
            ::close(from);
        errno = code;
        if (isLast || opened < 0)
            return opened;
        from = opened;
        path.remove_prefix(std::min(path.find_first_not_of('/', cut), path.size()));
        if (path.empty())
            path = ".";
    }
}

} // namespace ky::impl::native
