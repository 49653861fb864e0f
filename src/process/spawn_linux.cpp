// SPDX-License-Identifier: MIT
// posix_spawn() borrows the memory of the caller until the program runs, so that a start costs the same from a large
// process as from a small one.
#include "process/spawn_native.h"

#include "process/process_linux.h"
#include "process/program_file_linux.h"

#include <cerrno>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr int firstOtherDescriptor = 3;

std::vector<char*> pointersTo(const std::vector<std::string>& texts, bool keepEmpty)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
    {
        if (!text.empty() || keepEmpty)
            pointers.push_back(const_cast<char*>(text.c_str())); // not written to
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// What is done in the child before its program runs.
class Actions
{
public:
    Actions() { check(::posix_spawn_file_actions_init(&mActions)); }
    ~Actions() { ::posix_spawn_file_actions_destroy(&mActions); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    ErrorCode describe(const StartOrder& order)
    {
        for (int stream = 0; stream < firstOtherDescriptor; ++stream)
            setStream(stream, order);
        check(::posix_spawn_file_actions_addclosefrom_np(&mActions, firstOtherDescriptor));
        if (!order.folder.empty())
            check(::posix_spawn_file_actions_addchdir_np(&mActions, order.folder.c_str()));
        return mError;
    }

    const posix_spawn_file_actions_t* get() const { return &mActions; }

private:
    void setStream(int stream, const StartOrder& order)
    {
        const int end = order.streams != nullptr ? static_cast<int>(childEnd(*order.streams, stream)) : -1;
        if (end >= 0)
        {
            check(::posix_spawn_file_actions_adddup2(&mActions, end, stream));
            return;
        }
        // One that is missing must not be taken by the first file that the child opens.
        const int flags = ::fcntl(stream, F_GETFD);
        if (order.detached || flags < 0 || (flags & FD_CLOEXEC) != 0)
            check(::posix_spawn_file_actions_addopen(&mActions, stream, "/dev/null", O_RDWR, 0));
    }

    void check(int error)
    {
        if (mError == 0)
            mError = error;
    }

    posix_spawn_file_actions_t mActions;
    ErrorCode mError = 0;
};

class Attributes
{
public:
    explicit Attributes(const StartOrder& order)
    {
        ::posix_spawnattr_init(&mAttributes);
        short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        sigset_t signals;
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&mAttributes, &signals);
        // Those of the terminal are left as whoever started us wanted them, as nohup and shells do.
        sigfillset(&signals);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU})
            sigdelset(&signals, signal);
        ::posix_spawnattr_setsigdefault(&mAttributes, &signals);
        if (order.detached)
            flags |= POSIX_SPAWN_SETSID;
        else if (order.ownTree)
            flags |= POSIX_SPAWN_SETPGROUP; // number 0: that of the child
        ::posix_spawnattr_setflags(&mAttributes, flags);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&mAttributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &mAttributes; }

private:
    posix_spawnattr_t mAttributes;
};

void setPriority(const StartOrder& order, const Process& process)
{
    constexpr int niceValues[] = {10, 0, -5};
    if (order.priority != Priority::Inherit && process.handle != alreadyGone)
        ::setpriority(PRIO_PROCESS, process.id, niceValues[static_cast<int>(order.priority)]);
}

} // namespace

bool takesCommandLine() noexcept { return false; }

std::string commandInterpreter() { return "/bin/sh"; }

ErrorCode unfitTextError() noexcept { return EINVAL; }

ErrorCode startProcess(const StartOrder& order, Process& process)
{
    const std::string path = findProgram(order.program);
    if (path.empty())
        return ENOENT;
    std::vector<char*> arguments = pointersTo(order.arguments, true);
    arguments.insert(arguments.begin(), const_cast<char*>(order.program.c_str()));
    std::vector<char*> environment = pointersTo(order.environment, false);
    char** const variables = order.environment.empty() ? environ : environment.data();
    Actions actions;
    const Attributes attributes(order);
    ErrorCode error = actions.describe(order);
    if (error != 0)
        return error;
    pid_t id = 0;
    error = ::posix_spawn(&id, path.c_str(), actions.get(), attributes.get(), arguments.data(), variables);
    if (error == ENOEXEC && isText(path))
    {
        // As shells do with a file of commands that names no interpreter; never the text of a command.
        const std::string shell = commandInterpreter();
        arguments.front() = const_cast<char*>(path.c_str());
        arguments.insert(arguments.begin(), const_cast<char*>(shell.c_str()));
        error = ::posix_spawn(&id, shell.c_str(), actions.get(), attributes.get(), arguments.data(), variables);
    }
    if (error != 0)
        return error;
    process = Process();
    process.id = static_cast<std::uint32_t>(id);
    process.tree = order.ownTree ? id : noHandle;
    openHandle(process);
    setPriority(order, process);
    return 0;
}

} // namespace ky::impl::native
