// SPDX-License-Identifier: MIT
#include "sysinfo/power_supply.h"

#include "text/character_class.h"

#include <algorithm>
#include <cmath>

namespace ky::impl
{

namespace
{

using PowerStatus = kySystemUtils::PowerStatus;

/// What all supplies together tell.
struct Supplies
{
    bool plugs = false;
    bool plugged = false;
    bool discharging = false;
    bool charging = false;
    int batteries = 0;
    int known = 0;       ///< batteries that tell their charge in percent
    double percents = 0; ///< their sum
    int measured = 0;    ///< batteries that tell their charge in an absolute unit
    double energy = 0;   ///< their charge and their capacity, both 0 to 10^15 microwatt hours or microampere hours
    double fullEnergy = 0;
};

/// `now` and `full` of the first unit that the battery tells.
void addEnergy(const SystemTree& tree, const std::string& folder, Supplies& supplies)
{
    for (const char* const unit : {"/energy", "/charge"})
    {
        const std::int64_t now = leadingNumber(tree.read(folder + unit + "_now"));
        const std::int64_t full = leadingNumber(tree.read(folder + unit + "_full"));
        constexpr std::int64_t limit = 1000000000000000;
        if (now < 0 || full <= 0 || full > limit)
            continue;
        supplies.measured += 1;
        supplies.energy += static_cast<double>(std::min(now, full));
        supplies.fullEnergy += static_cast<double>(full);
        return;
    }
}

void addBattery(const SystemTree& tree, const std::string& folder, Supplies& supplies)
{
    const std::string present = tree.read(folder + "/present");
    if (trimmed(tree.read(folder + "/scope")) == "Device" || trimmed(present) == "0")
        return;
    const std::string text = tree.read(folder + "/status");
    const std::string_view status = trimmed(text);
    supplies.batteries += 1;
    supplies.charging |= status == "Charging";
    supplies.discharging |= status == "Discharging";
    supplies.plugged |= status == "Charging" || status == "Full" || status == "Not charging";
    const std::int64_t percent = leadingNumber(tree.read(folder + "/capacity"));
    if (percent >= 0)
    {
        supplies.known += 1;
        supplies.percents += static_cast<double>(std::min<std::int64_t>(percent, 100));
    }
    addEnergy(tree, folder, supplies);
}

void addSupply(const SystemTree& tree, const std::string& folder, Supplies& supplies)
{
    const std::string text = tree.read(folder + "/type");
    const std::string_view type = trimmed(text);
    if (type == "Battery" || type == "UPS")
        return addBattery(tree, folder, supplies);
    if (type.empty())
        return;
    const std::int64_t online = leadingNumber(tree.read(folder + "/online"));
    supplies.plugs |= online >= 0;
    supplies.plugged |= online > 0;
}

int percentOf(const Supplies& supplies)
{
    // Batteries of different size weigh differently; a single one tells best itself.
    const bool weighs = supplies.batteries > 1 && supplies.measured == supplies.batteries;
    if (supplies.known > 0 && !weighs)
        return static_cast<int>(std::lround(supplies.percents / supplies.known));
    if (supplies.measured > 0)
        return static_cast<int>(std::lround(supplies.energy / supplies.fullEnergy * 100));
    return -1;
}

} // namespace

PowerStatus powerFromSupplies(const SystemTree& tree)
{
    Supplies supplies;
    for (const std::string& name : tree.list("/sys/class/power_supply"))
        addSupply(tree, "/sys/class/power_supply/" + name, supplies);
    PowerStatus status;
    status.hasBattery = supplies.batteries > 0;
    status.isCharging = supplies.charging;
    status.batteryPercent = percentOf(supplies);
    if (supplies.plugged)
        status.source = PowerStatus::Source::Mains;
    else if (supplies.discharging || (status.hasBattery && supplies.plugs))
        status.source = PowerStatus::Source::Battery;
    return status;
}

} // namespace ky::impl
