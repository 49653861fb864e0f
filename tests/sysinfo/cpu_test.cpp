// SPDX-License-Identifier: MIT
#include "processor_tables.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using ky::impl::CpuInfoBuilder;
using ky::impl::CpuQuery;
using ky::impl::ProcessorRegisters;
using ky::test::queryOf;
using ky::test::RecordedProcessor;
using ky::test::recordedProcessor;
using ky::test::recordedProcessors;
using CPUInfo = ky::kySystemUtils::CPUInfo;
using Set = CPUInfo::InstructionSet;

std::string namesOf(const std::vector<Set>& sets)
{
    std::string names;
    for (const Set set : sets)
        names += (names.empty() ? "" : " ") + CPUInfo::InstructionSetToString(set);
    return names;
}

TEST(CpuInfo, ReadsRecordedProcessors)
{
    for (const RecordedProcessor& processor : recordedProcessors())
    {
        SCOPED_TRACE(processor.name);
        const CPUInfo info = CpuInfoBuilder::describe(queryOf(processor));
        EXPECT_EQ(info.getVendor(), processor.vendor);
        EXPECT_EQ(info.getBrand(), processor.brand);
        EXPECT_EQ(info.isIntel(), info.getVendor() == "GenuineIntel");
        EXPECT_EQ(info.isAMD(), info.getVendor() == "AuthenticAMD");
        EXPECT_EQ(namesOf(info.getInstructionSets()), processor.sets);
        EXPECT_EQ(namesOf(info.getDisabledInstructionSets()), "");
        EXPECT_EQ(info.isRunningOnVirtualMachine(), processor.hypervisor);
        EXPECT_EQ(info.isHyperThreaded(), processor.hyperThreaded);
        for (const auto& [leaf, registers] : processor.leaves)
        {
            const auto& kept = leaf < 0x80000000U ? info.getStandardLeaves() : info.getExtendedLeaves();
            ASSERT_GT(kept.size(), leaf & 0x7fffffffU) << std::hex << leaf;
            const CPUInfo::Registers& same = kept[leaf & 0x7fffffffU];
            EXPECT_TRUE(same.eax == registers.eax && same.ebx == registers.ebx && same.ecx == registers.ecx &&
                        same.edx == registers.edx)
                << std::hex << leaf;
        }
        EXPECT_EQ(info.getStandardLeaves().size(), processor.leaves.at(0).eax + 1);
        EXPECT_EQ(info.getExtendedLeaves().size(), processor.leaves.at(0x80000000U).eax - 0x80000000U + 1);
    }
}

TEST(CpuInfo, DisablesWhatTheOperatingSystemDoesNotSave)
{
    const std::string always = "BMI1 BMI2 RDRAND POPCNT RDSEED ABM LZCNT MMX";
    const std::string sse = " SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 F16C";
    const std::string avx = "AVX AVX2 FMA3 AVX512F AVX512CD";
    constexpr std::uint32_t fxsr = 1U << 24;
    constexpr std::uint32_t xsave = 1U << 26;
    constexpr std::uint32_t osxsave = 1U << 27;
    const struct
    {
        const char* what;
        std::uint32_t clearedEcx;
        std::uint32_t clearedEdx;
        std::uint64_t extendedControl;
        bool mayAskControl;
        std::string available;
        std::string disabled;
    } rows[] = {
        {"all", 0, 0, 6, true, always + sse + " " + avx + " AES", ""},
        {"x87 only", 0, 0, 1, true, always + sse + " AES", avx},
        {"SSE state only", 0, 0, 3, true, always + sse + " AES", avx},
        {"AVX state only", 0, 0, 0xe5, true, always + sse + " AES", avx},
        {"no XSAVE", xsave, 0, 7, false, always + sse + " AES", avx},
        {"not enabled", osxsave, 0, 7, false, always + sse + " AES", avx},
        {"no FXSR", 0, fxsr, 7, false, always + " AES", sse.substr(1) + " " + avx},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        RecordedProcessor processor = recordedProcessor("Skylake-SP");
        processor.leaves[1].ecx &= ~row.clearedEcx;
        processor.leaves[1].edx &= ~row.clearedEdx;
        CpuQuery query = queryOf(processor);
        bool asked = false;
        query.extendedControl = [&]
        {
            asked = true;
            return row.extendedControl;
        };
        const CPUInfo info = CpuInfoBuilder::describe(query);
        EXPECT_EQ(namesOf(info.getInstructionSets()), row.available);
        EXPECT_EQ(namesOf(info.getDisabledInstructionSets()), row.disabled);
        EXPECT_EQ(info.isInstructionSetAvailable(Set::AVX2), row.disabled.empty());
        EXPECT_TRUE(!asked || row.mayAskControl) << "an illegal instruction on the processor itself";
    }
}

