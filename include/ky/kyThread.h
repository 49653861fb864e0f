// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Base class of threads.
///
/// \code
/// class Counter : public ky::kyThread
/// {
/// public:
///     ~Counter() override { waitThread(0x7FFFFFFF); }
///     void run() override { ... }
/// };
///
/// Counter counter;
/// counter.startThread("counter");
/// \endcode

#include <ky/kyExport.h>

#include <atomic>
#include <string>

namespace ky
{

namespace impl
{
struct ThreadHolder;
}

/// Something that can be run.
class KY_API kyRunnableInterface
{
public:
    virtual ~kyRunnableInterface();

    /// The body.
    virtual void run() = 0;

protected:
    kyRunnableInterface() = default;
    /// For subclasses whose values may be copied.
    /// @{
    kyRunnableInterface(const kyRunnableInterface&) = default;
    kyRunnableInterface& operator=(const kyRunnableInterface&) = default;
    /// @}
};

/// A thread of the operating system with a readable name. Subclasses override run().
///
/// The body runs guarded: when an exception escapes from it, or it crashes, that is logged and the thread ends as if
/// the body had returned (see kyException.h).
///
/// States: not started; running; finished, but not joined; joined. A joined object can be started again.
///
/// Thread safety: isRunning() and the static functions may be called from any thread. Everything else is for one thread
/// at a time, normally the one that owns the object; the thread itself may ask for its name and id. In a child made by
/// `fork()` a started object has no thread: waitThread() notices that and answers false, and it can be destroyed.
class KY_API kyThread : public kyRunnableInterface
{
public:
    /// Does not start anything. Before full initialization of the library it writes the CRITICAL message "Thread create
    /// before full init of kySystem" and works regardless.
    kyThread();

    /// Waits for the thread without limit. By then the parts of the subclass are gone: a subclass makes its body end
    /// and joins the thread in its own destructor, or is stopped before it is destroyed.
    ~kyThread() override;

    kyThread(const kyThread&) = delete;
    kyThread& operator=(const kyThread&) = delete;

    /// The body; does nothing here.
    void run() override;

    /// Runs run() on a new thread. Without effect when a thread was started and not joined yet.
    ///
    /// \param name UTF-8; a null pointer stands for the name of the object's class. A blank and the thread's id are
    ///        appended to it. Debuggers and system tools show the result; Linux keeps at most 15 bytes of it (whole
    ///        characters).
    /// \throws std::system_error `resource_unavailable_try_again` when the system makes no thread. isRunning() is true
    ///         afterwards, and the thread can be started again.
    void startThread(const char* name);

    /// Waits for the end of the thread and joins it. True when it has been joined; false when there is none, and when
    /// it still runs after the time.
    ///
    /// \param timeoutMs milliseconds. 0x7FFFFFFF: without limit. Below that the thread is looked at every 15 ms. 0 or
    ///        less joins a thread that has finished.
    /// \throws std::system_error `resource_deadlock_would_occur` when the thread would join itself, `no_such_process`
    ///         when the system cannot join it
    bool waitThread(int timeoutMs);

    /// True from startThread() until the body has ended.
    [[nodiscard]] bool isRunning() const;

    /// Whether there is no thread: never started, or joined. (A thread whose body has ended is not finished before it
    /// is joined.)
    [[nodiscard]] bool isFinished() const;

    /// The system's id of the thread, in decimal; "InvalidThread" when there is none.
    std::string getThreadId();

    /// The system's id of the calling thread, in decimal.
    static std::string CurrentThreadId();

    /// The whole name with the id, of the present or the last thread; empty before the first start. Valid until the
    /// next start.
    const std::string& getThreadName() const;

    /// Suspends the calling thread.
    static void sleep(unsigned long seconds);

    /// Suspends the calling thread; 0 gives other threads a turn.
    static void msleep(unsigned long ms);

    /// Suspends the calling thread for whole milliseconds: `us` / 1000, cut. Below 1000 it gives other threads a turn.
    static void usleep(unsigned long us);

private:
    static void Run(kyThread* thread);
    static void RunImpl(void* thread);
    void forgetThread();

    impl::ThreadHolder* mHolder; ///< owned; null without a thread
    std::string mName;
    std::atomic<bool> mRunning;
};

} // namespace ky
