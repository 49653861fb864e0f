// SPDX-License-Identifier: MIT
// Writes a message where anything may have been interrupted: by static buffers and direct writes, waiting for nothing
// that may never come.
#pragma once

#include <ky/kyLog.h>

#include <string_view>

namespace ky
{
class kyMutex;
}

namespace ky::impl
{

// What the logger keeps up to date while it is there.
void setCrashLock(kyMutex* lock) noexcept;
void setCrashEcho(bool echo) noexcept;
void setCrashFile(const std::string& pathUtf8) noexcept;
void setCrashHandler(kyLog::CustomHandler handler, void* userData) noexcept;
/// There is no logger any more.
void forgetCrashOutputs() noexcept;

/// A CRITICAL message of the library as usual: to the logger and to the system's event log. Never throws.
void reportText(std::string_view message, std::string_view more = {}) noexcept;

/// The same in an emergency, in a process that goes on.
void writeInEmergency(std::string_view message, bool callHandler) noexcept;

/// The same in a process that is about to end by `signal`: it will, even if an output blocks. Returns to let it end. Of
/// several threads the first one writes; the others are held until the process is gone.
void writeLastMessage(std::string_view message, int signal) noexcept;

} // namespace ky::impl
