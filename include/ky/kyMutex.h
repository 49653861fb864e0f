// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Mutexes: recursive in the process, kernel object with a time limit, named and shared between processes; and the
/// scoped locker.

#include <ky/kyExport.h>

namespace ky
{

namespace impl::native
{
struct RecursiveLock;
struct KernelMutex;
struct NamedMutex;
} // namespace impl::native

/// Recursive mutex of one process: a critical section on Windows, a futex on Linux. The owning thread may lock again
/// and must unlock as often.
///
/// All functions may be called from any thread at any time; the destructor only when nobody uses the mutex any more.
/// Constructed before full initialization of the library it writes the CRITICAL message "Mutex created before full init
/// of kySystem" and works regardless. A child made by `fork()` finds a mutex that the forking thread held still held by
/// that thread.
class KY_API kyMutex
{
public:
    kyMutex();
    virtual ~kyMutex();
    kyMutex(const kyMutex&) = delete;
    kyMutex& operator=(const kyMutex&) = delete;

    /// Waits until the calling thread owns the mutex.
    void lock();

    /// Gives up one level of ownership. Only the owning thread may call it.
    void unlock();

    /// Like lock(), but never waits. True when the calling thread now owns the mutex once more.
    [[nodiscard]] bool tryLock();

    /// The lock of the operating system behind the mutex (a `CRITICAL_SECTION*` on Windows). Owned by the mutex.
    void* getMutexData() const;

private:
    impl::native::RecursiveLock* mLock; ///< owned
};

/// Recursive mutex of one process with a time limit for locking: an unnamed kernel mutex on Windows, a robust mutex on
/// Linux. When a thread ends while it owns the mutex, the mutex is abandoned and free for others.
///
/// Thread-safe as kyMutex is, with the same message before full initialization. A child made by `fork()` cannot use a
/// kyMutex2 that any thread owned at the fork: it stays owned for ever there.
class KY_API kyMutex2
{
public:
    kyMutex2();
    virtual ~kyMutex2();
    kyMutex2(const kyMutex2&) = delete;
    kyMutex2& operator=(const kyMutex2&) = delete;

    /// Waits without limit until the calling thread owns the mutex. An abandoned mutex is owned after this call.
    void lock();

    /// Gives up one level of ownership. Without effect when the calling thread is not the owner.
    void unlock();

    /// Waits at most `timeoutMs` milliseconds (0: not at all; 0xFFFFFFFF: without limit). True when the calling thread
    /// now owns the mutex once more; false at the end of the time, on failure, and when the mutex was found abandoned.
    /// In the last case the mutex is set free again, so that the next attempt can succeed.
    [[nodiscard]] bool tryLock(unsigned int timeoutMs);

private:
    impl::native::KernelMutex* mMutex; ///< owned
};

/// Mutex that all processes of the machine (on Linux: of the user) share by name. Recursive: the owning thread may lock
/// again, also through another object of the same name, and must unlock as often. When an owner dies, the next one
/// enters; what the mutex guards may then be half done.
///
/// The mutex lives as long as some process has an object of its name. Windows: a kernel mutex in the global namespace,
/// with the default rights of its creator. Linux: a lock on a file in the user's folder `/tmp/kysystem-<uid>`; the
/// files are left behind on purpose. A child made by `fork()` does not own what its parent owned.
///
/// Thread-safe, with the same message before full initialization as kyMutex.
class KY_API kyMutexSystem
{
public:
    /// `name`: UTF-8, any text; '\' counts as '/', upper and lower case differ. Null: a fresh unique name.
    /// When the system refuses, the WARNING "Fail to create system mutex " with the system's error text is logged and
    /// lock() and unlock() do nothing.
    explicit kyMutexSystem(const char* name);

    /// Does not unlock: unlock as often as locked before.
    ~kyMutexSystem();
    kyMutexSystem(const kyMutexSystem&) = delete;
    kyMutexSystem& operator=(const kyMutexSystem&) = delete;

    /// Waits without limit until the calling thread owns the mutex.
    void lock();

    /// Gives up one level of ownership. Without effect when the calling thread is not the owner.
    void unlock();

private:
    impl::native::NamedMutex* mMutex; ///< owned; null when the system refused
};

/// Holds a kyMutex for a scope. Used by one thread only.
class KY_API kyMutexLocker
{
public:
    /// Keeps a reference to `m`, which must outlive the locker, and locks it when `lockNow` says so.
    explicit kyMutexLocker(kyMutex& m, bool lockNow = true) : mMutex(m), mLocked(false)
    {
        if (lockNow)
            lock();
    }

    /// Unlocks when this locker holds the mutex.
    ~kyMutexLocker() { unlock(); }
    kyMutexLocker(const kyMutexLocker&) = delete;
    kyMutexLocker& operator=(const kyMutexLocker&) = delete;

    /// Locks unless this locker holds the mutex already.
    void lock()
    {
        if (mLocked)
            return;
        mMutex.lock();
        mLocked = true;
    }

    /// Unlocks when this locker holds the mutex.
    void unlock()
    {
        if (!mLocked)
            return;
        mLocked = false;
        mMutex.unlock();
    }

    /// Whether this locker holds the mutex.
    [[nodiscard]] bool isLocked() const { return mLocked; }

private:
    kyMutex& mMutex;
    bool mLocked;
};

} // namespace ky
