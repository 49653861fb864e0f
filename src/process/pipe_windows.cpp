// SPDX-License-Identifier: MIT
// A named pipe with overlapped operations.
#include "process/pipe_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <algorithm>

namespace ky::impl::native
{

namespace
{

struct Operation
{
    OVERLAPPED overlapped = {};
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    bool isPending = false;

    ~Operation() { CloseHandle(event); }
};

} // namespace

struct PipeEndpoint
{
    HANDLE pipe = INVALID_HANDLE_VALUE;
    Operation reading;
    Operation writing;
};

namespace
{

// Operations count their bytes in 32 bits.
constexpr std::size_t largestTransfer = std::size_t{1} << 30;

DWORD transferSize(std::size_t size) { return static_cast<DWORD>(std::min(size, largestTransfer)); }

/// Takes the result of an operation that has ended.
TransferResult finish(PipeEndpoint& endpoint, Operation& operation)
{
    DWORD size = 0;
    const bool isDone = GetOverlappedResult(endpoint.pipe, &operation.overlapped, &size, FALSE) != 0 ||
                        GetLastError() == ERROR_MORE_DATA;
    ResetEvent(operation.event);
    operation.isPending = false;
    return {isDone ? Transfer::Done : Transfer::Failed, size};
}

template <typename Call>
TransferResult issue(PipeEndpoint& endpoint, Operation& operation, Call call)
{
    operation.overlapped = {};
    operation.overlapped.hEvent = operation.event;
    const DWORD code = call(&operation.overlapped) ? ERROR_SUCCESS : GetLastError();
    operation.isPending = code == ERROR_IO_PENDING;
    if (operation.isPending)
        return {Transfer::Pending, 0};
    if (code == ERROR_SUCCESS || code == ERROR_MORE_DATA)
        return finish(endpoint, operation);
    ResetEvent(operation.event);
    return {Transfer::Failed, 0};
}

TransferResult complete(PipeEndpoint& endpoint, Operation& operation)
{
    const DWORD state = WaitForSingleObject(operation.event, 0);
    if (state == WAIT_TIMEOUT)
        return {Transfer::Pending, 0};
    return finish(endpoint, operation);
}

/// The system still writes to the memory of an operation that was only told to stop.
void awaitEnd(PipeEndpoint& endpoint, Operation& operation) noexcept
{
    DWORD size = 0;
    if (operation.isPending)
        GetOverlappedResult(endpoint.pipe, &operation.overlapped, &size, TRUE);
    operation.isPending = false;
    ResetEvent(operation.event);
}

} // namespace

PipeEndpoint* createPipeEndpoint() { return new PipeEndpoint; }

void destroy(PipeEndpoint* endpoint) noexcept
{
    if (endpoint == nullptr)
        return;
    closePipe(*endpoint);
    delete endpoint;
}

// Whoever took the name first learns who this is, but cannot act in its name.
PipeConnect connectPipe(PipeEndpoint& endpoint, const std::string& name, int waitMs)
{
    const std::wstring path = L"\\\\.\\pipe\\" + widen(name);
    if (waitMs > 0 && !WaitNamedPipeW(path.c_str(), static_cast<DWORD>(waitMs)))
        return PipeConnect::Failed;
    const HANDLE pipe = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
    if (pipe == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_PIPE_BUSY ? PipeConnect::Busy : PipeConnect::Failed;
    if (GetFileType(pipe) != FILE_TYPE_PIPE)
    {
        CloseHandle(pipe);
        return PipeConnect::Failed;
    }
    adoptPipe(endpoint, pipe);
    return PipeConnect::Connected;
}

void adoptPipe(PipeEndpoint& endpoint, void* pipe) { endpoint.pipe = pipe; }

bool isPipeOpen(const PipeEndpoint& endpoint) { return endpoint.pipe != INVALID_HANDLE_VALUE; }

void closePipe(PipeEndpoint& endpoint) noexcept
{
    if (!isPipeOpen(endpoint))
        return;
    CancelIoEx(endpoint.pipe, nullptr);
    awaitEnd(endpoint, endpoint.reading);
    awaitEnd(endpoint, endpoint.writing);
    DisconnectNamedPipe(endpoint.pipe);
    CloseHandle(endpoint.pipe);
    endpoint.pipe = INVALID_HANDLE_VALUE;
}

bool peekPipe(PipeEndpoint& endpoint, std::size_t& available)
{
    DWORD size = 0;
    const bool isOpen = PeekNamedPipe(endpoint.pipe, nullptr, 0, nullptr, &size, nullptr) != 0;
    available = std::min<std::size_t>(size, largestTransfer);
    return isOpen;
}

TransferResult issueRead(PipeEndpoint& endpoint, char* buffer, std::size_t size)
{
    return issue(endpoint, endpoint.reading,
                 [&](OVERLAPPED* how) { return ReadFile(endpoint.pipe, buffer, transferSize(size), nullptr, how); });
}

TransferResult completeRead(PipeEndpoint& endpoint, std::size_t) { return complete(endpoint, endpoint.reading); }

TransferResult issueWrite(PipeEndpoint& endpoint, const char* data, std::size_t size)
{
    return issue(endpoint, endpoint.writing,
                 [&](OVERLAPPED* how) { return WriteFile(endpoint.pipe, data, transferSize(size), nullptr, how); });
}

TransferResult completeWrite(PipeEndpoint& endpoint) { return complete(endpoint, endpoint.writing); }

void waitPipe(PipeEndpoint& endpoint, int timeoutMs)
{
    const HANDLE events[] = {endpoint.reading.event, endpoint.writing.event};
    WaitForMultipleObjects(2, events, FALSE, static_cast<DWORD>(timeoutMs));
}

void* pipeReadEvent(const PipeEndpoint& endpoint) { return endpoint.reading.event; }

void* pipeWriteEvent(const PipeEndpoint& endpoint) { return endpoint.writing.event; }

} // namespace ky::impl::native
