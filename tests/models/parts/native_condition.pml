// SPDX-License-Identifier: MIT
// ConditionVariable of sync_linux.cpp. CONDITIONS: how many there are.

typedef Condition
{
    byte sequence;
    byte sleepers;
    byte asleep
};
Condition condition[CONDITIONS];

// sleep(). `ok` is its answer. `limited`: whether there is a time limit.
inline sleepOn(c, l, limited)
{
#ifndef COUNT_AFTER_LEAVE
    condition[c].sleepers++;
#endif
#ifdef READ_AFTER_LEAVE
    leave(l);
    seen = condition[c].sequence;
#else
    seen = condition[c].sequence;
    leave(l);
#endif
#ifdef COUNT_AFTER_LEAVE
    condition[c].sleepers++;
#endif
    do
    :: futexWait(condition[c].sequence, seen, condition[c].asleep, limited);
       if
       :: result != EINTR -> break
       :: else
       fi
    od;
    woken = (result != ETIMEDOUT || condition[c].sequence != seen);
    result = 0;
    seen = 0;
    condition[c].sleepers--;
    enterAfterSleep(l);
    ok = woken;
    woken = false
}

inline wakeOneOf(c)
{
    if
    :: condition[c].sleepers == 0
    :: else ->
#ifndef SAME_SEQUENCE
        condition[c].sequence++;
#endif
        futexWakeOne(condition[c].asleep)
    fi
}

inline wakeAllOf(c)
{
    if
    :: condition[c].sleepers == 0
    :: else ->
#ifndef SAME_SEQUENCE
        condition[c].sequence++;
#endif
        futexWakeAll(condition[c].asleep)
    fi
}
