// SPDX-License-Identifier: MIT
// The pump of a pipe over an endpoint that does what the input says, beside a model of it that has no buffers to
// manage. Every call to the endpoint, every count and flag and every byte must be the same.
#include "process/pipe_native.h"
#include "text/require.h"

#include <ky/kyNamedPipe.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace ky::impl::native
{

struct PipeEndpoint
{
    bool isOpen = false;
    char* target = nullptr;
    const char* source = nullptr;
    std::size_t targetSize = 0;
    std::size_t sourceSize = 0;
};

} // namespace ky::impl::native

namespace
{

using namespace ky::impl::native;

/// What the endpoint answers, call by call.
struct Script
{
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    std::size_t position = 0;

    std::size_t next() { return position < size ? std::size_t{data[position++]} : (++position, std::size_t{1}); }
    bool isOver() const { return position >= size; }

    /// Of an operation on up to `limit` bytes.
    TransferResult transfer(std::size_t limit)
    {
        const std::size_t choice = next();
        if (choice < 4)
            return {Transfer::Failed, 0};
        if (choice % 3 == 0)
            return {Transfer::Pending, 0};
        return {Transfer::Done, choice % 3 == 1 ? limit : std::min(limit, choice)};
    }
    bool peek(std::size_t& available)
    {
        const std::size_t choice = next();
        available = choice % 5 == 0 ? 0 : choice * choice;
        return choice > 1;
    }
};

/// The world behind the endpoint as the library sees it: what was called, what was sent, how much was received.
struct World
{
    Script script;
    std::string trace;
    std::string sent;
    std::uint8_t nextReceived = 0;

    void note(char call, std::size_t size) { trace += call + std::to_string(size) + ' '; }
    void receive(char* data, std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i)
            data[i] = static_cast<char>(nextReceived++);
    }
};

World real;

/// The pump as it is described.
struct Model
{
    World world;
    std::size_t maxRead = 10240;
    std::size_t maxWrite = 10240;
    std::string readBuffer;
    std::string writeBuffer;
    std::string inFlightWrite;
    std::size_t inFlightRead = 0;
    bool writeFailed = false;
    bool readClosed = false;

    void received(std::size_t size)
    {
        std::string bytes(size, '\0');
        world.receive(bytes.data(), size);
        readBuffer += bytes;
    }
    /// True when the whole is no longer in flight.
    bool wrote(TransferResult result)
    {
        while (result.state == Transfer::Done)
        {
            world.sent += inFlightWrite.substr(0, result.size);
            inFlightWrite.erase(0, result.size);
            if (inFlightWrite.empty())
                return true;
            world.note('w', inFlightWrite.size());
            result = world.script.transfer(inFlightWrite.size());
        }
        if (result.state == Transfer::Pending)
            return false;
        writeFailed = true;
        inFlightWrite.clear();
        return true;
    }
    void process(int timeoutMs, bool wait, const std::string& realTrace);
};

/// The ring hands out its room in one or two pieces: the size asked for is taken from the trace, within what is due.
std::size_t tracedRead(const std::string& trace, std::size_t position, std::size_t due)
{
    KY_REQUIRE(trace.size() > position && trace[position] == 'r');
    const std::size_t size = std::stoull(trace.substr(position + 1));
    KY_REQUIRE(size >= 1 && size <= due);
    return size;
}

void Model::process(int timeoutMs, bool wait, const std::string& realTrace)
{
    bool progressed = false;
    if (!inFlightWrite.empty())
    {
        world.note('W', inFlightWrite.size());
        progressed = wrote(world.script.transfer(inFlightWrite.size()));
    }
    if (!writeFailed && inFlightWrite.empty() && !writeBuffer.empty())
    {
        inFlightWrite.swap(writeBuffer);
        world.note('w', inFlightWrite.size());
        if (!wrote(world.script.transfer(inFlightWrite.size())))
            return;
        progressed = true;
    }
    if (inFlightRead != 0)
    {
        const std::size_t room = readBuffer.size() < maxRead ? maxRead - readBuffer.size() : 1;
        world.note('R', std::min(room, inFlightRead));
        const TransferResult result = world.script.transfer(std::min(room, inFlightRead));
        progressed = progressed || result.state != Transfer::Pending;
        inFlightRead = result.state == Transfer::Pending ? inFlightRead : 0;
        readClosed = readClosed || result.state == Transfer::Failed;
        received(result.size);
    }
    while (!readClosed && inFlightRead == 0 && readBuffer.size() < maxRead)
    {
        std::size_t available = 0;
        world.note('p', 0);
        readClosed = !world.script.peek(available);
        if (readClosed)
            break;
        const std::size_t due = std::max<std::size_t>(1, std::min(available, maxRead - readBuffer.size()));
        const std::size_t size = tracedRead(realTrace, world.trace.size(), due);
        world.note('r', size);
        const TransferResult result = world.script.transfer(size);
        inFlightRead = result.state == Transfer::Pending ? size : 0;
        if (inFlightRead != 0)
            return;
        readClosed = result.state == Transfer::Failed;
        received(result.size);
    }
    if (!progressed && (inFlightRead != 0 || !inFlightWrite.empty()) && readBuffer.empty() && timeoutMs >= 1 && wait)
        world.note('x', static_cast<std::size_t>(timeoutMs));
}

