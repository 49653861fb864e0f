// SPDX-License-Identifier: MIT
// Talks to the syslog socket itself: openlog() would change the identity of everything else in the process that uses
// syslog(), and keeps a pointer to it.
#include "diagnostics/event_log_native.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>

namespace ky::impl::native
{

namespace
{

int severityOf(EventKind kind)
{
    switch (kind)
    {
    case EventKind::Information: return LOG_INFO;
    case EventKind::Warning: return LOG_WARNING;
    case EventKind::Error: return LOG_ERR;
    }
    return LOG_INFO;
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

} // namespace

void reportEvent(const std::string& source, EventKind kind, const std::string& text)
{
    const int descriptor = openSyslogSocket();
    if (descriptor < 0)
        return;
    // Without a time stamp: the service puts its own.
    std::string entry = "<";
    entry += std::to_string(LOG_USER | severityOf(kind));
    entry.append(">").append(source).append(": ").append(text);
    (void)send(descriptor, entry.data(), entry.size(), MSG_NOSIGNAL);
    close(descriptor);
}

} // namespace ky::impl::native
