// SPDX-License-Identifier: MIT
// How devices and streams report what they cannot do.
#pragma once

#include <ky/kyLog.h>

#include <string_view>

namespace ky::impl
{

/// A CRITICAL message for the logger; nothing while there is none.
inline void reportDevice(std::string_view message) noexcept
{
    if (kyLog* log = kyLog::editPtr())
        kyLogObject(kyLogType::CRITICAL, nullptr, log, nullptr) << message;
}

} // namespace ky::impl
