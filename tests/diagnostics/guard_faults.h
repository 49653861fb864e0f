// SPDX-License-Identifier: MIT
// Hardware faults on demand, and what differs between the systems around them.
#pragma once

#include <string>
#include <thread>
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

/// One of each kind that a build which survives faults can survive.
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

/// Raises SIGSEGV in another thread, wherever that is. False where nobody can.
bool deliverFault(std::thread& thread);

/// Makes the blocks of the arena that `block` comes from read-only, so that the allocator faults in the middle of its
/// work, with its lock taken. False where nobody knows how.
bool spoilArenaOf(void* block);

/// Lets a handler of the program's own end the process with this exit code at SIGSEGV.
bool exitAtFault(int code);

/// Gives the calling thread a signal stack of its own making; its address, null where there are none.
void* useOwnSignalStack();

/// Address of the calling thread's signal stack, null when there is none.
void* signalStack();

/// Makes `code` the thread's last error.
void failWith(int code);

} // namespace ky::test
