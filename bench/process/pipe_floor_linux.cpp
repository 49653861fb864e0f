// SPDX-License-Identifier: MIT
// Sockets without a library: the transfer is tried first, and waited for when it does not go.
#include "process/pipe_peers.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace ky::bench
{

namespace
{

class BareConnection : public Connection
{
public:
    explicit BareConnection(int socket) : mSocket(socket) {}
    ~BareConnection() override { close(mSocket); }

    void send(const char* data, std::size_t size) override
    {
        while (size != 0)
        {
            const ssize_t sent = ::send(mSocket, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent < 0)
                wait(POLLOUT);
            else
            {
                data += sent;
                size -= static_cast<std::size_t>(sent);
            }
        }
    }

    std::size_t receive(char* data, std::size_t capacity) override
    {
        ssize_t received = recv(mSocket, data, capacity, MSG_DONTWAIT);
        for (; received < 0; received = recv(mSocket, data, capacity, MSG_DONTWAIT))
            wait(POLLIN);
        return static_cast<std::size_t>(received);
    }

private:
    void wait(short events)
    {
        pollfd watched = {mSocket, events, 0};
        poll(&watched, 1, -1);
    }

    int mSocket;
};

class BarePair : public Pair
{
public:
    void listen() override { static_cast<void>(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, mSockets)); }
    std::unique_ptr<Connection> accept() override { return std::make_unique<BareConnection>(mSockets[0]); }
    std::unique_ptr<Connection> connect() override { return std::make_unique<BareConnection>(mSockets[1]); }

private:
    int mSockets[2] = {-1, -1};
};

} // namespace

std::unique_ptr<Pair> makeBarePair() { return std::make_unique<BarePair>(); }

} // namespace ky::bench
