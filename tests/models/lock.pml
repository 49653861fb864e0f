// SPDX-License-Identifier: MIT
// The recursive lock: one owner at a time, nobody sleeps for ever.
//
// check: THREADS=2 ROUNDS=3
// check: THREADS=3 ROUNDS=1 TRY
// check: THREADS=3 ROUNDS=2 RECURSIVE
// check: THREADS=4 ROUNDS=1
// check: THREADS=3 ROUNDS=2 PLAIN_LOCK RECURSIVE
// mistake: TAKE_IN_TWO_STEPS finds assertion
// mistake: FORGET_OTHER_SLEEPERS THREADS=3 finds deadlock
// mistake: DROP_LOCK_WAKE finds deadlock

#ifndef THREADS
#define THREADS 2
#endif
#ifndef ROUNDS
#define ROUNDS 1
#endif

#define LOCKS 1
#include "parts/futex.pml"
#include "parts/lock.pml"

byte inside;
byte visits;
byte refused;
byte ended;

inline beInside()
{
    inside++;
    assert(inside == 1);
    visits++;
    inside--
}

active [THREADS] proctype user()
{
    STEP_LOCALS
    byte round;
    do
    :: round == ROUNDS -> break
    :: else ->
        round++;
#ifdef TRY
        if
        :: skip -> enter(0)
        :: skip -> tryEnter(0);
           if
           :: ok -> ok = false
           :: else -> refused++; goto next
           fi
        fi;
#else
        enter(0);
#endif
#ifdef RECURSIVE
        enter(0);
        leave(0);
#endif
        beInside();
        leave(0);
next:   skip
    od;
    ended++
}

// In the end everybody was inside as often as let in, and the lock is free.
active proctype look()
{
    (ended == THREADS);
    assert(visits + refused == THREADS * ROUNDS);
    assert(lock[0].owner == 0 && lock[0].depth == 0 && lock[0].state == FREE && lock[0].asleep == 0)
}
