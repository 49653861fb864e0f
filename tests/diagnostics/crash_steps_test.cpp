// SPDX-License-Identifier: MIT
#include "diagnostics/guard_faults.h"
#include "diagnostics/log_checker.h"
#include "diagnostics/log_file.h"
#include "support/child_process.h"
#include "support/sanitizer.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyException.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <thread>

namespace
{

using ky::impl::LogStep;
using ky::test::LogContent;

int lastWritten(const std::string& progressFile)
{
    std::istringstream lines(ky::test::readFile(progressFile));
    int last = -1;
    for (int n = 0; lines >> n;)
        last = n;
    return last;
}

/// Writes one line as a process that comes later does.
void writeAfterwards(const std::string& path, int maxSize, int keep, int number)
{
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8(path, 0, maxSize, keep);
    ky::logInfo() << ky::test::makeMessage({1, 0, number});
    ky::terminateKySystem();
}

/// Lines in all files but the oldest.
std::size_t linesSafeFromOneRotation(const std::string& path, int keep)
{
    const std::vector<std::string> files = ky::test::logFiles(path, keep);
    if (static_cast<int>(files.size()) <= keep)
        return ky::test::readLog(path, keep).lines;
    const std::string oldest = ky::test::readFile(files.front());
    std::size_t inOldest = 0;
    for (std::size_t at = oldest.find("\r\n"); at != std::string::npos; at = oldest.find("\r\n", at + 1))
        ++inOldest;
    return ky::test::readLog(path, keep).lines - inOldest;
}

TEST(RotationCrash, AFaultUnderTheFilesLockGivesItBack)
{
    if (!ky::test::canSurviveFaults)
        GTEST_SKIP() << "no faults under this sanitizer";
    const ky::test::TempDir dir;
    const std::string path = dir.file("fault.log");
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerUtf8(path);
    ky::impl::logStepHook = [](LogStep)
    {
        ky::impl::logStepHook = nullptr;
        ky::test::commit(ky::test::FaultKind::NullWrite);
    };
    ky::exception::ExecGuardedCode([] { ky::kyLog::edit().Write("never written", ky::kyLogType::INFO, ""); });
    std::thread([] { ky::logInfo() << "from another thread"; }).join();
    ky::terminateKySystem();
    EXPECT_THAT(ky::test::readFile(path),
                testing::AllOf(testing::HasSubstr("ACCESS_VIOLATION"), testing::HasSubstr("from another thread"),
                               testing::Not(testing::HasSubstr("never written"))));
}

TEST(RotationCrash, AtEveryStepTheNextWriterGoesOnWithNothingLost)
{
    constexpr int keep = 4;
    constexpr int maxSize = 400;
    const ky::test::TempDir dir;
    const std::string path = dir.file("crash.log");
    const std::string progress = dir.file("progress");
    std::vector<std::pair<LogStep, int>> points;
    for (const LogStep step :
         {LogStep::BeforeOldestGoes, LogStep::BeforeReopen, LogStep::BeforeMark, LogStep::AfterWrite})
        points.emplace_back(step, 1);
    for (int rename = 1; rename <= keep; ++rename)
        points.emplace_back(LogStep::BeforeRename, rename);
    // A rotation's own mark: in the line that follows the line which found the file too large.
    for (int line = 2; line <= 12; ++line)
        points.emplace_back(LogStep::BeforeMark, line);

    std::uint64_t crashes = 0;
    std::uint64_t lost = 0;
    int next = 0;
    for (; next < 60; ++next)
        writeAfterwards(path, maxSize, keep, next);
    for (int round = 0; round < (ky::test::isSoak() ? 20 : 1); ++round)
    {
        for (const auto& [step, occurrence] : points)
        {
            SCOPED_TRACE("step " + std::to_string(static_cast<int>(step)) + ", occurrence " +
                         std::to_string(occurrence));
            auto child = ky::test::ChildProcess::program(
                "ky_crash_writer", {path, std::to_string(maxSize), std::to_string(keep), std::to_string(next),
                                    std::to_string(static_cast<int>(step)), std::to_string(occurrence), progress});
            ASSERT_EQ(child.wait(), 9);
            const int acknowledged = std::max(lastWritten(progress), next - 1);
            next = acknowledged + (step == LogStep::AfterWrite ? 2 : 1);

            LogContent left = ky::test::readLog(path, keep);
            ky::test::expectRun(left, 1, 0, false, next - 1);
            const std::size_t safe = linesSafeFromOneRotation(path, keep);
            writeAfterwards(path, maxSize, keep, next);
            LogContent after = ky::test::readLog(path, keep);
            ky::test::expectRun(after, 1, 0, false, next);
            EXPECT_EQ(ky::test::describe(after), "");
            EXPECT_EQ(after.torn, std::vector<std::string>());
            EXPECT_GE(after.lines, safe + 1) << "more than the oldest file is gone";
            lost += after.missing + (after.lines > safe ? 0 : safe + 1 - after.lines);
            ++crashes;
            ++next;
        }
    }
    ky::test::account("log rotation", {next, "lines"}, {crashes, "deaths at every step of a rotation"},
                      {lost, "lines"});
}

} // namespace
