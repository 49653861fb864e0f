// SPDX-License-Identifier: MIT
#include <ky/kyThread.h>

#include "concurrency/sync_native.h"
#include "concurrency/thread_native.h"
#include "concurrency/wait_limits.h"
#include "frame/early_use.h"
#include "platform/clock_native.h"
#include "platform/process_id_native.h"
#include "platform/type_name.h"

#include <ky/kyException.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <system_error>
#include <typeinfo>

namespace ky
{

using namespace impl;

namespace
{

constexpr std::uint64_t pollIntervalMs = 15;

/// Room for a blank and an id.
constexpr std::size_t idRoom = 1 + std::numeric_limits<std::uint32_t>::digits10 + 1;

/// The thread object that the calling thread belongs to. (Its handle is only for those who started it.)
constinit thread_local const kyThread* sCurrent = nullptr;

[[noreturn]] void fail(std::errc code) { throw std::system_error(std::make_error_code(code)); }

} // namespace

/// Not every system tells the id of a new thread to the one who starts it: the thread itself completes the name and
/// publishes its id, and whoever asks for them waits until then.
struct impl::ThreadHolder
{
    explicit ThreadHolder(const native::Thread& started) : thread(started) {}

    native::Thread thread;
    std::uint64_t processId = native::currentProcessId(); ///< a forked child inherits the object, not the thread
    std::atomic<std::uint32_t> id{0};

    bool isOfThisProcess() const { return processId == native::currentProcessId(); }

    void publish(std::uint32_t ownId) { id.store(ownId, std::memory_order_release); }

    /// Polls: it is published as soon as the thread runs, and some runtimes lose wake-ups of std::atomic::wait().
    std::uint32_t publishedId() const
    {
        constexpr int yields = 200;
        for (int turn = 0; id.load(std::memory_order_acquire) == 0 && isOfThisProcess(); ++turn)
            native::sleepMs(turn < yields ? 0 : 1);
        return id.load(std::memory_order_relaxed);
    }

    void join()
    {
        if (thread.handle == 0)
            fail(std::errc::invalid_argument);
        if (!native::joinThread(thread))
            fail(std::errc::no_such_process);
    }
};

kyRunnableInterface::~kyRunnableInterface() = default;

kyThread::kyThread() : mHolder(nullptr), mRunning(false)
{
    checkEarlyUse("Thread create before full init of kySystem");
}

kyThread::~kyThread()
{
    checkFork();
    waitThread(joinWithoutLimit);
}

void kyThread::run() {}

void kyThread::startThread(const char* name)
{
    if (mHolder != nullptr)
        return;
    mName = name != nullptr ? std::string(name) : className(typeid(*this));
    mName.reserve(mName.size() + idRoom);
    const auto entry = [](void* self) { Run(static_cast<kyThread*>(self)); };
    auto holder = std::make_unique<ThreadHolder>(native::Thread{entry, this});
    mHolder = holder.get();
    mRunning.store(true, std::memory_order_relaxed);
    if (!native::startThread(holder->thread))
    {
        mHolder = nullptr;
        fail(std::errc::resource_unavailable_try_again);
    }
    static_cast<void>(holder.release());
}

/// The entry of the new thread. Nothing here allocates: the room for the id is there.
void kyThread::Run(kyThread* thread)
{
    // Whichever way the thread ends, being cancelled included.
    struct Ended
    {
        ~Ended() { running.store(false, std::memory_order_release); }
        std::atomic<bool>& running;
    };
    const Ended ended{thread->mRunning};
    sCurrent = thread;
    const std::uint32_t id = native::currentThreadId();
    thread->mName.append(1, ' ').append(std::to_string(id));
    native::nameCurrentThread(thread->mName);
    thread->mHolder->publish(id);
    exception::ExecGuardedCode(&RunImpl, thread);
}

void kyThread::RunImpl(void* thread) { static_cast<kyThread*>(thread)->run(); }

bool kyThread::waitThread(int timeoutMs)
{
    if (mHolder == nullptr)
        return false;
    if (!mHolder->isOfThisProcess())
    {
        forgetThread();
        mRunning.store(false, std::memory_order_relaxed);
        return false;
    }
    if (timeoutMs < joinWithoutLimit)
    {
        const std::int64_t start = native::ticksSinceStartMs();
        while (isRunning() && native::ticksSinceStartMs() - start <= timeoutMs)
            native::sleepMs(pollIntervalMs);
        if (isRunning())
            return false;
    }
    if (sCurrent == this)
        fail(std::errc::resource_deadlock_would_occur);
    mHolder->join();
    forgetThread();
    return true;
}

void kyThread::forgetThread()
{
    delete mHolder;
    mHolder = nullptr;
}

bool kyThread::isRunning() const { return mRunning.load(std::memory_order_acquire); }

bool kyThread::isFinished() const { return !isRunning() && mHolder == nullptr; }

std::string kyThread::getThreadId()
{
    return mHolder != nullptr ? std::to_string(mHolder->publishedId()) : std::string("InvalidThread");
}

std::string kyThread::CurrentThreadId() { return std::to_string(native::currentThreadId()); }

const std::string& kyThread::getThreadName() const
{
    if (mHolder != nullptr)
        mHolder->publishedId();
    return mName;
}

void kyThread::sleep(unsigned long seconds)
{
    constexpr std::uint64_t longest = std::numeric_limits<std::uint64_t>::max() / 1000;
    native::sleepMs((seconds < longest ? seconds : longest) * 1000);
}

void kyThread::msleep(unsigned long ms) { native::sleepMs(ms); }

void kyThread::usleep(unsigned long us) { native::sleepMs(us / 1000); }

} // namespace ky
