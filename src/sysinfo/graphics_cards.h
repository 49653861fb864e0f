// SPDX-License-Identifier: MIT
// Display adapters and monitors as the graphics subsystem of a Linux kernel shows them.
#pragma once

#include "sysinfo/edid.h"
#include "sysinfo/system_tree.h"

#include <ky/kySystemUtils.h>

namespace ky::impl
{

struct GraphicsCard
{
    std::string card;   ///< such as "card0"; empty for an adapter without a graphics driver
    std::string folder; ///< of the device, such as "/sys/class/drm/card0/device"
    std::string driver; ///< such as "amdgpu"; empty when there is none
    kySystemUtils::DirectXDeviceInfo info;
};

/// Gives the list of PCI devices in the format of pci.ids, empty when the system has none. It is long; called when it
/// is needed, and once.
using PciList = std::function<std::string()>;

/// All adapters; at most 64.
std::vector<GraphicsCard> findGraphicsCards(const SystemTree& tree, const PciList& readList);

/// The monitors that are connected to the adapter `card`, or to any when it is empty; at most 64.
std::vector<MonitorText> findMonitors(const SystemTree& tree, const std::string& card);

} // namespace ky::impl
