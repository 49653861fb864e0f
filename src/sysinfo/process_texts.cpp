// SPDX-License-Identifier: MIT
#include "sysinfo/process_texts.h"

#include "sysinfo/system_tree.h"

#include <limits>

namespace ky::impl
{

namespace
{

/// "Name:   1234 kB" in bytes; -1 when there is no such line.
std::int64_t sizeField(std::string_view status, std::string_view name) noexcept
{
    while (!status.empty())
    {
        std::string_view line = nextPiece(status, '\n');
        if (nextPiece(line, ':') != name)
            continue;
        const std::int64_t kilobytes = leadingNumber(line);
        return kilobytes > std::numeric_limits<std::int64_t>::max() / 4096 ? -1 : kilobytes * 1024;
    }
    return -1;
}

} // namespace

std::int64_t privateMemoryOf(std::string_view status) noexcept
{
    std::int64_t size = sizeField(status, "RssAnon");
    if (size < 0)
        size = sizeField(status, "VmRSS");
    const std::int64_t swapped = sizeField(status, "VmSwap");
    return (size > 0 ? size : 0) + (swapped > 0 ? swapped : 0);
}

std::vector<std::string> argumentsOf(std::string_view commandLine)
{
    std::vector<std::string> arguments;
    while (!commandLine.empty())
        arguments.emplace_back(nextPiece(commandLine, '\0'));
    return arguments;
}

std::string programOf(const std::string& target, bool exists)
{
    constexpr std::string_view mark = " (deleted)";
    if (target.empty() || target.front() != '/')
        return {};
    const bool marked =
        target.size() > mark.size() + 1 && target.compare(target.size() - mark.size(), mark.size(), mark) == 0;
    return marked && !exists ? target.substr(0, target.size() - mark.size()) : target;
}

} // namespace ky::impl
