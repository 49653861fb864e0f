// SPDX-License-Identifier: MIT
#include <ky/kyProcess.h>

#include "platform/clock_native.h"
#include "process/process_info_native.h"
#include "process/process_record.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ky
{

namespace
{

// The longest wait between two looks at the process.
constexpr unsigned int longestWaitMs = 100;

/// Returns early when a process ends, or when one of its streams can go on.
void waitAWhile(impl::ProcessRecord& record, unsigned int limitMs)
{
    if (record.pump != nullptr)
        impl::native::waitForStreams(record.pump->streams(), record.process, limitMs);
    else
        impl::native::waitForEnd(record.process, limitMs);
}

} // namespace

void impl::refresh(ProcessRecord& record)
{
    native::collectEnded();
    const bool isHandling = record.pump != nullptr && record.pump->isBusy();
    if (record.state != kyProcess::Running || record.process.handle == native::noHandle || isHandling)
        return;
    int exitCode = 0;
    if (!native::hasEnded(record.process, exitCode))
    {
        if (record.pump != nullptr)
            record.pump->transfer();
        return;
    }
    if (record.pump != nullptr)
        record.pump->finish();
    record.pump.reset();
    native::releaseHandle(record.process);
    record.crashed = false;
    record.exitCode = exitCode;
    record.state = kyProcess::Finished;
}

void impl::clear(ProcessRecord& record)
{
    native::releaseTree(record.process);
    native::releaseHandle(record.process);
    record = ProcessRecord();
}

kyProcess::kyProcess() : mRecord(new impl::ProcessRecord) {}

kyProcess::~kyProcess()
{
    // What the handler refers to may be gone already.
    mRecord->pump.reset();
    impl::refresh(*mRecord);
    impl::clear(*mRecord);
    delete mRecord;
}

bool kyProcess::startProcess(const std::string& program, const std::vector<std::string>& arguments, bool resolveProgram,
                             ProcessPriority priority)
{
    if (getState() == Running)
        return false;
    mRecord->program = program;
    mRecord->arguments = arguments;
    mRecord->detached = false;
    return impl::start(*mRecord, resolveProgram, priority);
}

bool kyProcess::waitForFinished(unsigned int timeoutMs)
{
    const std::int64_t begin = impl::native::ticksSinceStartMs();
    for (;;)
    {
        const bool isRunning = getState() == Running;
        const bool canWait =
            mRecord->process.handle != impl::native::noHandle && (mRecord->pump == nullptr || !mRecord->pump->isBusy());
        const std::int64_t elapsed = impl::native::ticksSinceStartMs() - begin;
        if (!isRunning || !canWait || elapsed >= timeoutMs)
            return !isRunning;
        const std::int64_t rest = timeoutMs - elapsed;
        waitAWhile(*mRecord, static_cast<unsigned int>(std::min<std::int64_t>(rest, longestWaitMs)));
    }
}

kyProcess::ProcessState kyProcess::getState() const
{
    impl::refresh(*mRecord);
    return mRecord->state;
}

int kyProcess::exitCode() const
{
    impl::refresh(*mRecord);
    return mRecord->exitCode;
}

bool kyProcess::hasCrashed() const
{
    impl::refresh(*mRecord);
    return mRecord->crashed;
}

bool kyProcess::hasFailedToStart() const
{
    impl::refresh(*mRecord);
    return !mRecord->started;
}

std::int64_t kyProcess::getPid() const { return mRecord->process.id; }

void kyProcess::terminateProcess()
{
    if (mRecord->process.handle != impl::native::noHandle && mRecord->process.id != 0)
        impl::native::askToClose(mRecord->process);
}

void kyProcess::killProcess()
{
    if (mRecord->process.handle != impl::native::noHandle)
        impl::native::killProcess(mRecord->process);
}

bool kyProcess::killProcessTree()
{
    return mRecord->process.tree != impl::native::noHandle && impl::native::killTree(mRecord->process);
}

void kyProcess::clearProcess() { impl::clear(*mRecord); }

bool kyProcess::resetState()
{
    if (getState() == Running)
        return false;
    mRecord->state = NotRunning;
    mRecord->exitCode = 0;
    mRecord->crashed = false;
    mRecord->started = false;
    return true;
}

bool kyProcess::setWorkingDirectory(const std::string& folder)
{
    if (getState() == Running)
        return false;
    mRecord->workingDirectory = folder;
    return true;
}

std::string kyProcess::getWorkingDirectoryUtf8() const { return mRecord->workingDirectory; }

std::string kyProcess::getProgramUtf8() const { return mRecord->program; }

std::vector<std::string> kyProcess::getArgumentsUtf8() const { return mRecord->arguments; }

bool kyProcess::setProcessEnvironmentUtf8(const std::vector<std::string>& environment)
{
    if (getState() == Running)
        return false;
    mRecord->environment = environment;
    return true;
}

bool kyProcess::getProcessEnvironmentUtf8(std::vector<std::string>& environment) const
{
    environment = mRecord->environment;
    return true;
}

std::uint64_t kyProcess::getCurrentRamInUse() const
{
    return getState() == Running ? impl::native::privateMemory(mRecord->process) : 0;
}

bool kyProcess::setWorkingSetMaxSize(std::uint64_t maxBytes)
{
    return impl::native::limitPhysicalMemory(mRecord->process, maxBytes);
}

void kyProcess::setOutputHandler(OutputHandler handler) { mRecord->outputHandler = std::move(handler); }

void kyProcess::setInput(std::string bytes)
{
    mRecord->input = std::move(bytes);
    mRecord->inputKind = impl::native::InputKind::Fed;
}

void kyProcess::inheritInput()
{
    mRecord->input.clear();
    mRecord->inputKind = impl::native::InputKind::Caller;
}

void kyProcess::setOwnTree(bool own) { mRecord->ownTree = own; }

} // namespace ky
