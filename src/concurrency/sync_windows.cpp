// SPDX-License-Identifier: MIT
#include "concurrency/sync_native.h"

#include "platform/win32.h"

#include <atomic>

namespace ky::impl::native
{

static_assert(noTimeLimit == INFINITE);

namespace
{

constexpr DWORD spinCount = 4000;

} // namespace

struct RecursiveLock
{
    CRITICAL_SECTION section;
};

RecursiveLock* createRecursiveLock()
{
    auto* const lock = new RecursiveLock;
    InitializeCriticalSectionAndSpinCount(&lock->section, spinCount);
    return lock;
}

void destroy(RecursiveLock* lock) noexcept
{
    DeleteCriticalSection(&lock->section);
    delete lock;
}

void enter(RecursiveLock& lock) noexcept { EnterCriticalSection(&lock.section); }
bool tryEnter(RecursiveLock& lock) noexcept { return TryEnterCriticalSection(&lock.section) != FALSE; }
void leave(RecursiveLock& lock) noexcept { LeaveCriticalSection(&lock.section); }

bool isInside(const RecursiveLock& lock) noexcept
{
    // The system keeps the owner's id, not a handle, in this member.
    return lock.section.OwningThread == ULongToHandle(GetCurrentThreadId());
}

struct ConditionVariable
{
    CONDITION_VARIABLE condition;
};

namespace
{

using InitializeFunction = void(WINAPI*)(PCONDITION_VARIABLE);
using SleepFunction = BOOL(WINAPI*)(PCONDITION_VARIABLE, PCRITICAL_SECTION, DWORD);
using WakeFunction = void(WINAPI*)(PCONDITION_VARIABLE);

std::atomic<InitializeFunction> initializeCondition{nullptr};
std::atomic<SleepFunction> sleepOnSection{nullptr};
std::atomic<WakeFunction> wakeAllSleepers{nullptr};
std::atomic<WakeFunction> wakeOneSleeper{nullptr};

template <typename Function>
bool lookUp(HMODULE library, const char* name, std::atomic<Function>& entry) noexcept
{
    const FARPROC found = GetProcAddress(library, name);
    // By way of void*: compilers warn about a direct cast between unlike function types.
    entry = reinterpret_cast<Function>(reinterpret_cast<void*>(found));
    return found != nullptr;
}

} // namespace

bool findConditionVariables() noexcept
{
    const HMODULE library = GetModuleHandleW(L"kernel32.dll");
    return library != nullptr && lookUp(library, "InitializeConditionVariable", initializeCondition) &&
           lookUp(library, "SleepConditionVariableCS", sleepOnSection) &&
           lookUp(library, "WakeAllConditionVariable", wakeAllSleepers) &&
           lookUp(library, "WakeConditionVariable", wakeOneSleeper);
}

ConditionVariable* createConditionVariable()
{
    auto* const condition = new ConditionVariable;
    initializeCondition.load()(&condition->condition);
    return condition;
}

void destroy(ConditionVariable* condition) noexcept { delete condition; }

bool sleep(ConditionVariable& condition, RecursiveLock& lock, std::uint32_t limitMs) noexcept
{
    return sleepOnSection.load()(&condition.condition, &lock.section, limitMs) != FALSE;
}

void wakeOne(ConditionVariable& condition) noexcept { wakeOneSleeper.load()(&condition.condition); }
void wakeAll(ConditionVariable& condition) noexcept { wakeAllSleepers.load()(&condition.condition); }

std::uint32_t currentThreadId() noexcept { return GetCurrentThreadId(); }

} // namespace ky::impl::native
