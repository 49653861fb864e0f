// SPDX-License-Identifier: MIT
#include "concurrency/event_pair_native.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

using namespace ky::impl::native;

TEST(EventPair, OneReleasesOnceAndAllUntilReset)
{
    const Owned<EventPair> events(createEventPair());
    EXPECT_EQ(waitEither(*events, 0), Woken::TimedOut);
    EXPECT_EQ(waitEither(*events, 1), Woken::TimedOut);
    signalOne(*events);
    signalOne(*events);
    signalAll(*events);
    EXPECT_EQ(waitEither(*events, 0), Woken::ByOne) << "wake-one goes first";
    EXPECT_EQ(waitEither(*events, 0), Woken::ByAll);
    EXPECT_EQ(waitEither(*events, noTimeLimit), Woken::ByAll);
    resetAll(*events);
    EXPECT_EQ(waitEither(*events, 0), Woken::TimedOut);
    signalOne(*events);
    resetAll(*events);
    EXPECT_EQ(waitEither(*events, 0), Woken::ByOne) << "a reset concerns wake-all only";
}

TEST(EventPair, SignalsReachWaitingThreads)
{
    const Owned<EventPair> events(createEventPair());
    for (const Woken expected : {Woken::ByOne, Woken::ByAll, Woken::ByOne})
    {
        Woken woken = Woken::Failed;
        std::thread waiting([&] { woken = waitEither(*events, noTimeLimit); });
        if (expected == Woken::ByOne)
            signalOne(*events);
        else
            signalAll(*events);
        waiting.join();
        resetAll(*events);
        EXPECT_EQ(woken, expected);
    }
}

} // namespace
