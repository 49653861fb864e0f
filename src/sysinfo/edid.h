// SPDX-License-Identifier: MIT
// What a monitor tells about itself: the first block of its EDID (VESA Enhanced EDID standard, release A).
#pragma once

#include "sysinfo/system_text.h"

#include <string>
#include <string_view>

namespace ky::impl
{

struct MonitorText
{
    std::string name;  ///< the product name; where there is none, vendor letters and product number such as "DEL A0B1"
    ScreenSize screen; ///< of the preferred timing
};

/// False, with `monitor` untouched, when the bytes do not begin with a block of the right size, header and checksum.
bool parseEdid(std::string_view bytes, MonitorText& monitor);

} // namespace ky::impl
