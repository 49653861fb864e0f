// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One end of a named pipe between two processes of this machine.

#include <ky/kyExport.h>

#include <cstddef>
#include <memory>
#include <string>

namespace ky
{

class kyNamedPipeServer;

/// One end of a connected pipe: bytes in order, both ways, between two bounded buffers. No thread works behind it. The
/// owner calls processNamedPipeEvents() regularly, which never blocks unless asked to, and between these calls moves
/// bytes in and out of the buffers.
///
/// ```cpp
/// ky::kyNamedPipe pipe;
/// if (!pipe.connectToNamedPipeServerUtf8("my-service"))
///     return false;
/// for (std::size_t sent = 0; sent < text.size() || pipe.hasPendingWrite();)
/// {
///     sent += pipe.writeNamedPipeData(text.data() + sent, text.size() - sent);
///     pipe.processNamedPipeEvents(100, true);
///     if (pipe.hasWriteFailed())
///         return false;
/// }
/// ```
///
/// Windows: a named pipe of this machine. Linux: a stream socket in a folder that only this user can enter, and both
/// ends check that the other one is a process of the same user. A broken pipe raises no signal.
///
/// Failures are false results and the three flags hasWriteFailed(), isReadChannelClosed() and isWriteChannelClosed(),
/// which stay set until the pipe is connected anew. Nothing is logged, nothing is thrown but by a failed allocation.
///
/// One thread at a time uses an object. On Windows it must be the same one as long as something is in flight, because
/// the system cancels what an ending thread has started.
class KY_API kyNamedPipe
{
public:
    /// Unconnected.
    kyNamedPipe();

    /// Closes the pipe.
    virtual ~kyNamedPipe();
    kyNamedPipe(const kyNamedPipe&) = delete;
    kyNamedPipe& operator=(const kyNamedPipe&) = delete;

    /// Connects to the server that listens on `name`. When all places that the server keeps for clients are taken, each
    /// wait for a free one is limited to 5 seconds; otherwise the answer comes at once.
    ///
    /// \param name UTF-8, as for kyNamedPipeServer::listenUtf8()
    /// \return false when this object is connected already, when the name is empty or not usable, or when no server of
    /// this user answers
    bool connectToNamedPipeServerUtf8(const std::string& name);

    /// Back to unconnected, at once: bytes in the buffers and in flight are dropped. To have everything delivered, call
    /// processNamedPipeEvents() until hasPendingWrite() is false. (Bytes that the system has taken are still delivered
    /// on Linux. On Windows it takes none that the peer has not received, and those the peer has received stay.)
    void closeNamedPipe();

    /// Whether this object holds a pipe. It does until closeNamedPipe(), even after the peer has gone.
    [[nodiscard]] bool isConnected() const;

    /// Takes received bytes.
    /// \param size capacity of `data` in bytes
    /// \return how many bytes were put into `data`: as many as are there, at most `size`; 0 without a pipe
    std::size_t readNamedPipeData(char* data, std::size_t size);

    /// Offers bytes to be sent. Only as many are accepted as the limit of the buffer leaves room for; the rest must be
    /// offered again, after processNamedPipeEvents().
    /// \return how many bytes were accepted; 0 without a pipe or after a write has failed
    std::size_t writeNamedPipeData(const char* data, std::size_t size);

    /// Bytes received and not yet taken.
    [[nodiscard]] std::size_t bytesAvailable() const;

    /// Bytes accepted and not yet handed to the system. Those in flight do not count.
    [[nodiscard]] std::size_t bytesToWrite() const;

    /// Whether bytes are in flight or wait to be handed to the system.
    [[nodiscard]] bool hasPendingWrite() const;

    /// Whether sending has failed. No more bytes are accepted then; received ones can still be taken.
    [[nodiscard]] bool hasWriteFailed() const;

    /// Whether no more bytes will be received: the peer has closed its end, or reading has failed. Those that arrived
    /// before can still be taken.
    [[nodiscard]] bool isReadChannelClosed() const;

    /// Whether no more bytes can be sent.
    [[nodiscard]] bool isWriteChannelClosed() const;

    /// What the owner can wait on together with other objects; processNamedPipeEvents() does the rest.
    ///
    /// Windows: handles of manual-reset events, owned by this object and valid as long as it lives. The read event is
    /// signalled when bytes have arrived or the peer has gone, the write event when bytes in flight have been sent.
    /// Linux: for both the descriptor of the socket, cast to a pointer, -1 when unconnected. Poll it for POLLIN while
    /// bytesAvailable() is below the limit and the read channel is open, and for POLLOUT while hasPendingWrite().
    ///
    /// Wait only after a call of processNamedPipeEvents() that changed nothing; before, nothing may be in flight.
    /// @{
    [[nodiscard]] void* getReadEvent() const;
    [[nodiscard]] void* getWriteEvent() const;
    /// @}

    /// Limits of the two buffers in bytes, 10240 by default. They hold from now on and survive closing.
    /// \return false, with the limit unchanged, when the buffer holds more bytes than that
    /// @{
    bool setMaxReadBufferSize(std::size_t size);
    bool setMaxWriteBufferSize(std::size_t size);
    /// @}

    /// The limit in force, in bytes.
    /// @{
    [[nodiscard]] std::size_t getMaxReadBufferSize() const;
    [[nodiscard]] std::size_t getMaxWriteBufferSize() const;
    /// @}

    /// Moves bytes between the buffers and the system as far as that goes without waiting.
    ///
    /// \param timeoutMs how long to wait at most, in milliseconds; below 1 there is no waiting
    /// \param wait whether to wait, when nothing could be moved and no received bytes are there to be taken, until
    /// something happens. What has happened then is processed by the next call.
    void processNamedPipeEvents(int timeoutMs, bool wait);

private:
    friend class kyNamedPipeServer;

    /// Takes over a connected instance.
    void setHandle(void* handle);

    struct Private;
    std::unique_ptr<Private> mPrivate;
};

} // namespace ky
