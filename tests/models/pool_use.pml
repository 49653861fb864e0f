// SPDX-License-Identifier: MIT
// dispatch_pool.cpp: the pool of the process is not deleted while a call uses it, and its deletion does not wait for
// ever. Every line is one access to an atomic variable.
//
// check: USERS=2 USES=2
// check: USERS=3 USES=1
// mistake: USERS=1 USES=1 LOOK_BEFORE_COUNTING finds assertion
// mistake: USERS=1 USES=1 DELETE_AT_ONCE finds assertion
// mistake: USERS=1 USES=1 FORGET_FRUITLESS_USE finds deadlock

bool pool = true; // sPool
byte uses;        // sUses
bool deleted;

// PoolUse::PoolUse() and ~PoolUse(), and what is between them
active [USERS] proctype user()
{
    bool mine; // mPool
    byte round;
    do
    :: round == USES -> break
    :: else ->
        round++;
        if
        :: !pool
        :: else ->
#ifdef LOOK_BEFORE_COUNTING
            mine = pool;
            uses++;
#else
            uses++;
            mine = pool;
#endif
            if
            :: mine ->
                // The call: begins, ends.
                assert(!deleted);
                assert(!deleted);
                uses--
            :: else ->
#ifndef FORGET_FRUITLESS_USE
                uses--
#endif
            fi;
            mine = false
        fi
    od
}

// destroyConcurrentPool()
active proctype destroyer()
{
    pool = false;
#ifndef DELETE_AT_ONCE
    (uses == 0);
#endif
    deleted = true
}
