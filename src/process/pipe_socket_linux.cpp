// SPDX-License-Identifier: MIT
#include "process/pipe_socket_linux.h"

#include "concurrency/mutex_file_linux.h"
#include "platform/private_folder.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

// With the folder, well below the 108 bytes of an address.
constexpr std::size_t longestPlainName = 48;
constexpr char plainCharacters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.";

std::string pipeFolderPath() { return privateFolderPath() + "/pipes"; }

} // namespace

// Plain names hold no '~', and so are never those of others.
std::string pipeFileName(std::string_view name)
{
    const bool isPlain = !name.empty() && name.size() <= longestPlainName && name.front() != '.' &&
                         name.find_first_not_of(plainCharacters) == std::string_view::npos;
    return isPlain ? std::string(name) : "~" + mutexFileName(hashName(name));
}

int openPipeFolder()
{
    ErrorCode error = 0;
    const int above = openPrivateFolder(error);
    if (above == -1)
        return -1;
    ::close(above);
    return openPrivateFolderAt(pipeFolderPath(), error);
}

sockaddr_un pipeAddress(const std::string& fileName)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = pipeFolderPath() + "/" + fileName;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

bool isPeerTrusted(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

bool waitForSocket(int socket, short events, int timeoutMs)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    pollfd watched = {socket, events, 0};
    for (;;)
    {
        const int count = ::poll(&watched, 1, timeoutMs);
        if (count >= 0 || errno != EINTR)
            return count != 0;
        if (timeoutMs < 0)
            continue;
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        timeoutMs = rest > 0 ? static_cast<int>(rest) : 0;
    }
}

} // namespace ky::impl::native
