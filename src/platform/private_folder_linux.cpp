// SPDX-License-Identifier: MIT
#include "platform/private_folder.h"

#include "platform/posix_retry.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

ErrorCode distrust(const struct stat& found)
{
    if (found.st_uid != ::geteuid())
        return EPERM;
    return (found.st_mode & (S_IRWXG | S_IRWXO)) == 0 ? 0 : EACCES;
}

} // namespace

std::string privateFolderPath() { return "/tmp/kysystem-" + std::to_string(::geteuid()); }

int openPrivateFolder(ErrorCode& error) { return openPrivateFolderAt(privateFolderPath(), error); }

int openPrivateFolderAt(const std::string& path, ErrorCode& error)
{
    error = 0;
    if (::mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST)
    {
        error = errno;
        return -1;
    }
    const int folder =
        retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); });
    struct stat found;
    if (folder == -1 || ::fstat(folder, &found) != 0)
        error = errno;
    else
        error = distrust(found);
    if (error == 0)
        return folder;
    if (folder != -1)
        ::close(folder);
    return -1;
}

} // namespace ky::impl::native
