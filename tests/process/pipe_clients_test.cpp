// SPDX-License-Identifier: MIT
// One server, many clients at once, each in its own thread.
#include "process/pipe_exchange.h"
#include "process/pipe_support.h"

#include <thread>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyNamedPipe;
using ky::kyNamedPipeServer;

constexpr std::size_t clientCount = 64;

/// Sends back what arrives.
class Echo
{
public:
    explicit Echo(kyNamedPipe* pipe) : mPipe(pipe) {}

    bool isOver() const { return mPipe->isReadChannelClosed(); }

    void process()
    {
        mPipe->processNamedPipeEvents(0, false);
        if (mSize == 0)
        {
            mSize = mPipe->readNamedPipeData(mBlock, sizeof mBlock);
            mSent = 0;
        }
        const std::size_t sent = mPipe->writeNamedPipeData(mBlock + mSent, mSize);
        mSent += sent;
        mSize -= sent;
    }

private:
    std::unique_ptr<kyNamedPipe> mPipe;
    char mBlock[5000];
    std::size_t mSize = 0;
    std::size_t mSent = 0;
};

TEST(NamedPipeClients, ManyAtOnce)
{
    const std::uint64_t bytesEach = isSoak() ? 40'000'000 : 200'000;
    kyNamedPipeServer server;
    ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
    const std::string name = server.getServerNameUtf8();
    std::atomic<std::size_t> ended{0};
    std::atomic<std::size_t> succeeded{0};
    std::vector<std::thread> threads;
    for (std::size_t seed = 0; seed < clientCount; ++seed)
    {
        threads.emplace_back(
            [&, seed]
            {
                kyNamedPipe pipe;
                if (pipe.connectToNamedPipeServerUtf8(name) && exchange(pipe, seed, seed, bytesEach))
                    ++succeeded;
                ++ended;
            });
    }
    std::vector<Echo> clients;
    while (ended < clientCount || clients.size() < clientCount)
    {
        server.processPipeServerEvents(clients.empty() ? 100 : 0);
        while (server.hasPendingConnections())
            clients.emplace_back(server.getNextPendingConnection());
        for (Echo& client : clients)
            client.process();
        if (ended == clientCount)
            break;
    }
    for (std::thread& thread : threads)
        thread.join();
    account("named pipes", {2 * bytesEach * clientCount, "bytes of 64 clients at once"}, {},
            {clientCount - succeeded, "clients cut short"});
    EXPECT_EQ(clients.size(), clientCount);
    for (Echo& client : clients)
    {
        client.process();
        EXPECT_TRUE(client.isOver());
    }
}

TEST(NamedPipeClients, WaitWhileAllPlacesAreTaken)
{
    kyNamedPipeServer server;
    ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
    const std::string name = server.getServerNameUtf8();
    kyNamedPipe first[8];
    for (kyNamedPipe& pipe : first)
        ASSERT_TRUE(pipe.connectToNamedPipeServerUtf8(name));
    std::atomic<bool> isDone{false};
    bool isConnected = false;
    std::thread ninth(
        [&]
        {
            kyNamedPipe pipe;
            isConnected = pipe.connectToNamedPipeServerUtf8(name);
            isDone = true;
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(server.waitForNewConnection(0)); // collects
    ninth.join();
    EXPECT_TRUE(isConnected);
}

/// The only case that takes its time: five seconds.
TEST(NamedPipeClients, GiveUpOnAServerThatNeverCollects)
{
    kyNamedPipeServer server;
    ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
    kyNamedPipe first[8];
    for (kyNamedPipe& pipe : first)
        ASSERT_TRUE(pipe.connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
    kyNamedPipe ninth;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(ninth.connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
}

} // namespace
