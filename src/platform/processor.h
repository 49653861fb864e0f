// SPDX-License-Identifier: MIT
// What the processor says about itself, raw. For choosing vector code at first use, and for its description.
#pragma once

#include "platform/compiler.h"

#include <cstdint>

#if KY_ARCH_X64
#if defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace ky::impl
{

struct ProcessorRegisters
{
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
};

/// Whether there is anything to ask.
constexpr bool processorAnswers() noexcept { return KY_ARCH_X64 != 0; }

/// The CPUID instruction. Leaves above the highest one answer with whatever the model likes. Under a hypervisor each
/// call costs microseconds.
inline ProcessorRegisters queryProcessor([[maybe_unused]] std::uint32_t leaf,
                                         [[maybe_unused]] std::uint32_t subLeaf) noexcept
{
    ProcessorRegisters result;
#if KY_ARCH_X64 && defined(_MSC_VER) && !defined(__clang__)
    int registers[4] = {};
    __cpuidex(registers, static_cast<int>(leaf), static_cast<int>(subLeaf));
    result.eax = static_cast<std::uint32_t>(registers[0]);
    result.ebx = static_cast<std::uint32_t>(registers[1]);
    result.ecx = static_cast<std::uint32_t>(registers[2]);
    result.edx = static_cast<std::uint32_t>(registers[3]);
#elif KY_ARCH_X64
    __cpuid_count(leaf, subLeaf, result.eax, result.ebx, result.ecx, result.edx);
#endif
    return result;
}

/// The XGETBV instruction for the extended control register 0: which register state the operating system saves. An
/// illegal instruction unless leaf 1 tells OSXSAVE.
inline std::uint64_t processorExtendedControl() noexcept
{
#if KY_ARCH_X64 && defined(_MSC_VER) && !defined(__clang__)
    return _xgetbv(0);
#elif KY_ARCH_X64
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0U));
    return static_cast<std::uint64_t>(high) << 32 | low;
#else
    return 0;
#endif
}

inline bool processorHasSsse3() noexcept
{
    constexpr std::uint32_t ssse3Bit = 1U << 9;
    return (queryProcessor(1, 0).ecx & ssse3Bit) != 0;
}

} // namespace ky::impl
