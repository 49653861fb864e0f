// SPDX-License-Identifier: MIT
#include <ky/kyMutex.h>

#include "concurrency/early_mutex.h"
#include "concurrency/named_mutex_native.h"
#include "diagnostics/error_text.h"

#include <ky/kyLog.h>
#include <ky/kySystemUtils.h>

#include <algorithm>
#include <string>

namespace ky
{

namespace
{

/// Backslashes are not allowed in the names of kernel objects; the prefix makes the name common to all sessions.
std::string kernelName(const char* name)
{
    std::string result = name != nullptr ? std::string(name) : kySystemUtils::CreateUuid(false);
    std::replace(result.begin(), result.end(), '\\', '/');
    return "Global\\" + result;
}

} // namespace

kyMutexSystem::kyMutexSystem(const char* name) : mMutex(nullptr)
{
    impl::native::ErrorCode error = 0;
    mMutex = impl::native::openNamedMutex(kernelName(name), error);
    if (mMutex == nullptr)
    {
        kyLogObject(kyLogType::WARNING, nullptr, kyLog::editPtr(), nullptr)
            << "Fail to create system mutex " << impl::systemErrorText(error);
    }
    impl::checkEarlyMutex();
}

kyMutexSystem::~kyMutexSystem()
{
    impl::checkFork();
    if (mMutex != nullptr)
        impl::native::closeNamedMutex(mMutex);
}

void kyMutexSystem::lock()
{
    if (mMutex != nullptr)
        impl::native::acquire(*mMutex);
}

void kyMutexSystem::unlock()
{
    if (mMutex != nullptr)
        impl::native::release(*mMutex);
}

} // namespace ky
