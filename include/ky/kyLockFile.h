// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <memory>
#include <string>

namespace ky
{

namespace impl
{
struct HeldLockFile;
}

/// Marks something as in use, across processes, by a file that is held open: exclusively by one holder, or by any
/// number of shared ones. The lock ends with its holder, however that ends; a file left behind by one that is gone is
/// taken over. The content of the file only tells a human who holds it: "Lock from thread : " and the id of the thread.
///
/// Windows: the file is opened without sharing, or with read and write sharing. Linux: an advisory lock on the file,
/// and, between processes of one user, one on its name, so that a file which somebody removes or replaces meanwhile is
/// not taken twice. A link, folder, device or pipe is not taken there, nor a file on a file system without locks. A
/// forked child holds none of the locks of its parent.
///
/// An object belongs to one thread at a time. Taking never waits.
///
/// A copy holds the same lock, not another one: whichever of them gives it up first, its destructor included, gives it
/// up for all. Moving leaves nothing behind.
class KY_API kyLockFile
{
public:
    /// Every value but 1 counts as exclusive.
    enum LockType : int
    {
        LockExclusive = 0, ///< one holder
        LockShared = 1     ///< any number of holders that all share
    };

    /// Holds nothing.
    kyLockFile();
    /// Holds the same lock.
    kyLockFile(const kyLockFile& other);
    /// Takes the lock over; `other` holds nothing.
    kyLockFile(kyLockFile&& other) noexcept;

    /// A lock that is held is given up as by the destructor.
    /// @{
    kyLockFile& operator=(const kyLockFile& other);
    kyLockFile& operator=(kyLockFile&& other) noexcept;
    /// @}

    /// Releases a held lock and removes its file.
    ~kyLockFile();

    /// Takes the lock, the file being made when it is missing. A lock that this object holds already is given up first
    /// and its file removed, whatever comes then.
    ///
    /// \param path UTF-8; its folder must exist
    /// \param alreadyExisted unless null, set to whether the file was there before: left behind, or held by others
    /// \param type exclusive, or shared with other shared holders
    /// \return whether the lock is held now; when not, the object holds nothing
    bool takeLockUtf8(const std::string& path, bool* alreadyExisted = nullptr, LockType type = LockExclusive);

    /// Gives the lock up.
    ///
    /// \param removeFile the file goes as well, unless another shared holder remains
    /// \return false when no lock was held
    bool releaseLock(bool removeFile);

    /// Whether this object holds a lock.
    [[nodiscard]] bool isLocked() const;

    /// A self-test in `folder`, with the files "file_shared.lock" and "file_ex.lock", which are removed in the end.
    /// \return whether locks exclude and admit each other there as they should
    [[nodiscard]] static bool UnitTestUtf8(const std::string& folder);

private:
    std::string mPath; // empty when no lock is held
    std::shared_ptr<impl::HeldLockFile> mHeld;
};

} // namespace ky
