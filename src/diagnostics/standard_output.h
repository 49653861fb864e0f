// SPDX-License-Identifier: MIT
#pragma once

namespace ky::impl
{

class LogLine;

/// Writes the line and an end-of-line to standard output and flushes. Never throws.
void writeToStandardOutput(LogLine& line) noexcept;

} // namespace ky::impl
