// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>
#include <ky/kySystemUtils.h>
#include <ky/kyVariant.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ky
{
namespace impl
{
struct CpuInfoBuilder;
} // namespace impl

/// Description of the processor: vendor, brand and the instruction-set extensions that it offers, told apart by whether
/// the operating system lets a program use them. A plain value that does not change once it is made; copies may be read
/// from several threads.
///
/// The processor is asked once in a process, at the first construction; later objects cost a copy. On a processor
/// without the CPUID instruction everything is empty and false.
class KY_API kySystemUtils::CPUInfo
{
public:
    /// An instruction-set extension. The numbers are part of the interface.
    enum class InstructionSet : std::uint32_t
    {
        Unknown = 0,
        BMI1 = 1,
        BMI2 = 2,
        ABM = 3,
        TBM = 4,
        POPCNT = 5,
        LZCNT = 6,
        RDRAND = 7,
        RDSEED = 8,
        MMX = 9,
        SSE = 10,
        SSE2 = 11,
        SSE3 = 12,
        SSSE3 = 13,
        SSE41 = 14, ///< "SSE4.1"
        SSE42 = 15, ///< "SSE4.2"
        SSE4a = 16, ///< AMD only
        XOP = 17,   ///< AMD only
        F16C = 18,
        AVX = 19,
        AVX2 = 20,
        FMA3 = 21,
        AVX512F = 22, ///< reported by the AVX rule: whether the system saves the 512-bit registers is not looked at
        AVX512PF = 23,
        AVX512ER = 24,
        AVX512CD = 25,
        AES = 26,
        SHA = 27
    };

    /// The answer of the processor to one CPUID query.
    struct Registers
    {
        std::uint32_t eax = 0; ///< register EAX
        std::uint32_t ebx = 0; ///< register EBX
        std::uint32_t ecx = 0; ///< register ECX
        std::uint32_t edx = 0; ///< register EDX
    };

    /// Most leaves kept of either range, against a processor (or a virtual machine) that announces nonsense.
    static constexpr std::uint32_t maxLeavesPerRange = 128;

    /// Describes the processor that the program runs on.
    CPUInfo();

    /// Whether the processor offers the set and the operating system lets programs use it.
    [[nodiscard]] bool isInstructionSetAvailable(InstructionSet set) const;

    /// Whether a hypervisor announces itself.
    [[nodiscard]] bool isRunningOnVirtualMachine() const { return mIsHypervisor; }

    /// Makes all texts and lists empty and all flags false.
    void clearCPUInfos();

    /// The usual name of the set, such as "SSE4.1"; "Unknown" for 0 and "Unkown enum" (sic) for a number that names no
    /// set.
    [[nodiscard]] static std::string InstructionSetToString(InstructionSet set);

    /// "vendor", "brand", "instructionsets" and "disabledinstructionsets" (lists of names), "ishypervisor" and
    /// "ishyperthreaded" (booleans).
    [[nodiscard]] kyVariant::kyVariantMapImpl toVariantMap() const;

    /// Such as "GenuineIntel" or "AuthenticAMD".
    [[nodiscard]] const std::string& getVendor() const { return mVendor; }
    /// The processor's own name of its model, with the padding blanks that some models put around it. Empty when the
    /// processor has none.
    [[nodiscard]] const std::string& getBrand() const { return mBrand; }
    /// Whether the vendor is "GenuineIntel".
    [[nodiscard]] bool isIntel() const { return mIsIntel; }
    /// Whether the vendor is "AuthenticAMD".
    [[nodiscard]] bool isAMD() const { return mIsAMD; }
    /// Whether the processor reports hyper-threading: several logical processors in one package.
    [[nodiscard]] bool isHyperThreaded() const { return mIsHyperThreaded; }
    /// Sets that programs can use, in the order of detection.
    [[nodiscard]] const std::vector<InstructionSet>& getInstructionSets() const { return mAvailable; }
    /// Sets that the processor offers but that cannot be used, because the operating system does not save their
    /// registers. In the order of detection.
    [[nodiscard]] const std::vector<InstructionSet>& getDisabledInstructionSets() const { return mDisabled; }
    /// Answers of leaf 0 to the highest one, sub-leaf 0 each.
    [[nodiscard]] const std::vector<Registers>& getStandardLeaves() const { return mStandardLeaves; }
    /// Answers of leaf 0x80000000 to the highest one, sub-leaf 0 each.
    [[nodiscard]] const std::vector<Registers>& getExtendedLeaves() const { return mExtendedLeaves; }

private:
    friend struct impl::CpuInfoBuilder;
    struct Blank
    {
    };
    explicit CPUInfo(Blank);

    std::string mVendor;
    std::string mBrand;
    std::vector<Registers> mStandardLeaves;
    std::vector<Registers> mExtendedLeaves;
    std::vector<InstructionSet> mAvailable;
    std::vector<InstructionSet> mDisabled;
    bool mIsIntel = false;
    bool mIsAMD = false;
    bool mIsHypervisor = false;
    bool mIsHyperThreaded = false;
};

} // namespace ky
