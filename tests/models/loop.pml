// SPDX-License-Identifier: MIT
// LoopTask of dispatch.cpp: threads claim the blocks of a loop from a shared counter. Every block is run once; one that
// fails or a cancellation ends the loop early, and no block is run twice then, either.
//
// check: THREADS=3 BLOCKS=6 CLAIMS=2 LARGEST=2
// check: THREADS=2 BLOCKS=8 CLAIMS=1 LARGEST=4
// check: THREADS=3 BLOCKS=4 CLAIMS=2 LARGEST=2 STOPPING
// mistake: THREADS=2 BLOCKS=3 CLAIMS=1 LARGEST=2 CLAIM_WHAT_WAS_READ finds assertion
// mistake: THREADS=2 BLOCKS=3 CLAIMS=1 LARGEST=2 RUN_PAST_THE_END finds assertion

byte next;    // mNext
bool stop;    // mStop
short ran;    // blocks, one bit each
byte ended;

// LoopTask::runBlocks() and runBlock()
active [THREADS] proctype worker()
{
    byte left;
    byte wanted;
    byte claimed;
    byte end;
    do
    :: d_step
       {
           if
           :: next < BLOCKS -> left = BLOCKS - next
           :: else -> left = 0
           fi;
           claimed = next
       }
       d_step
       {
           wanted = left / CLAIMS;
           if
           :: wanted < 1 -> wanted = 1
           :: wanted > LARGEST -> wanted = LARGEST
           :: else
           fi
       }
#ifdef CLAIM_WHAT_WAS_READ
       next = claimed + wanted;
#else
       d_step { claimed = next; next = next + wanted }
#endif
       d_step
       {
           end = claimed + wanted;
#ifndef RUN_PAST_THE_END
           if
           :: end > BLOCKS -> end = BLOCKS
           :: else
           fi
#endif
       }
       if
       :: claimed >= BLOCKS -> break
       :: else
       fi;
       do
       :: claimed == end -> break
       :: stop -> goto stopped
       :: else ->
           d_step
           {
               assert(claimed < BLOCKS && (ran & (1 << claimed)) == 0);
               ran = ran | (1 << claimed)
           }
#ifdef STOPPING
           if
           :: stop = true
           :: skip
           fi;
#endif
           claimed++
       od
    od;
stopped:
    ended++
}

active proctype look()
{
    (ended == THREADS);
    assert(stop || ran == (1 << BLOCKS) - 1)
}
