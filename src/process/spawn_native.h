// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_handle.h"
#include "process/child_streams_native.h"
#include "process/process_native.h"

#include <string>
#include <vector>

namespace ky::impl::native
{

enum class Priority
{
    Low,
    Normal,
    High,
    Inherit
};

/// Texts are UTF-8 and hold no NUL.
struct StartOrder
{
    std::string program;                ///< what the system starts
    std::string commandLine;            ///< where the system takes one
    std::vector<std::string> arguments; ///< where the system takes a list
    std::vector<std::string> environment;
    std::string folder; ///< absolute; empty for the caller's
    Priority priority = Priority::Inherit;
    bool ownTree = false;
    bool detached = false;
    ChildStreams* streams = nullptr; ///< may be null
};

/// Whether programs are started by a command line, and what is not one by an interpreter. Otherwise the system takes
/// the arguments as a list and knows by itself how to run a file.
bool takesCommandLine() noexcept;

/// Path of the interpreter.
std::string commandInterpreter();

/// The system's code for texts that cannot be passed.
ErrorCode unfitTextError() noexcept;

/// 0 on success.
ErrorCode startProcess(const StartOrder& order, Process& process);

} // namespace ky::impl::native
