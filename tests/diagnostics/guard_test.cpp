// SPDX-License-Identifier: MIT
// Guarded calls survive what is thrown at them, and every failure is one whole message.
#include "diagnostics/guard_faults.h"
#include "support/sanitizer.h"
#include "support/temp_dir.h"

#include <ky/kyException.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemError.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
/// What code holds that a fault ends is not given back.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:AFaultUnderTheLoggersLock"; }
#endif

namespace
{

using ky::exception::ExecGuardedCode;
using ky::test::FaultKind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// The library, fully initialized, with every message kept.
class Guard : public testing::Test
{
protected:
    Guard()
    {
        ky::initializeKySystem(ky::InitType::Full, false);
        ky::kyLog::edit().setEchoToConsole(false);
        ky::kyLog::edit().installCustomHandler(&keep, this);
    }
    ~Guard() override { ky::terminateKySystem(); }

    std::vector<std::string> messages;
    /// Called by the handler, under the logger's lock.
    void (*inHandler)() = nullptr;

private:
    static void keep(const std::string& message, ky::kyLogType type, const std::string&, void* self)
    {
        auto& guard = *static_cast<Guard*>(self);
        if (type == ky::kyLogType::CRITICAL)
            guard.messages.push_back(message);
        if (guard.inHandler != nullptr && message == "fault now")
            guard.inHandler();
    }
};

class FaultGuard : public Guard
{
protected:
    void SetUp() override
    {
        if (!ky::test::canSurviveFaults)
            GTEST_SKIP() << "no faults under this sanitizer";
    }
};

void expectFault(const std::string& message, const ky::test::FaultSample& sample)
{
    // Line by line: the matcher takes stack for every character.
    const std::regex head("Catch SEH Exception " + sample.name + " 0x" + sample.number + ", PID [0-9]+ TID [0-9]+");
    const std::regex frame("\t#[0-9]+ @0x[0-9a-f]+");
    std::istringstream lines(message);
    std::string line;
    std::getline(lines, line);
    EXPECT_TRUE(std::regex_match(line, head)) << message;
    int frames = 0;
    for (; std::getline(lines, line); ++frames)
        EXPECT_TRUE(std::regex_search(line, frame, std::regex_constants::match_continuous)) << message;
    EXPECT_GT(frames, 0) << message;
}

TEST_F(FaultGuard, HardwareFaultsEndTheCallAndAreReportedOnceEach)
{
    for (int round = 0; round < 3; ++round)
    {
        for (const ky::test::FaultSample& sample : ky::test::faultSamples())
        {
            SCOPED_TRACE(sample.name);
            messages.clear();
            bool cameBack = false;
            ExecGuardedCode(
                [&]
                {
                    ky::test::commit(sample.kind);
                    cameBack = true;
                });
            EXPECT_FALSE(cameBack);
            ASSERT_EQ(messages.size(), 1U);
            expectFault(messages[0], sample);
        }
    }
}

struct WithoutText : std::exception
{
    const char* what() const noexcept override { return nullptr; }
};

TEST_F(Guard, ThrownObjectsAreReportedByTheirText)
{
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[] { throw std::runtime_error("boom"); }, "boom"},
        {[] { throw 7; }, "Unknown"},
        {[] { throw WithoutText(); }, "[NullPtr]"},
    };
    for (const auto& [body, text] : cases)
    {
        messages.clear();
        ExecGuardedCode(body);
        if (ky::test::throwsAreStructured())
        {
            ASSERT_EQ(messages.size(), 2U);
            EXPECT_THAT(messages.front(), StartsWith("Catch SEH Exception Msvc C++ Exception 0x"));
            messages.erase(messages.begin());
        }
        EXPECT_THAT(messages, ElementsAre(std::string("Catch std exception : ") + text));
    }
}

TEST_F(FaultGuard, AFaultEndsTheInnermostCallOnly)
{
    std::string steps;
    ExecGuardedCode(
        [&]
        {
            ExecGuardedCode([] { ky::test::commit(FaultKind::NullWrite); });
            steps += "inner ended;";
            ExecGuardedCode([] {});
            ky::test::commit(FaultKind::DivisionByZero);
            steps += "never";
        });
    EXPECT_EQ(steps, "inner ended;");
    EXPECT_THAT(messages, ElementsAre(HasSubstr("ACCESS_VIOLATION"), HasSubstr("INT_DIVIDE_BY_ZERO")));
}

TEST_F(FaultGuard, AFaultUnderTheLoggersLockGivesTheLockBack)
{
    inHandler = [] { ky::test::commit(FaultKind::NullWrite); };
    ExecGuardedCode([] { ky::logCritical() << "fault now"; });
    inHandler = nullptr;
    std::thread([] { ky::logCritical() << "from another thread"; }).join();
    EXPECT_THAT(messages, ElementsAre("fault now", HasSubstr("ACCESS_VIOLATION"), "from another thread"));
}

