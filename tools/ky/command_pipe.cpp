// SPDX-License-Identifier: MIT
#include "ky/commands.h"

#include "ky/console_native.h"
#include "ky/progress.h"

#include <ky/kyMutex.h>
#include <ky/kyNamedPipe.h>
#include <ky/kyNamedPipeServer.h>
#include <ky/kyThread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iostream>
#include <memory>
#include <string_view>
#include <thread>

namespace ky::tool
{

namespace
{

constexpr int waitMs = 200; // until a request to stop is seen
constexpr int forEver = 0x7FFFFFFF;
constexpr std::size_t blockSize = 64 * 1024;
constexpr std::size_t bufferLimit = 4 * blockSize;

void widenBuffers(kyNamedPipe& pipe)
{
    pipe.setMaxReadBufferSize(bufferLimit);
    pipe.setMaxWriteBufferSize(bufferLimit);
}

/// Prints what one client sends until it goes.
class Client : public kyThread
{
public:
    Client(kyNamedPipe* pipe, bool echo, kyMutex& output) : mPipe(pipe), mEcho(echo), mOutput(output)
    {
        widenBuffers(*mPipe);
    }
    ~Client() override
    {
        requestStop();
        waitThread(forEver);
    }

    void requestStop() { mStop = true; }

    bool hasEnded() const { return mEnded; }

    void run() override
    {
        std::string block(blockSize, '\0');
        while (!mStop && !(mPipe->isReadChannelClosed() && mPipe->bytesAvailable() == 0))
        {
            mPipe->processNamedPipeEvents(waitMs, true);
            const std::string_view bytes(block.data(), mPipe->readNamedPipeData(block.data(), block.size()));
            print(bytes);
            if (mEcho)
                sendBack(bytes);
        }
        flush(mLine.size());
        mEnded = true;
    }

private:
    /// Lines of several clients are not mixed, as long as they are not too long.
    void print(std::string_view bytes)
    {
        mLine.append(bytes);
        const std::size_t end = mLine.rfind('\n');
        if (end != std::string::npos)
            flush(end + 1);
        if (mLine.size() > blockSize)
            flush(mLine.size());
    }

    void flush(std::size_t size)
    {
        if (size == 0)
            return;
        const kyMutexLocker lock(mOutput);
        std::cout.write(mLine.data(), static_cast<std::streamsize>(size)).flush();
        mLine.erase(0, size);
    }

    void sendBack(std::string_view bytes)
    {
        while (!mStop && !mPipe->hasWriteFailed())
        {
            const std::size_t accepted = mPipe->writeNamedPipeData(bytes.data(), bytes.size());
            bytes.remove_prefix(accepted);
            mPipe->processNamedPipeEvents(waitMs, !bytes.empty());
            if (bytes.empty())
                break;
            // A client that sends without reading: waiting for the pipe would be waiting for what it sends.
            if (accepted == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::unique_ptr<kyNamedPipe> mPipe;
    bool mEcho;
    kyMutex& mOutput;
    std::string mLine;
    std::atomic<bool> mStop{false};
    std::atomic<bool> mEnded{false};
};

ExitCode serve(const PipeOptions& options)
{
    kyNamedPipeServer server;
    if (!server.listenUtf8(options.name))
        return fail(options.name, "cannot listen on this name; it is not usable, or somebody else listens on it");
    std::cerr << "ky: listening on " << options.name << std::endl;
    kyMutex output;
    std::vector<std::unique_ptr<Client>> clients;
    const std::unique_ptr<kyProgressNotifierInterface> progress = makeProgress();
    while (!progress->shouldCancel())
    {
        server.waitForNewConnection(waitMs);
        if (!server.isListening())
            return fail(options.name, "the system ended the pipe");
        while (server.hasPendingConnections())
        {
            clients.push_back(std::make_unique<Client>(server.getNextPendingConnection(), options.echo, output));
            clients.back()->startThread("pipe client");
        }
        std::erase_if(clients, [](const auto& client) { return client->hasEnded(); });
    }
    for (const auto& client : clients)
        client->requestStop(); // all at once: each takes a while to see it
    return Done;
}

/// The other side of serve().
class Sender
{
public:
    explicit Sender(const PipeOptions& options) : mOptions(options) { widenBuffers(mPipe); }

    ExitCode run()
    {
        if (!mPipe.connectToNamedPipeServerUtf8(mOptions.name))
            return fail(mOptions.name, "nobody listens on this pipe");
        if (mOptions.words.empty() ? !sendInput() : !sendWords())
            return isCancelled() ? cancelled(mOptions.name) : fail(mOptions.name, "the server has closed the pipe");
        while (!isCancelled() && !mPipe.isReadChannelClosed() && isReplyOutstanding())
            pump(std::clamp(mOptions.waitMs, 1, waitMs));
        printReplies();
        if (isCancelled())
            return cancelled(mOptions.name);
        return mReplyLines < mOptions.replyLines ? fail(mOptions.name, "the server has closed the pipe") : Done;
    }

private:
    using Clock = std::chrono::steady_clock;

    bool isCancelled() const { return mProgress->shouldCancel(); }

    bool isReplyOutstanding() const
    {
        if (mOptions.replyLines >= 0)
            return mReplyLines < mOptions.replyLines;
        return Clock::now() - mLastMove < std::chrono::milliseconds(mOptions.waitMs);
    }

    void printReplies()
    {
        const std::string_view bytes(mReplies.data(), mPipe.readNamedPipeData(mReplies.data(), mReplies.size()));
        if (bytes.empty())
            return;
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
        mReplyLines += static_cast<int>(std::count(bytes.begin(), bytes.end(), '\n'));
        mLastMove = Clock::now();
    }

    void pump(int timeoutMs)
    {
        mPipe.processNamedPipeEvents(timeoutMs, true);
        printReplies();
    }

    bool send(std::string_view bytes)
    {
        while ((!bytes.empty() || mPipe.hasPendingWrite()) && !mPipe.hasWriteFailed() && !isCancelled())
        {
            bytes.remove_prefix(mPipe.writeNamedPipeData(bytes.data(), bytes.size()));
            pump(waitMs);
        }
        mLastMove = Clock::now();
        return !mPipe.hasWriteFailed() && !isCancelled();
    }

    bool sendWords()
    {
        std::string line;
        for (const std::string& word : mOptions.words)
            line += (line.empty() ? "" : " ") + word;
        return send(line + '\n');
    }

    bool sendInput()
    {
        std::string block(blockSize, '\0');
        for (;;)
        {
            std::size_t size = 0;
            const native::Input input = native::readInput(block.data(), block.size(), size);
            if (isCancelled())
                return false;
            if (input == native::Input::End)
                return true;
            if (!send({block.data(), input == native::Input::Bytes ? size : 0}))
                return false;
            mPipe.processNamedPipeEvents(0, false);
            printReplies();
        }
    }

    const PipeOptions& mOptions;
    kyNamedPipe mPipe;
    std::unique_ptr<kyProgressNotifierInterface> mProgress = makeProgress();
    std::string mReplies = std::string(blockSize, '\0');
    int mReplyLines = 0;
    Clock::time_point mLastMove = Clock::now();
};

} // namespace

ExitCode runPipe(const PipeOptions& options)
{
    return options.action == "serve" ? serve(options) : Sender(options).run();
}

} // namespace ky::tool
