// SPDX-License-Identifier: MIT
// flock() on the file keeps out everybody, a claim to the name (see lock_claim_linux.h) also those who meet another
// file there because somebody removed or replaced this one. The file changes only while both are held: nothing is
// emptied by one who fails, and nobody removes a file that another holder has locked.
#include "filesystem/lock_file_native.h"

#include "filesystem/lock_claim_linux.h"
#include "filesystem/system_path_linux.h"

#include "platform/posix_retry.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ky::impl::native
{

/// Records are never freed, only used again, so that the child of a fork can walk them without a lock.
struct LockFile
{
    std::atomic<bool> isUsed{true};
    std::atomic<int> file{-1};
    std::atomic<int> claim{-1};
    std::atomic<int> folder{-1};
    std::string name;
    LockSharing sharing = LockSharing::Exclusive;
    LockFile* next = nullptr;
};

namespace
{

constinit std::atomic<LockFile*> allRecords{nullptr};

void closeAndForget(std::atomic<int>& descriptor) noexcept
{
    const int old = descriptor.exchange(-1);
    if (old != -1)
        ::close(old);
}

/// The parent's locks are not the child's, and must not outlive the parent in it.
void forgetInForkedChild() noexcept
{
    for (LockFile* record = allRecords; record != nullptr; record = record->next)
    {
        closeAndForget(record->file);
        closeAndForget(record->claim);
        closeAndForget(record->folder);
    }
}

const int registered = pthread_atfork(nullptr, nullptr, &forgetInForkedChild);

LockFile* unusedRecord()
{
    for (LockFile* record = allRecords; record != nullptr; record = record->next)
    {
        if (!record->isUsed.exchange(true))
            return record;
    }
    auto* const record = new LockFile;
    record->next = allRecords;
    while (!allRecords.compare_exchange_weak(record->next, record))
    {
    }
    return record;
}

bool isStillNamed(const LockFile& lock)
{
    struct stat held = {};
    struct stat named = {};
    return fstat(lock.file, &held) == 0 && fstatat(lock.folder, lock.name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

/// 0, EAGAIN when the file was replaced between opening and locking, or why it is refused.
ErrorCode openAndLock(LockFile& lock, LockCreation creation)
{
    const int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC |
                      (creation == LockCreation::New ? O_EXCL : 0);
    lock.file = retryInterrupted([&] { return openat(lock.folder, lock.name.c_str(), flags, 0666); });
    if (lock.file == -1)
        return errno;
    struct stat info = {};
    if (fstat(lock.file, &info) != 0 || !S_ISREG(info.st_mode))
        return ENOTSUP;
    const int kind = lock.sharing == LockSharing::Shared ? LOCK_SH : LOCK_EX;
    if (retryInterrupted([&] { return flock(lock.file, kind | LOCK_NB); }) != 0)
        return errno == EWOULDBLOCK ? EBUSY : errno;
    return isStillNamed(lock) ? 0 : EAGAIN;
}

ErrorCode claimAndLock(LockFile& lock, LockCreation creation)
{
    int claim = -1;
    if (claimName(lock.folder, lock.name, lock.sharing, claim) == Claim::Refused)
    {
        struct stat info = {};
        return fstatat(lock.folder, lock.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 ? EEXIST : EBUSY;
    }
    lock.claim = claim;
    ErrorCode error = EAGAIN;
    for (int attempt = 0; error == EAGAIN && attempt < 1000; ++attempt)
    {
        closeAndForget(lock.file);
        error = openAndLock(lock, creation);
    }
    return error;
}

/// Nobody else holds it any more, nor can anybody take it before it is closed.
bool isLastHolder(const LockFile& lock)
{
    return makeExclusive(lock.claim) && flock(lock.file, LOCK_EX | LOCK_NB) == 0;
}

} // namespace

LockFile* openLockFile(const std::string& pathUtf8, LockSharing sharing, LockCreation creation, ErrorCode& error)
{
    const std::string path = systemPath(pathUtf8);
    const std::size_t separator = path.rfind('/');
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    LockFile* const lock = unusedRecord();
    lock->name = path.substr(separator + 1);
    lock->sharing = sharing;
    lock->folder = openPath(folder, O_PATH | O_DIRECTORY | O_CLOEXEC);
    error = lock->folder == -1 ? errno : claimAndLock(*lock, creation);
    if (error == 0)
        return lock;
    closeLockFile(lock, pathUtf8, false);
    return nullptr;
}

bool isNameTaken(ErrorCode code) { return code == EEXIST; }

bool isHeld(const LockFile& lock) { return lock.file != -1; }

// Written before it is cut: there is always a text for those who look.
void writeLockFile(LockFile& lock, const std::string& text)
{
    const ssize_t written = retryInterrupted([&] { return pwrite(lock.file, text.data(), text.size(), 0); });
    if (written >= 0)
        static_cast<void>(retryInterrupted([&] { return ftruncate(lock.file, written); }));
}

void closeLockFile(LockFile* lock, const std::string&, bool remove)
{
    if (isHeld(*lock))
    {
        if (remove && isLastHolder(*lock) && isStillNamed(*lock))
            unlinkat(lock->folder, lock->name.c_str(), 0);
        // A child that was forked past the handlers shares the open file, and would keep the lock.
        flock(lock->file, LOCK_UN);
    }
    closeAndForget(lock->file);
    dropClaim(lock->claim.exchange(-1));
    closeAndForget(lock->folder);
    lock->isUsed = false;
}

} // namespace ky::impl::native
