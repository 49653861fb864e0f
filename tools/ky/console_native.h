// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ky::tool::native
{

/// The arguments behind the program's name in UTF-8.
std::vector<std::string> utf8Arguments(int argc, char** argv);

/// Makes the console show UTF-8, and standard streams pass bytes as they are.
void prepareConsole();

/// Whether somebody watches standard output.
bool isOutputTerminal();

/// Has `call` called, instead of the program ended, at the first Ctrl+C or request to terminate. It may run at any
/// point of the program, or beside it, and so may only set a flag. Requests that the program was started to ignore stay
/// ignored.
void onInterrupt(void (*call)());

enum class Input
{
    Bytes,
    Nothing, ///< not yet, or a request to stop arrived
    End
};

/// Waits for bytes on standard input. Comes back with `Nothing` now and then on Linux; on Windows only when the console
/// was interrupted.
Input readInput(char* buffer, std::size_t capacity, std::size_t& size);

} // namespace ky::tool::native
