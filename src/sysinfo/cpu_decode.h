// SPDX-License-Identifier: MIT
#pragma once

#include "platform/processor.h"

#include <ky/kyCpuInfo.h>

#include <functional>

namespace ky::impl
{

/// Where the raw answers come from: the processor itself, or a table.
struct CpuQuery
{
    /// CPUID by leaf and sub-leaf; empty where there is no such instruction.
    std::function<ProcessorRegisters(std::uint32_t leaf, std::uint32_t subLeaf)> cpuid;
    /// Extended control register 0; asked only when the processor tells that the operating system has enabled it.
    std::function<std::uint64_t()> extendedControl;
};

struct CpuInfoBuilder
{
    using CPUInfo = kySystemUtils::CPUInfo;

    static CPUInfo describe(const CpuQuery& query);

private:
    static void readLeaves(const CpuQuery& query, std::uint32_t first, std::vector<CPUInfo::Registers>& leaves);
    static void readNames(CPUInfo& info);
    static void sortInstructionSets(const CpuQuery& query, CPUInfo& info);
};

} // namespace ky::impl
