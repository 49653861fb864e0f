// SPDX-License-Identifier: MIT
// kySemaphore.cpp: what was released can be taken, once; nobody waits while enough is free; the thread whose acquire()
// returned last may destroy the semaphore, because no release() touches it any more.
//
// Threads that acquire: SMALL of them 1, LARGE of them 2; each gives back what it took when GIVE_BACK. GIVERS release 1
// each, BIG_GIVERS 2. FREE_AT_FIRST are there from the start. EVENTS: on the wait condition that is made of events.
//
// check: SMALL=2 GIVERS=2 PLAIN_LOCK
// check: SMALL=1 LARGE=1 GIVERS=1 BIG_GIVERS=1 PLAIN_LOCK
// check: SMALL=1 LARGE=1 GIVERS=3 PLAIN_LOCK
// check: LARGE=1 GIVERS=2
// check: LARGE=2 FREE_AT_FIRST=2 GIVE_BACK
// check: SMALL=2 FREE_AT_FIRST=1 GIVE_BACK
// check: SMALL=3 FREE_AT_FIRST=1 GIVE_BACK PLAIN_LOCK
// check: SMALL=2 LARGE=1 FREE_AT_FIRST=2 GIVE_BACK PLAIN_LOCK
// check: SMALL=1 GIVERS=1 EVENTS PLAIN_LOCK
// check: LARGE=1 GIVERS=2 EVENTS PLAIN_LOCK
// known: SMALL=1 LARGE=1 GIVERS=3 EVENTS PLAIN_LOCK finds deadlock
// mistake: SMALL=2 GIVERS=2 TAKE_WITHOUT_COMPARING finds assertion
// mistake: SMALL=1 GIVERS=1 LOOK_BEFORE_COUNTING finds deadlock
// mistake: SMALL=1 GIVERS=1 GIVE_WITHOUT_MUTEX finds assertion
// mistake: SMALL=1 LARGE=1 GIVERS=1 BIG_GIVERS=1 WAKE_ONE_WAITER PLAIN_LOCK finds deadlock
// mistake: SMALL=1 GIVERS=1 MUTEX_AFTER_FAST_GIVING finds assertion

#ifndef SMALL
#define SMALL 0
#endif
#ifndef LARGE
#define LARGE 0
#endif
#ifndef GIVERS
#define GIVERS 0
#endif
#ifndef BIG_GIVERS
#define BIG_GIVERS 0
#endif
#ifndef FREE_AT_FIRST
#define FREE_AT_FIRST 0
#endif
#define TAKERS (SMALL + LARGE)
#define GIVEN (FREE_AT_FIRST + GIVERS + 2 * BIG_GIVERS)
#define WANTED (SMALL + 2 * LARGE)

// mCount: one word of memory, read and changed in one step.
byte freeCount = FREE_AT_FIRST;
byte waiterCount;

byte busy;     // threads that will touch the semaphore again
bool touching[8];
inline touch() { d_step { touching[_pid] = true; busy++ } }
inline touchNoMore() { d_step { touching[_pid] = false; busy-- } }

#define LOCKS 2
#define MUTEX 0
#define INTERNAL 1
#define CONDITIONS 1
// Leaving the mutex is the last that release() does on its slow way.
#define AFTER_LEAVE(l) \
    if \
    :: l == MUTEX && lastLeave && touching[_pid] -> touching[_pid] = false; busy-- \
    :: else \
    fi
#include "parts/futex.pml"
#include "parts/lock.pml"
#ifdef EVENTS
#include "parts/events.pml"
#include "parts/event_condition.pml"
#define waitForWake waitOnEvents(MUTEX, INTERNAL, false)
#define wakeAllWaiters wakeAllByEvent(INTERNAL)
#else
#include "parts/native_condition.pml"
#define waitForWake sleepOn(0, MUTEX, false)
#ifdef WAKE_ONE_WAITER
#define wakeAllWaiters wakeOneOf(0)
#else
#define wakeAllWaiters wakeAllOf(0)
#endif
#endif

byte holding;  // permits that were acquired and not released
byte ended;    // threads that acquire and have returned

#define SEMAPHORE_LOCALS \
    STEP_LOCALS \
    bool lastLeave; \
    byte wordFree; \
    byte wordWaiters;

inline load() { d_step { wordFree = freeCount; wordWaiters = waiterCount } }
inline forget() { d_step { wordFree = 0; wordWaiters = 0 } }

