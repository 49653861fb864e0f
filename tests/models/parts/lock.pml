// SPDX-License-Identifier: MIT
// RecursiveLock of sync_linux.cpp. LOCKS: how many there are. With PLAIN_LOCK a lock that is one step, for models of what
// stands above it: lock.pml shows that both behave alike.

#define FREE 0
#define TAKEN 1
#define TAKEN_WITH_SLEEPERS 2

typedef Lock
{
    byte state;
    byte owner; // 0: nobody
    byte depth;
    byte asleep
};
Lock lock[LOCKS];

// Run in the step after which leave() does not use the lock's memory any more.
#ifndef AFTER_LEAVE
#define AFTER_LEAVE(l) skip
#endif

#ifdef TAKE_IN_TWO_STEPS
inline take(l)
{
    ok = (lock[l].state == FREE);
    if
    :: ok -> lock[l].state = TAKEN
    :: else
    fi
}
#else
inline take(l)
{
    d_step
    {
        ok = (lock[l].state == FREE);
        if
        :: ok -> lock[l].state = TAKEN
        :: else
        fi
    }
}
#endif

#ifdef FORGET_OTHER_SLEEPERS
#define AS_TAKEN_ASLEEP TAKEN
#else
#define AS_TAKEN_ASLEEP TAKEN_WITH_SLEEPERS
#endif

inline takeAsleep(l)
{
    do
    :: d_step { old = lock[l].state; lock[l].state = AS_TAKEN_ASLEEP }
       if
       :: old == FREE -> break
       :: else -> old = 0; futexWait(lock[l].state, AS_TAKEN_ASLEEP, lock[l].asleep, false); result = 0
       fi
    od;
    old = 0
}

// The number of turns is left open.
inline takeSlowly(l)
{
    ok = false;
    do
    :: old = lock[l].state;
       if
       :: old == FREE ->
           take(l);
           if
           :: ok -> break
           :: else
           fi
       :: old == TAKEN_WITH_SLEEPERS -> break
       :: else
       fi
    :: break
    od;
    old = 0;
    if
    :: ok
    :: else -> takeAsleep(l)
    fi
}

#ifdef PLAIN_LOCK

inline enter(l)
{
    if
    :: lock[l].owner == self -> lock[l].depth++
    :: atomic { lock[l].owner == 0 -> lock[l].owner = self }
    fi
}

inline enterAfterSleep(l) { enter(l) }

inline leave(l)
{
    assert(lock[l].owner == self);
    if
    :: lock[l].depth != 0 -> lock[l].depth--
    :: else -> d_step { lock[l].owner = 0; AFTER_LEAVE(l) }
    fi
}

#else

inline enter(l)
{
    if
    :: lock[l].owner == self -> lock[l].depth++
    :: else ->
        take(l);
        if
        :: ok
        :: else -> takeSlowly(l)
        fi;
        ok = false;
        lock[l].owner = self
    fi
}

// As sleep() of the condition variable does it: without spinning.
inline enterAfterSleep(l)
{
    take(l);
    if
    :: ok
    :: else -> takeAsleep(l)
    fi;
    lock[l].owner = self
}

// `ok` tells whether it succeeded.
inline tryEnter(l)
{
    if
    :: lock[l].owner == self -> lock[l].depth++; ok = true
    :: else ->
        take(l);
        if
        :: ok -> lock[l].owner = self
        :: else
        fi
    fi
}

inline leave(l)
{
    assert(lock[l].owner == self);
    if
    :: lock[l].depth != 0 -> lock[l].depth--
    :: else ->
        lock[l].owner = 0;
        d_step { old = lock[l].state; lock[l].state = FREE; AFTER_LEAVE(l) }
#ifndef DROP_LOCK_WAKE
        if
        :: old == TAKEN_WITH_SLEEPERS -> futexWakeOne(lock[l].asleep)
        :: else
        fi;
#endif
        old = 0
    fi
}

#endif
