// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstdio>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace ky::tool
{

/// Writes to the tool's own streams in a thread of its own: whoever reads them may stop reading, and the one who hands
/// bytes over can still look at the clock meanwhile. What was accepted and not dropped is written before the
/// queue is destroyed.
class OutputQueue
{
public:
    /// \param isOver asked by add() while there is no room: true gives up
    explicit OutputQueue(std::function<bool()> isOver);
    ~OutputQueue();
    OutputQueue(const OutputQueue&) = delete;
    OutputQueue& operator=(const OutputQueue&) = delete;

    /// Waits for room; bytes without room are dropped once it is over.
    void add(std::FILE* stream, std::string_view bytes);

    /// Gives what was accepted a moment to be written, and drops the rest.
    void settle();

private:
    struct Piece
    {
        std::FILE* stream;
        std::string bytes;
    };

    void write();

    std::function<bool()> mIsOver;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<Piece> mPieces;
    std::size_t mHeld = 0; ///< bytes of the pieces, of the one being written too
    bool mIsEnding = false;
    std::thread mWriter;
};

} // namespace ky::tool
