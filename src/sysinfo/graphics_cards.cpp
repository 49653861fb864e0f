// SPDX-License-Identifier: MIT
#include "sysinfo/graphics_cards.h"

#include <algorithm>

namespace ky::impl
{

namespace
{

constexpr std::size_t mostAdapters = 64;
constexpr std::size_t mostEntries = 1024;
constexpr char drmFolder[] = "/sys/class/drm";
constexpr char pciFolder[] = "/sys/bus/pci/devices";

/// The list of names, read when the first adapter needs it.
class PciNames
{
public:
    explicit PciNames(const PciList& readList) : mReadList(readList) {}

    std::string find(std::uint16_t vendor, std::uint16_t device)
    {
        if (!mIsRead)
            mList = mReadList();
        mIsRead = true;
        return pciDeviceName(mList, vendor, device);
    }

private:
    const PciList& mReadList;
    std::string mList;
    bool mIsRead = false;
};

/// Names that begin with `prefix`, so that numbers at their ends follow one another.
std::vector<std::string> numberedNames(const SystemTree& tree, const char* folder, const std::string& prefix)
{
    std::vector<std::string> names;
    for (std::string& name : tree.list(folder))
        if (name.compare(0, prefix.size(), prefix) == 0 && names.size() < mostEntries)
            names.push_back(std::move(name));
    std::stable_sort(names.begin(), names.end(),
                     [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
    return names;
}

/// "10DE:2204" in the description of a device.
bool parsePciId(std::string_view text, std::uint16_t& vendor, std::uint16_t& device)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return false;
    const auto first = parseNumber(text.substr(0, colon), 16);
    const auto second = parseNumber(text.substr(colon + 1), 16);
    if (!first || !second || *first > 0xffff || *second > 0xffff)
        return false;
    vendor = static_cast<std::uint16_t>(*first);
    device = static_cast<std::uint16_t>(*second);
    return true;
}

/// `text` is the kernel's description of the device.
std::string describe(const SystemTree& tree, const GraphicsCard& adapter, const std::string& text, PciNames& names)
{
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    if (parsePciId(lineValue(text, "PCI_ID", '='), vendor, device))
        return names.find(vendor, device);
    // A virtual device sits on a bus of its own, which sits on the PCI device.
    if (parsePciId(lineValue(tree.read(adapter.folder + "/../uevent"), "PCI_ID", '='), vendor, device))
        return names.find(vendor, device);
    std::string compatible = cleanLine(lineValue(text, "OF_COMPATIBLE_0", '='));
    if (!compatible.empty())
        return compatible;
    return adapter.driver.empty() ? "Unknown display adapter" : adapter.driver + " display adapter";
}

void complete(const SystemTree& tree, GraphicsCard& adapter, PciNames& names)
{
    const std::string text = tree.read(adapter.folder + "/uevent");
    adapter.driver = cleanLine(lineValue(text, "DRIVER", '='));
    adapter.info.description = describe(tree, adapter, text, names);
    // Two drivers tell, each in its own words.
    auto video = parseNumber(tree.read(adapter.folder + "/mem_info_vram_total"), 10);
    if (!video && !adapter.card.empty())
        video = parseNumber(tree.read(std::string(drmFolder) + "/" + adapter.card + "/lmem_total_bytes"), 10);
    adapter.info.dedicatedVideoMemory = video.value_or(0);
    adapter.info.sharedSystemMemory = parseNumber(tree.read(adapter.folder + "/mem_info_gtt_total"), 10).value_or(0);
}

bool isCard(const std::string& name) { return parseNumber(std::string_view(name).substr(4), 10).has_value(); }

} // namespace

std::vector<GraphicsCard> findGraphicsCards(const SystemTree& tree, const PciList& readList)
{
    std::vector<GraphicsCard> adapters;
    for (const std::string& name : numberedNames(tree, drmFolder, "card"))
        if (isCard(name) && adapters.size() < mostAdapters)
            adapters.push_back({name, std::string(drmFolder) + "/" + name + "/device", {}, {}});
    // Without a graphics driver the devices are still on their bus: base class 3 is a display controller.
    if (adapters.empty())
        for (const std::string& name : numberedNames(tree, pciFolder, ""))
        {
            const std::string folder = std::string(pciFolder) + "/" + name;
            const auto deviceClass = parseNumber(tree.read(folder + "/class"), 16);
            if (deviceClass && *deviceClass >> 16 == 3 && adapters.size() < mostAdapters)
                adapters.push_back({{}, folder, {}, {}});
        }
    PciNames names(readList);
    for (GraphicsCard& adapter : adapters)
        complete(tree, adapter, names);
    return adapters;
}

std::vector<MonitorText> findMonitors(const SystemTree& tree, const std::string& card)
{
    std::vector<MonitorText> monitors;
    for (const std::string& name : numberedNames(tree, drmFolder, card.empty() ? "card" : card + "-"))
    {
        const std::string folder = std::string(drmFolder) + "/" + name;
        const std::size_t dash = name.find('-');
        if (dash == std::string::npos || monitors.size() >= mostAdapters ||
            cleanLine(tree.read(folder + "/status")) != "connected")
            continue;
        MonitorText monitor;
        if (!parseEdid(tree.read(folder + "/edid"), monitor))
            monitor.name = cleanLine(std::string_view(name).substr(dash + 1));
        // The first mode is the one that the monitor prefers.
        if (monitor.screen.width == 0)
            monitor.screen = parseScreenSize(tree.read(folder + "/modes"));
        monitors.push_back(monitor);
    }
    return monitors;
}

} // namespace ky::impl
