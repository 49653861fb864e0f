// SPDX-License-Identifier: MIT
// What a platform owes to the mutex that processes share by name.
#pragma once

#include "platform/file_handle.h"

#include <string>

namespace ky::impl::native
{

/// Recursive mutex of all processes that open the same name.
struct NamedMutex;

/// Makes the mutex or joins those who have it. The name is UTF-8 without '\' behind its prefix. Null with an error code
/// when the system refuses.
NamedMutex* openNamedMutex(const std::string& name, ErrorCode& error);
void closeNamedMutex(NamedMutex* mutex) noexcept;

/// Waits without limit. An owner that has died counts as one that has given up the mutex.
void acquire(NamedMutex& mutex) noexcept;

/// Nothing happens when the calling thread is not the owner.
void release(NamedMutex& mutex) noexcept;

} // namespace ky::impl::native
