// SPDX-License-Identifier: MIT
#include "diagnostics/log_file_native.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ky::impl::native
{

namespace
{

/// Calls with the path as the system takes it; copied only when it has to change.
template <typename Call>
auto withSystemPath(const std::string& path, Call call)
{
    if (path.find('\\') == std::string::npos)
        return call(path.c_str());
    std::string slashed = path;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    return call(slashed.c_str());
}

int toDescriptor(std::intptr_t handle) { return static_cast<int>(handle); }

} // namespace

PathKind pathKind(const std::string& pathUtf8)
{
    struct stat info = {};
    if (withSystemPath(pathUtf8, [&](const char* path) { return stat(path, &info); }) != 0)
        return errno == ENOENT || errno == ENOTDIR ? PathKind::Nothing : PathKind::Unknown;
    if (S_ISREG(info.st_mode))
        return PathKind::File;
    return S_ISDIR(info.st_mode) ? PathKind::Folder : PathKind::Other;
}

AppendFile::AppendFile(const std::string& pathUtf8)
{
    constexpr int flags = O_APPEND | O_CLOEXEC | O_NOCTTY;
    const auto openAs = [&](int access)
    {
        return withSystemPath(pathUtf8, [&](const char* path)
                              { return retryInterrupted([&] { return ::open(path, flags | access, 0666); }); });
    };
    // Exclusive creation follows no link that leads nowhere. Others may create and rename the file meanwhile.
    for (int attempt = 0; attempt < 3; ++attempt)
    {
        mHandle = openAs(O_RDWR);
        if (!isOpen() && errno == EACCES)
            mHandle = openAs(O_WRONLY);
        if (isOpen() || errno != ENOENT)
            return;
        mHandle = openAs(O_RDWR | O_CREAT | O_EXCL);
        if (isOpen() || errno != EEXIST)
            return;
    }
}

std::int64_t AppendFile::end() const { return lseek(toDescriptor(mHandle), 0, SEEK_END); }

std::size_t AppendFile::write(const char* data, std::size_t size)
{
    std::size_t written = 0;
    while (written < size)
    {
        const ssize_t count =
            retryInterrupted([&] { return ::write(toDescriptor(mHandle), data + written, size - written); });
        if (count <= 0)
            break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}

bool AppendFile::readAt(std::int64_t position, char* data, std::size_t size) const
{
    return retryInterrupted([&] { return pread(toDescriptor(mHandle), data, size, position); }) ==
           static_cast<ssize_t>(size);
}

void AppendFile::close()
{
    if (isOpen())
        ::close(toDescriptor(std::exchange(mHandle, invalidHandle)));
}

bool cutFile(const std::string& pathUtf8, std::int64_t size)
{
    return withSystemPath(pathUtf8, [&](const char* path)
                          { return retryInterrupted([&] { return truncate(path, size); }) == 0; });
}

} // namespace ky::impl::native
