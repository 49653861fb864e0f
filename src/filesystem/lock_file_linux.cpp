// SPDX-License-Identifier: MIT
// flock() on the file keeps out everybody, a claim to the name (see lock_claim_linux.h) also those who meet another
// file there because somebody removed or replaced this one. The file changes only while both are held: nothing is
// emptied by one who fails, and nobody removes a file that another holder has locked.
#include "filesystem/lock_file_native.h"

#include "filesystem/lock_claim_linux.h"
#include "filesystem/system_path_linux.h"

#include "platform/parent_descriptor_linux.h"
#include "platform/posix_retry.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

/// The parent's locks are not the child's after a fork, and must not outlive the parent in it.
struct LockFile
{
    ParentDescriptor file;
    ParentDescriptor claim;
    ParentDescriptor folder;
    std::string name;
    LockSharing sharing = LockSharing::Exclusive;
};

namespace
{

bool isStillNamed(const LockFile& lock)
{
    struct stat held = {};
    struct stat named = {};
    return fstat(lock.file.get(), &held) == 0 &&
           fstatat(lock.folder.get(), lock.name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

/// 0, EAGAIN when the file was replaced between opening and locking, or why it is refused.
ErrorCode openAndLock(LockFile& lock, LockCreation creation)
{
    const int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC |
                      (creation == LockCreation::New ? O_EXCL : 0);
    lock.file.set(retryInterrupted([&] { return openat(lock.folder.get(), lock.name.c_str(), flags, 0666); }));
    if (lock.file.get() == -1)
        return errno;
    struct stat info = {};
    if (fstat(lock.file.get(), &info) != 0 || !S_ISREG(info.st_mode))
        return ENOTSUP;
    const int kind = lock.sharing == LockSharing::Shared ? LOCK_SH : LOCK_EX;
    if (retryInterrupted([&] { return flock(lock.file.get(), kind | LOCK_NB); }) != 0)
        return errno == EWOULDBLOCK ? EBUSY : errno;
    return isStillNamed(lock) ? 0 : EAGAIN;
}

ErrorCode claimAndLock(LockFile& lock, LockCreation creation)
{
    int claim = -1;
    if (claimName(lock.folder.get(), lock.name, lock.sharing, claim) == Claim::Refused)
    {
        struct stat info = {};
        return fstatat(lock.folder.get(), lock.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 ? EEXIST : EBUSY;
    }
    lock.claim.set(claim);
    ErrorCode error = EAGAIN;
    for (int attempt = 0; error == EAGAIN && attempt < 1000; ++attempt)
    {
        lock.file.set(-1);
        error = openAndLock(lock, creation);
    }
    return error;
}

/// Nobody else holds it any more, nor can anybody take it before it is closed.
bool isLastHolder(const LockFile& lock)
{
    return makeExclusive(lock.claim.get()) && flock(lock.file.get(), LOCK_EX | LOCK_NB) == 0;
}

} // namespace

LockFile* openLockFile(const std::string& pathUtf8, LockSharing sharing, LockCreation creation, ErrorCode& error)
{
    const std::string path = systemPath(pathUtf8);
    const std::size_t separator = path.rfind('/');
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    auto lock = std::make_unique<LockFile>();
    lock->name = path.substr(separator + 1);
    lock->sharing = sharing;
    lock->folder.set(openPath(folder, O_PATH | O_DIRECTORY | O_CLOEXEC));
    error = lock->folder.get() == -1 ? errno : claimAndLock(*lock, creation);
    if (error != 0)
        closeLockFile(lock.release(), pathUtf8, false);
    return lock.release();
}

bool isNameTaken(ErrorCode code) { return code == EEXIST; }

bool isHeld(const LockFile& lock) { return lock.file.get() != -1; }

// Written before it is cut: there is always a text for those who look.
void writeLockFile(LockFile& lock, const std::string& text)
{
    const ssize_t written = retryInterrupted([&] { return pwrite(lock.file.get(), text.data(), text.size(), 0); });
    if (written >= 0)
        static_cast<void>(retryInterrupted([&] { return ftruncate(lock.file.get(), written); }));
}

void closeLockFile(LockFile* lock, const std::string&, bool remove)
{
    if (isHeld(*lock))
    {
        if (remove && isLastHolder(*lock) && isStillNamed(*lock))
            unlinkat(lock->folder.get(), lock->name.c_str(), 0);
        // A child that was forked past the handlers shares the open file, and would keep the lock.
        flock(lock->file.get(), LOCK_UN);
    }
    lock->file.set(-1);
    dropClaim(lock->claim.release());
    delete lock;
}

} // namespace ky::impl::native
