// SPDX-License-Identifier: MIT
#include "diagnostics/crash_output.h"

#include "concurrency/sync_native.h"
#include "diagnostics/bounded_wait.h"
#include "diagnostics/event_log_native.h"
#include "diagnostics/fault_text.h"
#include "diagnostics/log_file_native.h"
#include "diagnostics/log_line.h"

#include <ky/kyMutex.h>

#include <algorithm>
#include <atomic>
#include <string>

namespace ky::impl
{

namespace
{

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view source = "kySystem";

/// Room for one message with what stands around it.
using Line = FixedText<16 * 1024>;

std::atomic<kyMutex*> sLock{nullptr};
std::atomic<bool> sEcho{false};
std::atomic<kyLog::CustomHandler> sHandler{nullptr};
std::atomic<void*> sUserData{nullptr};
std::atomic<const std::string*> sFile{nullptr};

/// A crash may read the path while it changes: the one in use is left alone.
std::string& freePath()
{
    // Never destroyed; the memory goes with the library when that is unloaded.
    alignas(std::string) static unsigned char memory[2 * sizeof(std::string)];
    static std::string* const paths = new (memory) std::string[2];
    return sFile.load() == paths ? paths[1] : paths[0];
}

/// Memory for one user at a time: 0 for messages of a process that goes on, 1 for its last one.
struct Memory
{
    std::atomic<std::uint32_t> user{0}; ///< id of the thread
    Line line;
    std::string* forHandler = nullptr; ///< large enough for any message; made before the first handler is known
};

/// Nothing of this may be made in a crash.
constinit Memory sMemories[2];

Memory& memoryOf(bool last) { return sMemories[last ? 1 : 0]; }

/// Milliseconds that the last message waits for the logger's lock, and that other crashing threads are held.
constexpr int lastPatience = 200;
constexpr int holdOthers = 1500;

/// The logger's lock, if it can be had in time.
class BoundedSection
{
public:
    explicit BoundedSection(int milliseconds) noexcept
        : mLock(sLock.load()),
          mTaken(mLock != nullptr && tryFor(milliseconds, [this] { return mLock->tryLock(); }))
    {
    }
    ~BoundedSection()
    {
        if (mTaken)
            mLock->unlock();
    }
    BoundedSection(const BoundedSection&) = delete;
    BoundedSection& operator=(const BoundedSection&) = delete;

    bool isAlone() const { return mLock == nullptr || mTaken; }

private:
    kyMutex* mLock;
    bool mTaken;
};

/// One write for the whole line. Without the lock between processes: it may be held by a frame that never returns, and
/// appending in one piece needs none.
void appendToFile(std::string_view markedLine) noexcept
{
    const std::string* const path = sFile.load();
    if (path == nullptr || path->empty())
        return;
    native::AppendFile file(*path);
    if (!file.isOpen())
        return;
    if (file.end() != 0)
        markedLine.remove_prefix(byteOrderMark.size());
    file.write(markedLine.data(), markedLine.size());
}

void callHandler(Memory& memory, std::string_view message) noexcept
{
    const kyLog::CustomHandler handler = sHandler.load();
    if (handler == nullptr)
        return;
    try
    {
        static const std::string* const noQualifier = new std::string;
        memory.forHandler->assign(message);
        handler(*memory.forHandler, kyLogType::CRITICAL, *noQualifier, sUserData.load());
    }
    catch (...)
    {
    }
}

void print(Line& line) noexcept
{
    line.cut(line.view().size() - 2);
    line << "\n";
    native::printDirectly(line.view().substr(byteOrderMark.size()));
}

bool takesCriticals() noexcept
{
    const kyLog* const log = kyLog::editPtr();
    return log != nullptr && log->isLogTypeEnabled(kyLogType::CRITICAL);
}

/// In the order of what is most likely to work.
void writeOutputs(Memory& memory, std::string_view message, bool useHandler) noexcept
{
    if (takesCriticals())
    {
        Line& line = memory.line;
        line.clear();
        line << byteOrderMark << toText(kyLogType::CRITICAL) << " : " << LineClock::textInEmergency().view() << " "
             << message << "\r\n";
        appendToFile(line.view());
        if (sEcho)
            print(line);
    }
    if (takesCriticals() || kyLog::editPtr() == nullptr)
        native::reportEvent(source, native::EventKind::Error, message);
    if (takesCriticals() && useHandler)
        callHandler(memory, message);
}

std::atomic<std::uint32_t> sLastWriter{0};

} // namespace

void setCrashLock(kyMutex* lock) noexcept { sLock = lock; }

void setCrashEcho(bool echo) noexcept { sEcho = echo; }

void setCrashFile(const std::string& pathUtf8) noexcept
{
    try
    {
        std::string& path = freePath();
        path = pathUtf8;
        // Translated here, so that opening it needs no copy.
        std::replace(path.begin(), path.end(), '\\', '/');
        sFile = &path;
    }
    catch (...)
    {
        sFile = nullptr;
    }
}

void setCrashHandler(kyLog::CustomHandler handler, void* userData) noexcept
{
    sHandler = nullptr;
    sUserData = userData;
    if (handler == nullptr)
        return;
    try
    {
        for (const bool last : {false, true})
        {
            std::string*& text = memoryOf(last).forHandler;
            if (text == nullptr)
                text = new std::string;
            text->reserve(FaultText::capacity);
        }
        sHandler = handler;
    }
    catch (...)
    {
        // Without memory for its texts it is not called in an emergency.
    }
}

void forgetCrashOutputs() noexcept
{
    sLock = nullptr;
    sEcho = false;
    sHandler = nullptr;
    sFile = nullptr;
}

void reportText(std::string_view message, std::string_view more) noexcept
{
    try
    {
        kyLogObject(kyLogType::CRITICAL, nullptr, kyLog::editPtr(), source.data()) << message << more;
    }
    catch (...)
    {
        // Out of memory while telling of another trouble.
    }
}

void writeInEmergency(std::string_view message, bool callHandler) noexcept
{
    constexpr int patience = 2000;
    Memory& memory = memoryOf(false);
    const std::uint32_t self = native::currentThreadId();
    // A first attempt of this thread may have been cut off by a fault of its own.
    const auto take = [&]
    {
        std::uint32_t user = 0;
        return memory.user.compare_exchange_strong(user, self) || user == self;
    };
    const BoundedSection section(patience);
    if (!tryFor(patience, take))
        return;
    writeOutputs(memory, message, callHandler && section.isAlone());
    memory.user = 0;
}

void writeLastMessage(std::string_view message, int signal) noexcept
{
    const std::uint32_t self = native::currentThreadId();
    std::uint32_t writer = 0;
    if (!sLastWriter.compare_exchange_strong(writer, self))
    {
        if (writer != self)
            tryFor(holdOthers, [] { return sLastWriter == 0; });
        return;
    }
    native::beginLifeLimit(signal);
    {
        const BoundedSection section(lastPatience);
        writeOutputs(memoryOf(true), message, true);
    }
    native::endLifeLimit();
    sLastWriter = 0;
}

} // namespace ky::impl
