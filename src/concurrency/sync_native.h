// SPDX-License-Identifier: MIT
// What a platform owes to in-process locks and wait conditions. Objects are made and destroyed here and known by
// pointer only. Calls fail only where they say so. Limits are in milliseconds.
#pragma once

#include <cstdint>
#include <memory>

namespace ky::impl::native
{

/// As a limit: wait for ever.
inline constexpr std::uint32_t noTimeLimit = 0xFFFFFFFF;

/// Recursive lock of one process.
struct RecursiveLock;
RecursiveLock* createRecursiveLock();
void destroy(RecursiveLock* lock) noexcept;
void enter(RecursiveLock& lock) noexcept;
bool tryEnter(RecursiveLock& lock) noexcept;
void leave(RecursiveLock& lock) noexcept;
/// Whether the calling thread is inside.
bool isInside(const RecursiveLock& lock) noexcept;

/// Condition variable that goes with a recursive lock which the caller has entered exactly once.
struct ConditionVariable;
/// Whether the system has condition variables. They may be created only after this has said true.
bool findConditionVariables() noexcept;
ConditionVariable* createConditionVariable();
void destroy(ConditionVariable* condition) noexcept;
/// False when the time ended without a wake. May return early without a wake.
bool sleep(ConditionVariable& condition, RecursiveLock& lock, std::uint32_t limitMs) noexcept;
void wakeOne(ConditionVariable& condition) noexcept;
void wakeAll(ConditionVariable& condition) noexcept;

/// Id of the calling thread as the system numbers its threads.
std::uint32_t currentThreadId() noexcept;

/// For std::unique_ptr.
struct Destroy
{
    template <typename Object>
    void operator()(Object* object) const noexcept
    {
        destroy(object);
    }
};

template <typename Object>
using Owned = std::unique_ptr<Object, Destroy>;

/// Holds a recursive lock for a scope.
class Inside
{
public:
    explicit Inside(RecursiveLock& lock) noexcept : mLock(lock) { enter(mLock); }
    ~Inside() { leave(mLock); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    RecursiveLock& mLock;
};

} // namespace ky::impl::native
