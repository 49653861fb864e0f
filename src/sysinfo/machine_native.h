// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace ky::impl::native
{

/// Copies the value of an environment variable with a terminating NUL.
///
/// \return length of the value; 0 when there is no such variable, and at least `size`, with nothing of use in the
///         buffer, when it does not fit
std::size_t readEnvironment(const char* name, char* buffer, std::size_t size);

/// Physically installed memory in kilobytes. 0 on success, otherwise the system's error code.
std::uint32_t queryInstalledMemory(std::uint64_t& kilobytes);

} // namespace ky::impl::native
