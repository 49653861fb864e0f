// SPDX-License-Identifier: MIT
// Calendar time as text, for the rooms above.
#pragma once

#include <cstddef>
#include <ctime>

namespace ky::impl
{

/// What strftime writes under the C locale, whatever locale the process has set and whatever the C runtime leaves out.
/// What is no conversion of the C standard stays as it stands.
/// Length without the terminating NUL; 0 when the text and the NUL do not fit.
std::size_t formatTime(char* buffer, std::size_t size, const char* format, const std::tm& time) noexcept;

} // namespace ky::impl