TEST(CpuInfo, BoundsWhatANonsensicalProcessorAnnounces)
{
    std::size_t calls = 0;
    const CpuQuery all{[&](std::uint32_t, std::uint32_t)
                       {
                           ++calls;
                           return ProcessorRegisters{0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff};
                       },
                       [] { return ~std::uint64_t{0}; }};
    const CPUInfo everything = CpuInfoBuilder::describe(all);
    EXPECT_EQ(everything.getStandardLeaves().size(), CPUInfo::maxLeavesPerRange);
    EXPECT_EQ(everything.getExtendedLeaves().size(), CPUInfo::maxLeavesPerRange);
    EXPECT_LE(calls, 2u * CPUInfo::maxLeavesPerRange);
    EXPECT_EQ(everything.getVendor(), std::string(12, '\xff'));
    EXPECT_EQ(everything.getBrand(), std::string(48, '\xff'));
    EXPECT_EQ(everything.getInstructionSets().size(), 25u) << "all but those of AMD";

    const CPUInfo zeros =
        CpuInfoBuilder::describe({[](std::uint32_t, std::uint32_t) { return ProcessorRegisters(); }, {}});
    EXPECT_EQ(zeros.getStandardLeaves().size(), 1u);
    EXPECT_TRUE(zeros.getExtendedLeaves().empty());
    EXPECT_TRUE(zeros.getInstructionSets().empty());

    RecordedProcessor noBrand = recordedProcessor("Zen");
    noBrand.leaves[0x80000000].eax = 0x80000003;
    const CPUInfo cut = CpuInfoBuilder::describe(queryOf(noBrand));
    EXPECT_EQ(cut.getExtendedLeaves().size(), 4u);
    EXPECT_EQ(cut.getBrand(), "") << "the text lies in three leaves";
}

void expectBlank(const CPUInfo& info)
{
    EXPECT_EQ(info.toVariantMap().toString(), "(brand=),(disabledinstructionsets=),(instructionsets=),"
                                              "(ishyperthreaded=false),(ishypervisor=false),(vendor=)");
    EXPECT_TRUE(info.getStandardLeaves().empty() && info.getExtendedLeaves().empty());
    EXPECT_FALSE(info.isIntel() || info.isAMD() || info.isRunningOnVirtualMachine() || info.isHyperThreaded());
}

TEST(CpuInfo, IsBlankWithoutTheInstructionAndAfterClearing)
{
    expectBlank(CpuInfoBuilder::describe({}));
    CPUInfo info = CpuInfoBuilder::describe(queryOf(recordedProcessor("guest on Zen 5")));
    const CPUInfo copy = info;
    info.clearCPUInfos();
    expectBlank(info);
    EXPECT_EQ(copy.getBrand(), "AMD EPYC");
}

TEST(CpuInfo, IsExportedAsAMap)
{
    RecordedProcessor processor = recordedProcessor("guest on Zen 5");
    processor.extendedControl = 3;
    EXPECT_EQ(CpuInfoBuilder::describe(queryOf(processor)).toVariantMap().toString(),
              "(brand=AMD EPYC),(disabledinstructionsets=AVX AVX2 FMA3 AVX512F AVX512CD),(instructionsets=BMI1 BMI2 "
              "RDRAND POPCNT RDSEED ABM LZCNT MMX SSE SSE2 SSE3 SSSE3 SSE4.1 SSE4.2 SSE4a F16C AES SHA),"
              "(ishyperthreaded=true),(ishypervisor=true),(vendor=AuthenticAMD)");
}

TEST(CpuInfo, NamesTheSetsByTheirNumbers)
{
    std::vector<Set> all;
    for (std::uint32_t i = 0; i <= 28; ++i)
        all.push_back(static_cast<Set>(i));
    EXPECT_EQ(namesOf(all), "Unknown BMI1 BMI2 ABM TBM POPCNT LZCNT RDRAND RDSEED MMX SSE SSE2 SSE3 SSSE3 SSE4.1 "
                            "SSE4.2 SSE4a XOP F16C AVX AVX2 FMA3 AVX512F AVX512PF AVX512ER AVX512CD AES SHA "
                            "Unkown enum");
    EXPECT_EQ(CPUInfo::InstructionSetToString(static_cast<Set>(0xffffffff)), "Unkown enum");
}

TEST(CpuInfo, DescribesThisProcessor)
{
    const CPUInfo info;
    EXPECT_EQ(info.getVendor().empty(), !ky::impl::processorAnswers());
    EXPECT_EQ(info.isInstructionSetAvailable(Set::SSE2), ky::impl::processorAnswers()) << "part of every x64 processor";
    EXPECT_EQ(info.toVariantMap(), CPUInfo().toVariantMap());
    EXPECT_EQ(info.getStandardLeaves().size(), CPUInfo().getStandardLeaves().size());
}

} // namespace
