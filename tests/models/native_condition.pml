// SPDX-License-Identifier: MIT
// The condition variable of sync_linux.cpp beneath its lock. What producers put and announce reaches the consumers; a
// gate that is opened lets everybody through; nobody sleeps for ever.
//
// Producers put ITEMS each. Consumers take one each; those with a time limit may give up. Then a last producer, who comes
// when all is quiet, puts what is missing. ALL: announced with wakeAll().
// OUTSIDE: announced after the lock has been left.
//
// check: CONSUMERS=2 PRODUCERS=1 ITEMS=2
// check: CONSUMERS=2 PRODUCERS=1 ITEMS=2 OUTSIDE
// check: CONSUMERS=2 PRODUCERS=1 ITEMS=2 OUTSIDE ALL
// check: CONSUMERS=2 PRODUCERS=2 ITEMS=1 PLAIN_LOCK OUTSIDE
// check: CONSUMERS=1 LIMITED=1 PRODUCERS=1 ITEMS=2
// check: CONSUMERS=1 LIMITED=1 PRODUCERS=1 ITEMS=1
// check: CONSUMERS=3 PRODUCERS=1 ITEMS=1 GATE ALL PLAIN_LOCK OUTSIDE
// mistake: COUNT_AFTER_LEAVE finds deadlock
// mistake: READ_AFTER_LEAVE finds deadlock
// mistake: SAME_SEQUENCE finds deadlock
// mistake: CONSUMERS=2 GATE ITEMS=1 finds deadlock

#ifndef CONSUMERS
#define CONSUMERS 1
#endif
#ifndef LIMITED
#define LIMITED 0
#endif
#ifndef PRODUCERS
#define PRODUCERS 1
#endif
#ifndef ITEMS
#define ITEMS 1
#endif

#define LOCKS 1
#define CONDITIONS 1
#include "parts/futex.pml"
#include "parts/lock.pml"
#include "parts/native_condition.pml"

byte items;
byte inside;
byte taken;

#ifdef GATE
#define PASS skip
#else
#define PASS items--; taken++
#endif

active [CONSUMERS] proctype consumer()
{
    STEP_LOCALS
    enter(0);
    do
    :: items > 0 -> break
    :: else -> sleepOn(0, 0, false); ok = false
    od;
    inside++;
    assert(inside == 1);
    PASS;
    inside--;
    leave(0)
}

#if LIMITED > 0
// Gives up without a last look when told that the time has ended: a wake that was for it unknowingly would be lost for
// the others.
active [LIMITED] proctype limitedConsumer()
{
    STEP_LOCALS
    enter(0);
    do
    :: items > 0 -> PASS; break
    :: else ->
        sleepOn(0, 0, true);
        if
        :: ok -> ok = false
        :: else -> break
        fi
    od;
    leave(0)
}

active proctype lastProducer()
{
    STEP_LOCALS
    timeout -> assert(items == 0 || taken == CONSUMERS);
    enter(0);
    items = items + CONSUMERS;
    wakeAllOf(0);
    leave(0)
}
#endif

active [PRODUCERS] proctype producer()
{
    STEP_LOCALS
    byte put;
    do
    :: put == ITEMS -> break
    :: else ->
        put++;
        enter(0);
        inside++;
        assert(inside == 1);
        items++;
        inside--;
#ifdef OUTSIDE
        leave(0);
#endif
#ifdef ALL
        wakeAllOf(0);
#else
        wakeOneOf(0);
#endif
#ifndef OUTSIDE
        leave(0)
#endif
    od
}
