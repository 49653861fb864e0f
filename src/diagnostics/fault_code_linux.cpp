// SPDX-License-Identifier: MIT
#include "diagnostics/fault_code_linux.h"

namespace ky::impl::native
{

std::uint32_t codeOf(int number, const siginfo_t& info, std::uintptr_t stackLow) noexcept
{
    switch (number)
    {
    case SIGILL: return info.si_code == ILL_PRVOPC || info.si_code == ILL_PRVREG ? 0xC0000096 : 0xC000001D;
    case SIGTRAP: return 0x80000003;
    case SIGBUS: return info.si_code == BUS_ADRALN ? 0x80000002 : 0xC0000006;
    case SIGFPE:
        switch (info.si_code)
        {
        case FPE_INTDIV: return 0xC0000094;
        case FPE_INTOVF: return 0xC0000095;
        case FPE_FLTDIV: return 0xC000008E;
        case FPE_FLTOVF: return 0xC0000091;
        case FPE_FLTUND: return 0xC0000093;
        case FPE_FLTRES: return 0xC000008F;
        case FPE_FLTSUB: return 0xC000008C;
        default: return 0xC0000090;
        }
    default: break;
    }
    // The stack's end is known to some pages only, and a large frame can reach far beyond it.
    constexpr std::uintptr_t before = 1024 * 1024;
    constexpr std::uintptr_t after = 64 * 1024;
    const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
    const bool atEnd = stackLow != 0 && address + before >= stackLow && address < stackLow + after;
    return number == SIGSEGV && atEnd ? 0xC00000FD : 0xC0000005;
}

} // namespace ky::impl::native
