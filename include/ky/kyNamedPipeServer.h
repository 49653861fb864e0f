// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The listening side of named pipes.

#include <ky/kyExport.h>
#include <ky/kyNamedPipe.h>

#include <memory>
#include <string>

namespace ky
{

/// Listens on a pipe name, keeps eight places for clients, and hands out each connected client as a kyNamedPipe. No
/// thread works behind it: the owner calls processPipeServerEvents() regularly, or waitForNewConnection().
///
/// Who may connect: Windows: processes of this machine that the default rights of a new pipe admit, never those of
/// another machine. Linux: processes of the same user.
///
/// Several servers of one name share the clients on Windows, unless setExclusiveName() forbids it. On Linux a name
/// belongs to one server, until it stops listening or its process has ended, however that ended; what it left behind is
/// taken over by the next one.
///
/// Failures are false results; nothing is logged. One thread at a time uses an object.
class KY_API kyNamedPipeServer
{
public:
    /// Not listening.
    kyNamedPipeServer();

    /// Stops listening, as closeNamedPipeServer().
    virtual ~kyNamedPipeServer();
    kyNamedPipeServer(const kyNamedPipeServer&) = delete;
    kyNamedPipeServer& operator=(const kyNamedPipeServer&) = delete;

    /// Starts to listen.
    ///
    /// \param name UTF-8. Windows: what follows the prefix of all pipe names; at most 247 characters, upper and lower
    /// case are the same. Linux: any bytes of any length, case matters. Neither platform takes a name with a NUL, or
    /// one that holds "." or ".." between separators, which would lead away from the pipes.
    /// \return false when already listening, when the name is empty or not usable, or when the system refuses: on Linux
    /// also when somebody else listens on the name
    bool listenUtf8(const std::string& name);

    /// Stops listening and forgets the name. Pending connections that were not taken are closed; those that were taken
    /// are not affected.
    void closeNamedPipeServer();

    /// Whether it listens: false after a failure of the system, too.
    [[nodiscard]] bool isListening() const;

    /// UTF-8, empty when not listening.
    [[nodiscard]] std::string getServerNameUtf8() const;

    /// How many connections processPipeServerEvents() lets pend; 8 by default. Those above it remain connected to the
    /// places that the server keeps, and further clients wait.
    void setMaxPendingConnections(int count);
    /// The limit in force.
    [[nodiscard]] int getMaxPendingConnections() const;

    /// Whether listenUtf8() fails when somebody else listens on the name already. Off by default. On Linux that is
    /// always so.
    void setExclusiveName(bool isExclusive);

    /// Whether getNextPendingConnection() has one to give.
    [[nodiscard]] bool hasPendingConnections() const;

    /// The connection that has been pending longest, removed from the server; null when there is none. The caller owns
    /// it.
    [[nodiscard]] kyNamedPipe* getNextPendingConnection();

    /// Waits for a connection, whatever the limit of pending ones. Stops listening when the system fails; a
    /// mere shortage of descriptors or memory leaves the clients waiting, for a later call to accept them.
    ///
    /// \param timeoutMs in milliseconds; negative waits without limit
    /// \param timedOut unless null, set to whether the time was over before something happened
    /// \return whether a connection is pending
    bool waitForNewConnection(int timeoutMs, bool* timedOut = nullptr);

    /// Collects the clients that have connected, unless as many are pending as the limit allows. Stops listening when
    /// the system fails.
    /// \param timeoutMs how long to wait for the first one, in milliseconds; negative waits without limit
    void processPipeServerEvents(int timeoutMs);

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

} // namespace ky
