// SPDX-License-Identifier: MIT
// A pipe under the library's own streams.
#include "process/pipe_support.h"

#include <ky/kyDataStream.h>
#include <ky/kyIoDeviceNamedPipe.h>

#include <thread>

namespace
{

using namespace ky::test;
using ky::kyDataStream;
using ky::kyIoDeviceNamedPipe;
using ky::kyNamedPipe;

constexpr int patienceMs = 60'000;

std::string readAll(kyIoDeviceNamedPipe& device, std::size_t size)
{
    std::string bytes(size, '\0');
    bytes.resize(device.readBytes(bytes.data(), size));
    return bytes;
}

std::string pattern(std::size_t size)
{
    std::string bytes(size, '\0');
    PipePattern(size).fill(bytes.data(), size);
    return bytes;
}

/// Sends a text that lies in the client's buffer afterwards.
bool deliver(PipePair& pair, const std::string& text)
{
    offer(*pair.peer, text);
    return pumpUntil(pair.client,
                     [&]
                     {
                         pair.peer->processNamedPipeEvents(0, false);
                         return pair.client.bytesAvailable() == text.size();
                     });
}

/// Answers every text with its length until the peer goes; the result is how many there were.
std::size_t answerAll(kyNamedPipe& pipe, int timeoutMs)
{
    kyIoDeviceNamedPipe device(&pipe, timeoutMs);
    kyDataStream stream(&device, kyDataStream::LittleEndian);
    for (std::size_t count = 0;; ++count)
    {
        std::string text;
        stream >> text;
        if (!stream.isOk())
            return count;
        stream << static_cast<std::uint32_t>(text.size());
        device.flush();
    }
}

TEST(NamedPipeDevice, CarriesQuestionsAndAnswers)
{
    for (const int timeoutMs : {patienceMs, -1})
    {
        PipePair pair;
        std::size_t answered = 0;
        std::thread worker([&] { answered = answerAll(*pair.peer, timeoutMs); });
        kyIoDeviceNamedPipe device(&pair.client, timeoutMs);
        kyDataStream stream(&device, kyDataStream::LittleEndian);
        std::uint64_t sent = 0;
        // Sizes around the limits of the pipe's buffers, and far beyond them.
        for (const std::size_t size : {0U, 1U, 10235U, 10236U, 10237U, 10240U, 20481U, 1'000'000U})
        {
            std::uint32_t answer = 1;
            stream << pattern(size);
            EXPECT_TRUE(device.flush());
            stream >> answer;
            EXPECT_EQ(answer, size);
            sent += size + 4;
        }
        EXPECT_TRUE(stream.isOk());
        EXPECT_FALSE(device.atEnd());
        EXPECT_EQ(device.tellp(), sent);
        EXPECT_EQ(device.tellg(), 8 * 4U);
        EXPECT_FALSE(device.seekg(0, ky::kyIoDevice::SeekBegin) || device.seekp(0, ky::kyIoDevice::SeekBegin));
        pair.client.closeNamedPipe();
        worker.join();
        EXPECT_EQ(answered, 8U);
    }
}

TEST(NamedPipeDevice, BothDirectionsGoOnWhileOneWaits)
{
    // Each side writes everything before it reads: more than the system keeps, so each has to take in the other's
    // bytes.
    PipePair pair;
    const std::string bytes = pattern(200'000);
    for (kyNamedPipe* const pipe : {&pair.client, pair.peer.get()})
        ASSERT_TRUE(pipe->setMaxReadBufferSize(bytes.size()));
    std::string received;
    std::thread worker(
        [&]
        {
            kyIoDeviceNamedPipe device(pair.peer.get(), patienceMs);
            EXPECT_EQ(device.writeBytes(bytes.data(), bytes.size()), bytes.size());
            EXPECT_TRUE(device.flush());
            received = readAll(device, bytes.size());
        });
    kyIoDeviceNamedPipe device(&pair.client, patienceMs);
    EXPECT_EQ(device.writeBytes(bytes.data(), bytes.size()), bytes.size());
    EXPECT_TRUE(device.flush());
    EXPECT_EQ(readAll(device, bytes.size()), bytes);
    worker.join();
    EXPECT_EQ(received, bytes);
}

TEST(NamedPipeDevice, APeerThatGoesIsTheEndForTheReader)
{
    PipePair pair;
    kyIoDeviceNamedPipe device(&pair.client, patienceMs);
    ASSERT_TRUE(deliver(pair, "last words"));
    pair.peer->closeNamedPipe();
    EXPECT_FALSE(device.atEnd()) << "bytes are left";
    EXPECT_EQ(readAll(device, 4), "last");
    EXPECT_EQ(readAll(device, 100), " words");
    EXPECT_TRUE(device.atEnd());
    EXPECT_FALSE(device.hasError());
    EXPECT_EQ(readAll(device, 1), "");
    EXPECT_EQ(device.tellg(), 10U);
}

TEST(NamedPipeDevice, APeerThatGoesIsAnErrorForTheWriter)
{
    PipePair pair;
    pair.peer->closeNamedPipe();
    kyIoDeviceNamedPipe device(&pair.client, patienceMs);
    const std::string bytes = pattern(1'000'000);
    EXPECT_LT(device.writeBytes(bytes.data(), bytes.size()), bytes.size());
    EXPECT_TRUE(device.hasError());
    EXPECT_FALSE(device.flush());
    const std::uint64_t position = device.tellp();
    EXPECT_EQ(device.writeBytes("x", 1), 0U) << "an error stays";
    EXPECT_EQ(readAll(device, 1), "") << "an error stays";
    EXPECT_EQ(device.tellp(), position);
}

TEST(NamedPipeDevice, APeerThatDoesNothingIsWaitedForAsLongAsSaid)
{
    PipePair pair;
    {
        kyIoDeviceNamedPipe device(&pair.client, 20);
        EXPECT_EQ(readAll(device, 1), "");
        EXPECT_TRUE(device.hasError());
        EXPECT_FALSE(device.atEnd());
    }
    // Unread bytes keep the pipe from waiting by itself.
    ASSERT_TRUE(deliver(pair, "unread"));
    kyIoDeviceNamedPipe device(&pair.client, 20);
    const std::string bytes = pattern(10'000'000);
    const std::size_t accepted = device.writeBytes(bytes.data(), bytes.size());
    EXPECT_LT(accepted, bytes.size());
    EXPECT_EQ(device.tellp(), accepted);
    EXPECT_TRUE(device.hasError());
}

TEST(NamedPipeDevice, WithoutAConnectionEverythingFails)
{
    kyNamedPipe pipe;
    kyIoDeviceNamedPipe reader(&pipe, patienceMs);
    EXPECT_EQ(readAll(reader, 1), "");
    EXPECT_TRUE(reader.hasError());
    kyIoDeviceNamedPipe writer(&pipe, patienceMs);
    EXPECT_EQ(writer.writeBytes("x", 1), 0U);
    EXPECT_TRUE(writer.hasError());
}

} // namespace
