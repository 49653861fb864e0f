// SPDX-License-Identifier: MIT
#include "sysinfo/management_native.h"

#include "sysinfo/adapters_linux.h"
#include "sysinfo/machine_linux.h"
#include "sysinfo/management_linux.h"

namespace ky::impl::native
{

namespace
{

/// Null for an empty text.
kyVariant known(const std::string& text) { return text.empty() ? kyVariant() : kyVariant(text); }

/// Null for 0.
kyVariant known(std::uint64_t number) { return number == 0 ? kyVariant() : kyVariant(number); }

std::vector<ManagementRow> operatingSystem(const SystemFiles& files)
{
    const LinuxFacts facts = linuxFacts(files);
    ManagementRow row;
    row["Caption"] = known(osReleaseValue(facts.osRelease, "PRETTY_NAME"));
    row["BuildNumber"] = known(files.line("/proc/sys/kernel/version"));
    row["Version"] = known(facts.kernelRelease);
    row["OSArchitecture"] = facts.is64Bit ? "64-bit" : "32-bit";
    return {row};
}

std::vector<ManagementRow> processors(const SystemFiles& files)
{
    constexpr std::size_t limit = 16 * 1024 * 1024;
    std::vector<ManagementRow> rows;
    for (const PackageText& package : processorPackages(files.read("/proc/cpuinfo", limit)))
    {
        const auto kilohertz = files.number("/sys/devices/system/cpu/cpu" + std::to_string(package.processor) +
                                            "/cpufreq/cpuinfo_max_freq");
        ManagementRow row;
        row["Caption"] = known(package.caption);
        row["Name"] = known(package.name);
        row["MaxClockSpeed"] = known(kilohertz ? *kilohertz / 1000 : package.megahertz);
        rows.push_back(row);
    }
    return rows;
}

std::vector<ManagementRow> videoControllers(const SystemFiles& files)
{
    std::vector<ManagementRow> rows;
    for (const AdapterFiles& adapter : findAdapters(files))
    {
        ManagementRow row;
        row["Caption"] = known(adapter.info.description);
        row["Description"] = known(adapter.info.description);
        row["AdapterRAM"] = known(adapter.info.dedicatedVideoMemory);
        if (!adapter.driver.empty())
        {
            // Drivers of the kernel itself have no version but the kernel's.
            const std::string version = files.line("/sys/module/" + adapter.driver + "/version");
            row["DriverVersion"] = known(version.empty() ? files.line("/proc/sys/kernel/osrelease") : version);
        }
        const std::vector<MonitorText> monitors =
            adapter.card.empty() ? std::vector<MonitorText>() : findMonitors(files, adapter.card);
        const ScreenSize screen = monitors.empty() ? ScreenSize() : monitors.front().screen;
        row["CurrentHorizontalResolution"] = known(std::uint64_t{screen.width});
        row["CurrentVerticalResolution"] = known(std::uint64_t{screen.height});
        rows.push_back(row);
    }
    return rows;
}

std::vector<ManagementRow> monitors(const SystemFiles& files)
{
    std::vector<ManagementRow> rows;
    for (const MonitorText& monitor : findMonitors(files, {}))
    {
        ManagementRow row;
        row["Name"] = known(monitor.name);
        row["ScreenWidth"] = known(std::uint64_t{monitor.screen.width});
        row["ScreenHeight"] = known(std::uint64_t{monitor.screen.height});
        rows.push_back(row);
    }
    return rows;
}

std::vector<ManagementRow> computerSystem(const SystemFiles& files)
{
    const std::string folder = "/sys/class/dmi/id";
    const std::string model = files.line(folder + "/product_name");
    const std::string domain = files.line("/proc/sys/kernel/domainname");
    ManagementRow row;
    row["Manufacturer"] = known(files.line(folder + "/sys_vendor"));
    // Boards without such firmware are named by their device tree, whose texts end with NUL.
    row["Model"] = known(model.empty() ? cleanLine(files.read("/proc/device-tree/model").c_str()) : model);
    row["SystemFamily"] = known(files.line(folder + "/product_family"));
    row["TotalPhysicalMemory"] = known(memoryInfoBytes(files.read("/proc/meminfo"), "MemTotal").value_or(0));
    row["Domain"] = domain == "(none)" ? kyVariant() : known(domain);
    row["Name"] = known(files.line("/proc/sys/kernel/hostname"));
    return {row};
}

} // namespace

std::vector<ManagementRow> selectFrom(const SystemFiles& files, const ManagementQuery& query)
{
    static constexpr struct
    {
        std::string_view className;
        std::vector<ManagementRow> (*select)(const SystemFiles& files);
    } classes[] = {{"Win32_OperatingSystem", &operatingSystem},
                   {"Win32_Processor", &processors},
                   {"Win32_VideoController", &videoControllers},
                   {"Win32_DesktopMonitor", &monitors},
                   {"Win32_ComputerSystem", &computerSystem}};
    for (const auto& entry : classes)
        if (entry.className == query.className)
            return entry.select(files);
    return {};
}

struct ManagementSession::State
{
};

ManagementSession::ManagementSession() = default;
ManagementSession::~ManagementSession() = default;

bool ManagementSession::connect(ManagementStep&, std::uint32_t&) { return true; }

std::vector<ManagementRow> ManagementSession::select(const ManagementQuery& query)
{
    return selectFrom(SystemFiles(), query);
}

} // namespace ky::impl::native
