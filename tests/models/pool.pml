// SPDX-License-Identifier: MIT
// The worker pool and what hands work to it: kyConcurrentPool.cpp and solver_batch.cpp. Every task is executed once and
// has ended when run() returns; no share is used after its batch has gone; nobody waits for ever, the pool's end included.
//
// CALLERS threads call SolverBase::solve() with TASKS tasks each, ROUNDS times, on WORKERS workers; then the pool is
// destroyed. FAILING: any task may fail while it has released the mutex. ORDERED: a task waits for the one before it.
// DEPENDENT: the tasks of the second caller wait until the first caller has returned.
//
// check: WORKERS=1 CALLERS=1 TASKS=3 ROUNDS=2
// check: WORKERS=2 CALLERS=1 TASKS=3
// check: WORKERS=1 CALLERS=2 TASKS=2
// check: WORKERS=2 CALLERS=2 TASKS=2 INTERRUPTS=0
// check: WORKERS=2 CALLERS=1 TASKS=3 ORDERED
// check: WORKERS=1 CALLERS=2 TASKS=2 ORDERED
// check: WORKERS=1 CALLERS=2 TASKS=2 FAILING
// check: WORKERS=2 CALLERS=2 TASKS=2 DEPENDENT INTERRUPTS=0
// mistake: WORKERS=1 CALLERS=1 TASKS=2 TAKE_TASK_OUTSIDE finds assertion
// mistake: WORKERS=1 CALLERS=1 TASKS=2 RETURN_WITHOUT_AWAITING finds assertion
// mistake: WORKERS=1 CALLERS=1 TASKS=2 KEEP_WHAT_NOBODY_BEGAN finds assertion
// mistake: WORKERS=1 CALLERS=1 TASKS=2 WITHDRAW_WHAT_HAS_BEGUN finds assertion
// mistake: WORKERS=1 CALLERS=2 TASKS=2 INVITE_THE_BUSY finds assertion
// mistake: WORKERS=2 CALLERS=2 TASKS=2 DEPENDENT INTERRUPTS=0 WAKE_WHEN_ALL_IS_DONE finds deadlock
// mistake: WORKERS=1 CALLERS=1 TASKS=2 END_WITHOUT_WAKE finds deadlock
// mistake: WORKERS=1 CALLERS=2 TASKS=2 FAILING FAIL_WITHOUT_MUTEX finds assertion

#ifndef ROUNDS
#define ROUNDS 1
#endif

#define CONDITIONS 3
#define TASK_CONDITION 0
#define WORK_AVAILABLE 1
#define ALL_DONE 2
#include "parts/monitor.pml"

// The pool. A slot holds 0 or 1 + the number of the batch whose share it is: no batch has two shares for one worker.
byte slot[WORKERS]; // Worker::mTask
bool alive[WORKERS] = true;
short outstanding;  // mOutstanding
byte ended;         // workers whose thread has ended

// A batch belongs to its caller.
typedef Batch
{
    bool exists;
    byte next;          // the first task in the list
    byte executed;      // tasks, one bit each
    byte done;          // tasks that have ended
    byte handedOut;     // shares, one bit for each worker
    byte begun;         // Share::mHasBegun, one bit for each worker
    byte helpers;       // mHelpers
    bool failed         // mThrown
};
Batch batch[CALLERS];
bool firstReturned;

#define isEmpty(b) (batch[b].next == TASKS)

// A task, with the mutex held; most of it without. `task` is its number.
inline execute(b)
{
#ifdef ORDERED
    do
    :: batch[b].done >= task -> break
    :: else -> wait(TASK_CONDITION)
    od;
#endif
    leave();
    assert(batch[b].exists && (batch[b].executed & (1 << task)) == 0);
    batch[b].executed = batch[b].executed | (1 << task);
#ifdef DEPENDENT
    (b == 0 || firstReturned);
#endif
#ifdef FAILING
    if
    :: fails = true
    :: skip
    fi;
#ifdef FAIL_WITHOUT_MUTEX
    if
    :: !fails -> enter()
    :: else
    fi;
#else
    // TaskQueue::workOff() locks for one that has failed here.
    enter();
#endif
#else
    enter();
#endif
    batch[b].done++;
#ifdef ORDERED
    wakeAll(TASK_CONDITION);
#endif
    task = 0
}

// TaskQueue::workOff() and executeTasks()
inline workOff(b)
{
    do
    :: isEmpty(b) -> break
    :: else ->
#ifdef TAKE_TASK_OUTSIDE
        leave();
        task = batch[b].next;
        batch[b].next = task + 1;
        enter();
#else
        task = batch[b].next;
        batch[b].next++;
#endif
        execute(b);
        if
        :: fails -> fails = false; batch[b].failed = true; batch[b].next = TASKS; break
        :: else
        fi
    od
}

