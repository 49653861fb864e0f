// SPDX-License-Identifier: MIT
// From the texts of the interface to what the system is asked for.
#include "diagnostics/error_text.h"
#include "process/command_line.h"
#include "process/process_record.h"
#include "process/spawn_native.h"

#include <ky/kyDirUtils.h>
#include <ky/kyLog.h>

#include <algorithm>
#include <thread>

namespace ky::impl
{

namespace
{

using native::ErrorCode;
using native::StartOrder;

std::string resolvedProgram(const std::string& program)
{
    std::string path = kyDirUtils::GetAbsolutePathUtf8(program);
    return kyDirUtils::FileExistsUtf8(path) ? path : kyDirUtils::GetAbsolutePathUtf8(program + ".exe");
}

/// A path that starts at the folder of the caller must not start at that of the child.
std::string programFromHere(const std::string& program)
{
    constexpr const char* separators = "/\\";
    const std::size_t first = program.find_first_of(separators);
    if (first == 0 || first == std::string::npos)
        return program;
    return kyDirUtils::JoinPath(kyDirUtils::GetCurrentWorkingDirUtf8(), program);
}

/// The system would take the text before a NUL for the whole.
bool holdsNul(const std::string& text) { return text.find('\0') != std::string::npos; }

/// The text itself where no path can be made of it: starting then fails and tells why.
std::string absoluteFolder(const std::string& folder)
{
    std::string path = holdsNul(folder) ? std::string() : kyDirUtils::GetAbsolutePathUtf8(folder);
    return path.empty() ? folder : path;
}

native::Priority nativePriority(kyProcess::ProcessPriority priority)
{
    switch (priority)
    {
    case kyProcess::Low: return native::Priority::Low;
    case kyProcess::Normal: return native::Priority::Normal;
    case kyProcess::High: return native::Priority::High;
    default: return native::Priority::Inherit;
    }
}

bool holdsNul(const StartOrder& order)
{
    const auto anyHolds = [](const auto& texts)
    { return std::any_of(texts.begin(), texts.end(), [](const std::string& text) { return holdsNul(text); }); };
    return holdsNul(order.program) || holdsNul(order.folder) || anyHolds(order.arguments) ||
           anyHolds(order.environment);
}

/// False when there is no safe way to pass the texts.
bool describeCommand(StartOrder& order)
{
    if (!native::takesCommandLine())
    {
        order.program = programFromHere(order.program);
        return true;
    }
    if (kyDirUtils::ExtractFileExtension(order.program) == "exe")
    {
        order.commandLine = quotedCommandLine(order.program, order.arguments);
        return true;
    }
    if (!fitsInterpreter(order.program, order.arguments))
        return false;
    const std::string interpreter = native::commandInterpreter();
    if (interpreter.empty())
        return false;
    order.commandLine = interpreterCommandLine(interpreter, order.program, order.arguments);
    order.program = interpreter;
    return true;
}

ErrorCode openPump(ProcessRecord& record, std::unique_ptr<OutputPump>& pump)
{
    if (!record.outputHandler && record.inputKind == native::InputKind::Default)
        return 0;
    ErrorCode error = 0;
    native::OwnedStreams streams = native::openStreams(record.inputKind, record.outputHandler != nullptr, error);
    if (streams != nullptr)
        pump = std::make_unique<OutputPump>(record.outputHandler, record.input, std::move(streams));
    return error;
}

ErrorCode startOrdered(ProcessRecord& record, StartOrder& order)
{
    if (order.program.empty() || holdsNul(order) || !describeCommand(order))
        return native::unfitTextError();
    std::unique_ptr<OutputPump> pump;
    ErrorCode error = openPump(record, pump);
    if (error != 0)
        return error;
    order.streams = pump != nullptr ? &pump->streams() : nullptr;
    error = native::startProcess(order, record.process);
    if (error != 0)
        return error;
    if (pump != nullptr)
        native::closeChildEnds(pump->streams());
    record.pump = std::move(pump);
    return 0;
}

} // namespace

bool start(ProcessRecord& record, bool resolveProgram, kyProcess::ProcessPriority priority)
{
    native::releaseTree(record.process);
    record.state = kyProcess::Finished;
    record.exitCode = 0;
    record.crashed = false;
    record.started = false;
    record.process = native::Process();

    StartOrder order;
    order.program = resolveProgram && !holdsNul(record.program) ? resolvedProgram(record.program) : record.program;
    order.arguments = record.arguments;
    order.environment = record.environment;
    if (!record.workingDirectory.empty())
        order.folder = absoluteFolder(record.workingDirectory);
    order.priority = nativePriority(priority);
    order.ownTree = record.ownTree;
    order.detached = record.detached;

    const ErrorCode error = startOrdered(record, order);
    if (error != 0)
    {
        kyLogObject(kyLogType::DEBUG, nullptr, kyLog::editPtr(), nullptr)
            << "CreateProcessW return an error " << systemErrorText(error);
        return false;
    }
    record.started = true;
    record.state = kyProcess::Running;
    std::this_thread::yield();
    return true;
}

} // namespace ky::impl
