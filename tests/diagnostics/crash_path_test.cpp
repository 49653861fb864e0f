// SPDX-License-Identifier: MIT
// A fault outside guarded code: its one line is in the log, and the process has ended.
#include "diagnostics/guard_faults.h"
#include "support/child_process.h"
#include "support/sanitizer.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace
{

using ky::test::ChildProcess;
using testing::HasSubstr;
using testing::Not;

struct Outcome
{
    int exitCode;
    std::string log;
    std::string output;
};

Outcome play(const std::string& scene)
{
    const ky::test::TempDir dir;
    const std::string log = dir.file("crash.log");
    const std::string output = dir.file("output.txt");
    ChildProcess child = ChildProcess::program("ky_fault_child", {scene, log}, output);
    const int exitCode = child.wait(std::chrono::seconds(60));
    return {exitCode, ky::test::readFile(log), ky::test::readFile(output)};
}

bool onWindows() { return ky::test::throwsAreStructured(); }

/// Whole lines, the mark in front, and the crash line once. The result is whether it is so.
bool expectCrashLine(const Outcome& outcome, const std::string& signal)
{
    const std::regex whole("\xEF\xBB\xBF(INFO : [^\r\n]*\r\n)+CRITICAL : [A-Z][a-z]{2} [A-Z][a-z]{2} [0-9]{2} "
                           "[0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4} Catch signal " +
                           signal + "\r\n");
    const bool isWhole = std::regex_match(outcome.log, whole);
    EXPECT_TRUE(isWhole) << outcome.log;
    EXPECT_THAT(outcome.output, HasSubstr("Catch signal " + signal));
    return isWhole;
}

TEST(CrashPath, OneLineThenTheEnd)
{
    struct Scene
    {
        const char* name;
        const char* signal;
        int number;
        bool onWindows;
    };
    constexpr int sigill = 4;
    constexpr int sigfpe = 8;
    constexpr int sigsegv = 11;
    const Scene scenes[] = {
        {"null", "SIGSEGV", sigsegv, true},          {"division", "SIGFPE", sigfpe, true},
        {"illegal", "SIGILL", sigill, true},         {"overflow", "SIGSEGV", sigsegv, false},
        {"another-logs", "SIGSEGV", sigsegv, true},  {"in-handler", "SIGSEGV", sigsegv, false},
        {"handler-hangs", "SIGSEGV", sigsegv, true}, {"four-threads", "SIGSEGV", sigsegv, true},
        {"raised-hangs", "SIGSEGV", sigsegv, true},  {"handler-divides", "SIGSEGV", sigfpe, false},
    };
    int crashes = 0;
    int lost = 0;
    for (const Scene& scene : scenes)
    {
        if (onWindows() && !scene.onWindows)
            continue;
        SCOPED_TRACE(scene.name);
        // What hangs is left only after its time.
        const bool isSlow = std::string(scene.name).find("hangs") != std::string::npos;
        for (int run = ky::test::isSoak() && !isSlow ? 100 : 1; run > 0; --run)
        {
            const Outcome outcome = play(scene.name);
            lost += expectCrashLine(outcome, scene.signal) ? 0 : 1;
            if (onWindows())
                EXPECT_NE(outcome.exitCode, 0);
            else
                EXPECT_EQ(outcome.exitCode, 128 + scene.number);
            ++crashes;
        }
    }
    ky::test::account("crash path", {crashes, "crashes of all kinds"}, {}, {lost, "crash lines"});
}

TEST(CrashPath, AThreadInTheAllocatorIsNoObstacle)
{
    if (onWindows())
        GTEST_SKIP() << "signals are not delivered to other threads here";
    const int runs = ky::test::isSoak() ? 1000 : 40;
    int lost = 0;
    for (int run = 0; run < runs && !HasFailure(); ++run)
        lost += expectCrashLine(play("allocating"), "SIGSEGV") ? 0 : 1;
    ky::test::account("crash path", {runs, "crashes while a thread allocates"}, {}, {lost, "crash lines"});
}

TEST(CrashPath, ARaisedSignalIsSurvivedOnce)
{
    const Outcome outcome = play("raise-twice");
    EXPECT_NE(outcome.exitCode, 0);
    const std::string line = "Catch signal SIGFPE\r\n";
    const std::size_t first = outcome.log.find(line);
    ASSERT_NE(first, std::string::npos) << outcome.log;
    EXPECT_EQ(outcome.log.find(line, first + 1), std::string::npos);
    EXPECT_THAT(outcome.log.substr(first), HasSubstr("still here"));
}

TEST(CrashPath, GuardedCodeStaysGuardedAfterTheWatcherHasSpoken)
{
    const Outcome outcome = play("raise-then-guard");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.log, testing::AllOf(HasSubstr("Catch signal SIGSEGV"), HasSubstr("ACCESS_VIOLATION"),
                                            HasSubstr("still here")));
}

TEST(CrashPath, TheReportOfAGuardedFaultNeedsNoMemory)
{
    if (onWindows())
        GTEST_SKIP() << "the heap's lock does not keep its own thread out";
    if (!ky::test::canFaultInAllocator)
        GTEST_SKIP() << "no faults in this sanitizer's allocator";
    const Outcome outcome = play("guarded-allocating");
    EXPECT_EQ(outcome.exitCode, 0);
    const std::regex whole("[^]*CRITICAL : [^\n]* Catch SEH Exception EXCEPTION_ACCESS_VIOLATION 0xc0000005, PID [^]*"
                           "\n\t#[0-9]+ @0x[0-9a-f]+[^\n]*\r\nINFO : [^\n]* still here\r\n");
    EXPECT_TRUE(std::regex_match(outcome.log, whole)) << outcome.log;
    const Outcome lockedOut = play("guarded-locked-out");
    EXPECT_EQ(lockedOut.exitCode, 0);
    EXPECT_THAT(lockedOut.log, HasSubstr("Catch SEH Exception EXCEPTION_ACCESS_VIOLATION 0xc0000005, PID "));
}

TEST(CrashPath, AFaultInTheReportCostsTheHandlerOnly)
{
    const Outcome outcome = play("report-faults");
    EXPECT_EQ(outcome.exitCode, 0);
    const std::size_t first = outcome.log.find("EXCEPTION_INT_DIVIDE_BY_ZERO");
    ASSERT_NE(first, std::string::npos) << outcome.log;
    EXPECT_EQ(outcome.log.find("EXCEPTION_", first + 1), std::string::npos) << outcome.log;
    EXPECT_THAT(outcome.log, HasSubstr("still here"));
}

TEST(CrashPath, AHandlerThatWasThereBeforeHasTheLastWord)
{
    if (onWindows())
        GTEST_SKIP() << "the C runtime calls one handler only";
    const Outcome outcome = play("foreign-handler");
    expectCrashLine(outcome, "SIGSEGV");
    EXPECT_EQ(outcome.exitCode, 42);
}

} // namespace
