// SPDX-License-Identifier: MIT
#include "platform/win32.h"
#include "process/pipe_support.h"

namespace
{

using namespace ky::test;
using ky::kyNamedPipeServer;

bool isWine() { return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr; }

TEST(PipeAccess, EventsTellWhatToProcess)
{
    PipePair pair;
    const auto isSignalled = [](void* event) { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; };
    pair.client.processNamedPipeEvents(0, false);
    EXPECT_FALSE(isSignalled(pair.client.getReadEvent()));
    const std::string bytes(4'000'000, 'x');
    ASSERT_TRUE(pair.peer->setMaxWriteBufferSize(bytes.size()));
    ASSERT_EQ(offer(*pair.peer, bytes), bytes.size());
    pair.peer->processNamedPipeEvents(0, false);
    EXPECT_TRUE(pair.peer->hasPendingWrite());
    EXPECT_FALSE(isSignalled(pair.peer->getWriteEvent()));
    EXPECT_TRUE(isSignalled(pair.client.getReadEvent()));
    ASSERT_TRUE(pair.client.setMaxReadBufferSize(bytes.size()));
    ASSERT_TRUE(pumpUntil(pair.client, [&] { return pair.client.bytesAvailable() == bytes.size(); }));
    EXPECT_TRUE(isSignalled(pair.peer->getWriteEvent()));
}

// One after the other, several servers of one name get clients.
TEST(PipeAccess, ServersShareAName)
{
    const std::string name = uniquePipeName();
    kyNamedPipeServer first;
    kyNamedPipeServer second;
    ASSERT_TRUE(first.listenUtf8(name));
    ASSERT_TRUE(second.listenUtf8(name));
    ky::kyNamedPipe clients[16];
    for (ky::kyNamedPipe& client : clients)
        ASSERT_TRUE(client.connectToNamedPipeServerUtf8(name));
    EXPECT_TRUE(first.waitForNewConnection(0));
    EXPECT_TRUE(second.waitForNewConnection(0));
}

TEST(PipeAccess, AnExclusiveNameHasOneServer)
{
    if (isWine())
        GTEST_SKIP() << "Wine takes no notice of the flag";
    const std::string name = uniquePipeName();
    kyNamedPipeServer first;
    kyNamedPipeServer second;
    ASSERT_TRUE(first.listenUtf8(name));
    second.setExclusiveName(true);
    EXPECT_FALSE(second.listenUtf8(name));
    EXPECT_FALSE(second.isListening());
    first.closeNamedPipeServer();
    EXPECT_TRUE(second.listenUtf8(name));
}

} // namespace
