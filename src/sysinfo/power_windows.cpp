// SPDX-License-Identifier: MIT
#include "sysinfo/power_native.h"

#include "platform/win32.h"

namespace ky::impl::native
{

kySystemUtils::PowerStatus powerStatus()
{
    using Source = kySystemUtils::PowerStatus::Source;
    constexpr BYTE unknown = 255;
    constexpr BYTE charging = 8;
    constexpr BYTE noBattery = 128;
    kySystemUtils::PowerStatus status;
    SYSTEM_POWER_STATUS system = {};
    if (!GetSystemPowerStatus(&system))
        return status;
    if (system.ACLineStatus <= 1)
        status.source = system.ACLineStatus == 1 ? Source::Mains : Source::Battery;
    if (system.BatteryFlag == unknown || (system.BatteryFlag & noBattery) != 0)
        return status;
    status.hasBattery = true;
    status.isCharging = (system.BatteryFlag & charging) != 0;
    if (system.BatteryLifePercent <= 100)
        status.batteryPercent = system.BatteryLifePercent;
    return status;
}

} // namespace ky::impl::native
