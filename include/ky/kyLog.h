// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The process-wide logger, its message builders, and the one-line form for client code:
///
/// \code
/// ky::logInfo() << "loaded " << count << " rows from " << path;
/// ky::logDebug("io") << "buffer at " << position;   // "io" can be switched off by name
/// \endcode

#include <ky/kyExport.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

// Some builds define DEBUG for the whole program. The enumerator must not be replaced; the macro is put back below.
#pragma push_macro("DEBUG")
#undef DEBUG

namespace ky
{

/// Kind of a message. Everything but DEBUG is enabled when the logger is created.
///
/// Code that is compiled with a macro named `DEBUG` writes `kyLogType::Debug`, which is the same value.
enum class kyLogType : std::int32_t
{
    DEBUG = 0,    ///< for developers; off until it is enabled, and by sub-types
    INFO = 1,     ///< the ordinary course of things
    WARNING = 2,  ///< something failed, and the work goes on
    CRITICAL = 3, ///< something failed that should not
    Debug = DEBUG ///< the same as DEBUG
};

class kyMutex;

namespace impl
{
struct LogData;
struct HeldLogLocks;
class LogText;

/// Gives back the locks of the logger that code abandoned by a fault held.
void releaseLogLocks(const HeldLogLocks& keep) noexcept;

/// Type of a message builder that keeps and writes nothing.
inline constexpr kyLogType switchedOff = static_cast<kyLogType>(4);
} // namespace impl

/// "DEBUG", "INFO", "WARNING", "CRITICAL"; "UNKNOWN" for any other value. Static storage.
KY_API const char* toText(kyLogType type) noexcept;

/// Writes the display name of the type.
KY_API std::ostream& operator<<(std::ostream& out, kyLogType type);

/// The process-wide logger. Formats one line per message and passes it to its outputs: a custom handler, standard
/// output (on by default) and a log file that several processes may share.
///
/// A line reads `TYPE(qualifier) : Sun Nov 15 07:44:17 2026 message`, in local time, with English names whatever the
/// locale; the parentheses are left out when the qualifier is empty. The message may hold any bytes, line breaks
/// included; all text is UTF-8 by convention and passed on unchanged.
///
/// Threads: before makeThreadSafe() the logger is for one thread. Afterwards Write() and the installation of outputs
/// may be called from any thread. The enabled types and the sub-type blacklist are meant to be configured at start-up:
/// enabling types is safe at any time, changing the blacklist while other threads log DEBUG messages is not.
///
/// Failures: nothing here throws for logging reasons, and a failing output is skipped without a report.
///
/// On Linux a child forked while other threads log can log itself without blocking.
class kyLog
{
public:
    /// Receives every message without its prefix, under the logger's lock and on the writing thread. It may log through
    /// the same logger on the same thread; it must not wait for another thread that logs. An exception that leaves it
    /// is swallowed, and the message goes on to the other outputs.
    using CustomHandler = void (*)(const std::string& message, kyLogType type, const std::string& qualifier,
                                   void* userData);

    kyLog(const kyLog&) = delete;
    kyLog& operator=(const kyLog&) = delete;

    /// Creates the logger if none exists. An existing one stays as it is, whatever the argument.
    /// `ky::initializeKySystem` calls this; programs rarely need to.
    KY_API static void createInstance(bool threadSafe);

    /// Destroys the logger, if any. No log object that holds it may be alive.
    KY_API static void destroyInstance();

    /// The logger, which must exist.
    /// @{
    static const kyLog& get() { return *msInstance; }
    static kyLog& edit() { return *msInstance; }
    /// @}

    /// The logger, null when there is none.
    [[nodiscard]] static kyLog* editPtr() { return msInstance; }

    /// The current local time as in the line prefix, for example "Sun Nov 15 07:44:17 2026".
    KY_API static std::string GetTime();

    /// Makes Write() safe for any thread and, when a log file is installed, for any process. Full initialization of the
    /// library calls this. Call it before other threads log.
    KY_API void makeThreadSafe();

    /// Switches a type on or off for log objects. Write() does not look at it. Other values than the four types are
    /// ignored, and read as false.
    void setLogTypeEnabled(kyLogType type, bool enabled)
    {
        if (isKnown(type))
            mTypeEnabled[indexOf(type)].store(enabled, std::memory_order_relaxed);
    }
    /// Whether log objects of this type are kept.
    [[nodiscard]] bool isLogTypeEnabled(kyLogType type) const
    {
        return isKnown(type) && mTypeEnabled[indexOf(type)].load(std::memory_order_relaxed);
    }

