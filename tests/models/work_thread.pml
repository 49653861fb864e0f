// SPDX-License-Identifier: MIT
// kyWorkThread.cpp: every job that was queued is processed once and in order, unless the worker is stopped before; the
// worker does not sleep beside a batch that has been queued; stop() always comes back.
//
// QUEUERS queue BATCHES batches of one job each. stop() comes when all is quiet; STOPPED_EARLY: at any time.
//
// check: QUEUERS=1 BATCHES=2
// check: QUEUERS=2 BATCHES=1
// check: QUEUERS=2 BATCHES=2 INTERRUPTS=0
// check: QUEUERS=2 BATCHES=1 STOPPED_EARLY
// mistake: QUEUERS=1 BATCHES=1 INTERRUPTS=0 DROP_WAKE finds assertion
// mistake: QUEUERS=1 BATCHES=1 INTERRUPTS=0 KEEP_IDLE finds assertion
// mistake: QUEUERS=1 BATCHES=1 STOPPED_EARLY SLEEP_THOUGH_STOPPED finds deadlock

#define JOBS (QUEUERS * BATCHES)
#define CONDITIONS 1
#define WAKE 0
#include "parts/monitor.pml" // mQueueMutex and mWake

byte jobOwner; // mJobMutex
inline lockJob() { atomic { jobOwner == 0 -> jobOwner = self } }
inline unlockJob() { d_step { assert(jobOwner == self); jobOwner = 0 } }

bool mustStop;    // mMustStop
bool idle = true; // mIdle
// The queue: jobs are numbered in the order in which they are queued.
byte queued;
byte removed;
byte processed;
byte queuersEnded;
bool workerEnded;
bool stopped;

#define isQueueEmpty (queued == removed)

// waitForTurn(); `turn` is its answer.
inline waitForTurn()
{
    enter();
#ifdef SLEEP_THOUGH_STOPPED
    if
    :: isQueueEmpty || idle ->
#else
    if
    :: !mustStop && (isQueueEmpty || idle) ->
#endif
        idle = true;
        wait(WAKE)
    :: else
    fi;
    if
    :: !mustStop -> turn = true
    :: else -> turn = false; leave()
    fi
}

// run() and RunTurns()
active proctype worker()
{
    bool turn;
    byte job;
    do
    :: mustStop -> break
    :: else ->
        do
        :: waitForTurn();
           if
           :: !turn -> break
           :: turn && isQueueEmpty -> leave()
           :: else ->
               removed++;
               job = removed;
               leave();
               lockJob();
               // processJob()
               assert(!stopped && job == processed + 1 && job <= queued);
               processed++;
               job = 0;
               unlockJob()
           fi
        od;
        break
    od;
    workerEnded = true
}

// beginWake(), addJob() and endWake()
active [QUEUERS] proctype queuer()
{
    byte round;
    byte before;
    do
    :: round == BATCHES -> break
    :: else ->
        round++;
        enter();
        before = queued;
        queued = before + 1;
        lockJob();
        unlockJob();
#ifndef KEEP_IDLE
        idle = false;
#endif
        leave();
#ifndef DROP_WAKE
        wakeAll(WAKE);
#endif
        before = 0
    od;
    queuersEnded++
}

// stop()
active proctype stopper()
{
#ifndef STOPPED_EARLY
    timeout;
    assert(queuersEnded == QUEUERS && processed == JOBS);
#endif
    enter();
    mustStop = true;
    wakeAll(WAKE);
    leave();
    workerEnded;
    stopped = true;
    (queuersEnded == QUEUERS);
    assert(removed == processed && queued == JOBS)
}
