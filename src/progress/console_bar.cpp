// SPDX-License-Identifier: MIT
#include "progress/console_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>

namespace ky::impl
{

namespace
{

/// A progress of a million must not fill the memory.
constexpr std::int64_t longestRun = 65536;

std::size_t runLength(std::int64_t count, int barWidth)
{
    return static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, std::max<std::int64_t>(barWidth, longestRun)));
}

} // namespace

int floorToInt(float value) noexcept
{
    // The first float above the type: its largest value itself has no float.
    constexpr float above = 2147483648.0F;
    static_assert(std::numeric_limits<int>::max() == 2147483647);
    if (std::isnan(value))
        return 0;
    if (value >= above)
        return std::numeric_limits<int>::max();
    if (value < -above)
        return std::numeric_limits<int>::min();
    return static_cast<int>(std::floor(value));
}

std::string consoleBar(int barWidth, int filled, int percent)
{
    std::string line("\r[");
    line.append(runLength(filled, barWidth), '=');
    line.append(runLength(std::int64_t{barWidth} - filled, barWidth), ' ');
    line.append("] ").append(std::to_string(percent)).append("/100  ");
    return line;
}

void writeAndFlush(const std::string& text) noexcept
{
    try
    {
        // Past the stream's own state: an earlier failure or a field width set by the program must not matter.
        std::streambuf* const out = std::cout.rdbuf();
        if (out == nullptr)
            return;
        out->sputn(text.data(), static_cast<std::streamsize>(text.size()));
        out->pubsync();
    }
    catch (...)
    {
        // The program's own buffer behind std::cout: its trouble is not the job's.
    }
}

} // namespace ky::impl
