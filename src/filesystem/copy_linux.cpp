// SPDX-License-Identifier: MIT
#include "filesystem/copy_linux.h"
#include "filesystem/copy_content_linux.h"
#include "filesystem/path_at_linux.h"

#include "platform/posix_retry.h"

#include <array>
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

ErrorCode codeOf(int result) { return result == 0 ? 0 : errno; }

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : mDescriptor(descriptor) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return mDescriptor; }
    int close() { return mDescriptor < 0 ? 0 : ::close(std::exchange(mDescriptor, -1)); }

private:
    int mDescriptor;
};

/// A name beside the destination for what is not finished. Goes away with the object, unless it was moved on.
class Unfinished
{
public:
    explicit Unfinished(const std::string& destination)
        : mAt(std::string(folderPart(destination)) + ".ky" + randomName()),
          mDestination(destination)
    {
    }
    ~Unfinished()
    {
        if (!mIsMoved)
            unlinkat(mAt.folder(), mAt.name(), 0);
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    int folder() const { return mAt.folder(); }
    const char* name() const { return mAt.name(); }

    ErrorCode moveOver() { return finish(renameat(folder(), name(), mDestination.folder(), mDestination.name())); }

    /// In one step with the check that the name is free; by a second link where the file system knows no such rename.
    ErrorCode moveToNew()
    {
        const int code =
            finish(renameat2(folder(), name(), mDestination.folder(), mDestination.name(), RENAME_NOREPLACE));
        if (code != EINVAL && code != ENOSYS)
            return code;
        return codeOf(linkat(folder(), name(), mDestination.folder(), mDestination.name(), 0));
    }

private:
    ErrorCode finish(int result)
    {
        mIsMoved = result == 0;
        return codeOf(result);
    }

    PathAt mAt;
    PathAt mDestination;
    bool mIsMoved = false;
};

/// What the copy would replace, links followed.
ErrorCode checkReplaced(const PathAt& destination, const struct stat& source, struct stat& replaced)
{
    if (fstatat(destination.folder(), destination.name(), &replaced, 0) != 0)
        return errno == ENOENT ? 0 : errno;
    if (S_ISDIR(replaced.st_mode))
        return EISDIR;
    if (!S_ISREG(replaced.st_mode))
        return EINVAL;
    if (replaced.st_dev == source.st_dev && replaced.st_ino == source.st_ino)
        return EEXIST;
    return codeOf(faccessat(destination.folder(), destination.name(), W_OK, AT_EACCESS));
}

/// What a link leads to, as far as that exists.
std::string behindLinks(const std::string& path)
{
    char* const resolved = realpath(path.c_str(), nullptr);
    std::string result = resolved == nullptr ? path : resolved;
    std::free(resolved);
    return result;
}

/// Owner and group as far as this user may give them; they clear bits of the mode, which comes last.
bool setAttributes(int file, const struct stat& source, const struct stat& replaced)
{
    const bool replaces = replaced.st_mode != 0;
    if (replaces && fchown(file, replaced.st_uid, replaced.st_gid) != 0)
        static_cast<void>(fchown(file, static_cast<uid_t>(-1), replaced.st_gid) == 0);
    const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT}, source.st_mtim};
    return futimens(file, times.data()) == 0 && (fchmod(file, source.st_mode & 0777) == 0 || errno == EPERM);
}

ErrorCode writeCopy(int from, const struct stat& source, const struct stat& replaced, const Unfinished& unfinished)
{
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    Descriptor to(retryInterrupted([&] { return openat(unfinished.folder(), unfinished.name(), flags, 0600); }));
    if (to.get() < 0)
        return errno;
    const ErrorCode code = copyContent(from, to.get(), source.st_size);
    if (code != 0)
        return code;
    return setAttributes(to.get(), source, replaced) && to.close() == 0 ? 0 : errno;
}

ErrorCode copyToNew(int from, const struct stat& source, const std::string& destination)
{
    struct stat taken = {};
    const PathAt at(destination);
    if (fstatat(at.folder(), at.name(), &taken, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    Unfinished unfinished(destination);
    const ErrorCode code = writeCopy(from, source, {}, unfinished);
    return code != 0 ? code : unfinished.moveToNew();
}

ErrorCode copyOver(int from, const struct stat& source, const std::string& destination)
{
    struct stat replaced = {};
    ErrorCode code = checkReplaced(PathAt(destination), source, replaced);
    if (code != 0)
        return code;
    Unfinished unfinished(behindLinks(destination));
    code = writeCopy(from, source, replaced, unfinished);
    return code != 0 ? code : unfinished.moveOver();
}

} // namespace

ErrorCode copyRegularFile(const std::string& source, const std::string& destination, CopyTo to)
{
    const PathAt sourceAt(source);
    // A pipe must not make it wait.
    const Descriptor from(retryInterrupted(
        [&] { return openat(sourceAt.folder(), sourceAt.name(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat info = {};
    if (from.get() < 0 || fstat(from.get(), &info) != 0)
        return errno;
    if (!S_ISREG(info.st_mode))
        return S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
    switch (to)
    {
    case CopyTo::NewName: return copyToNew(from.get(), info, destination);
    case CopyTo::ExistingFile: return copyOver(from.get(), info, destination);
    case CopyTo::ReplaceName: break;
    }
    Unfinished unfinished(destination);
    const ErrorCode code = writeCopy(from.get(), info, {}, unfinished);
    return code != 0 ? code : unfinished.moveOver();
}

ErrorCode copyLink(const std::string& source, const std::string& destination)
{
    const PathAt sourceAt(source);
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlinkat(sourceAt.folder(), sourceAt.name(), text.data(), text.size() - 1);
    if (length < 0)
        return errno;
    Unfinished unfinished(destination);
    if (symlinkat(text.data(), unfinished.folder(), unfinished.name()) != 0)
        return errno;
    return unfinished.moveOver();
}

} // namespace ky::impl::native
