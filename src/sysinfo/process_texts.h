// SPDX-License-Identifier: MIT
// What a Linux kernel writes about a process, taken apart.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

/// From the lines of /proc/self/status: anonymous memory in RAM and in the swap area, in bytes. All memory in RAM where
/// the kernel does not tell the kinds apart; 0 when it tells nothing.
std::int64_t privateMemoryOf(std::string_view status) noexcept;

/// The arguments, each of which ends with a NUL.
std::vector<std::string> argumentsOf(std::string_view commandLine);

/// From the target of the link /proc/self/exe, which carries a mark when the file was removed or replaced. `exists`
/// tells whether there is a file of the marked name after all. Empty when the target is not an absolute path.
std::string programOf(const std::string& target, bool exists);

} // namespace ky::impl
