// SPDX-License-Identifier: MIT
// What the processor offers beyond the baseline instruction set, for choosing vector code at first use.
#pragma once

#include "platform/compiler.h"

#if KY_ARCH_X64
#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace ky::impl
{

inline bool processorHasSsse3() noexcept
{
#if KY_ARCH_X64
    constexpr unsigned ssse3Bit = 1U << 9;
#if defined(_MSC_VER) && !defined(__clang__)
    int registers[4] = {};
    __cpuid(registers, 1);
    return (static_cast<unsigned>(registers[2]) & ssse3Bit) != 0;
#else
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & ssse3Bit) != 0;
#endif
#else
    return false;
#endif
}

} // namespace ky::impl
