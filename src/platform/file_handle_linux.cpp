// SPDX-License-Identifier: MIT
#include "platform/file_handle.h"

#include "platform/posix_retry.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ky::impl::native
{

namespace
{

/// Names from callers may use either separator.
std::string systemPath(const std::string& path)
{
    std::string result = path;
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

int openFlags(OpenMode mode)
{
    switch (mode)
    {
    case OpenMode::Read: return O_RDONLY;
    case OpenMode::Append: return O_WRONLY | O_APPEND | O_CREAT;
    case OpenMode::Truncate: return O_WRONLY | O_CREAT | O_TRUNC;
    case OpenMode::CreateNew:
    case OpenMode::CreatePrivate: return O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    }
    return O_RDONLY;
}

bool isFolder(int descriptor)
{
    struct stat info = {};
    return fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode);
}

int toDescriptor(std::intptr_t handle) { return static_cast<int>(handle); }

} // namespace

FileHandle FileHandle::open(const std::string& pathUtf8, OpenMode mode, ErrorCode& error)
{
    FileHandle file;
    const bool hasBackslash = pathUtf8.find('\\') != std::string::npos;
    const std::string translated = hasBackslash ? systemPath(pathUtf8) : std::string();
    const char* path = hasBackslash ? translated.c_str() : pathUtf8.c_str();
    const mode_t rights = mode == OpenMode::CreatePrivate ? 0600 : 0666;
    const int flags = openFlags(mode) | O_CLOEXEC | O_NOCTTY;
    const int descriptor = retryInterrupted([&] { return ::open(path, flags, rights); });
    error = descriptor < 0 ? errno : 0;
    if (descriptor >= 0 && mode == OpenMode::Read && isFolder(descriptor))
    {
        ::close(descriptor);
        error = EISDIR;
        return file;
    }
    file.mHandle = descriptor < 0 ? invalidHandle : descriptor;
    return file;
}

std::int64_t FileHandle::read(void* buffer, std::size_t size, ErrorCode& error)
{
    const std::size_t wanted = std::min<std::size_t>(size, SSIZE_MAX);
    const ssize_t got = retryInterrupted([&] { return ::read(toDescriptor(mHandle), buffer, wanted); });
    error = got < 0 ? errno : 0;
    return got;
}

bool FileHandle::write(const void* data, std::size_t size, std::size_t& written, ErrorCode& error)
{
    written = 0;
    error = 0;
    const char* bytes = static_cast<const char*>(data);
    while (written < size)
    {
        const ssize_t count =
            retryInterrupted([&] { return ::write(toDescriptor(mHandle), bytes + written, size - written); });
        if (count <= 0)
        {
            error = count < 0 ? errno : ENOSPC;
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

std::int64_t FileHandle::size() const
{
    struct stat info = {};
    return fstat(toDescriptor(mHandle), &info) == 0 ? static_cast<std::int64_t>(info.st_size) : -1;
}

bool FileHandle::seek(std::int64_t position) { return lseek(toDescriptor(mHandle), position, SEEK_SET) == position; }

bool FileHandle::truncate(std::int64_t size)
{
    return retryInterrupted([&] { return ftruncate(toDescriptor(mHandle), size); }) == 0;
}

bool FileHandle::flushToDisk()
{
    return retryInterrupted([&] { return fdatasync(toDescriptor(mHandle)); }) == 0;
}

bool FileHandle::close()
{
    if (!isOpen())
        return true;
    return ::close(toDescriptor(std::exchange(mHandle, invalidHandle))) == 0;
}

bool pathExists(const std::string& pathUtf8)
{
    struct stat info = {};
    return stat(systemPath(pathUtf8).c_str(), &info) == 0;
}

std::int64_t fileSizeOf(const std::string& pathUtf8)
{
    struct stat info = {};
    return stat(systemPath(pathUtf8).c_str(), &info) == 0 ? static_cast<std::int64_t>(info.st_size) : -1;
}

ErrorCode removeFile(const std::string& pathUtf8) { return unlink(systemPath(pathUtf8).c_str()) == 0 ? 0 : errno; }

ErrorCode renameFile(const std::string& from, const std::string& to)
{
    return std::rename(systemPath(from).c_str(), systemPath(to).c_str()) == 0 ? 0 : errno;
}

bool isMissingFile(ErrorCode code) { return code == ENOENT || code == ENOTDIR; }

bool isRefusal(ErrorCode code) { return code == EACCES || code == EPERM || code == EROFS || code == ENAMETOOLONG; }

bool isReplaceable(const std::string& pathUtf8)
{
    const std::string path = systemPath(pathUtf8);
    struct stat info = {};
    if (stat(path.c_str(), &info) == 0)
        return S_ISREG(info.st_mode);
    return isMissingFile(errno) && lstat(path.c_str(), &info) != 0;
}

ErrorCode passRights(const std::string& model, FileHandle& file, const std::string&)
{
    struct stat info = {};
    if (stat(systemPath(model).c_str(), &info) != 0)
        return 0;
    // Ownership can be given away only by root, but the group by each of its members; it and the permissions are what
    // other users of the file depend on.
    const int descriptor = toDescriptor(file.mHandle);
    if (fchown(descriptor, info.st_uid, info.st_gid) != 0 &&
        fchown(descriptor, static_cast<uid_t>(-1), info.st_gid) != 0 && errno != EPERM)
        return errno;
    return fchmod(descriptor, info.st_mode & 07777) == 0 ? 0 : errno;
}

ErrorCode replaceFile(const std::string& temporary, const std::string& target) { return renameFile(temporary, target); }

std::string resolveLinks(const std::string& pathUtf8)
{
    char* resolved = realpath(systemPath(pathUtf8).c_str(), nullptr);
    if (resolved == nullptr)
        return pathUtf8;
    std::string result = resolved;
    std::free(resolved);
    return result;
}

} // namespace ky::impl::native
