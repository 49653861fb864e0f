// SPDX-License-Identifier: MIT
#include "frame/early_use.h"

#include "frame/library_state.h"
#include "platform/process_id_native.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <cstdint>
#include <string>

namespace ky
{

namespace
{

/// The process that performed the first full initialization, seen from a process that is not it; 0 otherwise.
std::uint64_t foreignOwner(std::uint64_t currentId) noexcept
{
    const std::uint64_t recorded = impl::recordedProcessId();
    const bool forked = recorded != 0 && impl::libraryState() == impl::LibraryState::Full && recorded != currentId;
    return forked ? recorded : 0;
}

} // namespace

void CheckIfProcessForkAfterThreadSafeInit()
{
    const std::uint64_t currentId = impl::native::currentProcessId();
    const std::uint64_t recorded = foreignOwner(currentId);
    if (recorded == 0)
        return;
    const std::string message = "Detect process fork after thread initialization from " + std::to_string(recorded) +
                                " to " + std::to_string(currentId);
    impl::reportCritical(message.c_str());
}

bool IsKySystemThreadSafe()
{
    CheckIfProcessForkAfterThreadSafeInit();
    return impl::libraryState() == impl::LibraryState::Full;
}

namespace impl
{

void reportCritical(const char* message) noexcept
{
    try
    {
        kyLogObject(kyLogType::CRITICAL, nullptr, kyLog::editPtr(), "kySystem") << message;
    }
    catch (...)
    {
        // Out of memory while composing a warning: the object that is being made must not suffer from it.
    }
}

void checkFork() noexcept
{
    try
    {
        CheckIfProcessForkAfterThreadSafeInit();
    }
    catch (...)
    {
        // As above.
    }
}

void checkEarlyUse(const char* warning) noexcept
{
    checkFork();
    if (libraryState() != LibraryState::Full)
        reportCritical(warning);
}

} // namespace impl

} // namespace ky
