// SPDX-License-Identifier: MIT
#include "diagnostics/guard_faults.h"

#include "platform/compiler.h"
#include "support/sanitizer.h"

#include <cstdlib>
#include <cstring>

namespace ky::test
{

void breakpoint();
void illegalInstruction();

namespace
{

// Where the compiler must not see what is coming.
int* volatile nowhere = nullptr;
void (*volatile noFunction)() = nullptr;
volatile int zero = 0;
volatile std::size_t sink = 0;
void* volatile notFromHeap = reinterpret_cast<void*>(0x7ff0);

KY_NOINLINE int descend(int depth)
{
    // Touched from the top, so that no page is skipped. Large, because Wine keeps no stack back for the handlers of a
    // full one: it is found while the frame is made, with most of it still unused.
    volatile char frame[48 * 1024];
    for (std::size_t at = sizeof(frame); at > 0; at -= 1024)
        frame[at - 1] = static_cast<char>(depth);
    return depth == zero - 1 ? 0 : descend(depth + 1) + frame[0];
}

} // namespace

std::vector<FaultSample> faultSamples()
{
    std::vector<FaultSample> samples{{FaultKind::NullWrite, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
                                     {FaultKind::NullCall, "EXCEPTION_ACCESS_VIOLATION", "c0000005"},
                                     {FaultKind::DivisionByZero, "EXCEPTION_INT_DIVIDE_BY_ZERO", "c0000094"},
                                     {FaultKind::IllegalInstruction, "EXCEPTION_ILLEGAL_INSTRUCTION", "c000001d"},
                                     {FaultKind::StackOverflow, "EXCEPTION_STACK_OVERFLOW", "c00000fd"},
                                     {FaultKind::Breakpoint, "EXCEPTION_BREAKPOINT", "80000003"},
                                     {FaultKind::TextOfNull, "EXCEPTION_ACCESS_VIOLATION", "c0000005"}};
    if (canFaultInAllocator && !throwsAreStructured()) // the heap of Windows keeps such a fault to itself
        samples.push_back({FaultKind::FreeOfNothing, "EXCEPTION_ACCESS_VIOLATION", "c0000005"});
    return samples;
}

void commit(FaultKind kind)
{
    switch (kind)
    {
    case FaultKind::NullWrite: *nowhere = 1; break;
    case FaultKind::NullCall: noFunction(); break;
    case FaultKind::DivisionByZero: sink = static_cast<std::size_t>(7 / zero); break;
    case FaultKind::IllegalInstruction: illegalInstruction(); break;
    case FaultKind::StackOverflow: sink = static_cast<std::size_t>(descend(0)); break;
    case FaultKind::Breakpoint: breakpoint(); break;
    case FaultKind::TextOfNull: sink = std::strlen(reinterpret_cast<char*>(nowhere)); break;
    case FaultKind::FreeOfNothing: std::free(notFromHeap); break;
    }
}

} // namespace ky::test
