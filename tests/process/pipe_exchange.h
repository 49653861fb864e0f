// SPDX-License-Identifier: MIT
// What both processes of a test do with their end of a pipe.
#pragma once

#include "process/pipe_pattern.h"

#include <ky/kyNamedPipe.h>

#include <algorithm>
#include <vector>

namespace ky::test
{

/// Sends `total` bytes of the pattern `sentSeed` and receives as many of `receivedSeed` meanwhile. False when something
/// else arrives, a buffer holds more than its limit, or the pipe breaks.
inline bool exchange(kyNamedPipe& pipe, std::uint64_t sentSeed, std::uint64_t receivedSeed, std::uint64_t total)
{
    PipePattern sent(sentSeed);
    PipePattern received(receivedSeed);
    std::vector<char> block(64 * 1024);
    while (sent.position() < total || received.position() < total || pipe.hasPendingWrite())
    {
        const std::size_t room = std::min(block.size(), pipe.getMaxWriteBufferSize() - pipe.bytesToWrite());
        const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(room, total - sent.position()));
        sent.fill(block.data(), size);
        sent.goBack(size - pipe.writeNamedPipeData(block.data(), size));
        pipe.processNamedPipeEvents(1000, true);
        if (pipe.bytesAvailable() > pipe.getMaxReadBufferSize() || pipe.bytesToWrite() > pipe.getMaxWriteBufferSize())
            return false;
        const std::size_t count = pipe.readNamedPipeData(block.data(), block.size());
        if (!received.check(block.data(), count) || pipe.hasWriteFailed())
            return false;
        if (pipe.isReadChannelClosed() && pipe.bytesAvailable() == 0 && received.position() < total)
            return false;
    }
    return received.position() == total;
}

} // namespace ky::test
