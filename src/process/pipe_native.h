// SPDX-License-Identifier: MIT
// What a platform owes to one end of a pipe: reads and writes that are issued, go on by themselves or not, and are
// asked about later. One read and one write can be in flight at a time.
#pragma once

#include <cstddef>
#include <string>

namespace ky::impl::native
{

struct PipeEndpoint;

PipeEndpoint* createPipeEndpoint();
/// Closes the pipe as well.
void destroy(PipeEndpoint* endpoint) noexcept;

enum class PipeConnect
{
    Connected,
    Busy, ///< there is a server, but all its places are taken
    Failed
};

/// Connects an endpoint that holds no pipe. With a limit above 0 it first waits up to so many milliseconds for a free
/// place; a wait in vain is a failure.
PipeConnect connectPipe(PipeEndpoint& endpoint, const std::string& name, int waitMs);

/// Takes over a pipe that a server got (see pipe_server_native.h).
void adoptPipe(PipeEndpoint& endpoint, void* pipe);

bool isPipeOpen(const PipeEndpoint& endpoint);

/// Nothing is in flight any more when it returns: the memory that was issued can go.
void closePipe(PipeEndpoint& endpoint) noexcept;

enum class Transfer
{
    Done,
    Pending, ///< in flight
    Failed   ///< the end of the pipe included
};

struct TransferResult
{
    Transfer state;
    std::size_t size; ///< bytes moved when Done, at least 1
};

/// How many bytes a read should ask for so as to get all that is there; 0 when nothing is there. False when the
/// channel has failed or ended.
bool peekPipe(PipeEndpoint& endpoint, std::size_t& available);

/// Issued memory belongs to the system until the operation is done or has failed, or the pipe is closed. Done can mean
/// that fewer bytes were moved than asked for.
/// @{
TransferResult issueRead(PipeEndpoint& endpoint, char* buffer, std::size_t size);
TransferResult issueWrite(PipeEndpoint& endpoint, const char* data, std::size_t size);
/// @}

/// How the operation in flight goes on, without waiting. Where the system has not put the bytes into the buffer by
/// itself, no more than `limit` of them are taken now.
/// @{
TransferResult completeRead(PipeEndpoint& endpoint, std::size_t limit);
TransferResult completeWrite(PipeEndpoint& endpoint);
/// @}

/// Waits until one of the operations in flight goes on.
void waitPipe(PipeEndpoint& endpoint, int timeoutMs);

/// What to wait on from outside; see kyNamedPipe.
/// @{
void* pipeReadEvent(const PipeEndpoint& endpoint);
void* pipeWriteEvent(const PipeEndpoint& endpoint);
/// @}

} // namespace ky::impl::native
