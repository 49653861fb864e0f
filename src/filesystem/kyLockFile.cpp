// SPDX-License-Identifier: MIT
#include "filesystem/lock_file_native.h"

#include <ky/kyLockFile.h>
#include <ky/kyThread.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <initializer_list>
#include <tuple>
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

enum class Act
{
    TakeExclusive,
    TakeShared,
    Release, ///< and remove the file
    Keep     ///< release, and keep the file
};

struct Step
{
    std::size_t who;
    Act act;
    bool succeeds;
    bool fileIsThere; ///< before a take, behind a release
};

bool isRight(kyLockFile& lock, const std::string& path, const Step& step)
{
    const bool takes = step.act == Act::TakeExclusive || step.act == Act::TakeShared;
    bool fileIsThere = false;
    bool succeeds = false;
    if (takes)
    {
        const auto type = step.act == Act::TakeShared ? kyLockFile::LockShared : kyLockFile::LockExclusive;
        succeeds = lock.takeLockUtf8(path, &fileIsThere, type);
    }
    else
    {
        succeeds = lock.releaseLock(step.act == Act::Release);
        fileIsThere = impl::native::pathExists(path);
    }
    return std::tuple(succeeds, fileIsThere, lock.isLocked()) ==
           std::tuple(step.succeeds, step.fileIsThere, takes && step.succeeds);
}

bool areRight(const std::string& path, std::initializer_list<Step> steps)
{
    std::array<kyLockFile, 3> locks;
    return std::all_of(steps.begin(), steps.end(),
                       [&](const Step& step) { return isRight(locks[step.who], path, step); });
}

bool areSharedLocksRight(const std::string& path)
{
    return areRight(path, {{0, Act::TakeShared, true, false},
                           {1, Act::TakeShared, true, true},
                           {2, Act::TakeExclusive, false, true},
                           {0, Act::Release, true, true},
                           {2, Act::TakeExclusive, false, true},
                           {1, Act::Keep, true, true},
                           {2, Act::TakeExclusive, true, true},
                           {0, Act::TakeShared, false, true},
                           {2, Act::Release, true, false}});
}

bool areExclusiveLocksRight(const std::string& path)
{
    return areRight(path, {{0, Act::TakeExclusive, true, false},
                           {1, Act::TakeExclusive, false, true},
                           {1, Act::Release, false, true},
                           {1, Act::TakeShared, false, true},
                           {0, Act::Keep, true, true},
                           {0, Act::Keep, false, true},
                           {1, Act::TakeExclusive, true, true},
                           {1, Act::Release, true, false},
                           {0, Act::TakeExclusive, true, false},
                           {0, Act::Release, true, false}});
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