    /// Whether every line also goes to standard output. On when the logger is created; installing or removing a log
    /// file sets it anew.
    KY_API void setEchoToConsole(bool echo);

    /// Adds DEBUG sub-types to the blacklist (`enabled` false) or removes them from it. `names` is a list separated by
    /// any of blank , ; \ | and /; null does nothing. A change is announced by one DEBUG line at the next check of a
    /// sub-type.
    KY_API void setDebugSubTypeEnabled(const char* names, bool enabled);

    /// Whether DEBUG messages with this qualifier are written: false only for names in the blacklist. Writes a pending
    /// announcement first. Null is always enabled.
    KY_API bool isDebugSubTypeEnabled(const char* subType);

    /// Writes one line to the outputs, whether or not the type is enabled. `qualifier` may be empty. Swallows every
    /// exception, those of the custom handler included.
    KY_API void Write(const std::string& message, kyLogType type, const std::string& qualifier);

    /// Bits for installFileHandlerExUtf8().
    enum FileFlags : int
    {
        DeleteExisting = 1,       ///< delete an existing file now
        RotateExisting = 2,       ///< with DeleteExisting: rotate the existing file before; alone without effect
        EchoToStandardOutput = 4, ///< every line also goes to standard output
        CreateAtFirstLine = 8     ///< do not create a missing file before the first line
    };

    /// Installs a log file in place of an earlier one.
    ///
    /// The file is opened, appended to and closed for every line, in one write, so that others may read, rename or
    /// share it at any time. When the library is fully initialized at this moment, processes that give the same
    /// `pathUtf8` exclude each other by a named mutex (other spellings of the path are other mutexes).
    ///
    /// Lines end with CR LF. A file starts with the UTF-8 byte-order mark, written in front of the first line of an
    /// empty file and never elsewhere.
    ///
    /// Rotation: a file found larger than `maxSizeBytes` before a line is written is renamed to "<path>_0.back", an
    /// earlier "<path>_0.back" to "<path>_1.back" and so on; the last of `filesToKeep` is dropped. With 0 files to keep
    /// it is emptied instead. A file that cannot be renamed is never emptied: after about 250 ms of trying it is
    /// appended to, and every later line tries again.
    ///
    /// @param pathUtf8 kept as given; a relative path follows the current folder.
    /// @param flags bits of FileFlags.
    /// @param maxSizeBytes below 1: no limit. A file may exceed the limit by its last line.
    /// @param filesToKeep at most 128; larger values count as 128, negative ones as 0.
    ///
    /// When the file cannot be created nothing is installed, and a CRITICAL message tells so through the logger.
    KY_API void installFileHandlerExUtf8(const std::string& pathUtf8, int flags, long long maxSizeBytes,
                                         int filesToKeep);

    /// The same with flags 0 and without a limit: an existing file is appended to, the console echo is switched off.
    KY_API void installFileHandlerUtf8(const std::string& pathUtf8);

    /// Stops output to the log file and switches the console echo off.
    KY_API void removeFileHandler();

    /// Path of the log file as it was given, empty when there is none.
    [[nodiscard]] KY_API std::string getCurrentLogFileNameUtf8() const;

    /// How many lines the present log file could not take since it was installed, because it could not be opened or
    /// written. 0 without a log file.
    [[nodiscard]] KY_API std::uint64_t getSkippedLineCount() const;

    /// Replaces the custom handler; null removes it. `userData` is passed on and never owned.
    KY_API void installCustomHandler(CustomHandler handler, void* userData);

    /// Writes one line with its prefix to standard output and flushes. Needs no logger; any thread.
    KY_API static void WriteToStd(const std::string& message, kyLogType type, const std::string& qualifier);

    /// Sends the message, cut to 16384 UTF-16 units, to the system's event log (on Linux: to the syslog socket,
    /// facility user, `source` as identity). DEBUG messages are never sent. `qualifier` is not used. An empty `source`
    /// counts as "kyLog". Any thread.
    KY_API static void WriteToSystemLog(const std::string& message, kyLogType type, const std::string& qualifier,
                                        const std::string& source);

private:
    friend class kyLogObject;
    friend void impl::releaseLogLocks(const impl::HeldLogLocks& keep) noexcept;

