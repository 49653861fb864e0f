// SPDX-License-Identifier: MIT
#include "sysinfo/system_record.h"

#include "sysinfo/adapters_native.h"
#include "sysinfo/machine_native.h"
#include "sysinfo/management_native.h"
#include "sysinfo/os_native.h"

#include <ky/kyLog.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace ky::impl
{

namespace
{

constexpr char processorVariable[] = "NUMBER_OF_PROCESSORS";

void warn(const std::string& message)
{
    // Without a logger the message goes nowhere: standard output is not ours so early.
    if (kyLog* const log = kyLog::editPtr())
        kyLogObject(kyLogType::WARNING, nullptr, log, nullptr) << message;
}

/// As `atoi`, with values out of range cut to the nearest limit.
int decimalValue(const char* text)
{
    return static_cast<int>(std::clamp<long long>(std::strtoll(text, nullptr, 10), INT_MIN, INT_MAX));
}

void readProcessorCount(SystemRecord& record)
{
    char buffer[4096];
    const std::size_t length = native::readEnvironment(processorVariable, buffer, sizeof(buffer));
    if (length == 0 || length >= sizeof(buffer))
        warn(std::string("Failed to retrieve ") + processorVariable);
    else
        record.processorCount = static_cast<std::uint32_t>(decimalValue(buffer));
    if (static_cast<std::int32_t>(record.processorCount) < 2)
        record.processorCount = 1;
}

void readInstalledMemory(SystemRecord& record)
{
    std::uint64_t kilobytes = 0;
    if (const std::uint32_t error = native::queryInstalledMemory(kilobytes))
        warn("GetPhysicallyInstalledSystemMemory failed with error " + std::to_string(error));
    else if (kilobytes <= INT64_MAX / 1024)
        record.installedMemory = static_cast<std::int64_t>(kilobytes * 1024);
}

/// Loading the graphics library takes tens of milliseconds; a process that initializes often pays once.
void readAdapters(SystemRecord& record)
{
    static const std::vector<kySystemUtils::DirectXDeviceInfo> found = native::listAdapters();
    record.adapters = found;
}

/// What the version call may hide from programs made for older systems.
void addRegistryValues(WindowsFacts& facts)
{
    const auto value = [](const char* name)
    {
        kyVariant found;
        kySystemUtils::GetRegistryValue("HKEY_LOCAL_MACHINE", "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", name,
                                        found);
        return found;
    };
    facts.registryMajor = static_cast<std::uint32_t>(value("CurrentMajorVersionNumber").toInteger());
    facts.registryMinor = static_cast<std::uint32_t>(value("CurrentMinorVersionNumber").toInteger());
    facts.registryBuild = value("CurrentBuild").toString();
    facts.editionId = value("EditionID").toString();
    facts.releaseId = value("ReleaseId").toString();
}

std::string describeThisOs()
{
    OsFacts facts = native::queryOs();
    if (auto* const windows = std::get_if<WindowsFacts>(&facts))
        addRegistryValues(*windows);
    return describeOs(facts);
}

} // namespace

void gatherRecord(SystemRecord& record)
{
    readProcessorCount(record);
    readInstalledMemory(record);
    readAdapters(record);
    record.osDescription = describeThisOs();
}

void queryManagement(SystemRecord& record)
{
    native::ManagementSession session;
    ManagementStep step = {};
    std::uint32_t code = 0;
    if (!session.connect(step, code))
    {
        warn(managementFailureText(step, code));
        return;
    }
    const ManagementSelect select = [&](const ManagementQuery& query) { return session.select(query); };
    collectManagement(select, true, record.managementFull);
    // The service knows a user at the console only.
    kyVariant& user = record.managementFull.editValuePath("computersystem/username");
    if (user.getString().empty())
        user = kySystemUtils::GetCurrentUserNameUtf8();
    collectManagement(select, false, record.managementBasic);
}

} // namespace ky::impl
