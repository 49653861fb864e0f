// SPDX-License-Identifier: MIT
#include "process/spawn_native.h"

#include "platform/wide_windows.h"
#include "process/process_windows.h"

#include <shlobj.h>

#include <array>
#include <memory>

namespace ky::impl::native
{

namespace
{

// With the NUL at its end; the system's own limit.
constexpr std::size_t longestCommandLine = 32767;

DWORD priorityClass(Priority priority)
{
    switch (priority)
    {
    case Priority::Low: return BELOW_NORMAL_PRIORITY_CLASS;
    case Priority::Normal: return NORMAL_PRIORITY_CLASS;
    case Priority::High: return ABOVE_NORMAL_PRIORITY_CLASS;
    case Priority::Inherit: break;
    }
    return GetPriorityClass(GetCurrentProcess());
}

/// An empty entry would end the block.
std::wstring environmentBlock(const std::vector<std::string>& environment)
{
    std::wstring block;
    for (const std::string& entry : environment)
    {
        if (!entry.empty())
            block.append(widen(entry)).append(1, L'\0');
    }
    block.append(1, L'\0');
    return block;
}

/// What the child gets of the caller's handles: its three streams.
class Startup
{
public:
    explicit Startup(const ChildStreams* streams)
    {
        mInfo.StartupInfo.cb = streams != nullptr ? sizeof(mInfo) : sizeof(mInfo.StartupInfo);
        if (streams == nullptr)
            return;
        for (int stream = 0; stream < 3; ++stream)
            mHandles[static_cast<std::size_t>(stream)] = asHandle(childEnd(*streams, stream));
        mInfo.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        mInfo.StartupInfo.hStdInput = mHandles[inputStream];
        mInfo.StartupInfo.hStdOutput = mHandles[outputStream];
        mInfo.StartupInfo.hStdError = mHandles[errorStream];
        listHandles();
    }
    ~Startup()
    {
        if (mInfo.lpAttributeList != nullptr)
            DeleteProcThreadAttributeList(mInfo.lpAttributeList);
    }
    Startup(const Startup&) = delete;
    Startup& operator=(const Startup&) = delete;

    bool passesHandles() const { return mInfo.lpAttributeList != nullptr; }
    ErrorCode error() const { return mError; }
    STARTUPINFOW* get() { return &mInfo.StartupInfo; }

private:
    void listHandles()
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        mMemory = std::make_unique<char[]>(size);
        const auto list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(mMemory.get());
        if (!InitializeProcThreadAttributeList(list, 1, 0, &size))
        {
            mError = static_cast<ErrorCode>(GetLastError());
            return;
        }
        mInfo.lpAttributeList = list;
        if (!UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, mHandles.data(),
                                       sizeof(HANDLE) * mHandles.size(), nullptr, nullptr))
            mError = static_cast<ErrorCode>(GetLastError());
    }

    STARTUPINFOEXW mInfo = {};
    std::array<HANDLE, 3> mHandles = {};
    std::unique_ptr<char[]> mMemory;
    ErrorCode mError = 0;
};

/// Puts a process that does not run yet into a job of its own, and lets it run.
ErrorCode joinTree(const PROCESS_INFORMATION& info, Process& process)
{
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    if (job == nullptr || !AssignProcessToJobObject(job, info.hProcess))
    {
        const DWORD error = GetLastError();
        TerminateProcess(info.hProcess, killedExitCode);
        if (job != nullptr)
            CloseHandle(job);
        return static_cast<ErrorCode>(error);
    }
    process.tree = asNumber(job);
    ResumeThread(info.hThread);
    return 0;
}

} // namespace

bool takesCommandLine() noexcept { return true; }

std::string commandInterpreter()
{
    wchar_t folder[MAX_PATH] = {};
    // Without the folder there is none: a path from the root of the drive would be anybody's program.
    if (SHGetFolderPathW(nullptr, CSIDL_SYSTEM, nullptr, SHGFP_TYPE_CURRENT, folder) != S_OK)
        return {};
    return narrow(folder) + "\\cmd.exe";
}

ErrorCode unfitTextError() noexcept { return ERROR_INVALID_PARAMETER; }

ErrorCode startProcess(const StartOrder& order, Process& process)
{
    const std::wstring application = widePath(order.program);
    std::wstring commandLine = widen(order.commandLine);
    std::wstring environment = environmentBlock(order.environment);
    const std::wstring folder = widen(order.folder);
    if (commandLine.size() >= longestCommandLine)
        return ERROR_FILENAME_EXCED_RANGE;
    Startup startup(order.streams);
    if (startup.error() != 0)
        return startup.error();
    DWORD flags = priorityClass(order.priority) | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT;
    if (startup.passesHandles())
        flags |= EXTENDED_STARTUPINFO_PRESENT;
    if (order.ownTree)
        flags |= CREATE_SUSPENDED;
    PROCESS_INFORMATION info = {};
    if (!CreateProcessW(application.c_str(), commandLine.data(), nullptr, nullptr, startup.passesHandles(), flags,
                        order.environment.empty() ? nullptr : environment.data(),
                        folder.empty() ? nullptr : folder.c_str(), startup.get(), &info))
        return static_cast<ErrorCode>(GetLastError());
    Process started;
    const ErrorCode error = order.ownTree ? joinTree(info, started) : 0;
    CloseHandle(info.hThread);
    if (error != 0)
    {
        CloseHandle(info.hProcess);
        return error;
    }
    started.handle = asNumber(info.hProcess);
    started.id = info.dwProcessId;
    started.mainThreadId = info.dwThreadId;
    process = started;
    return 0;
}

} // namespace ky::impl::native
