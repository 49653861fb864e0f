// SPDX-License-Identifier: MIT
// Talks to the syslog socket itself: openlog() would change the identity of everything else in the process that uses
// syslog(), and keeps a pointer to it.
#include "diagnostics/event_log_native.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <iterator>

namespace ky::impl::native
{

namespace
{

/// Facility user, and the severity.
std::string_view priorityOf(EventKind kind)
{
    static_assert(LOG_USER == 8 && LOG_ERR == 3 && LOG_WARNING == 4 && LOG_INFO == 6);
    switch (kind)
    {
    case EventKind::Information: return "<14>";
    case EventKind::Warning: return "<12>";
    case EventKind::Error: return "<11>";
    }
    return "<14>";
}

/// -1 when no service listens.
int openSyslogSocket()
{
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return -1;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, _PATH_LOG, sizeof(address.sun_path) - 1);
    // A service that hangs must not hang the program.
    const timeval limit = {0, 200000};
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

iovec piece(std::string_view text) { return {const_cast<char*>(text.data()), text.size()}; }

} // namespace

void reportEvent(std::string_view source, EventKind kind, std::string_view text) noexcept
{
    const int descriptor = openSyslogSocket();
    if (descriptor < 0)
        return;
    // Without a time stamp: the service puts its own.
    iovec pieces[] = {piece(priorityOf(kind)), piece(source), piece(": "), piece(text)};
    msghdr entry = {};
    entry.msg_iov = pieces;
    entry.msg_iovlen = std::size(pieces);
    (void)sendmsg(descriptor, &entry, MSG_NOSIGNAL);
    close(descriptor);
}

} // namespace ky::impl::native
