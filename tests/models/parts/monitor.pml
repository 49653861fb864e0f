// SPDX-License-Identifier: MIT
// A mutex and wait conditions in single steps, as lock.pml and native_condition.pml show that they behave; for models of
// what stands above them. CONDITIONS: how many conditions there are. A wake may come early INTERRUPTS times in a run.

#define self (_pid + 1)
#define selfBit (1 << _pid)

#ifndef INTERRUPTS
#define INTERRUPTS 1
#endif
byte interrupts = INTERRUPTS;

byte owner;
byte asleep[CONDITIONS]; // one bit for each thread

#define isInside (owner == self)

inline enter() { atomic { owner == 0 -> owner = self } }
inline leave() { d_step { assert(isInside); owner = 0 } }

inline wait(c)
{
    d_step { assert(isInside); owner = 0; asleep[c] = asleep[c] | selfBit };
    if
    :: atomic { (asleep[c] & selfBit) == 0 && owner == 0 -> owner = self }
    :: atomic { (asleep[c] & selfBit) != 0 && interrupts > 0 -> interrupts--; asleep[c] = asleep[c] & ~selfBit };
       enter()
    fi
}

inline wakeAll(c) { asleep[c] = 0 }
