// SPDX-License-Identifier: MIT
#include "platform/compiler.h"
#include "process/pipe_name.h"
#include "process/pipe_server_native.h"

#include <ky/kyNamedPipeServer.h>

#include <deque>
#include <utility>
#include <vector>

namespace ky
{

using impl::native::InstanceState;
using impl::native::PipeInstance;
using impl::native::PipeListener;

namespace
{

constexpr std::size_t instanceCount = 8;
constexpr int defaultPendingLimit = 8;

} // namespace

struct KY_HIDDEN kyNamedPipeServer::Private
{
    PipeListener* listener = nullptr;
    std::vector<PipeInstance*> waiting;
    std::deque<std::unique_ptr<kyNamedPipe>> pending;
    std::string name;
    bool listening = false;
    int maxPendingConnections = defaultPendingLimit;
    bool isExclusive = false;

    ~Private() { close(); }
    bool open(const std::string& serverName);
    void close() noexcept;
    bool addInstance();
    void signalWaiting();
    bool collect();
    void collectOrClose();
};

bool kyNamedPipeServer::Private::open(const std::string& serverName)
{
    waiting.reserve(instanceCount);
    listener = impl::native::openPipeListener(serverName, isExclusive);
    if (listener == nullptr)
        return false;
    while (waiting.size() < instanceCount)
    {
        if (!addInstance())
            return false;
    }
    signalWaiting();
    name = serverName;
    listening = true;
    return true;
}

void kyNamedPipeServer::Private::close() noexcept
{
    pending.clear();
    for (PipeInstance* const instance : waiting)
    {
        if (instance != nullptr)
            impl::native::closePipeInstance(*listener, instance);
    }
    waiting.clear();
    if (listener != nullptr)
        impl::native::closePipeListener(std::exchange(listener, nullptr));
    name.clear();
    listening = false;
}

bool kyNamedPipeServer::Private::addInstance()
{
    PipeInstance* const instance = impl::native::openPipeInstance(*listener);
    if (instance != nullptr)
        waiting.push_back(instance);
    return instance != nullptr;
}

/// No client that came while instances were opened is overlooked by the next wait.
void kyNamedPipeServer::Private::signalWaiting()
{
    for (const PipeInstance* const instance : waiting)
        impl::native::signalAgain(*listener, *instance);
}

/// Hands on the instances that are connected, and puts a new one in the place of each.
bool kyNamedPipeServer::Private::collect()
{
    resetPipeListener(*listener);
    for (PipeInstance*& instance : waiting)
    {
        const InstanceState state = pollPipeInstance(*listener, *instance);
        if (state == InstanceState::Failed)
            return false;
        if (state == InstanceState::Waiting)
            continue;
        auto pipe = std::make_unique<kyNamedPipe>();
        PipeInstance* const successor = impl::native::openPipeInstance(*listener);
        pipe->setHandle(impl::native::takePipe(std::exchange(instance, successor)));
        pending.push_back(std::move(pipe));
        if (successor == nullptr)
            return false;
    }
    signalWaiting();
    return true;
}

void kyNamedPipeServer::Private::collectOrClose()
{
    if (!collect())
        close();
}

kyNamedPipeServer::kyNamedPipeServer() : mPrivate(std::make_unique<Private>()) {}

kyNamedPipeServer::~kyNamedPipeServer() = default;

bool kyNamedPipeServer::listenUtf8(const std::string& name)
{
    if (mPrivate->listening || !impl::isPipeName(name))
        return false;
    if (mPrivate->open(name))
        return true;
    mPrivate->close();
    return false;
}

void kyNamedPipeServer::closeNamedPipeServer() { mPrivate->close(); }

bool kyNamedPipeServer::isListening() const { return mPrivate->listening; }

std::string kyNamedPipeServer::getServerNameUtf8() const { return mPrivate->name; }

void kyNamedPipeServer::setMaxPendingConnections(int count) { mPrivate->maxPendingConnections = count; }

int kyNamedPipeServer::getMaxPendingConnections() const { return mPrivate->maxPendingConnections; }

void kyNamedPipeServer::setExclusiveName(bool isExclusive) { mPrivate->isExclusive = isExclusive; }

bool kyNamedPipeServer::hasPendingConnections() const { return !mPrivate->pending.empty(); }

kyNamedPipe* kyNamedPipeServer::getNextPendingConnection()
{
    if (!hasPendingConnections())
        return nullptr;
    std::unique_ptr<kyNamedPipe> oldest = std::move(mPrivate->pending.front());
    mPrivate->pending.pop_front();
    return oldest.release();
}

bool kyNamedPipeServer::waitForNewConnection(int timeoutMs, bool* timedOut)
{
    if (timedOut != nullptr)
        *timedOut = false;
    if (!isListening())
        return false;
    if (hasPendingConnections())
        return true;
    if (waitPipeListener(*mPrivate->listener, timeoutMs))
        mPrivate->collectOrClose();
    else if (timedOut != nullptr)
        *timedOut = true;
    return hasPendingConnections();
}

void kyNamedPipeServer::processPipeServerEvents(int timeoutMs)
{
    if (!isListening() || static_cast<long long>(mPrivate->pending.size()) >= mPrivate->maxPendingConnections)
        return;
    if (waitPipeListener(*mPrivate->listener, timeoutMs))
        mPrivate->collectOrClose();
}

} // namespace ky
