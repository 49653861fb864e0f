// SPDX-License-Identifier: MIT
// A claim to the name, which the kernel drops when its holder dies, tells a live server from the socket of a dead one.
// All instances share the listening socket.
#include "process/pipe_server_native.h"

#include "filesystem/lock_claim_linux.h"
#include "platform/parent_descriptor_linux.h"
#include "platform/posix_retry.h"
#include "process/pipe_socket_linux.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ky::impl::native
{

struct PipeListener
{
    ParentDescriptor folder;
    ParentDescriptor claim;
    ParentDescriptor socket;
    std::string file;
    struct stat bound = {}; ///< what was made, zeroed when nothing was
    bool isDrained = false; ///< nobody waits to be accepted
    bool isStarved = false; ///< somebody waits whom the system had no means to accept
};

struct PipeInstance
{
    int socket = -1;
};

namespace
{

// The kernel lets one more wait than it is told.
constexpr int backlog = 8 - 1;
constexpr int shortagePauseMs = 20;
constexpr int socketType = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;

/// Whether it may pass: other connections will be closed.
bool isShortage(int code) { return code == EMFILE || code == ENFILE || code == ENOBUFS || code == ENOMEM; }

/// Nobody who claims names listens, but somebody else may.
bool isAnswering(const sockaddr_un& address)
{
    const int probe = ::socket(AF_UNIX, socketType, 0);
    const bool isRefused =
        probe != -1 && ::connect(probe, generic(address), sizeof address) != 0 && errno == ECONNREFUSED;
    if (probe != -1)
        ::close(probe);
    return !isRefused;
}

/// Makes way for a new socket. Only a socket that nobody listens on goes; other things are not ours.
bool clearStale(const PipeListener& listener, const sockaddr_un& address)
{
    struct stat found = {};
    const int folder = listener.folder.get();
    if (::fstatat(folder, listener.file.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT;
    return S_ISSOCK(found.st_mode) && !isAnswering(address) && ::unlinkat(folder, listener.file.c_str(), 0) == 0;
}

bool claim(PipeListener& listener)
{
    int descriptor = -1;
    const Claim result = claimName(listener.folder.get(), listener.file, LockSharing::Exclusive, descriptor);
    listener.claim.set(descriptor);
    return result == Claim::Granted;
}

bool bindAndListen(PipeListener& listener)
{
    const sockaddr_un address = pipeAddress(listener.file);
    listener.socket.set(::socket(AF_UNIX, socketType, 0));
    const int socket = listener.socket.get();
    if (socket == -1 || !clearStale(listener, address) || ::bind(socket, generic(address), sizeof address) != 0)
        return false;
    ::fstatat(listener.folder.get(), listener.file.c_str(), &listener.bound, AT_SYMLINK_NOFOLLOW);
    return ::listen(socket, backlog) == 0;
}

} // namespace

PipeListener* openPipeListener(const std::string& name, bool)
{
    auto listener = std::make_unique<PipeListener>();
    listener->file = pipeFileName(name);
    listener->folder.set(openPipeFolder());
    if (listener->folder.get() != -1 && claim(*listener) && bindAndListen(*listener))
        return listener.release();
    closePipeListener(listener.release());
    return nullptr;
}

// A child of a fork has no descriptors, and removes nothing.
void closePipeListener(PipeListener* listener) noexcept
{
    struct stat found = {};
    const int folder = listener->folder.get();
    const char* const file = listener->file.c_str();
    if (listener->claim.get() != -1 && listener->bound.st_ino != 0 &&
        ::fstatat(folder, file, &found, AT_SYMLINK_NOFOLLOW) == 0 && found.st_ino == listener->bound.st_ino &&
        found.st_dev == listener->bound.st_dev)
        ::unlinkat(folder, file, 0);
    listener->socket.set(-1);
    dropClaim(listener->claim.release());
    delete listener;
}

PipeInstance* openPipeInstance(PipeListener&) { return new PipeInstance; }

// A client that has gone meanwhile was never there; one of another user is turned away.
InstanceState pollPipeInstance(PipeListener& listener, PipeInstance& instance)
{
    while (!listener.isDrained)
    {
        const int socket = retryInterrupted(
            [&] { return ::accept4(listener.socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK); });
        if (socket != -1 && isPeerTrusted(socket))
        {
            instance.socket = socket;
            return InstanceState::Connected;
        }
        if (socket != -1)
            ::close(socket);
        else if (errno == EAGAIN || errno == EWOULDBLOCK)
            listener.isDrained = true;
        else if (isShortage(errno))
            listener.isDrained = listener.isStarved = true;
        else if (errno != ECONNABORTED)
            return InstanceState::Failed;
    }
    return InstanceState::Waiting;
}

// The event is the listening socket itself, and is set as long as somebody waits.
void signalAgain(PipeListener&, const PipeInstance&) {}

void* takePipe(PipeInstance* instance) noexcept
{
    const int socket = instance->socket;
    delete instance;
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(socket));
}

// One that is connected has been taken.
void closePipeInstance(PipeListener&, PipeInstance* instance) noexcept { delete instance; }

// Somebody who could not be accepted still waits, so that poll() would return at once.
bool waitPipeListener(PipeListener& listener, int timeoutMs)
{
    if (std::exchange(listener.isStarved, false))
    {
        const int pauseMs = timeoutMs < 0 ? shortagePauseMs : std::min(timeoutMs, shortagePauseMs);
        ::poll(nullptr, 0, pauseMs);
        timeoutMs = timeoutMs < 0 ? timeoutMs : timeoutMs - pauseMs;
    }
    return waitForSocket(listener.socket.get(), POLLIN, timeoutMs);
}

void resetPipeListener(PipeListener& listener) { listener.isDrained = false; }

} // namespace ky::impl::native
