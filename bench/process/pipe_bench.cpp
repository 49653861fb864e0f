// SPDX-License-Identifier: MIT
// One byte there and back, and 64 KB blocks one way, between two threads.
#include "process/pipe_peers.h"

#include <ky/kyNamedPipeServer.h>

#include <benchmark/benchmark.h>

#include <future>
#include <random>
#include <string>
#include <thread>
#include <vector>

#if defined(KY_PEER_QT)
#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#endif
#if defined(KY_PEER_POCO)
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>

#include <filesystem>
#endif

namespace
{

using ky::bench::Connection;
using ky::bench::Pair;

constexpr std::size_t blockSize = 64 * 1024;

std::string freshName()
{
    static const std::string run = std::to_string(std::random_device()());
    static int count = 0;
    return "ky-bench-" + run + "-" + std::to_string(++count);
}

class KyConnection : public Connection
{
public:
    KyConnection(std::unique_ptr<ky::kyNamedPipe> pipe, std::size_t limit) : mPipe(std::move(pipe))
    {
        mPipe->setMaxReadBufferSize(limit);
        mPipe->setMaxWriteBufferSize(limit);
    }

    void send(const char* data, std::size_t size) override
    {
        for (;;)
        {
            const std::size_t accepted = mPipe->writeNamedPipeData(data, size);
            data += accepted;
            size -= accepted;
            mPipe->processNamedPipeEvents(1000, true);
            if (size == 0 || mPipe->hasWriteFailed())
                return;
        }
    }

    std::size_t receive(char* data, std::size_t capacity) override
    {
        std::size_t received = mPipe->readNamedPipeData(data, capacity);
        while (received == 0 && !mPipe->isReadChannelClosed())
        {
            mPipe->processNamedPipeEvents(1000, true);
            received = mPipe->readNamedPipeData(data, capacity);
        }
        return received;
    }

private:
    std::unique_ptr<ky::kyNamedPipe> mPipe;
};

template <std::size_t limit>
class KyPair : public Pair
{
public:
    void listen() override { mServer.listenUtf8(mName); }
    std::unique_ptr<Connection> accept() override
    {
        mServer.waitForNewConnection(10000);
        return std::make_unique<KyConnection>(std::unique_ptr<ky::kyNamedPipe>(mServer.getNextPendingConnection()),
                                              limit);
    }
    std::unique_ptr<Connection> connect() override
    {
        auto pipe = std::make_unique<ky::kyNamedPipe>();
        pipe->connectToNamedPipeServerUtf8(mName);
        return std::make_unique<KyConnection>(std::move(pipe), limit);
    }

private:
    const std::string mName = freshName();
    ky::kyNamedPipeServer mServer;
};

using DefaultPair = KyPair<10240>;
using RaisedPair = KyPair<256 * 1024>;

#if defined(KY_PEER_QT)
class QtConnection : public Connection
{
public:
    explicit QtConnection(QLocalSocket* socket) : mSocket(socket) {}

    void send(const char* data, std::size_t size) override
    {
        mSocket->write(data, static_cast<qint64>(size));
        while (mSocket->bytesToWrite() > 0 && mSocket->waitForBytesWritten(-1))
        {
        }
    }

    std::size_t receive(char* data, std::size_t capacity) override
    {
        while (mSocket->bytesAvailable() == 0)
        {
            if (!mSocket->waitForReadyRead(-1))
                return 0;
        }
        return static_cast<std::size_t>(mSocket->read(data, static_cast<qint64>(capacity)));
    }

private:
    std::unique_ptr<QLocalSocket> mSocket;
};

class QtPair : public Pair
{
public:
    QtPair()
    {
        static int argc = 0;
        static QCoreApplication application(argc, nullptr);
    }
    void listen() override
    {
        mServer = std::make_unique<QLocalServer>();
        mServer->listen(mName);
    }
    std::unique_ptr<Connection> accept() override
    {
        mServer->waitForNewConnection(-1);
        auto connection = std::make_unique<QtConnection>(mServer->nextPendingConnection());
        return connection;
    }
    std::unique_ptr<Connection> connect() override
    {
        auto* const socket = new QLocalSocket;
        socket->connectToServer(mName);
        socket->waitForConnected(-1);
        return std::make_unique<QtConnection>(socket);
    }

private:
    const QString mName = QString::fromStdString(freshName());
    std::unique_ptr<QLocalServer> mServer;
};
#endif

#if defined(KY_PEER_POCO)
class PocoConnection : public Connection
{
public:
    explicit PocoConnection(const Poco::Net::StreamSocket& socket) : mSocket(socket) {}
    void send(const char* data, std::size_t size) override { mSocket.sendBytes(data, static_cast<int>(size)); }
    std::size_t receive(char* data, std::size_t capacity) override
    {
        return static_cast<std::size_t>(mSocket.receiveBytes(data, static_cast<int>(capacity)));
    }

private:
    Poco::Net::StreamSocket mSocket;
};

class PocoPair : public Pair
{
public:
    ~PocoPair() override { std::filesystem::remove(mPath); }
    void listen() override
    {
        mServer.bind(address());
        mServer.listen();
    }
    std::unique_ptr<Connection> accept() override
    {
        return std::make_unique<PocoConnection>(mServer.acceptConnection());
    }
    std::unique_ptr<Connection> connect() override
    {
        return std::make_unique<PocoConnection>(Poco::Net::StreamSocket(address()));
    }

private:
    Poco::Net::SocketAddress address() const { return {Poco::Net::SocketAddress::UNIX_LOCAL, mPath}; }

