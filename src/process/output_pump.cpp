// SPDX-License-Identifier: MIT
#include "process/output_pump.h"

#include "diagnostics/escape_text.h"
#include "platform/forced_unwind.h"

#include <ky/kyLog.h>

#include <algorithm>

namespace ky::impl
{

namespace
{

// A child that writes faster than its output is handled must not keep us from seeing its end, or that of the time.
constexpr std::size_t stepLimit = std::size_t{1} << 20;

void reportHandler(std::string_view reason)
{
    kyLogObject(kyLogType::WARNING, nullptr, kyLog::editPtr(), nullptr)
        << "Output handler of a process failed : " << escapeControls(reason);
}

} // namespace

OutputPump::OutputPump(kyProcess::OutputHandler handler, std::string input, native::OwnedStreams streams)
    : mHandler(std::move(handler)),
      mInput(std::move(input)),
      mStreams(std::move(streams))
{
}

void OutputPump::transfer()
{
    feed();
    for (const int stream : {native::outputStream, native::errorStream})
    {
        std::size_t limit = stepLimit;
        while (pass(stream, limit))
        {
        }
    }
}

void OutputPump::finish()
{
    for (const int stream : {native::outputStream, native::errorStream})
    {
        // Others may still hold the stream and write on.
        std::size_t limit = std::max(native::waitingBytes(*mStreams, stream), std::size_t{1});
        while (pass(stream, limit))
        {
        }
    }
}

void OutputPump::feed()
{
    while (!mFed)
    {
        std::size_t sent = 0;
        const std::string_view rest = std::string_view(mInput).substr(mSent);
        const native::Transfer result =
            rest.empty() ? native::Transfer::End : native::writeInput(*mStreams, rest, sent);
        if (result == native::Transfer::Nothing)
            return;
        mSent += sent;
        if (result == native::Transfer::End)
        {
            mFed = true;
            native::closeInput(*mStreams);
            mInput.clear();
            mInput.shrink_to_fit();
            mSent = 0;
        }
    }
}

/// False when there is nothing more to pass, or the limit is reached.
bool OutputPump::pass(int stream, std::size_t& limit)
{
    std::string_view bytes;
    if (limit == 0 || native::readStream(*mStreams, stream, bytes) != native::Transfer::Bytes)
        return false;
    limit -= std::min(limit, bytes.size());
    deliver(stream, bytes);
    return true;
}

void OutputPump::deliver(int stream, std::string_view bytes)
{
    if (!mHandler)
        return;
    mBusy = true;
    try
    {
        mHandler(stream == native::outputStream ? kyProcess::StandardOutput : kyProcess::StandardError, bytes);
    }
    KY_PASS_FORCED_UNWIND
    catch (const std::exception& error)
    {
        mHandler = nullptr;
        reportHandler(error.what());
    }
    catch (...)
    {
        mHandler = nullptr;
        reportHandler("unknown exception");
    }
    mBusy = false;
}

} // namespace ky::impl
