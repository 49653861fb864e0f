// SPDX-License-Identifier: MIT
#pragma once

#include "process/child_streams_native.h"
#include "process/output_pump.h"
#include "process/process_native.h"

#include <ky/kyProcess.h>

#include <memory>
#include <string>
#include <vector>

namespace ky::impl
{

struct ProcessRecord
{
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
    std::string workingDirectory;
    std::string program;
    kyProcess::ProcessState state = kyProcess::NotRunning;
    native::Process process;
    int exitCode = 0;
    bool crashed = false;
    bool started = false;
    bool detached = false;

    // Settings for the next start, and what serves the streams of the present process.
    kyProcess::OutputHandler outputHandler;
    std::string input;
    native::InputKind inputKind = native::InputKind::Default;
    bool ownTree = false;
    std::unique_ptr<OutputPump> pump;
};

/// Looks whether the process has ended, and moves what waits in its streams.
void refresh(ProcessRecord& record);

/// Starts what `program` and `arguments` of the record say.
bool start(ProcessRecord& record, bool resolveProgram, kyProcess::ProcessPriority priority);

/// Back to a new record; a process goes on by itself.
void clear(ProcessRecord& record);

} // namespace ky::impl
