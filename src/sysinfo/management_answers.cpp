// SPDX-License-Identifier: MIT
#include "sysinfo/management_answers.h"

#include "sysinfo/os_text.h"
#include "sysinfo/system_text.h"

namespace ky::impl
{

namespace
{

std::vector<ManagementRow> operatingSystem(const SystemTree& tree)
{
    const LinuxFacts facts = linuxFacts(tree);
    ManagementRow row;
    row["Caption"] = osReleaseValue(facts.osRelease, "PRETTY_NAME");
    row["BuildNumber"] = cleanLine(tree.read("/proc/sys/kernel/version"));
    row["Version"] = facts.kernelRelease;
    row["OSArchitecture"] = facts.is64Bit ? "64-bit" : "32-bit";
    return {row};
}

std::vector<ManagementRow> processors(const SystemTree& tree)
{
    std::vector<ManagementRow> rows;
    for (const PackageText& package : processorPackages(tree.read("/proc/cpuinfo")))
    {
        const auto kilohertz = parseNumber(
            tree.read("/sys/devices/system/cpu/cpu" + std::to_string(package.processor) + "/cpufreq/cpuinfo_max_freq"),
            10);
        ManagementRow row;
        row["Caption"] = package.caption;
        row["Name"] = package.name;
        row["MaxClockSpeed"] = kilohertz ? *kilohertz / 1000 : package.megahertz;
        rows.push_back(row);
    }
    return rows;
}

/// Drivers of the kernel itself have no version but the kernel's.
std::string driverVersion(const SystemTree& tree, const std::string& driver)
{
    if (driver.empty() || driver.find('/') != std::string::npos)
        return {};
    const std::string version = cleanLine(tree.read("/sys/module/" + driver + "/version"));
    return version.empty() ? linuxFacts(tree).kernelRelease : version;
}

std::vector<ManagementRow> videoControllers(const SystemTree& tree, const PciList& readList)
{
    std::vector<ManagementRow> rows;
    for (const GraphicsCard& adapter : findGraphicsCards(tree, readList))
    {
        ManagementRow row;
        row["Caption"] = adapter.info.description;
        row["Description"] = adapter.info.description;
        row["AdapterRAM"] = adapter.info.dedicatedVideoMemory;
        row["DriverVersion"] = driverVersion(tree, adapter.driver);
        const std::vector<MonitorText> monitors =
            adapter.card.empty() ? std::vector<MonitorText>() : findMonitors(tree, adapter.card);
        const ScreenSize screen = monitors.empty() ? ScreenSize() : monitors.front().screen;
        row["CurrentHorizontalResolution"] = screen.width;
        row["CurrentVerticalResolution"] = screen.height;
        rows.push_back(row);
    }
    return rows;
}

std::vector<ManagementRow> monitors(const SystemTree& tree)
{
    std::vector<ManagementRow> rows;
    for (const MonitorText& monitor : findMonitors(tree, {}))
    {
        ManagementRow row;
        row["Name"] = monitor.name;
        row["ScreenWidth"] = monitor.screen.width;
        row["ScreenHeight"] = monitor.screen.height;
        rows.push_back(row);
    }
    return rows;
}

std::vector<ManagementRow> computerSystem(const SystemTree& tree)
{
    const std::string folder = "/sys/class/dmi/id";
    const std::string model = cleanLine(tree.read(folder + "/product_name"));
    const std::string domain = cleanLine(tree.read("/proc/sys/kernel/domainname"));
    ManagementRow row;
    row["Manufacturer"] = cleanLine(tree.read(folder + "/sys_vendor"));
    // Boards without such firmware are named by their device tree, whose texts end with NUL.
    row["Model"] = model.empty() ? cleanLine(tree.read("/proc/device-tree/model").c_str()) : model;
    row["SystemFamily"] = cleanLine(tree.read(folder + "/product_family"));
    row["TotalPhysicalMemory"] = memoryInfoBytes(tree.read("/proc/meminfo"), "MemTotal").value_or(0);
    row["Domain"] = domain == "(none)" ? std::string() : domain;
    row["Name"] = cleanLine(tree.read("/proc/sys/kernel/hostname"));
    return {row};
}

} // namespace

std::vector<ManagementRow> answerFromTree(const SystemTree& tree, const PciList& readList, const ManagementQuery& query)
{
    if (query.className == "Win32_OperatingSystem")
        return operatingSystem(tree);
    if (query.className == "Win32_Processor")
        return processors(tree);
    if (query.className == "Win32_VideoController")
        return videoControllers(tree, readList);
    if (query.className == "Win32_DesktopMonitor")
        return monitors(tree);
    return query.className == "Win32_ComputerSystem" ? computerSystem(tree) : std::vector<ManagementRow>();
}

} // namespace ky::impl
