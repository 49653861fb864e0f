// SPDX-License-Identifier: MIT
#pragma once

#include "process/process_native.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ky::impl::native
{

/// Sets the id of the caller; false when the system does not list it.
bool findCurrentProcess(Process& process);

/// Opens the process that has started the caller, with its absolute path.
bool openParentProcess(Process& process, std::string& program);

/// Private memory in bytes; of the caller without a handle. 0 when it cannot be told.
std::uint64_t privateMemory(const Process& process);

/// The most physical memory in bytes; of the caller without a handle.
bool limitPhysicalMemory(const Process& process, std::uint64_t maxBytes) noexcept;

/// As "name=value".
std::vector<std::string> currentEnvironment();

} // namespace ky::impl::native