TEST_F(FaultGuard, EightThreadsFaultAtOnceWithWholeMessages)
{
    constexpr int threads = 8;
    constexpr int rounds = 20;
    const auto samples = ky::test::faultSamples();
    std::atomic<int> waiting{0};
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t)
    {
        running.emplace_back(
            [&]
            {
                ++waiting;
                while (waiting != threads)
                    std::this_thread::yield();
                for (int n = 0; n < rounds; ++n)
                    ExecGuardedCode([&, n]
                                    { ky::test::commit(samples[static_cast<std::size_t>(n) % samples.size()].kind); });
            });
    }
    for (std::thread& thread : running)
        thread.join();
    ASSERT_EQ(messages.size(), static_cast<std::size_t>(threads * rounds));
    for (const ky::test::FaultSample& sample : samples)
    {
        const auto isOfThisKind = [&](const std::string& message)
        { return message.find(sample.name + " 0x") != std::string::npos; };
        EXPECT_GE(std::count_if(messages.begin(), messages.end(), isOfThisKind),
                  threads * (rounds / static_cast<int>(samples.size())))
            << sample.name;
    }
    ky::test::FaultSample any{{}, "[A-Z_]+", "[0-9a-f]+"};
    for (const std::string& message : messages)
        expectFault(message, any);
}

TEST_F(FaultGuard, ASignalStackOfTheThreadsOwnIsUsedAndKept)
{
    std::thread(
        []
        {
            void* const own = ky::test::useOwnSignalStack();
            for (int n = 0; n < 2; ++n)
                ExecGuardedCode([] { ky::test::commit(FaultKind::StackOverflow); });
            EXPECT_EQ(ky::test::signalStack(), own);
        })
        .join();
    EXPECT_THAT(messages, ElementsAre(HasSubstr("STACK_OVERFLOW"), HasSubstr("STACK_OVERFLOW")));
}

TEST_F(Guard, ForcedEndOfAThreadPasses)
{
    if (!ky::test::canEndThread())
        GTEST_SKIP() << "no forced unwinding here";
    std::thread([] { ExecGuardedCode([] { ky::test::endThread(); }); }).join();
    EXPECT_TRUE(messages.empty());
}

TEST(GuardAlone, WorksWithoutTheLibrary)
{
    if (!ky::test::canSurviveFaults)
        GTEST_SKIP() << "no faults under this sanitizer";
    const auto before = ky::test::faultDisposition(); // sanitizers have a handler of their own
    bool returned = false;
    ExecGuardedCode(+[] { ky::test::commit(FaultKind::NullWrite); });
    ExecGuardedCode(
        +[](void* flag) { *static_cast<bool*>(flag) = true; }, &returned);
    EXPECT_TRUE(returned);
    EXPECT_EQ(ky::test::faultDisposition(), before);
}

/// What the process itself has printed meanwhile.
template <typename Body>
std::string printedBy(Body body)
{
    testing::internal::CaptureStdout();
    body();
    return testing::internal::GetCapturedStdout();
}

TEST(GuardAlone, AFaultInTheAllocatorReachesWhatOutputsThereAre)
{
    if (!ky::test::canFaultInAllocator || ky::test::throwsAreStructured())
        GTEST_SKIP() << "the allocator does not fault";
    const auto fault = [] { ExecGuardedCode([] { ky::test::commit(FaultKind::FreeOfNothing); }); };
    const ky::test::TempDir dir;
    EXPECT_EQ(printedBy(fault), "") << "no logger";
    ky::kyLog::createInstance(false);
    EXPECT_THAT(printedBy(fault), HasSubstr("CRITICAL : ")) << "a logger for one thread, without a file";
    ky::kyLog::edit().installFileHandlerExUtf8(dir.file("none/x.log"), 4 + 8, -1, 0);
    EXPECT_THAT(printedBy(fault), HasSubstr("CRITICAL : ")) << "a file that cannot be made";
    ky::kyLog::edit().installFileHandlerExUtf8(dir.file("x.log"), 8, -1, 0);
    EXPECT_EQ(printedBy(fault), "");
    EXPECT_THAT(ky::test::readFile(dir.file("x.log")), StartsWith("\xEF\xBB\xBF"
                                                                  "CRITICAL : "));
    ky::kyLog::edit().removeFileHandler();
    ky::kyLog::edit().setEchoToConsole(true);
    EXPECT_THAT(printedBy(fault), HasSubstr("CRITICAL : ")) << "no file any more";
    ky::kyLog::edit().setLogTypeEnabled(ky::kyLogType::CRITICAL, false);
    EXPECT_EQ(printedBy(fault), "");
    ky::kyLog::destroyInstance();
}

TEST(Watchers, AreThereWhileTheLibraryIsFullyInitialized)
{
    using ky::exception::IsSigWatcherRegistered;
    const auto before = ky::test::faultDisposition();
    ky::initializeKySystem(ky::InitType::Light, false);
    EXPECT_FALSE(IsSigWatcherRegistered());
    for (int n = 0; n < 2; ++n)
    {
        ky::initializeKySystem(ky::InitType::Full, false);
        EXPECT_TRUE(IsSigWatcherRegistered());
        EXPECT_EQ(ky::test::faultDisposition(), ky::test::Disposition::Other);
    }
    ky::terminateKySystem();
    ky::terminateKySystem();
    EXPECT_TRUE(IsSigWatcherRegistered());
    ky::terminateKySystem();
    EXPECT_FALSE(IsSigWatcherRegistered());
    EXPECT_EQ(ky::test::faultDisposition(), before);
}

TEST(SystemErrorText, IsTheSystemsOwn)
{
    EXPECT_THAT(ky::SystemError(2).toString(), testing::AnyOf(StartsWith("No such file"), StartsWith("File not found"),
                                                              HasSubstr("cannot find the file")));
    for (const int unassigned : {999999, -5})
        EXPECT_EQ(ky::SystemError(unassigned).toString(), "Unknown Error");
    ky::test::failWith(2);
    EXPECT_EQ(ky::SystemError().code(), 2);
}

} // namespace
