// SPDX-License-Identifier: MIT
#include "diagnostics/event_text.h"

#include "text/utf8_scan.h"

namespace ky::impl
{

namespace
{

/// Length in bytes of the well-formed character that begins with `lead`.
std::size_t characterSize(char lead)
{
    const auto byte = static_cast<unsigned char>(lead);
    if (byte < 0xC0)
        return 1;
    if (byte < 0xE0)
        return 2;
    return byte < 0xF0 ? 3 : 4;
}

} // namespace

std::string_view cutToUtf16Units(std::string_view utf8, std::size_t units) noexcept
{
    std::size_t at = 0;
    std::size_t wellFormedEnd = 0;
    while (at < utf8.size())
    {
        if (at >= wellFormedEnd)
        {
            // No more than this can be used: three bytes a unit.
            const std::string_view rest = utf8.substr(at, 3 * units + 3);
            wellFormedEnd = at + validUtf8Prefix(rest.data(), rest.size());
        }
        const std::size_t bytes = at < wellFormedEnd ? characterSize(utf8[at]) : 1;
        const std::size_t needed = bytes == 4 ? 2 : 1;
        if (needed > units)
            break;
        units -= needed;
        at += bytes;
    }
    return utf8.substr(0, at);
}

} // namespace ky::impl
