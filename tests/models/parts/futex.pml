// SPDX-License-Identifier: MIT
// futex_linux.h: sleeping on a word until it is changed and woken. Comparing and falling asleep are one step, as in the
// kernel. Which sleeper a wake reaches is left open, and so is the moment at which a limit ends or a signal interrupts.
// Interrupted or early wakes come at most INTERRUPTS times in a run: without an end they would hide every lost wake.

#define self (_pid + 1)
#define selfBit (1 << _pid)

#define WOKEN 0
#define EAGAIN 1
#define EINTR 2
#define ETIMEDOUT 3

#ifndef INTERRUPTS
#define INTERRUPTS 1
#endif
byte interrupts = INTERRUPTS;

// What the steps below keep from one to the next.
#define STEP_LOCALS \
    byte old; \
    byte seen; \
    byte result; \
    bool ok; \
    bool woken;

inline futexWait(word, expected, queue, limited)
{
    atomic
    {
        if
        :: word != expected -> result = EAGAIN
        :: else -> queue = queue | selfBit; result = WOKEN
        fi
    }
    if
    :: result == WOKEN ->
        if
        :: (queue & selfBit) == 0
        :: atomic { limited && (queue & selfBit) != 0 -> queue = queue & ~selfBit; result = ETIMEDOUT }
        :: atomic
           {
               interrupts > 0 && (queue & selfBit) != 0 ->
               interrupts--; queue = queue & ~selfBit;
               if
               :: result = EINTR
               :: result = WOKEN
               fi
           }
        fi
    :: else
    fi
}

inline futexWakeOne(queue)
{
    atomic
    {
        if
        :: (queue & 1) != 0 -> queue = queue & ~1
        :: (queue & 2) != 0 -> queue = queue & ~2
        :: (queue & 4) != 0 -> queue = queue & ~4
        :: (queue & 8) != 0 -> queue = queue & ~8
        :: queue == 0
        fi
    }
}

inline futexWakeAll(queue) { queue = 0 }