void compare(const ky::kyNamedPipe& pipe, const Model& model)
{
    KY_REQUIRE(real.trace == model.world.trace);
    KY_REQUIRE(real.sent == model.world.sent);
    KY_REQUIRE(pipe.bytesAvailable() == model.readBuffer.size());
    KY_REQUIRE(pipe.bytesToWrite() == model.writeBuffer.size());
    KY_REQUIRE(pipe.hasPendingWrite() == (!model.inFlightWrite.empty() || !model.writeBuffer.empty()));
    KY_REQUIRE(pipe.hasWriteFailed() == model.writeFailed && pipe.isWriteChannelClosed() == model.writeFailed);
    KY_REQUIRE(pipe.isReadChannelClosed() == model.readClosed);
    KY_REQUIRE(pipe.getMaxReadBufferSize() == model.maxRead && pipe.getMaxWriteBufferSize() == model.maxWrite);
}

void write(ky::kyNamedPipe& pipe, Model& model, std::size_t size)
{
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(size++ * 7);
    const std::size_t room = model.writeFailed ? 0 : model.maxWrite - model.writeBuffer.size();
    const std::size_t accepted = pipe.writeNamedPipeData(bytes.data(), bytes.size());
    KY_REQUIRE(accepted == std::min(bytes.size(), room));
    model.writeBuffer += bytes.substr(0, accepted);
}

void read(ky::kyNamedPipe& pipe, Model& model, std::size_t size)
{
    std::string bytes(size, '\0');
    bytes.resize(pipe.readNamedPipeData(bytes.data(), bytes.size()));
    KY_REQUIRE(bytes == model.readBuffer.substr(0, size));
    model.readBuffer.erase(0, bytes.size());
}

void step(ky::kyNamedPipe& pipe, Model& model)
{
    const std::size_t choice = real.script.next();
    const std::size_t size = real.script.next() * (choice / 16);
    model.world.script.position = real.script.position;
    switch (choice % 8)
    {
    case 0:
    case 1: return write(pipe, model, size);
    case 2:
    case 3: return read(pipe, model, size);
    case 4:
        KY_REQUIRE(pipe.setMaxReadBufferSize(size) == (model.readBuffer.size() <= size));
        model.maxRead = model.readBuffer.size() <= size ? size : model.maxRead;
        return;
    case 5:
        KY_REQUIRE(pipe.setMaxWriteBufferSize(size) == (model.writeBuffer.size() <= size));
        model.maxWrite = model.writeBuffer.size() <= size ? size : model.maxWrite;
        return;
    default:
        pipe.processNamedPipeEvents(static_cast<int>(size % 3), choice % 8 == 6);
        model.process(static_cast<int>(size % 3), choice % 8 == 6, real.trace);
        KY_REQUIRE(real.script.position == model.world.script.position);
    }
}

} // namespace

namespace ky::impl::native
{

PipeEndpoint* createPipeEndpoint() { return new PipeEndpoint; }
void destroy(PipeEndpoint* endpoint) noexcept { delete endpoint; }
PipeConnect connectPipe(PipeEndpoint& endpoint, const std::string&, int)
{
    endpoint.isOpen = true;
    return PipeConnect::Connected;
}
void adoptPipe(PipeEndpoint& endpoint, void*) { endpoint.isOpen = true; }
bool isPipeOpen(const PipeEndpoint& endpoint) { return endpoint.isOpen; }
void closePipe(PipeEndpoint& endpoint) noexcept { endpoint = {}; }
void* pipeReadEvent(const PipeEndpoint&) { return nullptr; }
void* pipeWriteEvent(const PipeEndpoint&) { return nullptr; }

bool peekPipe(PipeEndpoint&, std::size_t& available)
{
    real.note('p', 0);
    return real.script.peek(available);
}

TransferResult completeRead(PipeEndpoint& endpoint, std::size_t limit)
{
    KY_REQUIRE(endpoint.target != nullptr && limit >= 1 && limit <= endpoint.targetSize);
    real.note('R', limit);
    const TransferResult result = real.script.transfer(limit);
    real.receive(endpoint.target, result.size);
    if (result.state != Transfer::Pending)
        endpoint.target = nullptr;
    return result;
}

TransferResult issueRead(PipeEndpoint& endpoint, char* buffer, std::size_t size)
{
    KY_REQUIRE(endpoint.target == nullptr);
    real.note('r', size);
    const TransferResult result = real.script.transfer(size);
    real.receive(buffer, result.size);
    endpoint.target = result.state == Transfer::Pending ? buffer : nullptr;
    endpoint.targetSize = size;
    return result;
}

TransferResult completeWrite(PipeEndpoint& endpoint)
{
    KY_REQUIRE(endpoint.source != nullptr);
    real.note('W', endpoint.sourceSize);
    const TransferResult result = real.script.transfer(endpoint.sourceSize);
    real.sent.append(endpoint.source, result.size);
    if (result.state != Transfer::Pending)
        endpoint.source = nullptr;
    return result;
}

TransferResult issueWrite(PipeEndpoint& endpoint, const char* data, std::size_t size)
{
    KY_REQUIRE(endpoint.source == nullptr);
    real.note('w', size);
    const TransferResult result = real.script.transfer(size);
    real.sent.append(data, result.size);
    endpoint.source = result.state == Transfer::Pending ? data : nullptr;
    endpoint.sourceSize = size;
    return result;
}

void waitPipe(PipeEndpoint&, int timeoutMs) { real.note('x', static_cast<std::size_t>(timeoutMs)); }

} // namespace ky::impl::native

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    real = World{{data, std::min<std::size_t>(size, 20000), 0}, {}, {}, 0};
    Model model;
    model.world = real;
    ky::kyNamedPipe pipe;
    KY_REQUIRE(pipe.connectToNamedPipeServerUtf8("any"));
    while (!real.script.isOver())
    {
        step(pipe, model);
        compare(pipe, model);
        real.trace.clear();
        model.world.trace.clear();
    }
    return 0;
}
