// SPDX-License-Identifier: MIT
#include <ky/kyLog.h>

#include "diagnostics/crash_output.h"
#include "diagnostics/escape_text.h"
#include "diagnostics/log_file.h"
#include "diagnostics/log_line.h"
#include "diagnostics/log_locks.h"
#include "diagnostics/standard_output.h"
#include "frame/library_state.h"
#include "platform/fork_native.h"

#include <ky/kyMutex.h>

#include <memory>
#include <utility>
#include <vector>

namespace ky
{

namespace impl
{

struct LogData
{
    std::unique_ptr<kyMutex> lock;           ///< null until the logger is made thread-safe
    std::unique_ptr<kyMutexSystem> fileLock; ///< named by the path of the log file
    kyLog::CustomHandler handler = nullptr;
    void* userData = nullptr;
    LogFile file;
    std::atomic<bool> echo{true};
    LineClock clock;
};

namespace
{

thread_local constinit HeldLogLocks tHeld;

/// Holds the log file against other processes, where there is a lock for it.
class FileSection
{
public:
    explicit FileSection(kyMutexSystem* lock) : mLock(lock)
    {
        if (mLock == nullptr)
            return;
        mLock->lock();
        ++tHeld.file;
    }
    ~FileSection()
    {
        if (mLock == nullptr)
            return;
        --tHeld.file;
        mLock->unlock();
    }
    FileSection(const FileSection&) = delete;
    FileSection& operator=(const FileSection&) = delete;