    class CriticalSection;

    explicit kyLog(bool threadSafe);
    ~kyLog();

    /// The lock that was entered, null while there is none: a custom handler may make the logger thread-safe meanwhile.
    kyMutex* takeCriticalSection() const;
    static void releaseCriticalSection(kyMutex* taken);
    static void releaseAbandoned(int inProcess, int file);
    void announceBlacklist();
    static void holdForFork();
    static void releaseAfterFork();

    static constexpr std::size_t indexOf(kyLogType type) { return static_cast<std::size_t>(type); }
    static constexpr bool isKnown(kyLogType type) { return indexOf(type) < 4; }

    /// A type without a flag cannot be vetoed.
    bool admits(kyLogType type, const char* qualifier)
    {
        if (isKnown(type) && !mTypeEnabled[indexOf(type)].load(std::memory_order_relaxed))
            return false;
        return type != kyLogType::DEBUG || qualifier == nullptr || isDebugSubTypeEnabled(qualifier);
    }

    impl::LogData* mData;
    std::set<std::string, std::less<>> mBlacklist;
    std::atomic<std::string*> mPendingAnnouncement{nullptr};
    std::atomic<bool> mTypeEnabled[4] = {false, true, true, true};

    KY_API static kyLog* msInstance;
};

/// Composes one message by insertions and delivers it when destroyed; used as a temporary that dies at the end of the
/// statement.
///
/// An object whose logger does not want the message is switched off: it keeps nothing, formats nothing and never calls
/// into the library. The arguments of the insertions are still evaluated.
///
/// Numbers and pointers appear in the ordinary form of a standard stream under the classic locale, integers in decimal.
/// Stream manipulators work and last to the end of the message.
///
/// Neither construction nor destruction throws; memory that runs out shortens the message. An exception of a value's
/// own stream operator passes through the insertion; what was composed until then is delivered.
///
/// Not for sharing between threads.
class kyLogObject
{
public:
    /// @param type kind of the message.
    /// @param qualifier may be null; for DEBUG the sub-type. Copied.
    /// @param log the logger, which may veto the message by its enabled types and sub-types and must outlive the
    /// object.
    ///     Null: the message goes to `systemLogSource` alone or, when that is null as well, to standard output.
    /// @param systemLogSource when not null, the message also goes to the system's event log under this name. Copied.
    kyLogObject(kyLogType type, const char* qualifier, kyLog* log, const char* systemLogSource) noexcept
    {
        // The other members of an object that is switched off are never read, and not worth setting.
        if (log != nullptr && !log->admits(type, qualifier))
        {
            mType = impl::switchedOff;
            return;
        }
        mQualifier = nullptr;
        mSystemLogSource = nullptr;
        mLogger = log;
        mText = nullptr;
        mType = type;
        if (qualifier != nullptr || systemLogSource != nullptr)
            keepNames(qualifier, systemLogSource);
    }

    /// Takes the message over; the source is left switched off.
    kyLogObject(kyLogObject&& other) noexcept : mType(other.mType)
    {
        if (!isOn())
            return;
        mQualifier = other.mQualifier;
        mSystemLogSource = other.mSystemLogSource;
        mLogger = other.mLogger;
        mText = other.mText;
        other.mType = impl::switchedOff;
    }

    kyLogObject(const kyLogObject&) = delete;
    kyLogObject& operator=(const kyLogObject&) = delete;

    /// Delivers the message if anything was inserted.
    ~kyLogObject()
    {
        if (isOn())
            finish();
    }

    /// Whether insertions are kept. Lets callers skip costly arguments.
    [[nodiscard]] bool isOn() const noexcept { return mType != impl::switchedOff; }

    /// Appends a text as it is. Null appears as "[NullPtr]".
    /// @{
    kyLogObject& operator<<(const char* text)
    {
        if (isOn())
            append(text == nullptr ? std::string_view("[NullPtr]") : std::string_view(text));
        return *this;
    }
    kyLogObject& operator<<(char* text) { return *this << static_cast<const char*>(text); }
    kyLogObject& operator<<(const signed char* text) { return *this << reinterpret_cast<const char*>(text); }
    kyLogObject& operator<<(const unsigned char* text) { return *this << reinterpret_cast<const char*>(text); }
    kyLogObject& operator<<(std::nullptr_t) { return *this << static_cast<const char*>(nullptr); }

