// SPDX-License-Identifier: MIT
// Hardware faults on demand, and what differs between the systems around them.
#pragma once

#include <string>
#include <vector>

namespace ky::test
{

enum class FaultKind
{
    NullWrite,
    NullCall,
    DivisionByZero,
    IllegalInstruction,
    StackOverflow,
    Breakpoint,
    TextOfNull,   ///< a string function of the C library on a null pointer
    FreeOfNothing ///< in the allocator
};

struct FaultSample
{
    FaultKind kind;
    std::string name;   ///< in the report
    std::string number; ///< hexadecimal
};

/// Those that this build can survive.
std::vector<FaultSample> faultSamples();

/// Does it. Never returns normally.
void commit(FaultKind kind);

/// Whether thrown objects are structured exceptions, too.
bool throwsAreStructured();

/// Ends the calling thread from within, where that unwinds.
bool canEndThread();
void endThread();

enum class Disposition
{
    Default,
    Other
};

/// What is set for SIGSEGV.
Disposition faultDisposition();

/// Makes `code` the thread's last error.
void failWith(int code);

} // namespace ky::test
