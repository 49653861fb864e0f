// SPDX-License-Identifier: MIT
// Monitor descriptions: whatever the bytes, the result is clean text and a size in range.
#include "sysinfo/edid.h"
#include "text/utf8_scan.h"

#include <cstdint>
#include <cstdlib>
#include <numeric>

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void check(const std::string& bytes)
{
    ky::impl::MonitorText monitor;
    if (!ky::impl::parseEdid(bytes, monitor))
    {
        require(monitor.name.empty() && monitor.screen.width == 0);
        return;
    }
    require(!monitor.name.empty() && monitor.name.size() <= 13 && ky::impl::isUtf8(monitor.name));
    require(monitor.screen.width <= 4095 && monitor.screen.height <= 4095);
    require((monitor.screen.width == 0) == (monitor.screen.height == 0));
}

/// The same bytes with the header and the sum that a block needs.
std::string repaired(std::string bytes)
{
    bytes.resize(128);
    bytes.replace(0, 8, std::string("\x00\xff\xff\xff\xff\xff\xff\x00", 8));
    bytes.back() = '\0';
    const unsigned sum =
        std::accumulate(bytes.begin(), bytes.end(), 0U,
                        [](unsigned total, char byte) { return total + static_cast<unsigned char>(byte); });
    bytes.back() = static_cast<char>(256U - (sum & 0xff));
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + size);
    check(bytes);
    ky::impl::MonitorText monitor;
    require(ky::impl::parseEdid(repaired(bytes), monitor));
    check(repaired(bytes));
    return 0;
}
