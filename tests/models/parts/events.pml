// SPDX-License-Identifier: MIT
// The two events of event_pair_native.h: every operation is one step, as it is in the kernel of Windows and under the
// mutex of event_pair_linux.cpp (events.pml shows the latter). Which waiter a signal reaches is left open.

#define NOTHING 0
#define BY_ONE 1
#define BY_ALL 2
#define TIMED_OUT 3
#define FAILED 4

bool oneSignalled;
bool allSignalled;
byte queue;       // threads that wait, one bit each
byte answer[8];   // what a waiter was released by

inline releaseOne()
{
    if
    :: (queue & 1) != 0 -> queue = queue & ~1; answer[0] = BY_ONE
    :: (queue & 2) != 0 -> queue = queue & ~2; answer[1] = BY_ONE
    :: (queue & 4) != 0 -> queue = queue & ~4; answer[2] = BY_ONE
    :: (queue & 8) != 0 -> queue = queue & ~8; answer[3] = BY_ONE
    fi
}

inline releaseOf(thread)
{
    if
    :: (queue & (1 << thread)) != 0 -> answer[thread] = BY_ALL
    :: else
    fi
}

inline signalOne()
{
    atomic
    {
        if
        :: queue != 0 -> releaseOne()
        :: else -> oneSignalled = true
        fi
    }
}

inline signalAll()
{
    d_step { allSignalled = true; releaseOf(0); releaseOf(1); releaseOf(2); releaseOf(3); queue = 0 }
}

inline resetAll() { allSignalled = false }

// `result` is its answer. Waits fail at most INTERRUPTS times in a run.
inline waitEither(limited)
{
    atomic
    {
        if
        :: oneSignalled -> oneSignalled = false; result = BY_ONE
        :: !oneSignalled && allSignalled -> result = BY_ALL
        :: else -> queue = queue | selfBit; result = NOTHING
        fi
    }
    if
    :: result == NOTHING ->
        if
        :: atomic { answer[_pid] != NOTHING -> result = answer[_pid]; answer[_pid] = NOTHING }
        :: atomic { limited && (queue & selfBit) != 0 -> queue = queue & ~selfBit; result = TIMED_OUT }
        :: atomic
           {
               interrupts > 0 && (queue & selfBit) != 0 ->
               interrupts--; queue = queue & ~selfBit; result = FAILED
           }
        fi
    :: else
    fi
}
