// SPDX-License-Identifier: MIT
// The static operations.
#include <ky/kyProcess.h>

#include "diagnostics/escape_text.h"
#include "process/command_line.h"
#include "process/process_info_native.h"
#include "process/process_record.h"

#include <ky/kyDirUtils.h>
#include <ky/kyLog.h>
#include <ky/kySystemUtils.h>

namespace ky
{

namespace
{

// A process that was killed has gone by then, as a rule.
constexpr unsigned int killWaitMs = 100;

void setText(std::string* target, const char* text)
{
    if (target != nullptr)
        *target = text;
}

/// Runs a process, whose settings are complete, to its end.
int execute(kyProcess& process, const std::string& program, const std::vector<std::string>& arguments,
            bool resolveProgram, unsigned int timeoutMs, std::string* error)
{
    if (!process.startProcess(program, arguments, resolveProgram, kyProcess::Inherit))
    {
        setText(error, "Fail to start process");
        return -1;
    }
    if (!process.waitForFinished(timeoutMs))
    {
        setText(error, "timeout");
        process.killProcess();
        process.killProcessTree();
        process.waitForFinished(killWaitMs);
        process.clearProcess();
        return -2;
    }
    const int exitCode = process.exitCode();
    if (exitCode == 0 && process.hasCrashed())
    {
        setText(error, "process has crashed");
        return -3;
    }
    if (exitCode != 0)
        setText(error, "process return an error");
    return exitCode;
}

} // namespace

int kyProcess::ExecUtf8(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& workingDirectory, bool resolveProgram, unsigned int timeoutMs,
                        std::string* error)
{
    kyProcess process;
    process.setWorkingDirectory(workingDirectory);
    return execute(process, program, arguments, resolveProgram, timeoutMs, error);
}

int kyProcess::ExecCapturedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                const std::string& workingDirectory, bool resolveProgram, unsigned int timeoutMs,
                                std::string& output, std::string* errorOutput, std::string* error,
                                const std::string& input)
{
    std::string texts[2];
    std::string& errors = texts[errorOutput == nullptr ? 0 : 1];
    kyProcess process;
    process.setWorkingDirectory(workingDirectory);
    process.setOwnTree(true);
    process.setInput(input);
    process.setOutputHandler([&](OutputChannel channel, std::string_view bytes)
                             { (channel == StandardOutput ? texts[0] : errors) += bytes; });
    const int result = execute(process, program, arguments, resolveProgram, timeoutMs, error);
    output = std::move(texts[0]);
    if (errorOutput != nullptr)
        *errorOutput = std::move(texts[1]);
    return result;
}

bool kyProcess::StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                  const std::string& workingDirectory, bool resolveProgram)
{
    kyProcess process;
    impl::ProcessRecord& record = *process.mRecord;
    record.program = program;
    record.arguments = arguments;
    record.workingDirectory = workingDirectory;
    record.detached = true;
    return impl::start(record, resolveProgram, Inherit);
}

bool kyProcess::StartDetachedUtf8(const std::string& commandLine)
{
    std::string program;
    std::vector<std::string> arguments;
    return SplitCommandLine(commandLine, program, arguments) && StartDetachedUtf8(program, arguments, {}, false);
}

bool kyProcess::SplitCommandLine(const std::string& commandLine, std::string& program,
                                 std::vector<std::string>& arguments)
{
    if (impl::splitCommandLine(commandLine, program, arguments))
        return !program.empty();
    kyLogObject(kyLogType::CRITICAL, nullptr, kyLog::editPtr(), nullptr)
        << "Invalid command line : " << impl::escapeControls(commandLine);
    return false;
}

std::string kyProcess::ProcessPriorityToString(ProcessPriority priority)
{
    switch (priority)
    {
    case Low: return "Low";
    case Normal: return "Normal";
    case High: return "High";
    case Inherit: return "Inherit";
    }
    return "Unknown";
}

bool kyProcess::GetCurrentProcess(kyProcess& process)
{
    process.clearProcess();
    impl::ProcessRecord& record = *process.mRecord;
    if (!impl::native::findCurrentProcess(record.process))
        return false;
    record.program = kySystemUtils::GetProgramFullPath();
    record.arguments = kySystemUtils::ExtractCommandLineUtf8();
    if (!record.arguments.empty())
        record.arguments.erase(record.arguments.begin());
    record.workingDirectory = kyDirUtils::GetCurrentWorkingDirUtf8();
    record.crashed = false;
    record.started = true;
    record.state = Running;
    return true;
}

bool kyProcess::GetParentProcess(kyProcess& process)
{
    process.clearProcess();
    impl::ProcessRecord& record = *process.mRecord;
    if (!impl::native::openParentProcess(record.process, record.program))
        return false;
    record.started = true;
    record.state = Running;
    return true;
}

std::vector<std::string> kyProcess::CurrentEnvironmentUtf8() { return impl::native::currentEnvironment(); }

} // namespace ky
