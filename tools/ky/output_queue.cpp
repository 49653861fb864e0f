// SPDX-License-Identifier: MIT
#include "ky/output_queue.h"

#include <chrono>
#include <utility>

namespace ky::tool
{

namespace
{

constexpr std::size_t mostHeld = 256 * 1024;
constexpr std::chrono::milliseconds lookInterval{50};
constexpr std::chrono::seconds settleTime{1};

} // namespace

OutputQueue::OutputQueue(std::function<bool()> isOver) : mIsOver(std::move(isOver)), mWriter(&OutputQueue::write, this)
{
}

OutputQueue::~OutputQueue()
{
    {
        const std::lock_guard lock(mMutex);
        mIsEnding = true;
    }
    mChanged.notify_all();
    mWriter.join();
}

void OutputQueue::add(std::FILE* stream, std::string_view bytes)
{
    std::unique_lock lock(mMutex);
    while (!mChanged.wait_for(lock, lookInterval, [&] { return mHeld < mostHeld; }))
    {
        lock.unlock();
        if (mIsOver())
            return;
        lock.lock();
    }
    mPieces.push_back({stream, std::string(bytes)});
    mHeld += bytes.size();
    mChanged.notify_all();
}

void OutputQueue::settle()
{
    std::unique_lock lock(mMutex);
    if (mChanged.wait_for(lock, settleTime, [&] { return mHeld == 0; }))
        return;
    for (const Piece& piece : mPieces)
        mHeld -= piece.bytes.size();
    mPieces.clear();
}

void OutputQueue::write()
{
    std::unique_lock lock(mMutex);
    for (;;)
    {
        mChanged.wait(lock, [&] { return mIsEnding || !mPieces.empty(); });
        if (mPieces.empty())
            return;
        const Piece piece = std::move(mPieces.front());
        mPieces.pop_front();
        lock.unlock();
        std::fwrite(piece.bytes.data(), 1, piece.bytes.size(), piece.stream);
        std::fflush(piece.stream);
        lock.lock();
        mHeld -= piece.bytes.size();
        mChanged.notify_all();
    }
}

} // namespace ky::tool
