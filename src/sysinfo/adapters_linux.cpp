// SPDX-License-Identifier: MIT
#include "sysinfo/adapters_native.h"

#include "sysinfo/adapters_linux.h"

namespace ky::impl::native
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
    explicit PciNames(const SystemFiles& files) : mFiles(files) {}

    std::string find(std::uint16_t vendor, std::uint16_t device)
    {
        constexpr std::size_t limit = 8 * 1024 * 1024;
        for (const char* const path : {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"})
            if (mList.empty() && !mIsRead)
                mList = mFiles.read(path, limit);
        mIsRead = true;
        return pciDeviceName(mList, vendor, device);
    }

private:
    const SystemFiles& mFiles;
    std::string mList;
    bool mIsRead = false;
};

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

std::string describe(const SystemFiles& files, const AdapterFiles& adapter, PciNames& names)
{
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    const std::string text = files.read(adapter.folder + "/uevent");
    if (parsePciId(lineValue(text, "PCI_ID", '='), vendor, device))
        return names.find(vendor, device);
    // A virtual device sits on a bus of its own, which sits on the PCI device.
    if (parsePciId(lineValue(files.read(adapter.folder + "/../uevent"), "PCI_ID", '='), vendor, device))
        return names.find(vendor, device);
    const std::string compatible = cleanLine(lineValue(text, "OF_COMPATIBLE_0", '='));
    if (!compatible.empty())
        return compatible;
    return adapter.driver.empty() ? "Unknown display adapter" : adapter.driver + " display adapter";
}

void complete(const SystemFiles& files, AdapterFiles& adapter, PciNames& names)
{
    adapter.driver = cleanLine(lineValue(files.read(adapter.folder + "/uevent"), "DRIVER", '='));
    adapter.info.description = describe(files, adapter, names);
    // Two drivers tell, each in its own words.
    auto video = files.number(adapter.folder + "/mem_info_vram_total");
    if (!video && !adapter.card.empty())
        video = files.number(std::string(drmFolder) + "/" + adapter.card + "/lmem_total_bytes");
    adapter.info.dedicatedVideoMemory = video.value_or(0);
    adapter.info.sharedSystemMemory = files.number(adapter.folder + "/mem_info_gtt_total").value_or(0);
}

bool isCard(const std::string& name) { return parseNumber(std::string_view(name).substr(4), 10).has_value(); }

} // namespace

std::vector<AdapterFiles> findAdapters(const SystemFiles& files)
{
    std::vector<AdapterFiles> adapters;
    for (const std::string& name : files.list(drmFolder, "card", mostEntries))
        if (isCard(name) && adapters.size() < mostAdapters)
            adapters.push_back({name, std::string(drmFolder) + "/" + name + "/device", {}, {}});
    // Without a graphics driver the devices are still on their bus: base class 3 is a display controller.
    if (adapters.empty())
        for (const std::string& name : files.list(pciFolder, "", mostEntries))
        {
            const std::string folder = std::string(pciFolder) + "/" + name;
            if (files.number(folder + "/class", 16).value_or(0) >> 16 == 3 && adapters.size() < mostAdapters)
                adapters.push_back({{}, folder, {}, {}});
        }
    PciNames names(files);
    for (AdapterFiles& adapter : adapters)
        complete(files, adapter, names);
    return adapters;
}

std::vector<MonitorText> findMonitors(const SystemFiles& files, const std::string& card)
{
    std::vector<MonitorText> monitors;
    for (const std::string& name : files.list(drmFolder, card.empty() ? "card" : card + "-", mostEntries))
    {
        const std::string folder = std::string(drmFolder) + "/" + name;
        const std::size_t dash = name.find('-');
        if (dash == std::string::npos || monitors.size() >= mostAdapters ||
            files.line(folder + "/status") != "connected")
            continue;
        MonitorText monitor;
        if (!parseEdid(files.read(folder + "/edid"), monitor))
            monitor.name = cleanLine(std::string_view(name).substr(dash + 1));
        // The first mode is the one that the monitor prefers.
        if (monitor.screen.width == 0)
            monitor.screen = parseScreenSize(files.line(folder + "/modes"));
        monitors.push_back(monitor);
    }
    return monitors;
}

std::vector<kySystemUtils::DirectXDeviceInfo> listAdapters()
{
    std::vector<kySystemUtils::DirectXDeviceInfo> result;
    for (AdapterFiles& adapter : findAdapters(SystemFiles()))
        result.push_back(std::move(adapter.info));
    return result;
}

} // namespace ky::impl::native
