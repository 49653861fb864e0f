// SPDX-License-Identifier: MIT
// The examples of docs/pipes.md: a server that answers with what it gets, and a client.
#include "expect.h"

#include <ky/ky.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

void handle(ky::kyNamedPipe& client, const char* bytes, std::size_t size)
{
    expect(client.writeNamedPipeData(bytes, size) == size, "short answers fit the buffer");
}

// [serve]
void serve(ky::kyNamedPipeServer& server, const std::atomic<bool>& isRunning)
{
    std::vector<std::unique_ptr<ky::kyNamedPipe>> clients;
    while (isRunning)
    {
        server.processPipeServerEvents(clients.empty() ? 100 : 0);
        while (server.hasPendingConnections())
            clients.emplace_back(server.getNextPendingConnection());
        for (const auto& client : clients)
        {
            client->processNamedPipeEvents(1, true); // moves bytes between the buffers and the system
            char bytes[4096];
            const std::size_t size = client->readNamedPipeData(bytes, sizeof bytes);
            handle(*client, bytes, size); // answers with writeNamedPipeData()
        }
        const auto isGone = [](const auto& client) { return client->isReadChannelClosed(); };
        clients.erase(std::remove_if(clients.begin(), clients.end(), isGone), clients.end());
    }
}
// [serve]

// [send]
bool send(ky::kyNamedPipe& pipe, const std::string& text)
{
    for (std::size_t sent = 0; sent < text.size() || pipe.hasPendingWrite();)
    {
        sent += pipe.writeNamedPipeData(text.data() + sent, text.size() - sent);
        pipe.processNamedPipeEvents(100, true); // milliseconds
        if (pipe.hasWriteFailed())
            return false;
    }
    return true;
}
// [send]

std::string receive(ky::kyNamedPipe& pipe, std::size_t size)
{
    std::string text;
    while (text.size() < size && !(pipe.isReadChannelClosed() && pipe.bytesAvailable() == 0))
    {
        char bytes[4096];
        pipe.processNamedPipeEvents(100, true);
        text.append(bytes, pipe.readNamedPipeData(bytes, sizeof bytes));
    }
    return text;
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);
    const std::string name = "page-example-" + std::to_string(ky::kySystemUtils::GetCurrentProcessID());

    std::atomic<bool> isRunning{true};
    ky::kyNamedPipeServer server;
    const bool isListening = server.listenUtf8(name);
    expect(isListening, "the name is free");
    std::thread thread([&] { serve(server, isRunning); });

    ky::kyNamedPipe pipe;
    if (isListening)
    {
        expect(pipe.connectToNamedPipeServerUtf8(name), "the client reaches the server");
        expect(send(pipe, "hello") && receive(pipe, 5) == "hello", "the answer comes");
    }
    isRunning = false;
    thread.join();

    ky::terminateKySystem();
    return failures;
}
