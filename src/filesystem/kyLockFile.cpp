// SPDX-License-Identifier: MIT
#include "filesystem/lock_file_native.h"

#include <ky/kyLockFile.h>
#include <ky/kyThread.h>

#include <atomic>
#include <utility>

namespace ky
{

/// What an object and its copies hold. The first of them to let go closes the file.
struct impl::HeldLockFile
{
    std::atomic<native::LockFile*> file{nullptr};
};

using impl::native::LockCreation;
using impl::native::LockSharing;

kyLockFile::kyLockFile() = default;
kyLockFile::kyLockFile(const kyLockFile& other) = default;

kyLockFile::kyLockFile(kyLockFile&& other) noexcept
    : mPath(std::exchange(other.mPath, {})),
      mHeld(std::exchange(other.mHeld, nullptr))
{
}

kyLockFile& kyLockFile::operator=(const kyLockFile& other) { return *this = kyLockFile(other); }

kyLockFile& kyLockFile::operator=(kyLockFile&& other) noexcept
{
    if (mHeld != other.mHeld)
        releaseLock(true);
    mPath = std::exchange(other.mPath, {});
    mHeld = std::exchange(other.mHeld, nullptr);
    return *this;
}

kyLockFile::~kyLockFile() { releaseLock(true); }

bool kyLockFile::takeLockUtf8(const std::string& path, bool* alreadyExisted, LockType type)
{
    if (alreadyExisted != nullptr)
        *alreadyExisted = false;
    const std::string text = "Lock from thread : " + kyThread::CurrentThreadId();
    releaseLock(true);
    const LockSharing sharing = type == LockShared ? LockSharing::Shared : LockSharing::Exclusive;
    // Whatever may run out of memory comes before the lock.
    auto held = std::make_shared<impl::HeldLockFile>();
    std::string heldPath = path;
    impl::native::ErrorCode error = 0;
    impl::native::LockFile* file = openLockFile(path, sharing, LockCreation::New, error);
    if (file == nullptr)
    {
        if (alreadyExisted != nullptr)
            *alreadyExisted = impl::native::isNameTaken(error);
        file = openLockFile(path, sharing, LockCreation::Always, error);
    }
    if (file == nullptr)
        return false;
    writeLockFile(*file, text);
    held->file = file;
    mHeld = std::move(held);
    mPath = std::move(heldPath);
    return true;
}

bool kyLockFile::releaseLock(bool removeFile)
{
    const std::shared_ptr<impl::HeldLockFile> held = std::exchange(mHeld, nullptr);
    const std::string path = std::exchange(mPath, {});
    impl::native::LockFile* const file = held == nullptr ? nullptr : held->file.exchange(nullptr);
    if (file == nullptr)
        return false;
    const bool wasHeld = isHeld(*file);
    closeLockFile(file, path, removeFile);
    return wasHeld;
}

bool kyLockFile::isLocked() const
{
    const impl::native::LockFile* const file = mHeld == nullptr ? nullptr : mHeld->file.load();
    return file != nullptr && isHeld(*file);
}

namespace
{

bool areSharedLocksRight(const std::string& path)
{
    kyLockFile first;
    kyLockFile second;
    kyLockFile exclusive;
    bool existed = false;
    return first.takeLockUtf8(path, nullptr, kyLockFile::LockShared) &&
           second.takeLockUtf8(path, &existed, kyLockFile::LockShared) && existed &&
           !exclusive.takeLockUtf8(path, &existed, kyLockFile::LockExclusive) && existed && !exclusive.isLocked() &&
           first.releaseLock(true) && !first.isLocked() &&
           !exclusive.takeLockUtf8(path, nullptr, kyLockFile::LockExclusive) && second.releaseLock(false) &&
           exclusive.takeLockUtf8(path, &existed, kyLockFile::LockExclusive) && existed &&
           !first.takeLockUtf8(path, nullptr, kyLockFile::LockShared) && exclusive.releaseLock(true) &&
           !impl::native::pathExists(path);
}

bool areExclusiveLocksRight(const std::string& path)
{
    kyLockFile first;
    kyLockFile second;
    bool existed = false;
    return first.takeLockUtf8(path, nullptr, kyLockFile::LockExclusive) && first.isLocked() &&
           !second.takeLockUtf8(path, &existed, kyLockFile::LockExclusive) && existed && !second.isLocked() &&
           !second.releaseLock(true) && !second.takeLockUtf8(path, nullptr, kyLockFile::LockShared) &&
           first.releaseLock(false) && !first.releaseLock(false) && impl::native::pathExists(path) &&
           second.takeLockUtf8(path, &existed, kyLockFile::LockExclusive) && existed && second.releaseLock(true) &&
           first.takeLockUtf8(path, &existed, kyLockFile::LockExclusive) && !existed && first.releaseLock(true) &&
           !impl::native::pathExists(path);
}

} // namespace

bool kyLockFile::UnitTestUtf8(const std::string& folder)
{
    const std::string shared = folder + "/file_shared.lock";
    const std::string exclusive = folder + "/file_ex.lock";
    for (const std::string& left : {shared, exclusive})
        impl::native::removeFile(left);
    const bool isRight = areSharedLocksRight(shared) && areExclusiveLocksRight(exclusive);
    for (const std::string& left : {shared, exclusive})
        impl::native::removeFile(left);
    return isRight;
}

} // namespace ky
