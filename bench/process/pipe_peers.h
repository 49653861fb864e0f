// SPDX-License-Identifier: MIT
// What stands beside the library's pipes: two connected ends each, moved to their threads.
#pragma once

#include <cstddef>
#include <memory>

namespace ky::bench
{

/// One end of a connection, used by one thread. Both operations wait as long as needed; closing ends the other side.
class Connection
{
public:
    virtual ~Connection() = default;
    virtual void send(const char* data, std::size_t size) = 0;
    /// At least one byte; 0 when the other end has gone.
    virtual std::size_t receive(char* data, std::size_t capacity) = 0;
};

/// Makes one end; called on the thread that will use it, the listening end first. `name` is fresh for each pair.
struct Pair
{
    virtual ~Pair() = default;
    virtual void listen() = 0;
    virtual std::unique_ptr<Connection> accept() = 0;
    virtual std::unique_ptr<Connection> connect() = 0;
};

std::unique_ptr<Pair> makeBarePair();

} // namespace ky::bench
