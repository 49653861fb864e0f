// SPDX-License-Identifier: MIT
#include <ky/kyCpuInfo.h>
#include <ky/kySystemUtils.h>

namespace ky
{

namespace
{

using Map = kyVariant::kyVariantMapImpl;

/// Names in one text each: a report goes into an INI file, which holds no lists.
Map processorMap()
{
    Map map = kySystemUtils::GetCPUInfo().toVariantMap();
    for (const char* const list : {"instructionsets", "disabledinstructionsets"})
        map[list] = map[list].toString();
    map["logicalprocessors"] = kySystemUtils::GetIdealThreadCount();
    return map;
}

/// One map for each adapter under "1", "2", ...
Map adaptersMap()
{
    Map map;
    for (const auto& adapter : kySystemUtils::GetDirectXDevices())
        map[std::to_string(map.size() + 1)] = adapter.toVariantMap();
    return map;
}

/// What tells this computer, its user and the program from others.
void addIdentity(Map& report)
{
    report["computer"] = Map{{"name", kySystemUtils::GetLocalComputerName()}};
    report["user"] = Map{{"name", kySystemUtils::GetCurrentUserNameUtf8()}};
    report["program"] = Map{{"name", kySystemUtils::GetProgramName()},
                            {"folder", kySystemUtils::GetProgramFolder()},
                            {"processid", kySystemUtils::GetCurrentProcessID()},
                            {"usedmemory", kySystemUtils::GetUsedRamQuantityInBytes()}};
    report["disk"] = Map{{"main", getMainHDDDevice()}};
    report["libraries"] = kySystemUtils::GetThirdPartyLibVersionInfo();
}

} // namespace

void kySystemUtils::GenerateHardwareReport(kyVariant::kyVariantMapImpl& report, bool full)
{
    Map composed;
    composed["os"] = Map{{"description", GetOSInfo()}};
    composed["processor"] = processorMap();
    composed["memory"] = Map{{"installed", GetRamQuantityInBytes()}};
    composed["adapters"] = adaptersMap();
    composed["management"] = GetWmicInfo(full);
    composed["power"] = GetPowerStatus().toVariantMap();
    if (full)
        addIdentity(composed);
    report.swap(composed);
}

} // namespace ky
