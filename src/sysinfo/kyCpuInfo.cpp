// SPDX-License-Identifier: MIT
#include <ky/kyCpuInfo.h>

#include "sysinfo/cpu_decode.h"

#include <algorithm>
#include <iterator>

namespace ky
{

namespace
{

using CPUInfo = kySystemUtils::CPUInfo;

/// Asked once, as a hypervisor takes microseconds for each leaf. Never destroyed: static objects of clients may copy it
/// at any moment.
const CPUInfo& thisProcessor()
{
    static const CPUInfo& description = *[]
    {
        impl::CpuQuery query;
        if (impl::processorAnswers())
            query = {&impl::queryProcessor, &impl::processorExtendedControl};
        return new CPUInfo(impl::CpuInfoBuilder::describe(query));
    }();
    return description;
}

kyVariant::kyVariantListImpl namesOf(const std::vector<CPUInfo::InstructionSet>& sets)
{
    kyVariant::kyVariantListImpl names;
    names.reserve(sets.size());
    for (const CPUInfo::InstructionSet set : sets)
        names.push_back(CPUInfo::InstructionSetToString(set));
    return names;
}

} // namespace

kySystemUtils::CPUInfo::CPUInfo() : CPUInfo(thisProcessor()) {}

kySystemUtils::CPUInfo::CPUInfo(Blank) {}

bool kySystemUtils::CPUInfo::isInstructionSetAvailable(InstructionSet set) const
{
    return std::find(mAvailable.begin(), mAvailable.end(), set) != mAvailable.end();
}

void kySystemUtils::CPUInfo::clearCPUInfos() { *this = CPUInfo(Blank()); }

std::string kySystemUtils::CPUInfo::InstructionSetToString(InstructionSet set)
{
    static constexpr const char* names[] = {"Unknown", "BMI1",    "BMI2",     "ABM",      "TBM",      "POPCNT", "LZCNT",
                                            "RDRAND",  "RDSEED",  "MMX",      "SSE",      "SSE2",     "SSE3",   "SSSE3",
                                            "SSE4.1",  "SSE4.2",  "SSE4a",    "XOP",      "F16C",     "AVX",    "AVX2",
                                            "FMA3",    "AVX512F", "AVX512PF", "AVX512ER", "AVX512CD", "AES",    "SHA"};
    const auto index = static_cast<std::size_t>(set);
    return index < std::size(names) ? names[index] : "Unkown enum";
}

kyVariant::kyVariantMapImpl kySystemUtils::CPUInfo::toVariantMap() const
{
    kyVariant::kyVariantMapImpl map;
    map["vendor"] = mVendor;
    map["brand"] = mBrand;
    map["instructionsets"] = namesOf(mAvailable);
    map["disabledinstructionsets"] = namesOf(mDisabled);
    map["ishypervisor"] = mIsHypervisor;
    map["ishyperthreaded"] = mIsHyperThreaded;
    return map;
}

} // namespace ky
