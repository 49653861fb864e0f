// SPDX-License-Identifier: MIT
// The standard streams of one child, seen from its parent. Nothing here waits, except waitForStreams().
#pragma once

#include "platform/file_handle.h"
#include "process/process_native.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace ky::impl::native
{

/// Standard input, output and error, numbered alike on every system.
inline constexpr int inputStream = 0;
inline constexpr int outputStream = 1;
inline constexpr int errorStream = 2;

enum class InputKind
{
    Default, ///< as a child has it that is started without streams
    Caller,  ///< that of the caller
    Fed      ///< written by the caller
};

enum class Transfer
{
    Bytes,
    Nothing, ///< not now
    End      ///< there will be no more
};

struct ChildStreams;

struct CloseStreams
{
    void operator()(ChildStreams* streams) const noexcept;
};

using OwnedStreams = std::unique_ptr<ChildStreams, CloseStreams>;

/// Null with an error code. `readOutput`: standard output and error are read by the caller; else they are as in
/// InputKind::Default.
OwnedStreams openStreams(InputKind input, bool readOutput, ErrorCode& error);

/// What the child gets as this stream; -1 for what it has by default.
std::intptr_t childEnd(const ChildStreams& streams, int stream) noexcept;

/// To be called once the child has its ends, or will never have.
void closeChildEnds(ChildStreams& streams) noexcept;

/// Bytes of an output of the child, valid until the next call for any stream.
Transfer readStream(ChildStreams& streams, int stream, std::string_view& bytes);

/// How much of an output waits to be read.
std::size_t waitingBytes(ChildStreams& streams, int stream) noexcept;

/// Sends the first bytes of the rest of the input, `sent` of them. After `Nothing` the same bytes come again.
Transfer writeInput(ChildStreams& streams, std::string_view rest, std::size_t& sent);

void closeInput(ChildStreams& streams) noexcept;

/// Until a stream can go on, the process has ended, or the time is over; may return early.
void waitForStreams(ChildStreams& streams, const Process& process, unsigned int limitMs) noexcept;

} // namespace ky::impl::native
