// SPDX-License-Identifier: MIT
#include "support/child_process.h"
#include "support/process_state.h"
#include "support/sanitizer.h"
#include "support/soak.h"

#include <ky/kyLog.h>
#include <ky/kyMutex.h>
#include <ky/kyStringUtils.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>
#include <ky/kyWaitCondition.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{

using ky::InitType;
using ky::kyLog;

int observedState()
{
    if (kyLog::editPtr() == nullptr)
        return 0;
    return ky::IsKySystemThreadSafe() ? 2 : 1;
}

struct Message
{
    std::string text;
    ky::kyLogType type;
};

void collect(const std::string& message, ky::kyLogType type, const std::string&, void* messages)
{
    static_cast<std::vector<Message>*>(messages)->push_back({message, type});
}

TEST(Lifecycle, LevelsAreCountedAndOnlyTheLastTerminationEnds)
{
    struct Step
    {
        int call; // 1 light, 2 full, 0 terminate
        int state;
    };
    const std::vector<std::vector<Step>> sequences = {
        {{1, 1}, {0, 0}},
        {{2, 2}, {0, 0}},
        {{1, 1}, {2, 2}, {0, 2}, {0, 0}},
        {{2, 2}, {1, 2}, {0, 2}, {0, 0}},
        {{2, 2}, {2, 2}, {0, 2}, {0, 0}},
        {{1, 1}, {1, 1}, {0, 1}, {2, 2}, {0, 2}, {0, 0}},
        // One termination too many: the next initialization only levels the count.
        {{0, 0}, {1, 0}, {1, 1}, {0, 0}},
        {{1, 1}, {0, 0}, {0, 0}, {0, 0}, {1, 0}, {1, 0}, {1, 1}, {0, 0}},
    };
    for (std::size_t s = 0; s < sequences.size(); ++s)
    {
        for (std::size_t i = 0; i < sequences[s].size(); ++i)
        {
            const Step step = sequences[s][i];
            if (step.call == 0)
                ky::terminateKySystem();
            else
                ky::initializeKySystem(static_cast<InitType>(step.call), false);
            EXPECT_EQ(observedState(), step.state) << "sequence " << s << ", step " << i;
        }
    }
}

TEST(Lifecycle, AnImbalanceLeavesTheFullCounterOnItsOwn)
{
    // The full counter counts although the light one only comes back to 0, and full work is done without a logger.
    ky::terminateKySystem();
    ky::initializeKySystem(InitType::Full, false);
    EXPECT_EQ(kyLog::editPtr(), nullptr);
    EXPECT_TRUE(ky::IsKySystemThreadSafe());
    ky::initializeKySystem(InitType::Light, false);
    EXPECT_NE(kyLog::editPtr(), nullptr);
    ky::terminateKySystem();
    EXPECT_EQ(observedState(), 0);
    EXPECT_FALSE(ky::IsKySystemThreadSafe());
}

TEST(Lifecycle, OtherTypesChangeNothing)
{
    for (const int type : {0, 3, -1, 1000})
        ky::initializeKySystem(static_cast<InitType>(type), true);
    EXPECT_EQ(observedState(), 0);
    ky::initializeKySystem(InitType::Light, false);
    EXPECT_EQ(observedState(), 1) << "an ignored call must not have been counted";
    ky::terminateKySystem();
    EXPECT_EQ(observedState(), 0);
}

TEST(Lifecycle, AnExistingLoggerIsKept)
{
    kyLog::createInstance(false);
    kyLog* const own = kyLog::editPtr();
    own->setLogTypeEnabled(ky::kyLogType::INFO, false);
    ky::initializeKySystem(InitType::Full, true); // the look at the main disk may log, too
    EXPECT_EQ(kyLog::editPtr(), own);
    EXPECT_FALSE(kyLog::get().isLogTypeEnabled(ky::kyLogType::INFO));
    ky::terminateKySystem();
    EXPECT_EQ(kyLog::editPtr(), nullptr);
}

TEST(Lifecycle, TenThousandPairsLeaveTheProcessAsItWas)
{
    const std::vector<std::vector<InitType>> nestings = {
        {InitType::Light},
        {InitType::Full},
        {InitType::Light, InitType::Full, InitType::Light},
        {InitType::Full, InitType::Light, InitType::Full, InitType::Full},
        std::vector<InitType>(20, InitType::Full),
    };
    const auto run = [&](std::size_t rounds)
    {
        for (std::size_t round = 0; round < rounds; ++round)
        {
            const std::vector<InitType>& types = nestings[round % nestings.size()];
            for (const InitType type : types)
                ky::initializeKySystem(type, false);
            ASSERT_NE(ky::kyStringUtils::GetCLocale(), nullptr);
            for (std::size_t i = 0; i < types.size(); ++i)
                ky::terminateKySystem();
        }
    };
    ky::kySystemUtils::ExportProcessorCount(); // or each round warns
    // The thread sanitizer takes its time over the end of a thread.
    constexpr std::size_t rounds = ky::test::underThreadSanitizer ? 1000 : 10000;
    run(500);
    const ky::test::ProcessState before = ky::test::processState();
    run(rounds);
    const ky::test::ProcessState after = ky::test::settledState(before);
    EXPECT_LT(after.heapBytes, before.heapBytes + 4000) << "less than a byte a round";
    EXPECT_TRUE(std::equal(before.dispositions, before.dispositions + 3, after.dispositions)) << before << '\n'
                                                                                              << after;
    EXPECT_EQ(observedState(), 0);
    ky::test::account("start and end", {rounds, "initializations and terminations"}, {},
                      {ky::test::leftOver(before, after), "threads and descriptors left"});
}

