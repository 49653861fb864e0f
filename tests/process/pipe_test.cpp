// SPDX-License-Identifier: MIT
#include "process/pipe_support.h"
#include "support/process_state.h"

#include <algorithm>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyNamedPipe;
using ky::kyNamedPipeServer;

TEST(NamedPipe, UnconnectedDoesNothing)
{
    kyNamedPipe pipe;
    char byte = 'x';
    EXPECT_FALSE(pipe.isConnected());
    EXPECT_EQ(pipe.writeNamedPipeData(&byte, 1), 0u);
    EXPECT_EQ(pipe.readNamedPipeData(&byte, 1), 0u);
    EXPECT_EQ(pipe.getMaxReadBufferSize(), 10240u);
    EXPECT_EQ(pipe.getMaxWriteBufferSize(), 10240u);
    pipe.processNamedPipeEvents(1000000, true);
    pipe.closeNamedPipe();
    EXPECT_FALSE(pipe.connectToNamedPipeServerUtf8(uniquePipeName()));
    EXPECT_FALSE(pipe.hasPendingWrite() || pipe.hasWriteFailed() || pipe.isReadChannelClosed() ||
                 pipe.isWriteChannelClosed());
}

TEST(NamedPipe, NamesLeadToOnePipeEach)
{
    const std::string run = uniquePipeName();
    const std::vector<std::string> names = {run,
                                            run + "/sub",
                                            run + "\\back",
                                            run + " blank",
                                            run + "-w\xC3\xB6rter-\xE6\x97\xA5",
                                            run + "'\"$(x)%TEMP%~",
                                            run + ".dots..inside",
                                            "." + run,
                                            run + std::string(60, 'n'),
                                            run + std::string(180, 'l')};
    std::vector<std::unique_ptr<kyNamedPipeServer>> servers;
    for (const std::string& name : names)
    {
        servers.push_back(std::make_unique<kyNamedPipeServer>());
        ASSERT_TRUE(servers.back()->listenUtf8(name)) << name;
        EXPECT_EQ(servers.back()->getServerNameUtf8(), name);
    }
    for (std::size_t i = names.size(); i-- > 0;)
    {
        kyNamedPipe client;
        ASSERT_TRUE(client.connectToNamedPipeServerUtf8(names[i])) << names[i];
        EXPECT_TRUE(servers[i]->waitForNewConnection(0)) << names[i];
        servers[i]->closeNamedPipeServer();
        EXPECT_EQ(servers[i]->getServerNameUtf8(), "");
    }
}

TEST(NamedPipe, UnusableNamesAreRefused)
{
    using namespace std::string_literals;
    const std::string run = uniquePipeName();
    const std::vector<std::string> names = {"",
                                            ".",
                                            "..",
                                            "/",
                                            "\\\\",
                                            run + "/..",
                                            "../" + run,
                                            run + "\\..\\..\\C:\\x",
                                            "./" + run,
                                            run + "/.. ",
                                            run + "/ . . /",
                                            run + "\0x"s};
    for (const std::string& name : names)
    {
        kyNamedPipeServer server;
        kyNamedPipe client;
        EXPECT_FALSE(server.listenUtf8(name)) << name;
        EXPECT_FALSE(client.connectToNamedPipeServerUtf8(name)) << name;
    }
    // However long: an answer, and the same one for both ends.
    const std::string longName = run + std::string(5000, 'x');
    kyNamedPipeServer server;
    kyNamedPipe client;
    const bool isListening = server.listenUtf8(longName);
    EXPECT_EQ(client.connectToNamedPipeServerUtf8(longName), isListening);
    EXPECT_FALSE(client.connectToNamedPipeServerUtf8(longName + "y"));
}

