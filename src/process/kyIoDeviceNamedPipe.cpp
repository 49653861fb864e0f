// SPDX-License-Identifier: MIT
#include <ky/kyIoDeviceNamedPipe.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace ky
{

namespace
{

constexpr int longestWaitMs = 1000;

} // namespace

kyIoDeviceNamedPipe::kyIoDeviceNamedPipe(kyNamedPipe* pipe, int timeoutMs) : mPipe(pipe), mTimeoutMs(timeoutMs) {}

/// False, with the error set, when the condition did not come true in time.
template <typename Condition>
bool kyIoDeviceNamedPipe::pumpUntil(Condition condition)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(mTimeoutMs);
    mPipe->processNamedPipeEvents(0, false);
    while (!condition())
    {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        mHasError = mTimeoutMs >= 0 && rest <= 0;
        if (mHasError)
            return false;
        const auto wait = mTimeoutMs < 0 ? longestWaitMs : std::min<long long>(rest, longestWaitMs);
        // The pipe does not wait while received bytes are there to be taken.
        if (mPipe->bytesAvailable() != 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        mPipe->processNamedPipeEvents(static_cast<int>(wait), true);
    }
    return true;
}

std::size_t kyIoDeviceNamedPipe::readBytes(char* data, std::size_t size)
{
    std::size_t done = 0;
    while (done < size && !mHasError)
    {
        const std::size_t count = mPipe->readNamedPipeData(data + done, size - done);
        done += count;
        if (count != 0 || !mPipe->isConnected())
            mHasError = count == 0;
        else if (mPipe->isReadChannelClosed() ||
                 !pumpUntil([&] { return mPipe->bytesAvailable() != 0 || mPipe->isReadChannelClosed(); }))
            break;
    }
    mBytesRead += done;
    return done;
}

std::size_t kyIoDeviceNamedPipe::writeBytes(const char* data, std::size_t size)
{
    std::size_t done = 0;
    while (done < size && !mHasError)
    {
        const std::size_t count = mPipe->writeNamedPipeData(data + done, size - done);
        done += count;
        if (count != 0)
            continue;
        const auto hasRoom = [&] { return mPipe->bytesToWrite() < mPipe->getMaxWriteBufferSize(); };
        if (mPipe->isConnected())
            pumpUntil([&] { return hasRoom() || mPipe->hasWriteFailed(); });
        mHasError = mHasError || !mPipe->isConnected() || mPipe->hasWriteFailed();
    }
    mBytesWritten += done;
    return done;
}

bool kyIoDeviceNamedPipe::flush()
{
    if (!mHasError)
        pumpUntil([&] { return !mPipe->hasPendingWrite() || mPipe->hasWriteFailed(); });
    mHasError = mHasError || mPipe->hasWriteFailed();
    return !mHasError;
}

bool kyIoDeviceNamedPipe::hasError() const { return mHasError; }

bool kyIoDeviceNamedPipe::atEnd() const
{
    mPipe->processNamedPipeEvents(0, false);
    return mPipe->isReadChannelClosed() && mPipe->bytesAvailable() == 0;
}

bool kyIoDeviceNamedPipe::seekg(std::int64_t, SeekStart) { return false; }

bool kyIoDeviceNamedPipe::seekp(std::int64_t, SeekStart) { return false; }

std::uint64_t kyIoDeviceNamedPipe::tellg() { return mBytesRead; }

std::uint64_t kyIoDeviceNamedPipe::tellp() { return mBytesWritten; }

} // namespace ky
