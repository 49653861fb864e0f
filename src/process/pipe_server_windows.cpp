// SPDX-License-Identifier: MIT
// Instances of one pipe name, each with an overlapped wait for its client; all of them signal one event.
#include "process/pipe_server_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <memory>

namespace ky::impl::native
{

struct PipeListener
{
    std::wstring path;
    HANDLE event = nullptr;
    DWORD firstInstance = 0; ///< flag for the next instance
};

struct PipeInstance
{
    HANDLE pipe = INVALID_HANDLE_VALUE;
    OVERLAPPED overlapped = {};
    bool alreadyConnected = false;
    bool isPending = false;
};

namespace
{

constexpr DWORD anyNumber = PIPE_UNLIMITED_INSTANCES;
constexpr DWORD defaultTimeoutMs = 3000;

constexpr DWORD mode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;

HANDLE createPipe(const PipeListener& listener)
{
    const DWORD access = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | listener.firstInstance;
    return CreateNamedPipeW(listener.path.c_str(), access, mode, anyNumber, 0, 0, defaultTimeoutMs, nullptr);
}

DWORD connect(const PipeListener& listener, PipeInstance& instance)
{
    instance.overlapped = {};
    instance.overlapped.hEvent = listener.event;
    return ConnectNamedPipe(instance.pipe, &instance.overlapped) ? ERROR_SUCCESS : GetLastError();
}

/// Begins to wait. A client that came and went in between gives way to the next one.
bool awaitClient(const PipeListener& listener, PipeInstance& instance)
{
    DWORD code = connect(listener, instance);
    while (code == ERROR_NO_DATA && DisconnectNamedPipe(instance.pipe))
        code = connect(listener, instance);
    instance.alreadyConnected = code == ERROR_PIPE_CONNECTED;
    instance.isPending = code == ERROR_IO_PENDING;
    if (code == ERROR_SUCCESS || instance.alreadyConnected)
        SetEvent(listener.event);
    return code == ERROR_SUCCESS || instance.alreadyConnected || instance.isPending;
}

/// The event is shared with other instances, so that only the operation itself tells when the system has let go of it.
void cancel(PipeInstance& instance) noexcept
{
    CancelIoEx(instance.pipe, &instance.overlapped);
    while (!HasOverlappedIoCompleted(&instance.overlapped))
        SwitchToThread();
}

} // namespace

PipeListener* openPipeListener(const std::string& name, bool exclusive)
{
    auto listener = std::make_unique<PipeListener>();
    listener->path = L"\\\\.\\pipe\\" + widen(name);
    listener->firstInstance = exclusive ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
    listener->event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return listener->event == nullptr ? nullptr : listener.release();
}

void closePipeListener(PipeListener* listener) noexcept
{
    CloseHandle(listener->event);
    delete listener;
}

PipeInstance* openPipeInstance(PipeListener& listener)
{
    auto* const instance = new PipeInstance{createPipe(listener)};
    if (instance->pipe != INVALID_HANDLE_VALUE && awaitClient(listener, *instance))
    {
        listener.firstInstance = 0;
        return instance;
    }
    closePipeInstance(listener, instance);
    return nullptr;
}

InstanceState pollPipeInstance(PipeListener&, PipeInstance& instance)
{
    DWORD size = 0;
    if (instance.alreadyConnected || GetOverlappedResult(instance.pipe, &instance.overlapped, &size, FALSE))
    {
        instance.isPending = false;
        return InstanceState::Connected;
    }
    if (GetLastError() == ERROR_IO_INCOMPLETE)
        return InstanceState::Waiting;
    instance.isPending = false;
    return InstanceState::Failed;
}

// Issuing an overlapped operation clears its event.
void signalAgain(PipeListener& listener, const PipeInstance& instance)
{
    if (instance.alreadyConnected || HasOverlappedIoCompleted(&instance.overlapped))
        SetEvent(listener.event);
}

void* takePipe(PipeInstance* instance) noexcept
{
    const HANDLE pipe = instance->pipe;
    delete instance;
    return pipe;
}

void closePipeInstance(PipeListener&, PipeInstance* instance) noexcept
{
    if (instance->isPending)
        cancel(*instance);
    if (instance->pipe != INVALID_HANDLE_VALUE)
        CloseHandle(instance->pipe);
    delete instance;
}

bool waitPipeListener(PipeListener& listener, int timeoutMs)
{
    return WaitForSingleObject(listener.event, static_cast<DWORD>(timeoutMs)) != WAIT_TIMEOUT;
}

void resetPipeListener(PipeListener& listener) { ResetEvent(listener.event); }

} // namespace ky::impl::native
