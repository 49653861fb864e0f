// SPDX-License-Identifier: MIT
// A stream socket that never blocks. Nothing really goes on by itself: an operation in flight is tried again when it is
// asked about.
#include "process/pipe_native.h"

#include "platform/clock_native.h"
#include "platform/parent_descriptor_linux.h"
#include "platform/posix_retry.h"
#include "process/pipe_socket_linux.h"

#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace ky::impl::native
{

struct PipeEndpoint
{
    ParentDescriptor socket;
    // Memory of the operations in flight, null when there is none.
    char* readTarget = nullptr;
    const char* writeSource = nullptr;
    std::size_t writeSize = 0;
    // A transfer that moved less than asked for has told that the next one can move nothing.
    bool isDrained = false;
    bool isFull = false;
};

namespace
{

// What a socket holds by default, roughly.
constexpr std::size_t usualCapacity = 256 * 1024;

bool isNotNow(int code) { return code == EAGAIN || code == EWOULDBLOCK; }

/// Connects within so many milliseconds, however often a signal interrupts; 0 or an error code.
int connectWithin(int socket, const sockaddr_un& address, int waitMs)
{
    const std::int64_t end = ticksSinceStartMs() + waitMs;
    for (std::int64_t rest = waitMs; rest > 0 || waitMs == 0; rest = end - ticksSinceStartMs())
    {
        const timeval limit = {static_cast<time_t>(rest / 1000), static_cast<suseconds_t>(rest % 1000 * 1000)};
        if (::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0)
            return errno;
        if (::connect(socket, generic(address), sizeof address) == 0)
            return 0;
        if (errno != EINTR)
            return errno;
    }
    return EAGAIN;
}

/// 0 or an error code.
int connectSocket(int socket, const sockaddr_un& address, int waitMs)
{
    const int code = connectWithin(socket, address, waitMs);
    if (code == 0 && ::fcntl(socket, F_SETFL, O_NONBLOCK) != 0)
        return errno;
    return code;
}

TransferResult receive(PipeEndpoint& endpoint, char* buffer, std::size_t size)
{
    const ssize_t count = retryInterrupted([&] { return ::recv(endpoint.socket.get(), buffer, size, 0); });
    if (count <= 0)
        return {count < 0 && isNotNow(errno) ? Transfer::Pending : Transfer::Failed, 0};
    endpoint.isDrained = static_cast<std::size_t>(count) < size;
    return {Transfer::Done, static_cast<std::size_t>(count)};
}

TransferResult send(PipeEndpoint& endpoint, const char* data, std::size_t size)
{
    const ssize_t count = retryInterrupted([&] { return ::send(endpoint.socket.get(), data, size, MSG_NOSIGNAL); });
    if (count < 0)
        return {isNotNow(errno) ? Transfer::Pending : Transfer::Failed, 0};
    endpoint.isFull = static_cast<std::size_t>(count) < size;
    return {Transfer::Done, static_cast<std::size_t>(count)};
}

void forgetOperations(PipeEndpoint& endpoint)
{
    endpoint.readTarget = nullptr;
    endpoint.writeSource = nullptr;
    endpoint.isDrained = false;
    endpoint.isFull = false;
}

void* asPointer(int descriptor) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor)); }

} // namespace

PipeEndpoint* createPipeEndpoint() { return new PipeEndpoint; }

void destroy(PipeEndpoint* endpoint) noexcept { delete endpoint; }

// A blocking connect() waits in the kernel for the server to make room; SO_SNDTIMEO limits it.
PipeConnect connectPipe(PipeEndpoint& endpoint, const std::string& name, int waitMs)
{
    const int folder = openPipeFolder();
    if (folder == -1)
        return PipeConnect::Failed;
    ::close(folder);
    const int type = SOCK_STREAM | SOCK_CLOEXEC | (waitMs > 0 ? 0 : SOCK_NONBLOCK);
    const int socket = ::socket(AF_UNIX, type, 0);
    if (socket == -1)
        return PipeConnect::Failed;
    const int code = connectSocket(socket, pipeAddress(pipeFileName(name)), waitMs);
    if (code == 0 && isPeerTrusted(socket))
    {
        adoptPipe(endpoint, asPointer(socket));
        return PipeConnect::Connected;
    }
    ::close(socket);
    return isNotNow(code) && waitMs == 0 ? PipeConnect::Busy : PipeConnect::Failed;
}

void adoptPipe(PipeEndpoint& endpoint, void* pipe)
{
    endpoint.socket.set(static_cast<int>(reinterpret_cast<std::intptr_t>(pipe)));
    forgetOperations(endpoint);
}

bool isPipeOpen(const PipeEndpoint& endpoint) { return endpoint.socket.get() != -1; }

void closePipe(PipeEndpoint& endpoint) noexcept
{
    endpoint.socket.set(-1);
    forgetOperations(endpoint);
}

// A receiving call takes what is there, so nobody has to be asked how much that is.
bool peekPipe(PipeEndpoint&, std::size_t& available)
{
    available = usualCapacity;
    return true;
}

TransferResult issueRead(PipeEndpoint& endpoint, char* buffer, std::size_t size)
{
    TransferResult result = {Transfer::Pending, 0};
    if (!std::exchange(endpoint.isDrained, false))
        result = receive(endpoint, buffer, size);
    endpoint.readTarget = result.state == Transfer::Pending ? buffer : nullptr;
    return result;
}

TransferResult completeRead(PipeEndpoint& endpoint, std::size_t limit)
{
    const TransferResult result = receive(endpoint, endpoint.readTarget, limit);
    if (result.state != Transfer::Pending)
        endpoint.readTarget = nullptr;
    return result;
}

TransferResult issueWrite(PipeEndpoint& endpoint, const char* data, std::size_t size)
{
    TransferResult result = {Transfer::Pending, 0};
    if (!std::exchange(endpoint.isFull, false))
        result = send(endpoint, data, size);
    endpoint.writeSource = result.state == Transfer::Pending ? data : nullptr;
    endpoint.writeSize = size;
    return result;
}

TransferResult completeWrite(PipeEndpoint& endpoint)
{
    const TransferResult result = send(endpoint, endpoint.writeSource, endpoint.writeSize);
    if (result.state != Transfer::Pending)
        endpoint.writeSource = nullptr;
    return result;
}

void waitPipe(PipeEndpoint& endpoint, int timeoutMs)
{
    const int events = (endpoint.readTarget != nullptr ? POLLIN : 0) | (endpoint.writeSource != nullptr ? POLLOUT : 0);
    waitForSocket(endpoint.socket.get(), static_cast<short>(events), timeoutMs);
}

void* pipeReadEvent(const PipeEndpoint& endpoint) { return asPointer(endpoint.socket.get()); }

void* pipeWriteEvent(const PipeEndpoint& endpoint) { return asPointer(endpoint.socket.get()); }

} // namespace ky::impl::native