    bool isExclusive() const { return mLock != nullptr; }

private:
    kyMutexSystem* mLock;
};

void callHandler(const LogData& data, const std::string& message, kyLogType type, const std::string& qualifier)
{
    if (data.handler == nullptr)
        return;
    try
    {
        data.handler(message, type, qualifier, data.userData);
    }
    catch (...)
    {
        // The handler's own trouble; the other outputs still get the line.
    }
}

/// Pieces between any of the separators, empty ones dropped.
std::vector<std::string_view> splitNames(std::string_view names)
{
    constexpr std::string_view separators = " ,;\\|/";
    std::vector<std::string_view> pieces;
    for (std::size_t at = names.find_first_not_of(separators); at != std::string_view::npos;
         at = names.find_first_not_of(separators, at))
    {
        const std::size_t end = std::min(names.find_first_of(separators, at), names.size());
        pieces.push_back(names.substr(at, end - at));
        at = end;
    }
    return pieces;
}

} // namespace

HeldLogLocks heldLogLocks() noexcept { return tHeld; }

} // namespace impl

kyLog* kyLog::msInstance = nullptr;

/// Holds the in-process lock for a scope, where there is one.
class kyLog::CriticalSection
{
public:
    explicit CriticalSection(const kyLog& log) : mTaken(log.takeCriticalSection()) {}
    ~CriticalSection() { releaseCriticalSection(mTaken); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

private:
    kyMutex* mTaken;
};

kyLog::kyLog(bool threadSafe) : mData(new impl::LogData)
{
    if (!threadSafe)
        return;
    try
    {
        makeThreadSafe();
    }
    catch (...)
    {
        delete mData;
        throw;
    }
}

kyLog::~kyLog()
{
    delete mPendingAnnouncement.load();
    delete mData;
}

void kyLog::createInstance(bool threadSafe)
{
    if (msInstance != nullptr)
        return;
    msInstance = new kyLog(threadSafe);
    impl::setCrashEcho(true);
}

void kyLog::destroyInstance()
{
    impl::forgetCrashOutputs();
    // The locks report trouble through the logger when they are destroyed: none must be found by then.
    delete std::exchange(msInstance, nullptr);
}

std::string kyLog::GetTime() { return std::string(impl::LineClock().text()); }

namespace
{

/// The logger whose lock a fork in progress holds.
std::atomic<kyMutex*> sHeldForFork{nullptr};

} // namespace

void kyLog::holdForFork()
{
    kyLog* const log = msInstance;
    if (log == nullptr)
        return;
    // Noted under the lock: two threads may fork at once.
    kyMutex* const taken = log->takeCriticalSection();
    sHeldForFork = taken;
}

void kyLog::releaseAfterFork() { releaseCriticalSection(sHeldForFork.exchange(nullptr)); }

void kyLog::makeThreadSafe()
{
    static const bool registered = (impl::native::onFork(&holdForFork, &releaseAfterFork), true);
    static_cast<void>(registered);
    if (mData->lock == nullptr)
        mData->lock = std::make_unique<kyMutex>();
    impl::setCrashLock(mData->lock.get());
    const CriticalSection section(*this);
    if (!mData->file.path().empty())
        mData->fileLock = std::make_unique<kyMutexSystem>(mData->file.path().c_str());
}

kyMutex* kyLog::takeCriticalSection() const
{
    kyMutex* const lock = mData->lock.get();
    if (lock == nullptr)
        return nullptr;
    lock->lock();
    ++impl::tHeld.inProcess;
    return lock;
}

void kyLog::releaseCriticalSection(kyMutex* taken)
{
    if (taken == nullptr)
        return;
    --impl::tHeld.inProcess;
    taken->unlock();
}

void kyLog::releaseAbandoned(int inProcess, int file)
{
    impl::LogData* const data = msInstance == nullptr ? nullptr : msInstance->mData;
    for (; data != nullptr && data->fileLock != nullptr && impl::tHeld.file > file; --impl::tHeld.file)
        data->fileLock->unlock();
    for (; data != nullptr && data->lock != nullptr && impl::tHeld.inProcess > inProcess; --impl::tHeld.inProcess)
        data->lock->unlock();
    impl::tHeld = {inProcess, file};
}

void impl::releaseLogLocks(const HeldLogLocks& keep) noexcept { kyLog::releaseAbandoned(keep.inProcess, keep.file); }

void kyLog::setEchoToConsole(bool echo)
{
    mData->echo.store(echo, std::memory_order_relaxed);
    impl::setCrashEcho(echo);
}

void kyLog::setDebugSubTypeEnabled(const char* names, bool enabled)
{
    if (names == nullptr)
        return;
    bool changed = false;
    std::string added;
    for (const std::string_view name : impl::splitNames(names))
    {
        const auto found = mBlacklist.find(name);
        if (enabled == (found == mBlacklist.end()))
            continue;
        changed = true;
        if (enabled)
        {
            mBlacklist.erase(found);
            continue;
        }
        mBlacklist.emplace(name);
        added.append(added.empty() ? "'" : " '").append(name).append("'");
    }
    if (!changed)
        return;
    auto announcement = std::make_unique<std::string>("kyDebug qualifier(s) blacklist : " + added);
    const CriticalSection section(*this);
    delete mPendingAnnouncement.exchange(announcement.release());
}

bool kyLog::isDebugSubTypeEnabled(const char* subType)
{
    if (subType == nullptr)
        return true;
    if (mPendingAnnouncement.load(std::memory_order_acquire) != nullptr)
        announceBlacklist();
    return mBlacklist.empty() || mBlacklist.find(std::string_view(subType)) == mBlacklist.end();
}

void kyLog::announceBlacklist()
{
    std::unique_ptr<std::string> announcement;
    {
        const CriticalSection section(*this);
        announcement.reset(mPendingAnnouncement.exchange(nullptr));
    }
    if (announcement != nullptr)
        Write(*announcement, kyLogType::DEBUG, std::string());
}

void kyLog::Write(const std::string& message, kyLogType type, const std::string& qualifier)
{
    try
    {
        // The time is taken under the lock, so that it never steps back from line to line.
        const CriticalSection section(*this);
        impl::LogLine line(type, qualifier, mData->clock.text(), message);
        impl::callHandler(*mData, message, type, qualifier);
        if (mData->echo.load(std::memory_order_relaxed))
            impl::writeToStandardOutput(line);
        if (mData->file.path().empty())
            return;
        const impl::FileSection fileSection(mData->fileLock.get());
        mData->file.append(line, fileSection.isExclusive());
    }
    catch (...)
    {
        // No memory for the file's names: the line is skipped like any that cannot be written.
    }
}

void kyLog::installFileHandlerExUtf8(const std::string& pathUtf8, int flags, long long maxSizeBytes, int filesToKeep)
{
    bool installed = false;
    {
        const CriticalSection section(*this);
        removeFileHandler();
        mData->file.setPath(pathUtf8, maxSizeBytes, filesToKeep);
        impl::setCrashFile(pathUtf8);
        if (!pathUtf8.empty() && impl::libraryState() == impl::LibraryState::Full)
            mData->fileLock = std::make_unique<kyMutexSystem>(pathUtf8.c_str());
        setEchoToConsole((flags & EchoToStandardOutput) != 0);
        const impl::FileSection fileSection(mData->fileLock.get());
        installed = mData->file.prepare(flags);
    }
    if (installed)
        return;
    removeFileHandler();
    kyLogObject(kyLogType::CRITICAL, nullptr, this, nullptr)
        << "Fail to install log file handler to " << impl::escapeControls(pathUtf8);
}

void kyLog::installFileHandlerUtf8(const std::string& pathUtf8) { installFileHandlerExUtf8(pathUtf8, 0, -1, 0); }

void kyLog::removeFileHandler()
{
    const CriticalSection section(*this);
    mData->fileLock.reset();
    mData->file.setPath(std::string(), -1, 0);
    impl::setCrashFile(std::string());
    setEchoToConsole(false);
}

std::string kyLog::getCurrentLogFileNameUtf8() const
{
    const CriticalSection section(*this);
    return mData->file.path();
}

std::uint64_t kyLog::getSkippedLineCount() const
{
    const CriticalSection section(*this);
    return mData->file.skippedLines();
}

void kyLog::installCustomHandler(CustomHandler handler, void* userData)
{
    const CriticalSection section(*this);
    mData->handler = handler;
    mData->userData = userData;
    impl::setCrashHandler(handler, userData);
}

} // namespace ky
