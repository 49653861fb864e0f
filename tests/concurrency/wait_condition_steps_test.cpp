// SPDX-License-Identifier: MIT
// The event-based wait condition step by step. Events that a test writes the script for stand in place of the system's.
#include "concurrency/wait_condition_private.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

namespace
{

std::string sCalls;                               // what was called since the last look
std::function<ky::impl::native::Woken()> sOnWait; // what happens while a thread waits

} // namespace

namespace ky::impl::native
{

struct EventPair
{
};

EventPair* createEventPair() { return new EventPair; }
void destroy(EventPair* events) noexcept { delete events; }
void signalOne(EventPair&) noexcept { sCalls += "one "; }
void signalAll(EventPair&) noexcept { sCalls += "all "; }
void resetAll(EventPair&) noexcept { sCalls += "reset "; }
Woken waitEither(EventPair&, std::uint32_t limitMs) noexcept
{
    sCalls += "wait" + std::to_string(limitMs) + " ";
    const auto script = sOnWait; // which may set another script meanwhile
    return script();
}

} // namespace ky::impl::native

namespace
{

using namespace ky::impl::native;

class EventSteps : public testing::Test
{
protected:
    ~EventSteps() override { sOnWait = nullptr; }

    static std::string calls()
    {
        std::string result;
        result.swap(sCalls);
        return result;
    }

    /// One wait of this thread that ends with `end`; `meanwhile` happens while it waits.
    bool wait(Woken end, const std::function<void()>& meanwhile = {}, unsigned long limitMs = 7)
    {
        const auto before = sOnWait;
        sOnWait = [&]
        {
            if (meanwhile)
                meanwhile();
            return end;
        };
        const Owned<RecursiveLock> section(createRecursiveLock());
        const Inside inside(*section);
        const bool result = condition.wait(*section, limitMs);
        sOnWait = before;
        return result;
    }

    /// The calls of a wait that ends with `end` while one more thread waits.
    std::string besideAnother(Woken end)
    {
        std::string result;
        wait(Woken::TimedOut,
             [&]
             {
                 calls();
                 EXPECT_TRUE(wait(end));
                 result = calls();
             });
        calls();
        return result;
    }

    ky::kyWaitConditionPrivateEvent condition;
};

TEST_F(EventSteps, ResultAndResetOfALoneWaiter)
{
    const struct
    {
        Woken end;
        bool result;
        const char* calls;
    } cases[] = {{Woken::ByOne, true, "wait7 reset "},
                 {Woken::ByAll, true, "wait7 reset "},
                 {Woken::TimedOut, false, "wait7 "},
                 {Woken::Failed, true, "wait7 "}};
    for (const auto& one : cases)
    {
        EXPECT_EQ(wait(one.end), one.result);
        EXPECT_EQ(calls(), one.calls);
    }
}

TEST_F(EventSteps, ABroadcastStaysSignalledForTheOthers)
{
    EXPECT_EQ(besideAnother(Woken::ByOne), "wait7 reset ");
    EXPECT_EQ(besideAnother(Woken::Failed), "wait7 ");
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 ");
}

TEST_F(EventSteps, AReleasedThreadThatComesBackEndsTheBroadcast)
{
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 ");
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 reset ");
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 ") << "the set was cleared";
}

TEST_F(EventSteps, TheLastReleasedWaiterEndsTheBroadcast)
{
    std::string inner;
    wait(Woken::ByAll,
         [&]
         {
             calls();
             std::thread([&] { wait(Woken::ByAll); }).join();
             inner = calls();
         });
    EXPECT_EQ(inner, "wait7 ");
    EXPECT_EQ(calls(), "reset ");
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 ") << "the set was cleared";
}

TEST_F(EventSteps, ANewBroadcastForgetsWhoWasReleased)
{
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 ");
    condition.wakeAll();
    EXPECT_EQ(calls(), "") << "nobody waits";
    EXPECT_EQ(besideAnother(Woken::ByAll), "wait7 ");
}

TEST_F(EventSteps, WakesSignalOnlyWhenSomebodyWaits)
{
    condition.wakeOne();
    EXPECT_EQ(calls(), "reset ");
    condition.wakeAll();
    EXPECT_EQ(calls(), "");
    std::string during;
    wait(Woken::TimedOut,
         [&]
         {
             calls();
             // From another thread: the internal lock must not be held while a thread waits.
             std::thread(
                 [&]
                 {
                     condition.wakeOne();
                     condition.wakeAll();
                 })
                 .join();
             during = calls();
         });
    EXPECT_EQ(during, "reset one all ");
}

} // namespace
