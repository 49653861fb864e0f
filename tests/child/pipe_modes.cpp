// SPDX-License-Identifier: MIT
#include "child/child_mode.h"
#include "process/pipe_exchange.h"

#include <ky/kyNamedPipeServer.h>

#include <chrono>
#include <memory>
#include <thread>

namespace
{

using Arguments = std::vector<std::string>;
using ky::kyNamedPipe;
using ky::kyNamedPipeServer;

bool connect(kyNamedPipe& pipe, const std::string& name)
{
    for (int attempt = 0; attempt < 6000; ++attempt)
    {
        if (pipe.connectToNamedPipeServerUtf8(name))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

/// NAME SEED: sends a pattern until it is killed or the pipe breaks.
int sendPattern(const Arguments& arguments)
{
    kyNamedPipe pipe;
    if (!connect(pipe, arguments[0]))
        return 1;
    ky::test::PipePattern pattern(std::stoull(arguments[1]));
    std::vector<char> block(7000);
    while (!pipe.hasWriteFailed())
    {
        pattern.fill(block.data(), block.size());
        pattern.goBack(block.size() - pipe.writeNamedPipeData(block.data(), block.size()));
        pipe.processNamedPipeEvents(100, true);
        pipe.readNamedPipeData(block.data(), block.size());
    }
    return 0;
}

/// NAME: sends back what any client sends, until it is killed.
int serveEcho(const Arguments& arguments)
{
    kyNamedPipeServer server;
    if (!server.listenUtf8(arguments[0]))
        return 1;
    std::vector<std::unique_ptr<kyNamedPipe>> clients;
    std::vector<char> block(4000);
    while (server.isListening())
    {
        server.processPipeServerEvents(clients.empty() ? 100 : 0);
        while (server.hasPendingConnections())
            clients.emplace_back(server.getNextPendingConnection());
        std::size_t moved = 0;
        for (const auto& client : clients)
        {
            client->processNamedPipeEvents(0, false);
            if (client->bytesToWrite() == 0)
                moved +=
                    client->writeNamedPipeData(block.data(), client->readNamedPipeData(block.data(), block.size()));
        }
        std::erase_if(clients, [](const auto& client) { return client->isReadChannelClosed(); });
        if (moved == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return 1;
}

/// NAME SENT_SEED RECEIVED_SEED BYTES LIMIT: exchanges so many bytes both ways.
int exchange(const Arguments& arguments)
{
    kyNamedPipe pipe;
    const std::size_t limit = std::stoull(arguments[4]);
    if (!pipe.setMaxReadBufferSize(limit) || !pipe.setMaxWriteBufferSize(limit) || !connect(pipe, arguments[0]))
        return 2;
    return ky::test::exchange(pipe, std::stoull(arguments[1]), std::stoull(arguments[2]), std::stoull(arguments[3]))
               ? 0
               : 1;
}

const ky::test::RegisterChildMode sSend("pipe_send_pattern", &sendPattern);
const ky::test::RegisterChildMode sServe("pipe_serve_echo", &serveEcho);
const ky::test::RegisterChildMode sExchange("pipe_exchange", &exchange);

} // namespace
