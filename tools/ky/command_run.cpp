// SPDX-License-Identifier: MIT
#include "ky/commands.h"

#include "ky/line_cutter.h"
#include "ky/output_queue.h"
#include "ky/progress.h"

#include <ky/kyLog.h>
#include <ky/kyProcess.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace ky::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

// What scripts know from other tools that run programs.
constexpr auto timedOut = static_cast<ExitCode>(124);
constexpr auto notStarted = static_cast<ExitCode>(127);

constexpr unsigned int lookMs = 100;
constexpr unsigned int graceMs = 3000; ///< for a program that was asked to end

/// Passes one stream on, and with a log file its lines into that.
class Channel
{
public:
    Channel(OutputQueue& output, std::FILE* stream, const char* qualifier, bool logs)
        : mOutput(output),
          mStream(stream),
          mQualifier(qualifier),
          mLogs(logs)
    {
    }

    void pass(std::string_view bytes)
    {
        mOutput.add(mStream, bytes);
        if (!mLogs)
            return;
        mLines.add(bytes, [this](const std::string& line) { write(line); });
    }

    void finish()
    {
        mLines.finish([this](const std::string& line) { write(line); });
    }

private:
    void write(const std::string& line) { kyLog::edit().Write(line, kyLogType::INFO, mQualifier); }

    OutputQueue& mOutput;
    std::FILE* mStream;
    std::string mQualifier;
    bool mLogs;
    LineCutter mLines;
};

/// A path starts at the current folder, where ".exe" may be left out; a name is looked up by the system.
bool isPath(const std::string& program) { return program.find_first_of("/\\") != std::string::npos; }

std::vector<std::string> argumentsOf(const std::vector<std::string>& command)
{
    return std::vector<std::string>(command.begin() + 1, command.end());
}

std::vector<std::string> environmentOf(const RunOptions& options)
{
    std::vector<std::string> environment;
    if (options.variables.empty())
        return environment;
    for (const std::string& entry : kyProcess::CurrentEnvironmentUtf8())
    {
        const std::string_view name = std::string_view(entry).substr(0, entry.find('=') + 1);
        bool isReplaced = false;
        for (const std::string& variable : options.variables)
            isReplaced = isReplaced || variable.rfind(name, 0) == 0;
        if (!isReplaced)
            environment.push_back(entry);
    }
    environment.insert(environment.end(), options.variables.begin(), options.variables.end());
    return environment;
}

/// Ends the program, politely when there is time for that.
void end(kyProcess& process, bool politely)
{
    if (politely)
        process.terminateProcess();
    if (!politely || !process.waitForFinished(graceMs))
        process.killProcess();
    process.killProcessTree();
    process.waitForFinished(graceMs);
}

/// What ends a program before it ends by itself.
class Limit
{
public:
    explicit Limit(unsigned int timeoutMs) : mTimeout(timeoutMs) {}

    bool isInterrupted() const { return mProgress->shouldCancel(); }
    bool isTimedOut() const { return mTimeout.count() != 0 && Clock::now() - mBegin >= mTimeout; }
    bool isReached() const { return isInterrupted() || isTimedOut(); }

private:
    std::chrono::milliseconds mTimeout;
    std::unique_ptr<kyProgressNotifierInterface> mProgress = makeProgress(); // only asked whether to stop
    Clock::time_point mBegin = Clock::now();
};

ExitCode waitFor(kyProcess& process, const RunOptions& options, const Limit& limit, OutputQueue& output)
{
    const std::string& program = options.command.front();
    const unsigned int look = options.timeoutMs != 0 ? std::min(options.timeoutMs, lookMs) : lookMs;
    while (!process.waitForFinished(look))
    {
        if (limit.isInterrupted())
        {
            end(process, true);
            output.settle();
            return cancelled(program);
        }
        if (limit.isTimedOut())
        {
            end(process, false);
            output.settle();
            fail(program, "not finished within " + std::to_string(options.timeoutMs) + " ms");
            return timedOut;
        }
    }
    return static_cast<ExitCode>(process.exitCode());
}

} // namespace

ExitCode runRun(const RunOptions& options)
{
    const std::string& program = options.command.front();
    const bool logs = !kyLog::get().getCurrentLogFileNameUtf8().empty();
    const Limit limit(options.timeoutMs);
    OutputQueue output([&limit] { return limit.isReached(); });
    Channel channels[] = {{output, stdout, "out", logs}, {output, stderr, "err", logs}};
    kyProcess process;
    process.setWorkingDirectory(options.folder);
    process.setProcessEnvironmentUtf8(environmentOf(options));
    process.inheritInput();
    process.setOwnTree(options.timeoutMs != 0);
    process.setOutputHandler([&](kyProcess::OutputChannel channel, std::string_view bytes)
                             { channels[channel].pass(bytes); });
    if (!process.startProcess(program, argumentsOf(options.command), isPath(program), kyProcess::Inherit))
    {
        fail(program, "cannot be started");
        return notStarted;
    }
    const ExitCode result = waitFor(process, options, limit, output);
    for (Channel& channel : channels)
        channel.finish();
    return result;
}

ExitCode runDetach(const RunOptions& options)
{
    const std::string& program = options.command.front();
    if (kyProcess::StartDetachedUtf8(program, argumentsOf(options.command), options.folder, isPath(program)))
        return Done;
    fail(program, "cannot be started");
    return notStarted;
}

} // namespace ky::tool
