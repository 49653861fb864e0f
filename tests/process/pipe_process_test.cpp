// SPDX-License-Identifier: MIT
// Pipes between processes that come, go and are killed.
#include "process/pipe_exchange.h"
#include "process/pipe_support.h"
#include "support/child_process.h"

namespace
{

using namespace ky::test;
using ky::kyNamedPipe;
using ky::kyNamedPipeServer;

TEST(NamedPipeProcesses, ExchangeInOrder)
{
    constexpr std::uint64_t million = 1'000'000;
    struct
    {
        std::size_t limit;
        std::uint64_t bytes;
    } const cases[] = {{10240, 10 * million}, {1 << 20, 20 * million}, {3, 3000}};
    std::uint64_t sent = 0;
    int broken = 0;
    for (const auto& [limit, quick] : cases)
    {
        const std::uint64_t bytes = limit > 3 && isSoak() ? 2500 * million : quick;
        kyNamedPipeServer server;
        ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
        ChildProcess child("pipe_exchange",
                           {server.getServerNameUtf8(), "1", "2", std::to_string(bytes), std::to_string(limit)});
        const auto pipe = PipePair::accept(server);
        ASSERT_TRUE(pipe->setMaxReadBufferSize(limit) && pipe->setMaxWriteBufferSize(limit));
        const bool isWhole = exchange(*pipe, 2, 1, bytes);
        EXPECT_TRUE(isWhole) << "limit " << limit;
        const int answer = child.wait();
        EXPECT_EQ(answer, 0);
        broken += !isWhole + (answer != 0);
        sent += 2 * bytes;
    }
    account("named pipes", {sent, "bytes between two processes"}, {}, {broken, "exchanges cut or changed"});
}

TEST(NamedPipeProcesses, AKilledClientIsSeenAtTheCut)
{
    kyNamedPipeServer server;
    ASSERT_TRUE(server.listenUtf8(uniquePipeName()));
    std::minstd_rand random(11);
    const unsigned kills = isSoak() ? 1000 : 30;
    std::uint64_t received = 0;
    std::uint64_t wrong = 0;
    for (unsigned kill = 0; kill < kills; ++kill)
    {
        ChildProcess child("pipe_send_pattern", {server.getServerNameUtf8(), std::to_string(kill)});
        const auto pipe = PipePair::accept(server);
        PipePattern pattern(kill);
        const std::size_t offset = random() % 3 == 0 ? random() % 100 : random() % 300'000;
        const auto receive = [&]
        {
            const std::string bytes = takeAll(*pipe);
            wrong += !pattern.check(bytes.data(), bytes.size());
            received += bytes.size();
            offer(*pipe, "to you");
        };
        ASSERT_TRUE(pumpUntil(*pipe, [&] { return receive(), pattern.position() >= offset; }));
        child.kill();
        ASSERT_TRUE(pumpUntil(*pipe, [&] { return receive(), pipe->isReadChannelClosed() && pipe->hasWriteFailed(); }));
        EXPECT_TRUE(server.isListening());
    }
    account("named pipes", {received, "bytes up to the cut"}, {kills, "clients killed"},
            {wrong, "blocks out of order"});
}

TEST(NamedPipeProcesses, AKilledServerIsReplaced)
{
    const std::string name = uniquePipeName();
    std::minstd_rand random(5);
    const int kills = isSoak() ? 1000 : 10;
    std::uint64_t received = 0;
    std::uint64_t wrong = 0;
    for (int kill = 0; kill < kills; ++kill)
    {
        ChildProcess child("pipe_serve_echo", {name});
        kyNamedPipe pipes[3];
        for (kyNamedPipe& pipe : pipes)
            ASSERT_TRUE(eventually([&] { return pipe.connectToNamedPipeServerUtf8(name); })) << "round " << kill;
        PipePattern asked(1);
        PipePattern answered(1);
        const auto ask = [&]
        {
            char block[2000];
            asked.fill(block, sizeof block);
            asked.goBack(sizeof block - pipes[0].writeNamedPipeData(block, sizeof block));
            const std::size_t count = pipes[0].readNamedPipeData(block, sizeof block);
            wrong += !answered.check(block, count);
            received += count;
        };
        const std::size_t wanted = random() % 50'000;
        ASSERT_TRUE(pumpUntil(pipes[0], [&] { return ask(), answered.position() >= wanted; }))
            << asked.position() << " bytes, " << answered.position() << " answered";
        child.kill();
        for (kyNamedPipe& pipe : pipes)
            ASSERT_TRUE(pumpUntil(pipe, [&] { return ask(), pipe.isReadChannelClosed(); }));
    }
    account("named pipes", {received, "bytes up to the cut"}, {kills, "servers killed and replaced"},
            {wrong, "blocks out of order"});
    // In this process as well.
    kyNamedPipeServer server;
    EXPECT_TRUE(eventually([&] { return server.listenUtf8(name); }));
}

} // namespace
