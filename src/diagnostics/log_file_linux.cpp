// SPDX-License-Identifier: MIT
#include "diagnostics/log_file_native.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

} // namespace

PathKind pathKind(const std::string& pathUtf8)
{
    struct stat info = {};
    if (stat(withSlashes(pathUtf8).c_str(), &info) != 0)
        return errno == ENOENT || errno == ENOTDIR ? PathKind::Nothing : PathKind::Other;
    if (S_ISREG(info.st_mode))
        return PathKind::File;
    return S_ISDIR(info.st_mode) ? PathKind::Folder : PathKind::Other;
}

bool cutFile(const std::string& pathUtf8, std::int64_t size)
{
    const std::string path = withSlashes(pathUtf8);
    return retryInterrupted([&] { return truncate(path.c_str(), size); }) == 0;
}

} // namespace ky::impl::native
