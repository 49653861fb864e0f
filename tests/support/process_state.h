// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace ky::test
{

/// What a process holds that a library may forget to give back.
struct ProcessState
{
    std::size_t threads = 0;
    std::size_t handles = 0;           ///< descriptors on Linux
    std::size_t heapBytes = 0;         ///< in use by the C runtime's heap; 0 where a sanitizer replaces the heap
    std::size_t ramBytes = 0;          ///< that really lie in memory
    void (*dispositions[3])(int) = {}; ///< of SIGFPE, SIGILL and SIGSEGV
};

ProcessState processState();

/// The state once threads and handles are as they were `before`: the system may still be about to remove a thread that
/// has been joined. Fails the test when that does not come about.
ProcessState settledState(const ProcessState& before);

/// Threads and handles that were not given back.
std::size_t leftOver(const ProcessState& before, const ProcessState& after);

std::ostream& operator<<(std::ostream& out, const ProcessState& state);

/// Whether a module is loaded; its file's name without "lib" and suffix.
bool isModuleLoaded(const std::string& name);

/// Loads a module of the build's bin folder, and fails the test when that does not work.
void* loadModule(const std::string& name);
void unloadModule(void* module);

/// A function of a module, null when there is none of the name.
using ModuleFunction = int (*)();
ModuleFunction moduleFunction(void* module, const char* name);

} // namespace ky::test
