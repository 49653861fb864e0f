// SPDX-License-Identifier: MIT
// Pipes with names, because those without cannot be read and written beside other work.
#include "process/child_streams_native.h"

#include "process/overlapped_pipe_windows.h"
#include "process/process_windows.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cwchar>

namespace ky::impl::native
{

namespace
{

SECURITY_ATTRIBUTES inheritable() { return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE}; }

HANDLE openNowhere()
{
    SECURITY_ATTRIBUTES attributes = inheritable();
    return CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                       OPEN_EXISTING, 0, nullptr);
}

HANDLE ownInput()
{
    HANDLE copy = nullptr;
    const HANDLE own = GetStdHandle(STD_INPUT_HANDLE);
    if (own == nullptr || own == INVALID_HANDLE_VALUE ||
        !DuplicateHandle(GetCurrentProcess(), own, GetCurrentProcess(), &copy, 0, TRUE, DUPLICATE_SAME_ACCESS))
        return openNowhere();
    return copy;
}

/// Makes our end, and returns that of the child.
HANDLE openPipe(OverlappedPipe& pipe, bool isInput)
{
    static std::atomic<unsigned int> sNumber{0};
    LARGE_INTEGER ticks = {};
    QueryPerformanceCounter(&ticks);
    wchar_t name[96];
    std::swprintf(name, std::size(name), L"\\\\.\\pipe\\ky-stream-%lu-%u-%llx", GetCurrentProcessId(), ++sNumber,
                  static_cast<unsigned long long>(ticks.QuadPart));
    const DWORD access = isInput ? PIPE_ACCESS_OUTBOUND : PIPE_ACCESS_INBOUND;
    pipe.buffer.resize(streamBufferSize);
    pipe.overlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    pipe.handle = CreateNamedPipeW(name, access | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                   PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1,
                                   streamBufferSize, streamBufferSize, 0, nullptr);
    if (pipe.handle == INVALID_HANDLE_VALUE || pipe.overlapped.hEvent == nullptr)
        return INVALID_HANDLE_VALUE;
    SECURITY_ATTRIBUTES attributes = inheritable();
    return CreateFileW(name, isInput ? GENERIC_READ : GENERIC_WRITE, 0, &attributes, OPEN_EXISTING,
                       SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
}

} // namespace

struct ChildStreams
{
    std::array<OverlappedPipe, 3> pipes;
    std::array<HANDLE, 3> childs = {INVALID_HANDLE_VALUE, INVALID_HANDLE_VALUE, INVALID_HANDLE_VALUE};
};

void CloseStreams::operator()(ChildStreams* streams) const noexcept
{
    if (streams != nullptr)
        closeChildEnds(*streams);
    delete streams;
}

OwnedStreams openStreams(InputKind input, bool readOutput, ErrorCode& error)
{
    OwnedStreams streams(new ChildStreams);
    for (std::size_t stream = 0; stream < streams->childs.size(); ++stream)
    {
        const bool isInput = stream == inputStream;
        HANDLE& end = streams->childs[stream];
        if (isInput ? input == InputKind::Fed : readOutput)
            end = openPipe(streams->pipes[stream], isInput);
        else
            end = isInput && input == InputKind::Caller ? ownInput() : openNowhere();
        if (end == INVALID_HANDLE_VALUE)
        {
            const DWORD code = GetLastError();
            error = static_cast<ErrorCode>(code != 0 ? code : ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
    }
    return streams;
}

std::intptr_t childEnd(const ChildStreams& streams, int stream) noexcept
{
    return asNumber(streams.childs[static_cast<std::size_t>(stream)]);
}

void closeChildEnds(ChildStreams& streams) noexcept
{
    for (HANDLE& end : streams.childs)
    {
        if (end != INVALID_HANDLE_VALUE)
            CloseHandle(end);
        end = INVALID_HANDLE_VALUE;
    }
}

Transfer readStream(ChildStreams& streams, int stream, std::string_view& bytes)
{
    OverlappedPipe& pipe = streams.pipes[static_cast<std::size_t>(stream)];
    if (pipe.handle == INVALID_HANDLE_VALUE)
        return Transfer::End;
    std::size_t count = 0;
    const Transfer result =
        pipe.isPending
            ? pipe.poll(count)
            : pipe.afterStart(ReadFile(pipe.handle, pipe.buffer.data(), streamBufferSize, nullptr, &pipe.overlapped),
                              count);
    if (result == Transfer::End)
        pipe.close();
    else
        bytes = std::string_view(pipe.buffer.data(), count);
    return result;
}

std::size_t waitingBytes(ChildStreams& streams, int stream) noexcept
{
    const OverlappedPipe& pipe = streams.pipes[static_cast<std::size_t>(stream)];
    DWORD count = 0;
    if (pipe.handle == INVALID_HANDLE_VALUE || !PeekNamedPipe(pipe.handle, nullptr, 0, nullptr, &count, nullptr))
        return 0;
    // A transfer under way may hold as much besides.
    return count + (pipe.isPending ? streamBufferSize : 0);
}

Transfer writeInput(ChildStreams& streams, std::string_view rest, std::size_t& sent)
{
    OverlappedPipe& pipe = streams.pipes[inputStream];
    if (pipe.handle == INVALID_HANDLE_VALUE)
        return Transfer::End;
    if (pipe.isPending)
        return pipe.poll(sent);
    const std::size_t size = std::min<std::size_t>(rest.size(), streamBufferSize);
    std::copy_n(rest.data(), size, pipe.buffer.data());
    return pipe.afterStart(
        WriteFile(pipe.handle, pipe.buffer.data(), static_cast<DWORD>(size), nullptr, &pipe.overlapped), sent);
}

void closeInput(ChildStreams& streams) noexcept { streams.pipes[inputStream].close(); }

void waitForStreams(ChildStreams& streams, const Process& process, unsigned int limitMs) noexcept
{
    HANDLE handles[4] = {asHandle(process.handle)};
    DWORD count = 1;
    for (std::size_t stream = 0; stream < streams.pipes.size(); ++stream)
    {
        const OverlappedPipe& pipe = streams.pipes[stream];
        if (pipe.isPending)
            handles[count++] = pipe.overlapped.hEvent;
        else if (stream != inputStream && pipe.handle != INVALID_HANDLE_VALUE)
            return; // there may be more to read: nothing is under way that could tell
    }
    if (WaitForMultipleObjects(count, handles, FALSE, limitMs) == WAIT_FAILED)
        Sleep(limitMs);
}

} // namespace ky::impl::native