TEST(Lifecycle, ExitWithoutTerminationEnds)
{
    const int exits = ky::test::isSoak() ? 1000 : 1;
    int failed = 0;
    for (int i = 0; i < exits; ++i)
        failed += ky::test::ChildProcess("exit-initialized", {}).wait() != 0;
    ky::test::account("start and end", {exits, "exits without termination"}, {}, {failed, "exits that failed"});
}

TEST(EarlyUse, LocksMadeBeforeFullInitializationWarnAndWork)
{
    std::vector<Message> messages;
    ky::initializeKySystem(InitType::Light, false);
    kyLog::edit().setEchoToConsole(false);
    kyLog::edit().installCustomHandler(&collect, &messages);

    const auto make = []
    {
        ky::kyMutex recursive;
        EXPECT_TRUE(recursive.tryLock());
        recursive.unlock();
        ky::kyMutex2 kernel;
        EXPECT_TRUE(kernel.tryLock(0));
        kernel.unlock();
        ky::kyMutexSystem named("ky-test-early-use");
        named.lock();
        named.unlock();
        ky::kyWaitCondition condition;
        condition.wakeAll();
    };
    make();
    ASSERT_EQ(messages.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(messages[i].type, ky::kyLogType::CRITICAL);
        EXPECT_EQ(messages[i].text, i < 3 ? "Mutex created before full init of kySystem"
                                          : "WaitCondition created before full init of kySystem");
    }

    kyLog::edit().setLogTypeEnabled(ky::kyLogType::CRITICAL, false);
    make();
    EXPECT_EQ(messages.size(), 4u) << "a logger without CRITICAL gets nothing";
    kyLog::edit().setLogTypeEnabled(ky::kyLogType::CRITICAL, true);

    ky::initializeKySystem(InitType::Full, false);
    make();
    EXPECT_EQ(messages.size(), 4u) << "no warning once the library is full";
    ky::terminateKySystem();
    ky::terminateKySystem();
    make();
}

TEST(LibInitCounter, CountsWithoutAFloor)
{
    ky::impl::LibInitCounter counter(nullptr, true);
    EXPECT_FALSE(counter.isInitialized());
    EXPECT_TRUE(counter.incrementInitCounter());
    EXPECT_FALSE(counter.incrementInitCounter());
    const ky::impl::LibInitCounter copy = counter;
    EXPECT_FALSE(counter.decrementInitCounter());
    EXPECT_TRUE(counter.decrementInitCounter());
    EXPECT_FALSE(counter.decrementInitCounter());
    EXPECT_EQ(counter.getInitCounter(), -1);
    EXPECT_TRUE(counter.isInitialized());
    EXPECT_FALSE(counter.incrementInitCounter()) << "back at 0 is not the first initialization";
    counter.incrementInitCounter();
    counter.clearInitCounter();
    EXPECT_EQ(counter.getInitCounter(), 0);
    EXPECT_EQ(copy.getInitCounter(), 2);
    for (const bool next : {false, true})
    {
        EXPECT_EQ(ky::impl::LibInitCounter::AreLibInitWarningsEnabled(), !next);
        ky::impl::LibInitCounter::SetLibInitWarningsEnabled(next);
    }
}

TEST(LibraryVersions, LastRegistrationWinsAndUnknownNamesAreIgnored)
{
    ky::impl::RegisterThirdPartyLibVersionInfo("early", "0");
    EXPECT_TRUE(ky::kySystemUtils::GetThirdPartyLibVersionInfo().empty());

    ky::initializeKySystem(InitType::Light, false);
    ky::impl::RegisterThirdPartyLibVersionInfo("zlib", "1.2");
    ky::impl::RegisterThirdPartyLibVersionInfo("Zlib", "9");
    ky::impl::RegisterThirdPartyLibVersionInfo("zlib", "1.3");
    ky::impl::UnRegisterThirdPartyLibVersionInfo("zli");
    const auto& versions = ky::kySystemUtils::GetThirdPartyLibVersionInfo();
    EXPECT_EQ(versions.toString(), "(Zlib=9),(zlib=1.3)");
    ky::impl::UnRegisterThirdPartyLibVersionInfo("Zlib");
    EXPECT_EQ(versions.toString(), "(zlib=1.3)");
    ky::terminateKySystem();

    ky::initializeKySystem(InitType::Light, false);
    EXPECT_TRUE(ky::kySystemUtils::GetThirdPartyLibVersionInfo().empty());
    ky::terminateKySystem();
}

} // namespace
