// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Child processes and command lines.
///
/// \code
/// std::string output;
/// std::string error;
/// if (ky::kyProcess::ExecCapturedUtf8("git", {"status", "--short"}, folder, false, 5000, output, nullptr, &error) !=
/// 0)
///     std::cerr << error << '\n';
///
/// ky::kyProcess worker;
/// worker.setWorkingDirectory(folder);
/// if (worker.startProcess("worker.exe", {"--jobs", "4"}, true, ky::kyProcess::Low) && !worker.waitForFinished(60000))
///     worker.terminateProcess();
/// \endcode

#include <ky/kyExport.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ky
{

namespace impl
{
struct ProcessRecord;
}

/// Starts a program as a child process, watches it and ends it, politely or by force. All texts are UTF-8.
///
/// States: not running; running; finished, as soon as a query has seen the end. Every query looks anew. An object can
/// be started again once its process has ended.
///
/// Windows: CreateProcessW without a window and without inherited handles. A program whose extension is not "exe" is
/// run through the system's command interpreter. Linux: the program is started directly with its arguments untouched,
/// at a cost that does not grow with the memory of the caller; of the caller's descriptors it gets standard input,
/// output and error alone, and all signals at their default except those that belong to the terminal.
///
/// Children of the application that were not started here are never waited for. A child that has ended while nobody
/// looks, its object destroyed or started as detached, is collected by a later start or query of any object.
///
/// No operation throws for a failed call of the system; memory that runs out may. An object belongs to one thread at a
/// time; different objects are independent.
class KY_API kyProcess
{
public:
    /// What has become of the process.
    enum ProcessState : int
    {
        NotRunning = 0, ///< never started, or reset
        Running = 1,    ///< started, and not seen to have ended
        Finished = 2    ///< a query has seen the end
    };

    /// Other values count as Inherit.
    enum ProcessPriority : int
    {
        Low = 0,    ///< Windows: BELOW_NORMAL_PRIORITY_CLASS. Linux: nice value 10
        Normal = 1, ///< Windows: NORMAL_PRIORITY_CLASS. Linux: nice value 0, where the user may have it
        High = 2,   ///< Windows: ABOVE_NORMAL_PRIORITY_CLASS. Linux: nice value -5, where the user may have it
        Inherit = 3 ///< that of the caller
    };

    /// Where the child has written to.
    enum OutputChannel : int
    {
        StandardOutput = 0, ///< its standard output
        StandardError = 1   ///< its standard error
    };

    /// Receives what the child writes, in pieces of any size. The bytes are valid during the call.
    using OutputHandler = std::function<void(OutputChannel channel, std::string_view bytes)>;

    /// Nothing is running.
    kyProcess();

    /// Never ends the process, which keeps running. Streams that are read or fed by this object are closed.
    virtual ~kyProcess();

    kyProcess(const kyProcess&) = delete;
    kyProcess& operator=(const kyProcess&) = delete;

    /// Starts a program with the settings of the object.
    ///
    /// \param program a path or a name. Without `resolveProgram` it is used as given, a relative path starting at the
    ///        caller's folder; Linux looks a name without separator up in the caller's PATH, never in the current
    ///        folder.
    /// \param arguments without the program. Windows: each is put in double quotes, its backslashes doubled and a
    ///        backslash put before its double quotes. A program that is run through the command interpreter does not
    ///        start when its name or an argument holds a double quote, percent sign or line break. A NUL is refused
    ///        everywhere.
    /// \param resolveProgram makes the path absolute, and appends ".exe" when there is no such file
    /// \return false while a process is running, and when the system refuses; the reason is logged as DEBUG:
    ///         "CreateProcessW return an error " and the system's text
    bool startProcess(const std::string& program, const std::vector<std::string>& arguments,
                      bool resolveProgram = false, ProcessPriority priority = Inherit);

    /// Waits for the end, passing output and input on meanwhile.
    ///
    /// \param timeoutMs milliseconds; 0 looks once. 0xFFFFFFFF is 49 days, not for ever.
    /// \return whether the process is no longer running; false at once for an object that describes the caller
    bool waitForFinished(unsigned int timeoutMs);

    /// Looks at the process.
    [[nodiscard]] ProcessState getState() const;

    /// Exit code of the last process; 0 before there is one. Linux: 128 + N after signal N, 65535 after killProcess();
    /// -1 when the system does not tell it: of a process that is no child of the caller, and of a child that somebody
    /// else has waited for. While the application ignores SIGCHLD, the kernel does so: the code is then lost for a
    /// program that ends at once, and before Linux 6.15 for all.
    [[nodiscard]] int exitCode() const;

    /// Always false: no operation finds that a process has crashed.
    [[nodiscard]] bool hasCrashed() const;

    /// Whether the last startProcess() made no process. True before the first.
    [[nodiscard]] bool hasFailedToStart() const;

    /// Id of the running process; 0 without one.
    [[nodiscard]] std::int64_t getPid() const;

    /// Asks the process to end. Windows: its top-level windows and its main thread get WM_CLOSE. Linux: SIGTERM.
    void terminateProcess();

    /// Ends the process at once with exit code 65535. Does not wait for the end.
    void killProcess();

    /// Forgets the process, which keeps running, and all settings.
    void clearProcess();

    /// Back to "not running", exit code 0; the settings stay. \return false while the process is running
    bool resetState();

    /// The folder that later processes start in. Empty: the caller's. \return false while a process is running; nothing
    /// changes then
    bool setWorkingDirectory(const std::string& folder);
    /// As set; empty for the caller's.
    [[nodiscard]] std::string getWorkingDirectoryUtf8() const;

    /// As given to the last startProcess().
    /// @{
    [[nodiscard]] std::string getProgramUtf8() const;
    [[nodiscard]] std::vector<std::string> getArgumentsUtf8() const;
    /// @}

    /// The whole environment of later processes as "name=value". Empty: the caller's. \return false while a process is
    /// running; nothing changes then
    bool setProcessEnvironmentUtf8(const std::vector<std::string>& environment);
    /// \return true
    bool getProcessEnvironmentUtf8(std::vector<std::string>& environment) const;

    /// Private memory of the running process in bytes; 0 when none is running. Windows: PagefileUsage, what it has
    /// committed. Linux: what it uses, in memory and swapped out.
    [[nodiscard]] std::uint64_t getCurrentRamInUse() const;

    /// Limits the physical memory of the process, or of the caller without one, to `maxBytes`. Always false on Linux.
    bool setWorkingSetMaxSize(std::uint64_t maxBytes);

    /// @name Streams and the process tree
    /// Settings for later starts; without effect on a process that is running.
    /// @{

    /// Reads standard output and standard error of the child, both as they come and without a limit. An empty function
    /// stops that for later starts.
    ///
    /// The handler is called on the thread that waits for or queries this object, by waitForFinished() and by every
    /// query: a child that writes more than the system buffers (64 KB and up) stops until then. Everything that was
    /// written before the process ended is delivered before the state turns to finished; what processes it left behind
    /// write later is not. The handler may use the object, but neither destroy nor clear it. When it throws, that is
    /// logged as WARNING and the rest of the output is dropped.
    void setOutputHandler(OutputHandler handler);

    /// The child reads these bytes as its standard input, and then the end. Passed on like the output, that is while
    /// somebody waits or queries.
    void setInput(std::string bytes);

    /// The child reads the caller's own standard input. On Linux that is so by default.
    void inheritInput();

    /// Keeps the child and all that it starts together, for killProcessTree(). Windows: in a job object. Linux: in a
    /// process group of its own, which does not belong to the foreground of a terminal.
    void setOwnTree(bool own);

    /// Ends at once all processes of the tree that are still running, also when the child itself has ended. False when
    /// the last process was not started with setOwnTree().
    bool killProcessTree();

    /// @}

    /// Runs a program to its end, with the priority of the caller.
    ///
    /// | outcome | result | `error` |
    /// |---|---|---|
    /// | could not start | -1 | "Fail to start process" |
    /// | not finished within `timeoutMs` | -2 | "timeout"; the process is killed |
    /// | finished with another exit code than 0 | the exit code | "process return an error" |
    /// | finished with exit code 0 | 0 | untouched |
    ///
    /// \param error may be null
    static int ExecUtf8(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& workingDirectory, bool resolveProgram, unsigned int timeoutMs,
                        std::string* error = nullptr);

    /// The same, and collects what the program writes. After a time-out, what came until then; the processes that the
    /// program has started are killed as well.
    ///
    /// \param output replaced by standard output
    /// \param errorOutput replaced by standard error; null: that goes to `output` as well, as it comes
    /// \param input what the program reads; its end comes at once when it is empty
    static int ExecCapturedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                const std::string& workingDirectory, bool resolveProgram, unsigned int timeoutMs,
                                std::string& output, std::string* errorOutput = nullptr, std::string* error = nullptr,
                                const std::string& input = {});

    /// Starts a program that outlives the caller. Linux: in a session of its own, its standard streams leading nowhere.
    static bool StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                  const std::string& workingDirectory, bool resolveProgram);

    /// The same for the tokens of a command line, in the caller's folder and with the program used as given.
    static bool StartDetachedUtf8(const std::string& commandLine);

    /// Splits at blanks and tabs. A token that begins with a double quote ends at the next one that has no backslash
    /// before it; the quotes around it are dropped, and the backslash of \" within it. A double quote inside an
    /// unquoted token is an error, as is ill-formed UTF-8: "Invalid command line : " and the line are logged as
    /// CRITICAL, and the results are left alone.
    ///
    /// \return whether there is a program, the first token, which is not empty
    static bool SplitCommandLine(const std::string& commandLine, std::string& program,
                                 std::vector<std::string>& arguments);

    /// "Low", "Normal", "High", "Inherit", or "Unknown".
    [[nodiscard]] static std::string ProcessPriorityToString(ProcessPriority priority);

    /// Makes the object describe the calling process: running, without a handle, so that it cannot be waited for or
    /// ended through it. Program, arguments and working folder are filled.
    static bool GetCurrentProcess(kyProcess& process);

    /// The same for the process that started the caller, with a handle; its arguments stay empty. It can be ended
    /// through the object on Linux; on Windows the handle lacks the right. False when it is gone or may not be looked
    /// at.
    static bool GetParentProcess(kyProcess& process);

    /// The environment of the caller as "name=value", to add to for setProcessEnvironmentUtf8().
    [[nodiscard]] static std::vector<std::string> CurrentEnvironmentUtf8();

private:
    impl::ProcessRecord* mRecord; ///< owned
};

} // namespace ky