    kyLogObject& operator<<(const std::string& text) { return insert(std::string_view(text)); }
    kyLogObject& operator<<(std::string_view text) { return insert(text); }
    /// @}

    /// Appends the value as a standard stream shows it under the classic locale.
    /// @{
    kyLogObject& operator<<(char value) { return insert(std::string_view(&value, 1)); }
    kyLogObject& operator<<(bool value) { return insert(value); }
    kyLogObject& operator<<(short value) { return insert(value); }
    kyLogObject& operator<<(unsigned short value) { return insert(static_cast<unsigned long long>(value)); }
    kyLogObject& operator<<(int value) { return insert(value); }
    kyLogObject& operator<<(unsigned int value) { return insert(static_cast<unsigned long long>(value)); }
    kyLogObject& operator<<(long value) { return insert(value); }
    kyLogObject& operator<<(unsigned long value) { return insert(static_cast<unsigned long long>(value)); }
    kyLogObject& operator<<(long long value) { return insert(value); }
    kyLogObject& operator<<(unsigned long long value) { return insert(value); }
    kyLogObject& operator<<(float value) { return insert(static_cast<double>(value)); }
    kyLogObject& operator<<(double value) { return insert(value); }
    kyLogObject& operator<<(long double value) { return insert(value); }
    kyLogObject& operator<<(const void* address) { return insert(address); }
    /// @}

    /// std::endl, std::hex and their like.
    /// @{
    kyLogObject& operator<<(std::ostream& (*manipulator)(std::ostream&)) { return insertStreamed(manipulator); }
    kyLogObject& operator<<(std::ios_base& (*manipulator)(std::ios_base&)) { return insertStreamed(manipulator); }
    /// @}

    /// Any other type that a standard stream takes.
    template <typename T, std::enable_if_t<!std::is_pointer_v<T> && !std::is_array_v<T> && !std::is_function_v<T> &&
                                               !std::is_convertible_v<const T&, std::string_view>,
                                           int> = 0>
    kyLogObject& operator<<(const T& value)
    {
        return insertStreamed(value);
    }

private:
    template <typename T>
    kyLogObject& insert(T value)
    {
        if (isOn())
            append(value);
        return *this;
    }

    template <typename T>
    kyLogObject& insertStreamed(const T& value)
    {
        if (isOn())
        {
            if (std::ostream* out = stream())
                *out << value;
        }
        return *this;
    }

    KY_API void keepNames(const char* qualifier, const char* systemLogSource) noexcept;
    KY_API void append(std::string_view text) noexcept;
    // Signed types stay apart: under std::hex a negative value shows the width of its type.
    KY_API void append(bool value) noexcept;
    KY_API void append(short value) noexcept;
    KY_API void append(int value) noexcept;
    KY_API void append(long value) noexcept;
    KY_API void append(long long value) noexcept;
    KY_API void append(unsigned long long value) noexcept;
    KY_API void append(double value) noexcept;
    KY_API void append(long double value) noexcept;
    KY_API void append(const void* address) noexcept;
    /// A stream that writes into the message, null when memory has run out.
    KY_API std::ostream* stream() noexcept;
    KY_API void finish() noexcept;

    impl::LogText* text() noexcept;
    void deliver() noexcept;

    std::string* mQualifier;
    std::string* mSystemLogSource;
    kyLog* mLogger;
    impl::LogText* mText;
    kyLogType mType;
};

/// The one-line form for client code: a message for the process-wide logger, or for standard output while there is
/// none. `qualifier` may be null.
/// @{
inline kyLogObject logDebug(const char* qualifier = nullptr)
{
    return kyLogObject(kyLogType::DEBUG, qualifier, kyLog::editPtr(), nullptr);
}
inline kyLogObject logInfo(const char* qualifier = nullptr)
{
    return kyLogObject(kyLogType::INFO, qualifier, kyLog::editPtr(), nullptr);
}
inline kyLogObject logWarning(const char* qualifier = nullptr)
{
    return kyLogObject(kyLogType::WARNING, qualifier, kyLog::editPtr(), nullptr);
}
inline kyLogObject logCritical(const char* qualifier = nullptr)
{
    return kyLogObject(kyLogType::CRITICAL, qualifier, kyLog::editPtr(), nullptr);
}
/// @}

} // namespace ky

#pragma pop_macro("DEBUG")
