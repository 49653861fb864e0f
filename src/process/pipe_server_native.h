// SPDX-License-Identifier: MIT
// What a platform owes to the listening side of pipes: instances, each of which waits for one client, and one event
// for all of them.
#pragma once

#include <string>

namespace ky::impl::native
{

struct PipeListener;

/// Null when the name cannot be listened on.
PipeListener* openPipeListener(const std::string& name, bool exclusive);

/// All instances must be closed or taken before.
void closePipeListener(PipeListener* listener) noexcept;

struct PipeInstance;

/// Begins to wait for a client; null on failure. The event is set when there is one at once.
PipeInstance* openPipeInstance(PipeListener& listener);

enum class InstanceState
{
    Waiting,
    Connected,
    Failed
};

InstanceState pollPipeInstance(PipeListener& listener, PipeInstance& instance);

/// Sets the event when the instance is connected: opening another one may have cleared it meanwhile.
void signalAgain(PipeListener& listener, const PipeInstance& instance);

/// Gives up the instance, and gives out the pipe of one that is connected, for adoptPipe().
void* takePipe(PipeInstance* instance) noexcept;
void closePipeInstance(PipeListener& listener, PipeInstance* instance) noexcept;

/// Waits for the event. False on a time-out, and only then; a negative limit is none.
bool waitPipeListener(PipeListener& listener, int timeoutMs);

/// Before the instances are polled.
void resetPipeListener(PipeListener& listener);

} // namespace ky::impl::native
