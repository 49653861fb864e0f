// SPDX-License-Identifier: MIT
// One record per name and process answers recursion and keeps the threads of the process apart; its outermost level
// holds flock() on a file that the name leads to. The lock belongs to the open file: the kernel drops it with the last
// descriptor, so a child of fork() closes its copies at once, and no other use of the file in this process can drop it.
#include "concurrency/kernel_mutex_linux.h"
#include "concurrency/mutex_file_linux.h"
#include "concurrency/named_mutex_native.h"

#include "platform/posix_retry.h"

#include <atomic>
#include <ctime>
#include <mutex>
#include <new>
#include <sys/file.h>
#include <unistd.h>

namespace ky::impl::native
{

/// Records are never freed, only used again, so that the child of a fork can walk them without a lock. Everything that
/// it touches is atomic; `key` and `references` change under the table's mutex, the rest under `inProcess`.
struct NamedMutex
{
    KernelMutex inProcess;
    NameHash key{};
    int references = 0;
    std::atomic<int> file{-1};
    timespec checkedAt{};
    NamedMutex* next = nullptr;
};

namespace
{

struct Table
{
    std::mutex mutex;
    std::atomic<NamedMutex*> first{nullptr};
};

/// Constant from the start and never torn down: locks may be used by static objects of others, and a child must not be
/// born while some thread has begun to make it.
constinit Table allMutexes;

/// The parent's threads and locks are not the child's. Nothing is locked on the way: another thread of the parent may
/// have been anywhere.
void forgetInForkedChild() noexcept
{
    Table& all = allMutexes;
    new (&all.mutex) std::mutex;
    for (NamedMutex* record = all.first; record != nullptr; record = record->next)
    {
        const int file = record->file.exchange(-1);
        if (file != -1)
            ::close(file);
        record->inProcess.init();
    }
}

const int registered = pthread_atfork(nullptr, nullptr, &forgetInForkedChild);

/// Asked once in every tick of the system's clock, because asking costs half as much as locking.
bool isRemoved(NamedMutex& mutex) noexcept
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (now.tv_sec == mutex.checkedAt.tv_sec && now.tv_nsec == mutex.checkedAt.tv_nsec)
        return false;
    mutex.checkedAt = now;
    return isFileRemoved(mutex.file);
}

/// Where no file can be locked the mutex still keeps the threads of this process apart.
void lockFile(NamedMutex& mutex) noexcept
{
    for (;;)
    {
        if (mutex.file != -1)
        {
            const int result = retryInterrupted([&] { return ::flock(mutex.file, LOCK_EX); });
            if (result != 0 || !isRemoved(mutex))
                return;
        }
        ErrorCode error = 0;
        const int fresh = openMutexFile(mutex.key, error);
        if (fresh == -1)
            return;
        mutex.checkedAt = timespec{};
        const int stale = mutex.file.exchange(fresh);
        if (stale != -1)
            ::close(stale);
    }
}

NamedMutex* find(Table& all, const NameHash& key) noexcept
{
    NamedMutex* record = all.first;
    while (record != nullptr && (record->references == 0 || record->key != key))
        record = record->next;
    return record;
}

NamedMutex* unusedRecord(Table& all)
{
    for (NamedMutex* record = all.first; record != nullptr; record = record->next)
    {
        if (record->references == 0 && record->inProcess.owner == 0)
            return record;
    }
    auto* const record = new NamedMutex;
    record->next = all.first;
    all.first = record;
    return record;
}

} // namespace

NamedMutex* openNamedMutex(const std::string& name, ErrorCode& error)
{
    Table& all = allMutexes;
    const NameHash key = hashName(name);
    const std::lock_guard guard(all.mutex);
    NamedMutex* record = find(all, key);
    if (record == nullptr)
    {
        record = unusedRecord(all);
        record->key = key;
        record->file = openMutexFile(key, error);
        if (record->file == -1)
            return nullptr;
    }
    ++record->references;
    return record;
}

void closeNamedMutex(NamedMutex* mutex) noexcept
{
    const std::lock_guard guard(allMutexes.mutex);
    if (--mutex->references != 0)
        return;
    while (mutex->inProcess.isMine())
        release(*mutex);
    const int file = mutex->file.exchange(-1);
    if (file != -1)
        ::close(file);
}

void acquire(NamedMutex& mutex) noexcept
{
    // Left behind by a thread that has ended it is in the same state as new: the file is locked once more.
    acquire(mutex.inProcess, noTimeLimit);
    if (mutex.inProcess.depth == 1)
        lockFile(mutex);
}

void release(NamedMutex& mutex) noexcept
{
    if (mutex.inProcess.isMine() && mutex.inProcess.depth == 1)
        ::flock(mutex.file, LOCK_UN);
    release(mutex.inProcess);
}

} // namespace ky::impl::native