// compare_exchange_weak(); `ok` tells whether it succeeded.
inline compareExchange(newFree, newWaiters)
{
    d_step
    {
#ifdef TAKE_WITHOUT_COMPARING
        ok = true;
#else
        ok = (freeCount == wordFree && waiterCount == wordWaiters);
#endif
        if
        :: ok -> freeCount = newFree; waiterCount = newWaiters
        :: else -> wordFree = freeCount; wordWaiters = waiterCount
        fi
    }
}

// `ok` is its answer.
inline tryTake(n, waitersToRemove)
{
    load();
    do
    :: wordFree < n -> ok = false; break
    :: else ->
        compareExchange(wordFree - n, wordWaiters - waitersToRemove);
        if
        :: ok -> break
        :: else
        fi
    od;
    forget()
}

inline acquire(n)
{
    tryTake(n, 0);
    if
    :: ok -> ok = false
    :: else ->
        enter(MUTEX);
#ifdef LOOK_BEFORE_COUNTING
        tryTake(n, 0);
        if
        :: ok -> ok = false; goto taken
        :: else -> waiterCount++; goto sleeping
        fi;
#else
        waiterCount++;
#endif
        do
        :: tryTake(n, 1);
           if
           :: ok -> ok = false; break
           :: else ->
#ifdef LOOK_BEFORE_COUNTING
sleeping:
#endif
               waitForWake; ok = false
           fi
        od;
#ifdef LOOK_BEFORE_COUNTING
taken:
#endif
        leave(MUTEX)
    fi
}

// `ok` is its answer.
inline giveToWaiters(n)
{
    load();
    do
    :: wordWaiters == 0 -> ok = false; break
    :: else ->
        compareExchange(wordFree + n, wordWaiters);
        if
        :: ok -> wakeAllWaiters; ok = true; break
        :: else
        fi
    od;
    forget()
}

#ifdef MUTEX_AFTER_FAST_GIVING
#define ENDS_FAST skip
#else
#define ENDS_FAST touching[_pid] = false; busy--
#endif

// A step of release() without waiters: nothing is touched after it.
inline giveFast(n)
{
    d_step
    {
        ok = (freeCount == wordFree && waiterCount == wordWaiters);
        if
        :: ok -> freeCount = wordFree + n; ENDS_FAST
        :: else -> wordFree = freeCount; wordWaiters = waiterCount
        fi
    }
}

inline release(n)
{
    touch();
    do
    :: load();
       do
       :: wordWaiters != 0 -> break
       :: else ->
           giveFast(n);
           if
           :: ok -> break
           :: else
           fi
       od;
       forget();
       if
       :: ok -> break
       :: else
       fi;
#ifdef GIVE_WITHOUT_MUTEX
       giveToWaiters(n);
       if
       :: ok -> touchNoMore(); break
       :: else
       fi
#else
       enter(MUTEX);
       giveToWaiters(n);
       if
       :: ok -> lastLeave = true
       :: else
       fi;
       leave(MUTEX);
       if
       :: lastLeave -> lastLeave = false; break
       :: else
       fi
#endif
    od;
    ok = false;
#ifdef MUTEX_AFTER_FAST_GIVING
    if
    :: touching[_pid] -> enter(MUTEX); lastLeave = true; leave(MUTEX); lastLeave = false
    :: else
    fi;
#endif
}

// The thread whose acquire() returned last finds nobody else inside, when all that was released is taken.
inline useAndReturn(n)
{
#ifdef GIVE_BACK
    d_step { holding = holding + n; assert(holding <= FREE_AT_FIRST) }
    d_step { holding = holding - n };
    release(n);
    ended++
#else
    d_step
    {
        holding = holding + n;
        assert(holding <= GIVEN);
        ended++;
        assert(ended < TAKERS || WANTED < GIVEN || busy == 0)
    }
#endif
}

#if SMALL > 0
active [SMALL] proctype small()
{
    SEMAPHORE_LOCALS
    acquire(1);
    useAndReturn(1)
}
#endif

#if LARGE > 0
active [LARGE] proctype large()
{
    SEMAPHORE_LOCALS
    acquire(2);
    useAndReturn(2)
}
#endif

#if GIVERS > 0
active [GIVERS] proctype giver()
{
    SEMAPHORE_LOCALS
    release(1)
}
#endif

#if BIG_GIVERS > 0
active [BIG_GIVERS] proctype bigGiver()
{
    SEMAPHORE_LOCALS
    release(2)
}
#endif

active proctype look()
{
    timeout;
    (ended == TAKERS);
    assert(waiterCount == 0 && busy == 0);
#ifdef GIVE_BACK
    assert(freeCount == FREE_AT_FIRST)
#else
    assert(freeCount == GIVEN - WANTED)
#endif
}
