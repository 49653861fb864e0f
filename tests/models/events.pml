// SPDX-License-Identifier: MIT
// The two events as event_pair_linux.cpp makes them of a mutex, a queue and futexes: no waiter is left in the queue by a
// signal that was for it, a signal of one releases exactly one, and nobody is answered after having left.
//
// WAITERS wait once each, with a limit (LIMITED) or without. ONE: signals of one; BROADCAST: a signal of all, at once
// followed by a reset. The last signals come when all is quiet.
//
// check: WAITERS=2 ONE=1
// check: WAITERS=3 ONE=2
// check: WAITERS=2 ONE=1 LIMITED
// check: WAITERS=3 ONE=1 LIMITED
// check: WAITERS=2 ONE=0 BROADCAST
// check: WAITERS=2 ONE=1 BROADCAST LIMITED
// mistake: WAITERS=2 ONE=1 LIMITED LEAVE_BY_TIME_ALONE finds assertion
// mistake: WAITERS=1 ONE=1 ANSWER_WITHOUT_WAKE finds assertion
// mistake: WAITERS=2 ONE=1 LIMITED LEAVE_WITHOUT_MUTEX finds assertion

#ifndef WAITERS
#define WAITERS 1
#endif
#ifndef ONE
#define ONE 1
#endif
#ifdef LIMITED
#define HAS_LIMIT true
#else
#define HAS_LIMIT false
#endif

#include "parts/futex.pml"

#define NOTHING 0
#define BY_ONE 1
#define BY_ALL 2
#define TIMED_OUT 3

byte mutexOwner; // std::mutex
bool oneSignalled;
bool allSignalled;
byte length;        // the queue, first come first
byte order[3];
byte answer[3];     // Waiter::answer
byte asleep[3];     // threads in the kernel's queue for that word: one bit each
bool alive[3];      // whether the Waiter on that thread's stack exists

byte givenOnes;     // signals of one that a waiter was given, or that are left in the event
byte returnedOnes;
byte mergedOnes;    // signals of one that found the event signalled
byte ended;

inline lockMutex() { atomic { mutexOwner == 0 -> mutexOwner = self } }
inline unlockMutex() { mutexOwner = 0 }

inline takeOff(place)
{
    do
    :: place + 1 >= length -> break
    :: else -> order[place] = order[place + 1]; place++
    od;
    length--;
    order[length] = 0;
    place = 0
}

// releaseFirst()
inline releaseFirst(what)
{
    first = order[0];
    assert(alive[first] && answer[first] == NOTHING);
    d_step { takeOff(seen) }
    answer[first] = what;
#ifndef ANSWER_WITHOUT_WAKE
    futexWakeOne(asleep[first]);
#endif
    first = 0
}

inline signalOne()
{
    lockMutex();
    if
    :: length != 0 -> givenOnes++; releaseFirst(BY_ONE)
    :: else ->
        if
        :: oneSignalled -> mergedOnes++
        :: else -> givenOnes++
        fi;
        oneSignalled = true
    fi;
    unlockMutex()
}

inline signalAll()
{
    lockMutex();
    allSignalled = true;
    do
    :: length == 0 -> break
    :: else -> releaseFirst(BY_ALL)
    od;
    unlockMutex()
}

inline resetAll()
{
    lockMutex();
    allSignalled = false;
    unlockMutex()
}

inline sleepUntilAnswered(limited)
{
    do
    :: answer[_pid] != NOTHING -> break
    :: else ->
        futexWait(answer[_pid], NOTHING, asleep[_pid], limited);
        if
        :: result == ETIMEDOUT -> break
        :: else
        fi
    od;
    result = 0
}

// waitEither(); `result` is its answer.
inline waitEither(limited)
{
    lockMutex();
    if
    :: oneSignalled -> oneSignalled = false; result = BY_ONE
    :: !oneSignalled && allSignalled -> result = BY_ALL
    :: else ->
        alive[_pid] = true;
        order[length] = _pid;
        length++;
        unlockMutex();
        sleepUntilAnswered(limited);
#ifndef LEAVE_WITHOUT_MUTEX
        lockMutex();
#endif
#ifdef LEAVE_BY_TIME_ALONE
        result = TIMED_OUT;
#else
        result = answer[_pid];
#endif
        if
        :: result != NOTHING
        :: else -> result = TIMED_OUT
        fi;
        if
        :: result == TIMED_OUT ->
            do
            :: seen >= length || order[seen] == _pid -> break
            :: else -> seen++
            od;
            assert(seen < length);
            d_step { takeOff(seen) }
        :: else
        fi;
        answer[_pid] = NOTHING;
        alive[_pid] = false
    fi;
#ifdef LEAVE_WITHOUT_MUTEX
    if
    :: mutexOwner == self -> unlockMutex()
    :: else
    fi
#else
    unlockMutex()
#endif
}

active [WAITERS] proctype waiter()
{
    STEP_LOCALS
    byte first;
    waitEither(HAS_LIMIT);
    if
    :: result == BY_ONE -> returnedOnes++
    :: else -> assert(HAS_LIMIT || result == BY_ALL)
    fi;
    result = 0;
    ended++
}

active proctype signaller()
{
    STEP_LOCALS
    byte first;
    byte signals;
    do
    :: signals == ONE -> break
    :: else -> signals++; signalOne()
    od;
#ifdef BROADCAST
    signalAll();
    resetAll();
#endif
    timeout;
    assert(length == WAITERS - ended);
    assert(givenOnes == returnedOnes + oneSignalled && givenOnes + mergedOnes == ONE);
    assert(length == 0 || !oneSignalled);
    signalAll();
    (ended == WAITERS);
    assert(length == 0 && mutexOwner == 0)
}
