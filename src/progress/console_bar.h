// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::impl
{

/// The integer at or below `value`; the nearest one there is for values beyond the type, 0 for NaN.
int floorToInt(float value) noexcept;

/// One drawing of the bar, from its carriage return on.
std::string consoleBar(int barWidth, int filled, int percent);

/// Writes to standard output and flushes. Never throws.
void writeAndFlush(const std::string& text) noexcept;

} // namespace ky::impl
