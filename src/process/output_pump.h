// SPDX-License-Identifier: MIT
#pragma once

#include "process/child_streams_native.h"

#include <ky/kyProcess.h>

#include <string>

namespace ky::impl
{

/// Passes what a child writes to a handler, and a text to its input, a step at a time on the thread of the caller.
class OutputPump
{
public:
    OutputPump(kyProcess::OutputHandler handler, std::string input, native::OwnedStreams streams);

    native::ChildStreams& streams() { return *mStreams; }

    /// Whether the handler is being called.
    bool isBusy() const { return mBusy; }

    /// Moves what can be moved without waiting, up to a limit.
    void transfer();

    /// The same for a child that has ended: all that it has written.
    void finish();

private:
    void feed();
    bool pass(int stream, std::size_t& limit);
    void deliver(int stream, std::string_view bytes);

    kyProcess::OutputHandler mHandler;
    std::string mInput;
    std::size_t mSent = 0;
    bool mFed = false;
    bool mBusy = false;
    native::OwnedStreams mStreams;
};

} // namespace ky::impl