    const std::string mPath = (std::filesystem::temp_directory_path() / freshName()).string();
    Poco::Net::ServerSocket mServer;
};
#endif

/// Runs `body` on one end while `other` runs on the other one, until the first is closed.
template <typename Body, typename Other>
void between(Pair& pair, Body body, Other other)
{
    std::promise<void> listening;
    std::thread thread(
        [&]
        {
            pair.listen();
            listening.set_value();
            const auto connection = pair.accept();
            other(*connection);
        });
    listening.get_future().wait();
    auto connection = pair.connect();
    body(*connection);
    connection.reset();
    thread.join();
}

void echoUntilClosed(Connection& connection)
{
    char byte = 0;
    while (connection.receive(&byte, 1) != 0)
        connection.send(&byte, 1);
}

/// Acknowledges every `batch` bytes with one.
void sinkUntilClosed(Connection& connection, std::size_t batch)
{
    std::vector<char> block(blockSize);
    std::size_t received = 0;
    for (std::size_t count = connection.receive(block.data(), block.size()); count != 0;
         count = connection.receive(block.data(), block.size()))
    {
        received += count;
        for (; received >= batch; received -= batch)
            connection.send("+", 1);
    }
}

void roundTrip(benchmark::State& state, Pair& pair)
{
    const auto body = [&](Connection& connection)
    {
        char byte = 'x';
        for (auto _ : state)
        {
            connection.send(&byte, 1);
            connection.receive(&byte, 1);
        }
    };
    between(pair, body, &echoUntilClosed);
}

void throughput(benchmark::State& state, Pair& pair)
{
    constexpr std::size_t blocks = 1024;
    const auto body = [&](Connection& connection)
    {
        const std::vector<char> block(blockSize, 'b');
        char answer = 0;
        for (auto _ : state)
        {
            for (std::size_t i = 0; i < blocks; ++i)
                connection.send(block.data(), block.size());
            connection.receive(&answer, 1);
        }
    };
    between(pair, body, [](Connection& connection) { sinkUntilClosed(connection, blocks * blockSize); });
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * blocks * blockSize));
}

template <typename SomePair>
void roundTripOf(benchmark::State& state)
{
    SomePair pair;
    roundTrip(state, pair);
}

template <typename SomePair>
void throughputOf(benchmark::State& state)
{
    SomePair pair;
    throughput(state, pair);
}

BENCHMARK(roundTripOf<DefaultPair>)->Name("pipe/round_trip_1_byte/ky")->UseRealTime();
BENCHMARK(throughputOf<RaisedPair>)->Name("pipe/throughput_64k/ky")->UseRealTime();
BENCHMARK(throughputOf<DefaultPair>)->Name("pipe/throughput_64k/ky_default_limit")->UseRealTime();
#if defined(KY_PEER_QT)
BENCHMARK(roundTripOf<QtPair>)->Name("pipe/round_trip_1_byte/qt")->UseRealTime();
BENCHMARK(throughputOf<QtPair>)->Name("pipe/throughput_64k/qt")->UseRealTime();
#endif
#if defined(KY_PEER_POCO)
BENCHMARK(roundTripOf<PocoPair>)->Name("pipe/round_trip_1_byte/poco")->UseRealTime();
BENCHMARK(throughputOf<PocoPair>)->Name("pipe/throughput_64k/poco")->UseRealTime();
#endif
#if defined(KY_BENCH_FLOOR)
void bareRoundTrip(benchmark::State& state) { roundTrip(state, *ky::bench::makeBarePair()); }
void bareThroughput(benchmark::State& state) { throughput(state, *ky::bench::makeBarePair()); }
BENCHMARK(bareRoundTrip)->Name("pipe/round_trip_1_byte/floor_sockets")->UseRealTime();
BENCHMARK(bareThroughput)->Name("pipe/throughput_64k/floor_sockets")->UseRealTime();
#endif

} // namespace
