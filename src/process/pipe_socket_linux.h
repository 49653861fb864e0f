// SPDX-License-Identifier: MIT
// Where the sockets of pipes stand, and whom they lead to. For *_linux.cpp files only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace ky::impl::native
{

/// The name of the socket's file: the pipe's own name where that is short and harmless, a hash of it otherwise.
std::string pipeFileName(std::string_view name);

/// Descriptor of the folder of all sockets, close-on-exec, owned by the caller; -1 when it cannot be trusted. It is
/// made when it is missing.
int openPipeFolder();

/// Address of the file with that name in the folder.
sockaddr_un pipeAddress(const std::string& fileName);

inline const sockaddr* generic(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

/// Whether the other end of a connected socket is a process of the effective user: for a client the one that began to
/// listen, for a server the one that connected.
bool isPeerTrusted(int socket);

/// Waits for `events`. False on a time-out, without error. A negative limit is none.
bool waitForSocket(int socket, short events, int timeoutMs);

} // namespace ky::impl::native
