// SPDX-License-Identifier: MIT
// The buffers of a pipe and the order in which its operations are completed and issued.
#include "platform/compiler.h"
#include "process/byte_ring.h"
#include "process/pipe_name.h"
#include "process/pipe_native.h"

#include <ky/kyNamedPipe.h>

#include <algorithm>
#include <vector>

namespace ky
{

using impl::native::PipeConnect;
using impl::native::PipeEndpoint;
using impl::native::Transfer;
using impl::native::TransferResult;

namespace
{

constexpr std::size_t defaultBufferLimit = 10240;
constexpr int busyWaitMs = 5000;

struct DestroyEndpoint
{
    void operator()(PipeEndpoint* endpoint) const noexcept { impl::native::destroy(endpoint); }
};

} // namespace

struct KY_HIDDEN kyNamedPipe::Private
{
    std::unique_ptr<PipeEndpoint, DestroyEndpoint> endpoint{impl::native::createPipeEndpoint()};
    std::string name;
    std::size_t maxReadBufferSize = defaultBufferLimit;
    std::size_t maxWriteBufferSize = defaultBufferLimit;
    impl::ByteRing readBuffer;
    std::size_t inFlightRead = 0; ///< bytes of the ring's room that a read in flight may fill
    std::vector<char> writeBuffer;
    std::vector<char> inFlightWrite; ///< empty when no write is in flight
    std::size_t written = 0;         ///< bytes of inFlightWrite that the system has taken
    bool writeFailed = false;
    bool readChannelClosed = false;
    bool writeChannelClosed = false;

