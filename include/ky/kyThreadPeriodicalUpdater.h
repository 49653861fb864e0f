// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A thread that calls functions at a fixed period.

#include <ky/kyExport.h>
#include <ky/kyMutex.h>
#include <ky/kyThread.h>
#include <ky/kyWaitCondition.h>

#include <list>

namespace ky
{

/// Calls all registered functions, one after the other in the order of their registration, once in every period. The
/// thread runs from construction to destruction and sleeps while nothing is registered.
///
/// The functions are called on the updater's thread with its mutex held. They should be short: the time they take is
/// added to the period. They may register and remove functions themselves, but must not wait for another thread that
/// does. When one throws or crashes, that is logged and the thread ends.
///
/// Thread safety: addCallback() and removeCallback() may be called from any thread. After removeCallback() has returned
/// on another thread, the function is not running and is not called any more. Not meant as a base class: the thread
/// runs before a constructor of a subclass does.
class KY_API kyThreadPeriodicalUpdater : public kyThread
{
public:
    /// Starts the thread.
    /// \param periodSeconds 0 counts as 1; at most 4294967, more counts as that
    /// \throws std::system_error as kyThread::startThread() does
    explicit kyThreadPeriodicalUpdater(unsigned int periodSeconds);

    /// Ends the thread and waits for it. The registered functions are called a last time.
    ~kyThreadPeriodicalUpdater() override;

    /// Registers a function, also one that is registered already: it is then called once more in every round. A round
    /// begins at once.
    /// \param fn called with `userData`; must not be null
    /// \param userData not owned, may be null
    void addCallback(void (*fn)(void*), void* userData);

    /// Removes the oldest registration with exactly these values; without effect when there is none.
    void removeCallback(void (*fn)(void*), void* userData);

    /// The thread's body.
    void run() override;

private:
    struct Callback
    {
        void (*function)(void*);
        void* userData;
    };

    static void RunRounds(void* updater);
    void callAll();

    std::list<Callback> mCallbacks;
    kyMutex mMutex; ///< guards everything here
    kyWaitCondition mWake;
    unsigned int mPeriodMs;
    bool mStop;
    bool mIsRoundDue;                    ///< somebody has been registered since the last round
    std::list<Callback>::iterator mNext; ///< what the present round calls next
};

} // namespace ky