TEST(NamedPipe, AcceptsWhatTheLimitsLeaveRoomFor)
{
    PipePair pair;
    const std::string bytes(30000, 'b');
    EXPECT_EQ(offer(pair.client, bytes), 10240u);
    EXPECT_EQ(offer(pair.client, bytes), 0u);
    EXPECT_EQ(pair.client.bytesToWrite(), 10240u);
    EXPECT_FALSE(pair.client.setMaxWriteBufferSize(10239));
    pair.client.processNamedPipeEvents(0, false);
    EXPECT_EQ(pair.client.bytesToWrite(), 0u);
    EXPECT_TRUE(pair.client.setMaxWriteBufferSize(100));
    EXPECT_EQ(offer(pair.client, bytes), 100u);
    EXPECT_TRUE(pair.client.hasPendingWrite());

    // The reader takes in no more than its limit, lowered or raised meanwhile.
    kyNamedPipe& peer = *pair.peer;
    EXPECT_TRUE(peer.setMaxReadBufferSize(200));
    ASSERT_TRUE(pumpUntil(peer, [&] { return peer.bytesAvailable() == 200; }));
    for (int i = 0; i < 5; ++i)
        peer.processNamedPipeEvents(1, true);
    EXPECT_EQ(peer.bytesAvailable(), 200u);
    EXPECT_FALSE(peer.setMaxReadBufferSize(100));
    EXPECT_EQ(peer.getMaxReadBufferSize(), 200u);
    EXPECT_TRUE(peer.setMaxReadBufferSize(~std::size_t{0}));
    const auto hasAll = [&]
    {
        pair.client.processNamedPipeEvents(0, false);
        return peer.bytesAvailable() == 10340;
    };
    ASSERT_TRUE(pumpUntil(peer, hasAll));
    EXPECT_FALSE(pair.client.hasPendingWrite());
    EXPECT_EQ(takeAll(peer), bytes.substr(0, 10340));
}

TEST(NamedPipe, ALimitLoweredUnderAReadInFlightHolds)
{
    PipePair pair;
    kyNamedPipe& peer = *pair.peer;
    for (int i = 0; i < 3; ++i)
        peer.processNamedPipeEvents(0, false);
    ASSERT_TRUE(peer.setMaxReadBufferSize(1));
    ASSERT_EQ(offer(pair.client, "abc"), 3u);
    std::string received;
    const auto isComplete = [&]
    {
        pair.client.processNamedPipeEvents(0, false);
        EXPECT_LE(peer.bytesAvailable(), 1u);
        received += takeAll(peer);
        return received.size() == 3;
    };
    EXPECT_TRUE(pumpUntil(peer, isComplete));
    EXPECT_EQ(received, "abc");
}

TEST(NamedPipe, TheOtherEndSeesAClose)
{
    PipePair pair;
    EXPECT_FALSE(pair.client.connectToNamedPipeServerUtf8(pair.server.getServerNameUtf8())) << "connected already";
    ASSERT_EQ(offer(pair.client, "last words"), 10u);
    const auto hasSent = [&]
    {
        pair.peer->processNamedPipeEvents(0, false);
        return !pair.client.hasPendingWrite();
    };
    ASSERT_TRUE(pumpUntil(pair.client, hasSent));
    pair.client.closeNamedPipe();
    EXPECT_FALSE(pair.client.isConnected());
    ASSERT_TRUE(pumpUntil(*pair.peer, [&] { return pair.peer->isReadChannelClosed(); }));
    EXPECT_TRUE(pair.peer->isConnected());
    EXPECT_FALSE(pair.peer->hasWriteFailed()) << "nothing was written";
    EXPECT_EQ(takeAll(*pair.peer), "last words");

    EXPECT_EQ(offer(*pair.peer, "answer"), 6u);
    ASSERT_TRUE(pumpUntil(*pair.peer, [&] { return pair.peer->hasWriteFailed(); }));
    EXPECT_TRUE(pair.peer->isWriteChannelClosed());
    EXPECT_EQ(offer(*pair.peer, "more"), 0u);
    pair.peer->processNamedPipeEvents(1000000, true); // nothing is in flight, so it does not wait

    // A new connection begins without what the old one left.
    ASSERT_EQ(offer(pair.client, "x"), 0u);
    ASSERT_TRUE(pair.client.connectToNamedPipeServerUtf8(pair.server.getServerNameUtf8()));
    const std::string greeting(10240, 'g');
    ASSERT_EQ(offer(pair.client, greeting), greeting.size());
    pair.client.processNamedPipeEvents(0, false);
    EXPECT_EQ(offer(pair.client, greeting), greeting.size());
    pair.client.closeNamedPipe(); // in flight and buffered
    EXPECT_FALSE(pair.client.hasPendingWrite());
    ASSERT_TRUE(pair.client.connectToNamedPipeServerUtf8(pair.server.getServerNameUtf8()));
    const auto dropped = PipePair::accept(pair.server);
    ASSERT_TRUE(pumpUntil(*dropped, [&] { return takeAll(*dropped), dropped->isReadChannelClosed(); }));
    ASSERT_EQ(offer(pair.client, "new"), 3u);
    const auto last = PipePair::accept(pair.server);
    ASSERT_TRUE(
        pumpUntil(*last, [&] { return pair.client.processNamedPipeEvents(0, false), last->bytesAvailable() == 3; }));
    EXPECT_EQ(takeAll(*last), "new");
}

