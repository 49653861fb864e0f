// SPDX-License-Identifier: MIT
// The wait condition on two events. What it promises is less than what the native one does: one thread that waits, or
// threads that are let through a gate together, never miss a wake; with several threads that wait again and again, or
// with several wakes of one at a time, a thread that has left the lock but is not asleep yet can. The next wake that
// comes when all is quiet reaches it (LATER), and a time limit ends the wait. The known weaknesses are run, too, so that
// a change of what is known is seen.
//
// WAITERS wait without limit for an item each (GATE: only for the gate to be open; ROUNDS: as many times), LIMITED with
// one. WAKERS put ITEMS each. ALL: announced with wakeAll(). OUTSIDE: announced after the lock has been left.
//
// check: WAITERS=1 ITEMS=2 ROUNDS=2
// check: WAITERS=1 ITEMS=2 ROUNDS=2 ALL OUTSIDE
// check: WAITERS=1 ITEMS=1 ROUNDS=2 WAKERS=2 ALL OUTSIDE
// check: WAITERS=3 ITEMS=1 GATE ALL
// check: WAITERS=2 LIMITED=1 ITEMS=1 GATE ALL OUTSIDE
// check: WAITERS=2 ITEMS=2 ALL
// check: WAITERS=2 ITEMS=2 LATER
// check: WAITERS=2 ITEMS=2 ALL OUTSIDE LATER
// check: WAITERS=3 ITEMS=3 ALL LATER
// check: WAITERS=0 LIMITED=2 ITEMS=2
// known: WAITERS=2 ITEMS=2 finds deadlock
// known: WAITERS=3 ITEMS=3 ALL finds deadlock
// known: WAITERS=2 ITEMS=1 GATE ALL ONE_AFTERWARDS finds deadlock
// mistake: WAITERS=1 ITEMS=1 ALL DROP_SIGNAL finds deadlock
// mistake: WAITERS=2 ITEMS=1 GATE ALL RESET_AFTER_EVERY_WAIT finds deadlock
// mistake: WAITERS=1 ITEMS=1 FORGET_TO_COUNT_DOWN finds assertion

#ifndef WAITERS
#define WAITERS 1
#endif
#ifndef LIMITED
#define LIMITED 0
#endif
#ifndef WAKERS
#define WAKERS 1
#endif
#ifndef ITEMS
#define ITEMS 1
#endif
#ifndef ROUNDS
#define ROUNDS 1
#endif

#define LOCKS 2
#define SECTION 0
#define INTERNAL 1
#define PLAIN_LOCK
#include "parts/futex.pml"
#include "parts/lock.pml"
#include "parts/events.pml"
#include "parts/event_condition.pml"

byte items;
byte ended;

#if WAITERS > 0
active [WAITERS] proctype waiter()
{
    STEP_LOCALS
    byte round;
    do
    :: round == ROUNDS -> break
    :: else ->
        round++;
        enter(SECTION);
        do
        :: items > 0 -> break
        :: else -> waitOnEvents(SECTION, INTERNAL, false); ok = false
        od;
#ifndef GATE
        items--;
#endif
        leave(SECTION)
    od;
    ended++
}
#endif

#if LIMITED > 0
active [LIMITED] proctype limitedWaiter()
{
    STEP_LOCALS
    enter(SECTION);
    do
    :: items > 0 -> break
    :: else ->
        waitOnEvents(SECTION, INTERNAL, true);
        if
        :: ok -> ok = false
        :: else -> break
        fi
    od;
    leave(SECTION);
    ended++
}
#endif

active [WAKERS] proctype waker()
{
    STEP_LOCALS
    byte put;
    do
    :: put == ITEMS -> break
    :: else ->
        put++;
        enter(SECTION);
        items++;
#ifdef OUTSIDE
        leave(SECTION);
#endif
#ifdef ALL
        wakeAllByEvent(INTERNAL);
#else
        wakeOneByEvent(INTERNAL);
#endif
#ifndef OUTSIDE
        leave(SECTION)
#endif
    od;
#ifdef ONE_AFTERWARDS
    wakeOneByEvent(INTERNAL);
#endif
    ended++
}

// Comes when nobody else can do anything. In the end nobody is counted as waiting.
active proctype look()
{
    STEP_LOCALS
    timeout;
#ifdef LATER
    enter(SECTION);
    items = items + WAITERS;
    leave(SECTION);
    wakeAllByEvent(INTERNAL);
#endif
    (ended == WAITERS + LIMITED + WAKERS);
    assert(waiters == 0 && queue == 0)
}
