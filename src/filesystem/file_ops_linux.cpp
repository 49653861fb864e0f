// SPDX-License-Identifier: MIT
#include "filesystem/copy_linux.h"
#include "filesystem/file_ops_native.h"
#include "filesystem/path_at_linux.h"
#include "filesystem/system_path_linux.h"

#include "platform/posix_retry.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr mode_t everything = S_IRWXU | S_IRWXG | S_IRWXO;

/// Where the system can move nothing from one place to the other.
ErrorCode moveByCopy(const std::string& from, const std::string& to, const struct stat& moved)
{
    if (!S_ISREG(moved.st_mode) && !S_ISLNK(moved.st_mode))
        return EXDEV;
    const ErrorCode code = S_ISLNK(moved.st_mode) ? copyLink(from, to) : copyRegularFile(from, to, CopyTo::ReplaceName);
    if (code == 0)
        deleteFile(from); // moved all the same when the old name cannot be removed
    return code;
}

/// Nothing happens when both names belong to one file. Moving the old one aside first tells two names, of which one is
/// to go, from one name given twice.
void dropSecondName(const PathAt& from, const PathAt& to, const std::string& path, const struct stat& moved)
{
    struct stat left = {};
    if (fstatat(from.folder(), from.name(), &left, AT_SYMLINK_NOFOLLOW) != 0 || left.st_ino != moved.st_ino ||
        left.st_dev != moved.st_dev)
        return;
    const PathAt aside(std::string(folderPart(path)) + ".ky" + randomName());
    if (renameat(from.folder(), from.name(), aside.folder(), aside.name()) == 0 &&
        renameat(aside.folder(), aside.name(), to.folder(), to.name()) == 0)
        unlinkat(aside.folder(), aside.name(), 0);
}

/// A folder takes nobody's place, not even that of an empty folder.
int renameFolder(const PathAt& from, const PathAt& to)
{
    const int result = renameat2(from.folder(), from.name(), to.folder(), to.name(), RENAME_NOREPLACE);
    if (result == 0 || (errno != EINVAL && errno != ENOSYS))
        return result;
    // The file system does not know the flag, or the folder would come to lie in itself.
    struct stat taken = {};
    if (fstatat(to.folder(), to.name(), &taken, AT_SYMLINK_NOFOLLOW) == 0)
    {
        errno = EEXIST;
        return -1;
    }
    return renameat(from.folder(), from.name(), to.folder(), to.name());
}

} // namespace

bool queryStatus(const std::string& path, FileStatus& status)
{
    const PathAt at(path);
    struct stat info = {};
    if (fstatat(at.folder(), at.name(), &info, 0) != 0)
        return false;
    status.lastAccess = info.st_atim.tv_sec;
    status.creation = info.st_ctim.tv_sec;
    status.lastModified = info.st_mtim.tv_sec;
    status.size = info.st_size;
    status.hasType = (info.st_mode & S_IFMT) != 0;
    status.isFolder = S_ISDIR(info.st_mode);
    return true;
}

bool copyFile(const std::string& source, const std::string& destination, bool overwrite)
{
    return copyRegularFile(systemPath(source), systemPath(destination),
                           overwrite ? CopyTo::ExistingFile : CopyTo::NewName) == 0;
}

ErrorCode moveFile(const std::string& from, const std::string& to)
{
    const PathAt fromAt(from);
    const PathAt toAt(to);
    struct stat moved = {};
    if (fstatat(fromAt.folder(), fromAt.name(), &moved, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    const int result = S_ISDIR(moved.st_mode) ? renameFolder(fromAt, toAt)
                                              : renameat(fromAt.folder(), fromAt.name(), toAt.folder(), toAt.name());
    if (result == 0 && !S_ISDIR(moved.st_mode) && moved.st_nlink > 1)
        dropSecondName(fromAt, toAt, systemPath(from), moved);
    if (result == 0)
        return 0;
    return errno == EXDEV ? moveByCopy(systemPath(from), systemPath(to), moved) : errno;
}

bool deleteFile(const std::string& path)
{
    const PathAt at(path);
    return unlinkat(at.folder(), at.name(), 0) == 0;
}

bool grantEverything(const std::string& path)
{
    // By a descriptor that needs no right to read and follows no link.
    const int file = openPath(systemPath(path), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat info = {};
    const std::string name = "/proc/self/fd/" + std::to_string(file);
    const bool done = fstat(file, &info) == 0 && !S_ISLNK(info.st_mode) && chmod(name.c_str(), everything) == 0;
    ::close(file);
    return done;
}

} // namespace ky::impl::native
