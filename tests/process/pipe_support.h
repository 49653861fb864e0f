// SPDX-License-Identifier: MIT
#pragma once

#include "process/pipe_pattern.h"
#include "support/soak.h"

#include <ky/kyNamedPipe.h>
#include <ky/kyNamedPipeServer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>

namespace ky::test
{

/// A name that no other test uses, nor another run.
inline std::string uniquePipeName()
{
    static const std::string run = std::to_string(std::random_device()());
    static std::atomic<int> count{0};
    return "ky-test-" + run + "-" + std::to_string(++count);
}

/// Two ends of one pipe in this process.
struct PipePair
{
    PipePair()
    {
        EXPECT_TRUE(server.listenUtf8(uniquePipeName()));
        EXPECT_TRUE(client.connectToNamedPipeServerUtf8(server.getServerNameUtf8()));
        peer = accept(server);
    }

    /// The next connection; fails the test when there is none.
    static std::unique_ptr<kyNamedPipe> accept(kyNamedPipeServer& from)
    {
        EXPECT_TRUE(from.waitForNewConnection(60'000));
        return std::unique_ptr<kyNamedPipe>(from.getNextPendingConnection());
    }

    kyNamedPipeServer server;
    kyNamedPipe client;
    std::unique_ptr<kyNamedPipe> peer;
};

/// Pumps until `condition` holds; false when it did not in a minute.
template <typename Condition>
bool pumpUntil(kyNamedPipe& pipe, Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        pipe.processNamedPipeEvents(20, true);
    }
    return true;
}

/// Everything that can be taken now.
inline std::string takeAll(kyNamedPipe& pipe)
{
    std::string bytes(pipe.bytesAvailable(), '\0');
    bytes.resize(pipe.readNamedPipeData(bytes.data(), bytes.size()));
    return bytes;
}

inline std::size_t offer(kyNamedPipe& pipe, const std::string& bytes)
{
    return pipe.writeNamedPipeData(bytes.data(), bytes.size());
}

} // namespace ky::test