// Share::execute() and Worker::executeTask()
inline executeShare(b)
{
    assert(batch[b].exists && (batch[b].handedOut & selfBit) != 0);
    batch[b].begun = batch[b].begun | selfBit;
    batch[b].helpers++;
    workOff(b);
    assert(batch[b].exists);
    batch[b].helpers--;
#ifndef WAKE_WHEN_ALL_IS_DONE
    if
    :: batch[b].helpers == 0 && outstanding > 1 -> wakeAll(ALL_DONE)
    :: else
    fi;
#endif
    slot[_pid] = 0;
    outstanding--;
    if
    :: outstanding == 0 -> wakeAll(ALL_DONE)
    :: else
    fi
}

// Worker::run()
active [WORKERS] proctype worker()
{
    byte task;
    bool fails;
    byte given;
    enter();
    do
    :: !alive[_pid] -> break
    :: else ->
        if
        :: slot[_pid] != 0 -> given = slot[_pid] - 1; executeShare(given); given = 0
        :: else -> wait(WORK_AVAILABLE)
        fi
    od;
    assert(slot[_pid] == 0);
    leave();
    ended++
}

// Batch::invite()
inline invite(b)
{
    enter();
    do
    :: at == WORKERS || shares == TASKS - 1 -> break
    :: else ->
#ifdef INVITE_THE_BUSY
        if
        :: true ->
#else
        if
        :: slot[at] == 0 ->
#endif
            batch[b].handedOut = batch[b].handedOut | (1 << at);
            slot[at] = b + 1;
            shares++;
            outstanding++
        :: else
        fi;
        at++
    od;
    at = 0;
    leave();
    if
    :: shares != 0 -> wakeAll(WORK_AVAILABLE)
    :: else
    fi;
    shares = 0
}

// Batch::withdraw()
inline withdraw(b)
{
    do
    :: at == WORKERS -> break
    :: else ->
        if
#ifdef WITHDRAW_WHAT_HAS_BEGUN
        :: (batch[b].handedOut & (1 << at)) != 0 ->
#else
        :: (batch[b].handedOut & ~batch[b].begun & (1 << at)) != 0 ->
#endif
            assert(slot[at] == b + 1);
            slot[at] = 0;
            outstanding--;
            if
            :: outstanding == 0 -> wakeAll(ALL_DONE)
            :: else
            fi
        :: else
        fi;
        at++
    od;
    at = 0
}

// Batch::awaitHelpers()
inline awaitHelpers(b)
{
    do
    :: batch[b].helpers == 0 -> break
    :: else -> wait(ALL_DONE)
    od
}

// Batch::run()
inline runBatch(b)
{
    batch[b].exists = true;
    if
    :: TASKS > 1 -> invite(b)
    :: else
    fi;
    enter();
    workOff(b);
#ifndef KEEP_WHAT_NOBODY_BEGAN
    withdraw(b);
#endif
#ifndef RETURN_WITHOUT_AWAITING
    awaitHelpers(b);
#endif
    leave();
    batch[b].exists = false
}

byte callersDone;

active [CALLERS] proctype caller()
{
    byte task;
    bool fails;
    byte at;
    byte shares;
    byte round;
    do
    :: round == ROUNDS -> break
    :: else ->
        round++;
        runBatch(_pid - WORKERS);
        d_step
        {
            // What has begun has ended, and everything has been executed, unless something failed.
            assert(batch[_pid - WORKERS].failed || batch[_pid - WORKERS].executed == (1 << TASKS) - 1);
            task = batch[_pid - WORKERS].executed;
            do
            :: task == 0 -> break
            :: else -> at = at + (task & 1); task = task >> 1
            od;
            assert(batch[_pid - WORKERS].done == at);
            at = 0;
            batch[_pid - WORKERS].next = 0;
            batch[_pid - WORKERS].executed = 0;
            batch[_pid - WORKERS].done = 0;
            batch[_pid - WORKERS].handedOut = 0;
            batch[_pid - WORKERS].begun = 0;
            batch[_pid - WORKERS].failed = false
        }
    od;
    if
    :: _pid == WORKERS -> firstReturned = true
    :: else
    fi;
    callersDone++
}

// ConcurrentPool::endWorkers()
active proctype destroyer()
{
    byte at;
    (callersDone == CALLERS);
    enter();
    do
    :: at == WORKERS -> break
    :: else -> alive[at] = false; at++
    od;
#ifndef END_WITHOUT_WAKE
    wakeAll(WORK_AVAILABLE);
#endif
    leave();
    (ended == WORKERS);
    assert(outstanding == 0 && owner == 0)
}
