// SPDX-License-Identifier: MIT
// Display adapters and monitors as the kernel's graphics subsystem shows them, on any root.
#pragma once

#include "sysinfo/edid.h"
#include "sysinfo/system_files_linux.h"

#include <ky/kySystemUtils.h>

namespace ky::impl::native
{

struct AdapterFiles
{
    std::string card;   ///< such as "card0"; empty for an adapter without a graphics driver
    std::string folder; ///< of the device, such as "/sys/class/drm/card0/device"
    std::string driver; ///< such as "amdgpu"; empty when there is none
    kySystemUtils::DirectXDeviceInfo info;
};

/// All adapters; at most 64.
std::vector<AdapterFiles> findAdapters(const SystemFiles& files);

/// The monitors that are connected to the adapter `card`, or to any when it is empty; at most 64.
std::vector<MonitorText> findMonitors(const SystemFiles& files, const std::string& card);

} // namespace ky::impl::native
