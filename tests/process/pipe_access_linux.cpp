// SPDX-License-Identifier: MIT
// Who and what may stand behind a name, and what is left when a process ends or forks.
#include "process/pipe_socket_linux.h"
#include "process/pipe_support.h"
#include "support/sanitizer.h"
#include "support/temp_dir.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace ky::test;
using ky::kyNamedPipe;
using ky::kyNamedPipeServer;
namespace fs = std::filesystem;
namespace native = ky::impl::native;

constexpr uid_t nobody = 65534;

/// Not an object of the library.
class BareSocket
{
public:
    BareSocket() : mSocket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}
    ~BareSocket() { ::close(mSocket); }
    BareSocket(const BareSocket&) = delete;
    BareSocket& operator=(const BareSocket&) = delete;

    int get() const { return mSocket; }
    bool bind(const std::string& path) { return call(&::bind, path); }
    bool connect(const std::string& path) { return call(&::connect, path); }
    bool listen() { return ::listen(mSocket, 5) == 0; }

private:
    bool call(int (*function)(int, const sockaddr*, socklen_t), const std::string& path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return function(mSocket, native::generic(address), sizeof address) == 0;
    }

    int mSocket;
};

/// A child by fork that runs `body` and ends with its result. Killed with the object.
class ForkedChild
{
public:
    explicit ForkedChild(const std::function<int()>& body) : mPid(::fork())
    {
        if (mPid == 0)
            ::_exit(body());
    }
    ~ForkedChild()
    {
        if (mPid > 0)
        {
            ::kill(mPid, SIGKILL);
            wait();
        }
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;

    int wait()
    {
        int status = -1;
        ::waitpid(std::exchange(mPid, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void signal(int number) { ::kill(mPid, number); }

private:
    pid_t mPid;
};

class PipeAccess : public testing::Test
{
protected:
    PipeAccess() { ::close(native::openPipeFolder()); }
    ~PipeAccess() override { fs::remove_all(path); }

    const std::string name = uniquePipeName();
    const std::string path = native::pipeAddress(name).sun_path;
    kyNamedPipeServer server;
    kyNamedPipe client;
};

TEST_F(PipeAccess, FileNamesAreSafeAndDistinct)
{
    EXPECT_EQ(native::pipeFileName("Plain-name_1.x"), "Plain-name_1.x");
    const std::vector<std::string> hashed = {
        "a/b",  "a\\b",         ".a", "~a", "a b", std::string(49, 'a'), std::string(5000, 'a'), std::string(5001, 'a'),
        "\xFF", "w\xC3\xB6rter"};
    std::vector<std::string> seen;
    for (const std::string& text : hashed)
    {
        const std::string file = native::pipeFileName(text);
        EXPECT_EQ(file.find('/'), std::string::npos);
        EXPECT_EQ(file.front(), '~');
        // 31 characters of folder for the largest user id.
        EXPECT_LT(file.size() + 31, sizeof sockaddr_un{}.sun_path);
        EXPECT_EQ(std::count(seen.begin(), seen.end(), file), 0) << text;
        seen.push_back(file);
    }
}

TEST_F(PipeAccess, ADeadSocketIsReplaced)
{
    {
        BareSocket dead;
        ASSERT_TRUE(dead.bind(path) && dead.listen());
    }
    EXPECT_FALSE(client.connectToNamedPipeServerUtf8(name));
    ASSERT_TRUE(server.listenUtf8(name));
    EXPECT_TRUE(client.connectToNamedPipeServerUtf8(name));
    server.closeNamedPipeServer();
    EXPECT_FALSE(fs::exists(path)) << "nothing is left behind";
}

TEST_F(PipeAccess, AShortageOfDescriptorsPasses)
{
    if (!ky::test::canRunOutOfDescriptors)
        GTEST_SKIP() << "the sanitizer needs descriptors of its own";
    ASSERT_TRUE(server.listenUtf8(name));
    ASSERT_TRUE(client.connectToNamedPipeServerUtf8(name));
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none = {3, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    for (int i = 0; i < 3; ++i)
    {
        bool timedOut = true;
        EXPECT_FALSE(server.waitForNewConnection(10, &timedOut));
        EXPECT_FALSE(timedOut) << "somebody is there";
        EXPECT_TRUE(server.isListening());
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(server.waitForNewConnection(10000));
}

TEST_F(PipeAccess, WhatIsNotADeadSocketStays)
{
    TempDir dir;
    writeFile(dir.file("target"), "content");
    BareSocket live;
    const std::vector<std::function<void()>> squatters = {
        [&] { writeFile(path, "content"); },
        [&] { fs::create_symlink(dir.file("target"), path); },
        [&] { fs::create_symlink(dir.file("missing"), path); },
        [&] { fs::create_directory(path); },
        [&] { ASSERT_TRUE(live.bind(path) && live.listen()); },
    };
    for (const auto& squat : squatters)
    {
        squat();
        const auto before = fs::symlink_status(path).type();
        EXPECT_FALSE(server.listenUtf8(name));
        EXPECT_EQ(fs::symlink_status(path).type(), before);
        EXPECT_EQ(client.connectToNamedPipeServerUtf8(name), before == fs::file_type::socket);
        client.closeNamedPipe();
        fs::remove(path);
        EXPECT_TRUE(server.listenUtf8(name)) << "the failure leaves no claim";
        server.closeNamedPipeServer();
    }
    EXPECT_EQ(readFile(dir.file("target")), "content");
    EXPECT_FALSE(exists(dir.file("missing")));
}

TEST_F(PipeAccess, ASocketThatTookThePlaceIsNotRemoved)
{
    ASSERT_TRUE(server.listenUtf8(name));
    fs::remove(path);
    BareSocket other;
    ASSERT_TRUE(other.bind(path));
    server.closeNamedPipeServer();
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(PipeAccess, OneServerAName)
{
    kyNamedPipeServer second;
    ASSERT_TRUE(server.listenUtf8(name));
    EXPECT_FALSE(second.listenUtf8(name));
    fs::remove(path); // by a cleaner of temporary files: the name is still taken
    EXPECT_FALSE(second.listenUtf8(name));
    server.closeNamedPipeServer();
    EXPECT_TRUE(second.listenUtf8(name));
    EXPECT_TRUE(client.connectToNamedPipeServerUtf8(name));
}

TEST_F(PipeAccess, AnotherUserIsTurnedAway)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can act as somebody else";
    // A client of another user: its folder is another one, and the server's is closed to it.
    ASSERT_TRUE(server.listenUtf8(name));
    ForkedChild stranger(
        [&]
        {
            kyNamedPipe pipe;
            BareSocket bare;
            return ::setuid(nobody) == 0 && !pipe.connectToNamedPipeServerUtf8(name) && !bare.connect(path) ? 0 : 1;
        });
    EXPECT_EQ(stranger.wait(), 0);

    // A server of another user behind a socket in the client's own folder, and one that gave up its rights only after
    // it had begun to listen.
    for (const bool isFirst : {true, false})
    {
        const std::string squatted = uniquePipeName();
        const std::string squattedPath = native::pipeAddress(squatted).sun_path;
        BareSocket impostor;
        ASSERT_TRUE(impostor.bind(squattedPath));
        const auto change = [&] { EXPECT_EQ(::seteuid(nobody), 0); };
        if (isFirst)
            change();
        EXPECT_TRUE(impostor.listen());
        EXPECT_EQ(::seteuid(0), 0);
        EXPECT_EQ(client.connectToNamedPipeServerUtf8(squatted), !isFirst);
        client.closeNamedPipe();
        fs::remove(squattedPath);
    }

    // The superuser gets past the folder of another user, but not past its server.
    ForkedChild other(
        [&]
        {
            kyNamedPipeServer theirs;
            if (::setuid(nobody) != 0 || !theirs.listenUtf8(name))
                return 2;
            bool timedOut = false;
            return !theirs.waitForNewConnection(60'000, &timedOut) && !timedOut && theirs.isListening() ? 0 : 1;
        });
    const std::string theirPath = "/tmp/kysystem-" + std::to_string(nobody) + "/pipes/" + name;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    BareSocket caller;
    while (!caller.connect(theirPath) && std::chrono::steady_clock::now() < end)
        ::usleep(1000);
    char byte = 0;
    EXPECT_LE(::recv(caller.get(), &byte, 1, 0), 0);
    EXPECT_EQ(other.wait(), 0);
}

TEST_F(PipeAccess, AForkedChildKeepsNothing)
{
    ASSERT_TRUE(server.listenUtf8(name));
    ASSERT_TRUE(client.connectToNamedPipeServerUtf8(name));
    const auto pipe = PipePair::accept(server);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    ForkedChild child(
        [&]
        {
            const bool isFree = !pipe->isConnected() && !client.isConnected();
            client.closeNamedPipe();
            server.closeNamedPipeServer();
            ::close(ready[1]);
            return isFree ? ::pause() : 1;
        });
    ::close(ready[1]);
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 0);
    ::close(ready[0]);
    EXPECT_TRUE(fs::exists(path)) << "it is the parent's";
    pipe->closeNamedPipe();
    EXPECT_TRUE(pumpUntil(client, [&] { return client.isReadChannelClosed(); }));
    kyNamedPipe next;
    EXPECT_TRUE(next.connectToNamedPipeServerUtf8(name));
}

TEST_F(PipeAccess, AKilledServersChildDoesNotKeepTheName)
{
    int alive[2];
    ASSERT_EQ(::pipe(alive), 0);
    ForkedChild parent(
        [&]
        {
            kyNamedPipeServer theirs;
            const bool isListening = theirs.listenUtf8(name);
            if (::fork() == 0)
            {
                // Until the test closes its end.
                const char byte = isListening ? 'y' : 'n';
                ::close(alive[0]);
                while (::write(alive[1], &byte, 1) == 1)
                    ::usleep(10'000);
                ::_exit(0);
            }
            return ::pause();
        });
    char byte = 0;
    EXPECT_EQ(::read(alive[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    EXPECT_FALSE(server.listenUtf8(name));
    parent.signal(SIGKILL);
    parent.wait();
    EXPECT_TRUE(server.listenUtf8(name));
    const auto ignored = std::signal(SIGPIPE, SIG_IGN);
    ::close(alive[0]);
    ::close(alive[1]);
    std::signal(SIGPIPE, ignored);
}

TEST_F(PipeAccess, EventsTellWhatToProcess)
{
    ASSERT_TRUE(server.listenUtf8(name));
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(client.getReadEvent()), -1);
    ASSERT_TRUE(client.connectToNamedPipeServerUtf8(name));
    const auto pipe = PipePair::accept(server);
    const auto isSignalled = [](void* event, short events)
    {
        pollfd watched = {static_cast<int>(reinterpret_cast<std::intptr_t>(event)), events, 0};
        return ::poll(&watched, 1, 0) == 1;
    };
    client.processNamedPipeEvents(0, false);
    EXPECT_FALSE(isSignalled(client.getReadEvent(), POLLIN));
    // More than the system takes.
    const std::string bytes(4'000'000, 'x');
    ASSERT_TRUE(pipe->setMaxWriteBufferSize(bytes.size()));
    ASSERT_EQ(offer(*pipe, bytes), bytes.size());
    pipe->processNamedPipeEvents(0, false);
    EXPECT_TRUE(pipe->hasPendingWrite());
    EXPECT_FALSE(isSignalled(pipe->getWriteEvent(), POLLOUT));
    EXPECT_TRUE(isSignalled(client.getReadEvent(), POLLIN));
    ASSERT_TRUE(client.setMaxReadBufferSize(bytes.size()));
    client.processNamedPipeEvents(0, false);
    EXPECT_TRUE(isSignalled(pipe->getWriteEvent(), POLLOUT));
}

} // namespace