    bool isOpen() const { return impl::native::isPipeOpen(*endpoint); }
    void start();
    void close();
    bool completeWrite();
    bool beginWrite(bool& progressed);
    bool finishWrite(Transfer state);
    Transfer writeRest();
    bool completeRead();
    bool beginReads();
};

void kyNamedPipe::Private::start()
{
    writeFailed = false;
    readChannelClosed = false;
    writeChannelClosed = false;
}

void kyNamedPipe::Private::close()
{
    if (isOpen())
        impl::native::closePipe(*endpoint);
    readBuffer.clear();
    inFlightRead = 0;
    writeBuffer = {};
    inFlightWrite = {};
    written = 0;
    name.clear();
}

/// Issues what is left of the bytes in flight.
Transfer kyNamedPipe::Private::writeRest()
{
    while (written < inFlightWrite.size())
    {
        const TransferResult result =
            issueWrite(*endpoint, inFlightWrite.data() + written, inFlightWrite.size() - written);
        if (result.state != Transfer::Done)
            return result.state;
        if (result.size == 0)
            return Transfer::Failed;
        written += result.size;
    }
    return Transfer::Done;
}

/// Whether nothing is in flight any more.
bool kyNamedPipe::Private::finishWrite(Transfer state)
{
    if (state == Transfer::Pending)
        return false;
    if (state == Transfer::Failed)
        writeFailed = writeChannelClosed = true;
    inFlightWrite.clear();
    written = 0;
    return true;
}

bool kyNamedPipe::Private::completeWrite()
{
    if (inFlightWrite.empty())
        return false;
    const TransferResult result = impl::native::completeWrite(*endpoint);
    if (result.state != Transfer::Done)
        return finishWrite(result.state);
    written += result.size;
    return finishWrite(writeRest());
}

/// False when a write was issued that is in flight now.
bool kyNamedPipe::Private::beginWrite(bool& progressed)
{
    if (writeFailed || !inFlightWrite.empty() || writeBuffer.empty())
        return true;
    inFlightWrite.swap(writeBuffer);
    if (!finishWrite(writeRest()))
        return false;
    progressed = true;
    return true;
}

bool kyNamedPipe::Private::completeRead()
{
    if (inFlightRead == 0)
        return false;
    const std::size_t held = readBuffer.size();
    const std::size_t room = held < maxReadBufferSize ? maxReadBufferSize - held : 1;
    const TransferResult result = impl::native::completeRead(*endpoint, std::min(inFlightRead, room));
    if (result.state == Transfer::Pending)
        return false;
    if (result.state == Transfer::Failed)
        readChannelClosed = true;
    else
        readBuffer.append(result.size);
    inFlightRead = 0;
    return true;
}

/// False when a read was issued that is in flight now.
bool kyNamedPipe::Private::beginReads()
{
    while (!readChannelClosed && inFlightRead == 0 && readBuffer.size() < maxReadBufferSize)
    {
        std::size_t available = 0;
        readChannelClosed = !peekPipe(*endpoint, available);
        if (readChannelClosed)
            break;
        // At least one: a read that is always in flight notices the end of the pipe.
        const std::size_t wanted = std::clamp<std::size_t>(available, 1, maxReadBufferSize - readBuffer.size());
        const std::span<char> room = readBuffer.room(wanted, maxReadBufferSize);
        const TransferResult result = issueRead(*endpoint, room.data(), room.size());
        if (result.state == Transfer::Pending)
        {
            inFlightRead = room.size();
            return false;
        }
        if (result.state == Transfer::Failed)
            readChannelClosed = true;
        else
            readBuffer.append(result.size);
    }
    return true;
}

kyNamedPipe::kyNamedPipe() : mPrivate(std::make_unique<Private>()) {}

kyNamedPipe::~kyNamedPipe() { closeNamedPipe(); }

bool kyNamedPipe::connectToNamedPipeServerUtf8(const std::string& name)
{
    Private& pipe = *mPrivate;
    if (pipe.isOpen() || !impl::isPipeName(name))
        return false;
    std::string kept = name;
    PipeConnect result = connectPipe(*pipe.endpoint, name, 0);
    while (result == PipeConnect::Busy)
        result = connectPipe(*pipe.endpoint, name, busyWaitMs);
    if (result != PipeConnect::Connected)
        return false;
    pipe.start();
    pipe.name = std::move(kept);
    return true;
}

void kyNamedPipe::setHandle(void* handle)
{
    adoptPipe(*mPrivate->endpoint, handle);
    mPrivate->start();
}

void kyNamedPipe::closeNamedPipe() { mPrivate->close(); }

bool kyNamedPipe::isConnected() const { return mPrivate->isOpen(); }

std::size_t kyNamedPipe::readNamedPipeData(char* data, std::size_t size)
{
    return isConnected() ? mPrivate->readBuffer.take(data, size) : 0;
}

std::size_t kyNamedPipe::writeNamedPipeData(const char* data, std::size_t size)
{
    Private& pipe = *mPrivate;
    if (!pipe.isOpen() || pipe.writeFailed)
        return 0;
    const std::size_t accepted = std::min(size, pipe.maxWriteBufferSize - pipe.writeBuffer.size());
    pipe.writeBuffer.insert(pipe.writeBuffer.end(), data, data + accepted);
    return accepted;
}

std::size_t kyNamedPipe::bytesAvailable() const { return mPrivate->readBuffer.size(); }

std::size_t kyNamedPipe::bytesToWrite() const { return mPrivate->writeBuffer.size(); }

bool kyNamedPipe::hasPendingWrite() const { return !mPrivate->inFlightWrite.empty() || !mPrivate->writeBuffer.empty(); }

bool kyNamedPipe::hasWriteFailed() const { return mPrivate->writeFailed; }

bool kyNamedPipe::isReadChannelClosed() const { return mPrivate->readChannelClosed; }

bool kyNamedPipe::isWriteChannelClosed() const { return mPrivate->writeChannelClosed; }

void* kyNamedPipe::getReadEvent() const { return pipeReadEvent(*mPrivate->endpoint); }

void* kyNamedPipe::getWriteEvent() const { return pipeWriteEvent(*mPrivate->endpoint); }

// The memory of the ring follows with the next read.
bool kyNamedPipe::setMaxReadBufferSize(std::size_t size)
{
    if (mPrivate->readBuffer.size() > size)
        return false;
    mPrivate->maxReadBufferSize = size;
    return true;
}

bool kyNamedPipe::setMaxWriteBufferSize(std::size_t size)
{
    if (mPrivate->writeBuffer.size() > size)
        return false;
    mPrivate->maxWriteBufferSize = size;
    if (mPrivate->writeBuffer.capacity() > size)
        mPrivate->writeBuffer.shrink_to_fit();
    return true;
}

std::size_t kyNamedPipe::getMaxReadBufferSize() const { return mPrivate->maxReadBufferSize; }

std::size_t kyNamedPipe::getMaxWriteBufferSize() const { return mPrivate->maxWriteBufferSize; }

void kyNamedPipe::processNamedPipeEvents(int timeoutMs, bool wait)
{
    Private& pipe = *mPrivate;
    if (!pipe.isOpen())
        return;
    bool progressed = pipe.completeWrite();
    if (!pipe.beginWrite(progressed))
        return;
    progressed = pipe.completeRead() || progressed;
    if (!pipe.beginReads())
        return;
    const bool isInFlight = pipe.inFlightRead != 0 || !pipe.inFlightWrite.empty();
    if (!progressed && isInFlight && pipe.readBuffer.size() == 0 && timeoutMs >= 1 && wait)
        waitPipe(*pipe.endpoint, timeoutMs);
}

} // namespace ky