TEST(NamedPipe, BothWaysAtOnceInAllSizes)
{
    std::minstd_rand random(7);
    for (const std::size_t limit : {1u, 7u, 1000u, 10240u, 1u << 20})
    {
        PipePair pair;
        kyNamedPipe* const ends[] = {&pair.client, pair.peer.get()};
        PipePattern sent[] = {PipePattern(limit), PipePattern(limit + 1)};
        PipePattern received[] = {PipePattern(limit + 1), PipePattern(limit)};
        for (kyNamedPipe* const end : ends)
            ASSERT_TRUE(end->setMaxReadBufferSize(limit) && end->setMaxWriteBufferSize(limit));
        std::string block(std::min<std::size_t>(2 * limit, 100'000), '\0');
        const std::uint64_t total = std::min<std::uint64_t>(limit * 500, isSoak() ? 200'000'000 : 4'000'000);
        while (received[0].position() < total || received[1].position() < total)
        {
            const std::size_t i = random() % 2;
            const std::size_t size = random() % block.size() + 1;
            if (random() % 2 == 0 && sent[i].position() < total)
            {
                sent[i].fill(block.data(), size);
                sent[i].goBack(size - ends[i]->writeNamedPipeData(block.data(), size));
            }
            ends[i]->processNamedPipeEvents(0, false);
            ASSERT_LE(ends[i]->bytesAvailable(), limit);
            ASSERT_LE(ends[i]->bytesToWrite(), limit);
            const std::size_t count = ends[i]->readNamedPipeData(block.data(), random() % 3 == 0 ? 1 : size);
            ASSERT_TRUE(received[i].check(block.data(), count)) << "limit " << limit;
            ASSERT_FALSE(ends[i]->hasWriteFailed() || ends[i]->isReadChannelClosed());
        }
    }
}

TEST(NamedPipeServer, ListensUntilItIsClosed)
{
    const std::string name = uniquePipeName();
    kyNamedPipeServer server;
    kyNamedPipe client;
    bool timedOut = true;
    EXPECT_FALSE(server.isListening());
    EXPECT_EQ(server.getNextPendingConnection(), nullptr);
    EXPECT_FALSE(server.waitForNewConnection(1000000, &timedOut));
    EXPECT_FALSE(timedOut);
    for (int round = 0; round < 3; ++round)
    {
        EXPECT_FALSE(client.connectToNamedPipeServerUtf8(name));
        ASSERT_TRUE(server.listenUtf8(name));
        EXPECT_FALSE(server.listenUtf8(uniquePipeName()));
        EXPECT_TRUE(server.isListening());
        EXPECT_EQ(server.getServerNameUtf8(), name);
        EXPECT_FALSE(server.waitForNewConnection(0, &timedOut));
        EXPECT_TRUE(timedOut);
        EXPECT_FALSE(server.waitForNewConnection(10));
        ASSERT_TRUE(client.connectToNamedPipeServerUtf8(name));
        EXPECT_TRUE(server.waitForNewConnection(60000, &timedOut));
        EXPECT_FALSE(timedOut);
        server.closeNamedPipeServer();
        EXPECT_FALSE(server.isListening() || server.hasPendingConnections());
        EXPECT_TRUE(pumpUntil(client, [&] { return client.isReadChannelClosed(); })) << "a pending one is closed";
        client.closeNamedPipe();
    }
}

TEST(NamedPipeServer, AConnectionOutlivesItsServer)
{
    PipePair pair;
    pair.server.closeNamedPipeServer();
    ASSERT_EQ(offer(*pair.peer, "still here"), 10u);
    pair.peer->processNamedPipeEvents(0, false);
    EXPECT_TRUE(pumpUntil(pair.client, [&] { return pair.client.bytesAvailable() == 10; }));
}

TEST(NamedPipeServer, HandsOutTheOldestFirst)
{
    kyNamedPipeServer server;
    ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
    std::vector<std::unique_ptr<kyNamedPipe>> clients;
    for (char id = 'a'; id < 'd'; ++id)
    {
        clients.push_back(std::make_unique<kyNamedPipe>());
        ASSERT_TRUE(clients.back()->connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
        ASSERT_EQ(clients.back()->writeNamedPipeData(&id, 1), 1u);
        clients.back()->processNamedPipeEvents(0, false);
        if (id != 'b')
            server.processPipeServerEvents(60000);
    }
    for (const std::string id : {"a", "b", "c"})
    {
        const std::unique_ptr<kyNamedPipe> next(server.getNextPendingConnection());
        ASSERT_NE(next, nullptr);
        ASSERT_TRUE(pumpUntil(*next, [&] { return next->bytesAvailable() == 1; }));
        EXPECT_EQ(takeAll(*next), id);
    }
}

TEST(NamedPipeServer, CollectsUpToTheLimit)
{
    kyNamedPipeServer server;
    EXPECT_EQ(server.getMaxPendingConnections(), 8);
    server.setMaxPendingConnections(1);
    EXPECT_EQ(server.getMaxPendingConnections(), 1);
    ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
    kyNamedPipe first;
    kyNamedPipe second;
    ASSERT_TRUE(first.connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
    server.processPipeServerEvents(60000);
    ASSERT_TRUE(server.hasPendingConnections());
    ASSERT_TRUE(second.connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
    server.processPipeServerEvents(1000000);
    delete server.getNextPendingConnection();
    EXPECT_FALSE(server.hasPendingConnections());
    server.processPipeServerEvents(60000);
    EXPECT_TRUE(server.hasPendingConnections());

    // The explicit wait takes more.
    kyNamedPipe third;
    ASSERT_TRUE(third.connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
    EXPECT_TRUE(server.waitForNewConnection(0));
    delete server.getNextPendingConnection();
    server.setMaxPendingConnections(0);
    server.processPipeServerEvents(1000000);
    EXPECT_FALSE(server.hasPendingConnections());
    EXPECT_TRUE(server.waitForNewConnection(60000));
}

TEST(NamedPipeServer, LeavesNothingOpen)
{
    const auto use = []
    {
        PipePair pair;
        offer(pair.client, std::string(10240, 'x'));
        pair.client.processNamedPipeEvents(0, false);
        pair.peer->processNamedPipeEvents(0, false);
        kyNamedPipe uncollected;
        EXPECT_TRUE(uncollected.connectToNamedPipeServerUtf8(pair.server.getServerNameUtf8()));
        EXPECT_FALSE(kyNamedPipe().connectToNamedPipeServerUtf8(uniquePipeName()));
    };
    use();
    const std::size_t before = processState().handles;
    for (int round = 0; round < 200; ++round)
        use();
    EXPECT_EQ(processState().handles, before);
}

} // namespace
