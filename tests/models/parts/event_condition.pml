// SPDX-License-Identifier: MIT
// kyWaitConditionPrivateEvent of wait_condition_private.cpp.

byte waiters;  // mWaiters
byte released; // mReleased, one bit for each thread

// wait() and endWait(). `ok` is false when the time has ended. `l`: the caller's lock, `internal`: mInternalLock.
inline waitOnEvents(l, internal, limited)
{
    enter(internal);
    waiters++;
    leave(internal);
    leave(l);
    waitEither(limited);
    enter(internal);
#ifndef FORGET_TO_COUNT_DOWN
    waiters--;
#endif
    if
    :: result == BY_ALL ->
        seen = released & selfBit;
        released = released | selfBit;
        if
        :: seen == 0 && waiters > 0 -> woken = false
        :: else -> released = 0; woken = true
        fi;
        seen = 0
    :: else -> woken = (result == BY_ONE)
    fi;
    leave(internal);
#ifdef RESET_AFTER_EVERY_WAIT
    woken = true;
#endif
    if
    :: woken -> resetAll()
    :: else
    fi;
    woken = false;
    enterAfterSleep(l);
    ok = (result != TIMED_OUT);
    result = 0
}

// wakeOne(). Uses `seen`.
inline wakeOneByEvent(internal)
{
    enter(internal);
    seen = waiters;
    leave(internal);
    resetAll();
    if
    :: seen != 0 -> signalOne()
    :: else
    fi;
    seen = 0
}

// wakeAll(). Uses `seen`.
inline wakeAllByEvent(internal)
{
    enter(internal);
    released = 0;
    seen = waiters;
    leave(internal);
#ifndef DROP_SIGNAL
    if
    :: seen != 0 -> signalAll()
    :: else
    fi;
#endif
    seen = 0
}
