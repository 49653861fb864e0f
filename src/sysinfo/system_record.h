// SPDX-License-Identifier: MIT
// What initialization gathers once and the readers look up.
#pragma once

#include <ky/kyCpuInfo.h>
#include <ky/kySystemUtils.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ky::impl
{

struct SystemRecord
{
    std::vector<kySystemUtils::DirectXDeviceInfo> adapters;
    kySystemUtils::CPUInfo cpu;
    std::string osDescription = "Unknown OS";
    kyVariant::kyVariantMapImpl managementBasic;
    kyVariant::kyVariantMapImpl managementFull;
    kyVariant::kyVariantMapImpl libraryVersions;
    std::int64_t installedMemory = -1;
    std::uint32_t processorCount = 0xffffffff;
    bool managementQueried = false;
};

/// Fills everything but the management maps. A query that fails leaves its field alone.
void gatherRecord(SystemRecord& record);

/// Fills the management maps.
void queryManagement(SystemRecord& record);

} // namespace ky::impl
