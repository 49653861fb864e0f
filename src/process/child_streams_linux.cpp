// SPDX-License-Identifier: MIT
#include "process/child_streams_native.h"

#include "platform/parent_descriptor_linux.h"
#include "platform/posix_retry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <time.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr std::size_t bufferSize = std::size_t{1} << 16;
constexpr int firstOtherDescriptor = 3;
constexpr int waitAttemptMs = 10;

void closeIfOpen(int& descriptor) noexcept
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

/// A signal that the write of a closed pipe raises must not reach the application, whatever it does with it.
class WithoutPipeSignal
{
public:
    WithoutPipeSignal()
    {
        sigemptyset(&mPipe);
        sigaddset(&mPipe, SIGPIPE);
        sigset_t pending;
        sigemptyset(&pending);
        ::sigpending(&pending);
        mWasPending = sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &mPipe, &mMask);
    }
    ~WithoutPipeSignal()
    {
        const timespec now = {};
        if (!mWasPending)
            retryInterrupted([&] { return ::sigtimedwait(&mPipe, nullptr, &now); });
        ::pthread_sigmask(SIG_SETMASK, &mMask, nullptr);
    }
    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

private:
    sigset_t mPipe;
    sigset_t mMask;
    bool mWasPending;
};

} // namespace

struct ChildStreams
{
    ~ChildStreams()
    {
        for (int& end : childs)
            closeIfOpen(end);
    }

    std::array<ParentDescriptor, 3> ours;
    std::array<int, 3> childs = {-1, -1, -1};
    std::array<char, bufferSize> buffer;
};

namespace
{

/// Both ends away from the numbers that the child's streams have.
bool openPipe(ChildStreams& streams, std::size_t stream)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return false;
    for (int& end : ends)
    {
        if (end >= firstOtherDescriptor)
            continue;
        const int moved = ::fcntl(end, F_DUPFD_CLOEXEC, firstOtherDescriptor);
        ::close(end);
        end = moved;
    }
    const bool isInput = stream == inputStream;
    streams.ours[stream].set(ends[isInput ? 1 : 0]);
    streams.childs[stream] = ends[isInput ? 0 : 1];
    return ends[0] >= 0 && ends[1] >= 0 && ::fcntl(streams.ours[stream].get(), F_SETFL, O_NONBLOCK) == 0;
}

} // namespace

void CloseStreams::operator()(ChildStreams* streams) const noexcept { delete streams; }

OwnedStreams openStreams(InputKind input, bool readOutput, ErrorCode& error)
{
    OwnedStreams streams(new ChildStreams);
    const bool isOpen = (input != InputKind::Fed || openPipe(*streams, inputStream)) &&
                        (!readOutput || (openPipe(*streams, outputStream) && openPipe(*streams, errorStream)));
    error = isOpen ? 0 : errno;
    return isOpen ? std::move(streams) : nullptr;
}

std::intptr_t childEnd(const ChildStreams& streams, int stream) noexcept
{
    return streams.childs[static_cast<std::size_t>(stream)];
}

void closeChildEnds(ChildStreams& streams) noexcept
{
    for (int& end : streams.childs)
        closeIfOpen(end);
}

Transfer readStream(ChildStreams& streams, int stream, std::string_view& bytes)
{
    ParentDescriptor& end = streams.ours[static_cast<std::size_t>(stream)];
    if (end.get() < 0)
        return Transfer::End;
    const ssize_t got = retryInterrupted([&] { return ::read(end.get(), streams.buffer.data(), bufferSize); });
    if (got > 0)
    {
        bytes = std::string_view(streams.buffer.data(), static_cast<std::size_t>(got));
        return Transfer::Bytes;
    }
    if (got < 0 && errno == EAGAIN)
        return Transfer::Nothing;
    end.set(-1);
    return Transfer::End;
}

std::size_t waitingBytes(ChildStreams& streams, int stream) noexcept
{
    int count = 0;
    const int end = streams.ours[static_cast<std::size_t>(stream)].get();
    return end >= 0 && ::ioctl(end, FIONREAD, &count) == 0 ? static_cast<std::size_t>(count) : 0;
}

Transfer writeInput(ChildStreams& streams, std::string_view rest, std::size_t& sent)
{
    const int end = streams.ours[inputStream].get();
    if (end < 0)
        return Transfer::End;
    const WithoutPipeSignal guard;
    const ssize_t written = retryInterrupted([&] { return ::write(end, rest.data(), rest.size()); });
    if (written < 0)
        return errno == EAGAIN ? Transfer::Nothing : Transfer::End;
    sent = static_cast<std::size_t>(written);
    return Transfer::Bytes;
}

void closeInput(ChildStreams& streams) noexcept { streams.ours[inputStream].set(-1); }

void waitForStreams(ChildStreams& streams, const Process& process, unsigned int limitMs) noexcept
{
    int limit = static_cast<int>(std::min(limitMs, 0x7FFFFFFFU));
    if (process.handle < 0)
        limit = std::min(limit, waitAttemptMs);
    // Negative numbers are passed over.
    pollfd entries[4] = {{static_cast<int>(process.handle), POLLIN, 0},
                         {streams.ours[inputStream].get(), POLLOUT, 0},
                         {streams.ours[outputStream].get(), POLLIN, 0},
                         {streams.ours[errorStream].get(), POLLIN, 0}};
    ::poll(entries, 4, limit);
}

} // namespace ky::impl::native
