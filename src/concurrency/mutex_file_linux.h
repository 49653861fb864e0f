// SPDX-License-Identifier: MIT
// The files behind the named mutexes. For *_linux.cpp files only.
#pragma once

#include "platform/file_handle.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace ky::impl::native
{

/// 128 bits that stand for a name of any length.
using NameHash = std::array<std::uint64_t, 2>;

NameHash hashName(std::string_view name) noexcept;

/// "mutex-" and the 32 hexadecimal digits of the hash.
std::string mutexFileName(const NameHash& hash);

/// Opens the file in the user's private folder, after making it if it is missing. -1 with an error code when that does
/// not work or when something else than a file of this user stands there. The descriptor is close-on-exec.
int openMutexFile(const NameHash& hash, ErrorCode& error) noexcept;

/// Whether the open file has lost its name: others make and use a new one.
bool isFileRemoved(int file) noexcept;

} // namespace ky::impl::native
