// SPDX-License-Identifier: MIT
#include <ky/kySystemUtils.h>

#include "sysinfo/main_disk_native.h"
#include "sysinfo/power_native.h"
#include "sysinfo/processor_count_native.h"

#include <algorithm>

namespace ky
{

kySystemUtils::PowerStatus kySystemUtils::GetPowerStatus() { return impl::native::powerStatus(); }

kyVariant::kyVariantMapImpl kySystemUtils::PowerStatus::toVariantMap() const
{
    kyVariant::kyVariantMapImpl map;
    map["source"] = source == Source::Mains ? "mains" : source == Source::Battery ? "battery" : "unknown";
    map["hasbattery"] = hasBattery;
    map["ischarging"] = isCharging;
    map["batterypercent"] = batteryPercent;
    return map;
}

bool kySystemUtils::ExportProcessorCount()
{
    std::uint64_t count = std::max<std::uint64_t>(impl::native::processorsInAffinity(), 1);
    const std::uint64_t quota = impl::native::processorsInQuota();
    if (quota != 0)
        count = std::min(count, quota);
    return impl::native::setVariableIfEmpty("NUMBER_OF_PROCESSORS", std::to_string(count).c_str());
}

const std::string& getMainHDDDevice()
{
    // Never destroyed, so that the reference serves static objects, too.
    static const std::string& device = *new std::string(impl::native::mainDisk());
    return device;
}

} // namespace ky
