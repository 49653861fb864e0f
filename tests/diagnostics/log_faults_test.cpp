// SPDX-License-Identifier: MIT
// The rotating file under failing calls: what was written stays, and logging goes on when the fault ends.
#include "diagnostics/log_file.h"
#include "diagnostics/log_line.h"
#include "memory_files.h"
#include "support/failing_new.h"
#include "support/soak.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{

using ky::impl::LogFile;
using ky::impl::LogLine;
using ky::impl::LogStep;
using ky::test::FileCall;
using ky::test::memoryFiles;

constexpr int keep = 3;
const std::string mark = "\xEF\xBB\xBF";

void writeLine(LogFile& log, int number)
{
    LogLine line(ky::kyLogType::INFO, "", "time", std::to_string(number));
    log.append(line, true);
}

/// All files, oldest first, checked for marks and whole lines. Gaps in the numbers of the files are allowed.
std::vector<int> writtenNumbers()
{
    const auto& files = memoryFiles().content;
    std::vector<int> numbers;
    std::vector<std::string> names{"log"};
    for (int i = 0; i < keep; ++i)
        names.insert(names.begin(), "log_" + std::to_string(i) + ".back");
    for (const std::string& name : names)
    {
        const auto found = files.find(name);
        if (found == files.end() || found->second.empty())
            continue;
        std::string content = found->second;
        EXPECT_EQ(content.compare(0, mark.size(), mark), 0) << name;
        content.erase(0, mark.size());
        EXPECT_EQ(content.find(mark), std::string::npos) << name;
        for (std::size_t at = 0; at < content.size();)
        {
            const std::size_t end = content.find("\r\n", at);
            EXPECT_NE(end, std::string::npos) << name << ": torn end";
            const std::string line = content.substr(at, end == std::string::npos ? end : end - at);
            EXPECT_EQ(line.compare(0, 12, "INFO : time "), 0) << name << ": " << line;
            numbers.push_back(std::atoi(line.c_str() + 12));
            at = end == std::string::npos ? content.size() : end + 2;
        }
    }
    EXPECT_LE(files.size(), names.size());
    return numbers;
}

/// Numbers from the first one kept to the last, without those that were refused, in order.
void expectOnlyMissing(const std::vector<int>& numbers, int last, std::size_t mayBeMissing)
{
    ASSERT_FALSE(numbers.empty());
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end()) << "a doubled line";
    EXPECT_EQ(numbers.back(), last);
    const auto complete = static_cast<std::size_t>(last - numbers.front() + 1);
    EXPECT_GE(numbers.size() + mayBeMissing, complete);
}

class LogFaults : public testing::Test
{
protected:
    void SetUp() override { memoryFiles() = {}; }
};

TEST_F(LogFaults, FailingCallsCostTheirLineAtMost)
{
    std::uint64_t lines = 0;
    std::uint64_t failures = 0;
    std::uint64_t lost = 0;
    for (const FileCall call : {FileCall::Open, FileCall::Write, FileCall::Rename, FileCall::Remove, FileCall::Any})
    {
        for (int from = 1; from <= (ky::test::isSoak() ? 200 : 30); ++from)
        {
            for (const int count : {1, 4})
            {
                SCOPED_TRACE("call kind " + std::to_string(static_cast<int>(call)) + ", from " + std::to_string(from) +
                             ", count " + std::to_string(count));
                memoryFiles() = {};
                memoryFiles().fail(call, from, count);
                LogFile log;
                log.setPath("log", 40, keep);
                log.prepare(8);
                int last = -1;
                // Until the fault is over, and then enough to see the log whole.
                while (memoryFiles().calls < from + count || last < 30)
                    writeLine(log, ++last);
                writeLine(log, ++last);
                const std::vector<int> numbers = writtenNumbers();
                expectOnlyMissing(numbers, last, static_cast<std::size_t>(count) + 1);
                if (HasFailure())
                    return;
                lines += static_cast<std::uint64_t>(last + 1);
                failures += static_cast<std::uint64_t>(count);
                const int missing = last - numbers.front() + 1 - static_cast<int>(numbers.size());
                lost += static_cast<std::uint64_t>(std::max(missing - count - 1, 0));
            }
        }
    }
    ky::test::account("log rotation", {lines, "lines"}, {failures, "failing calls"},
                      {lost, "lines but the failing ones"});
}

TEST_F(LogFaults, AFileThatCannotBeRenamedGrowsAndRotatesLater)
{
    LogFile log;
    log.setPath("log", 40, keep);
    int last = -1;
    while (last < 20)
        writeLine(log, ++last);
    const std::size_t before = writtenNumbers().size();
    memoryFiles().fail(FileCall::Rename, 1, 1000000);
    for (int i = 0; i < 10; ++i)
        writeLine(log, ++last);
    EXPECT_GE(writtenNumbers().size(), before + 10 - 3) << "only the oldest file may have gone";
    EXPECT_GT(memoryFiles().content["log"].size(), 150u);
    memoryFiles().failCount = 0;
    writeLine(log, ++last);
    EXPECT_LT(memoryFiles().content["log"].size(), 40u);
    expectOnlyMissing(writtenNumbers(), last, 0);
}

TEST_F(LogFaults, AFullDiskLeavesWholeLines)
{
    for (int room = 0; room < 120; ++room)
    {
        SCOPED_TRACE(room);
        memoryFiles() = {};
        memoryFiles().room = room;
        LogFile log;
        log.setPath("log", -1, 0);
        EXPECT_TRUE(log.prepare(0));
        for (int n = 0; n < 10; ++n)
        {
            writeLine(log, n);
            writtenNumbers();
        }
        memoryFiles().room = -1;
        writeLine(log, 10);
        const std::vector<int> numbers = writtenNumbers();
        ASSERT_FALSE(numbers.empty());
        EXPECT_EQ(numbers.back(), 10);
        EXPECT_EQ(numbers.size(), static_cast<std::size_t>(1 + std::max(0, room - 3) / 15));
    }
}

/// Three lines, of which the second one finds the disk full in its middle.
std::string writeThree(FileCall failing, void (*hook)(LogStep step) = nullptr)
{
    memoryFiles().room = 3 + 15 + 6;
    memoryFiles().fail(failing, 1, 1);
    LogFile log;
    log.setPath("log", -1, 0);
    log.prepare(8);
    writeLine(log, 0);
    ky::impl::logStepHook = hook;
    writeLine(log, 1);
    ky::impl::logStepHook = nullptr;
    memoryFiles().room = -1;
    writeLine(log, 2);
    return memoryFiles().content["log"];
}

TEST_F(LogFaults, APartThatCannotBeCutAwayIsEnded)
{
    EXPECT_EQ(writeThree(FileCall::Cut), mark + "INFO : time 0\r\nINFO :\r\nINFO : time 2\r\n");
}

TEST_F(LogFaults, WhatAnotherWriterHasAddedIsNotCutAway)
{
    const auto addLine = [](LogStep step)
    {
        if (step == LogStep::AfterWrite)
            memoryFiles().content["log"] += "|INFO : time 7\r\n";
    };
    EXPECT_EQ(writeThree(FileCall::Rename, addLine),
              mark + "INFO : time 0\r\nINFO :|INFO : time 7\r\nINFO : time 2\r\n");
}

TEST_F(LogFaults, AFileThatCannotBeReadIsAppendedTo)
{
    memoryFiles().content["log"] = mark + "INFO : ti";
    memoryFiles().fail(FileCall::Read, 1, 2);
    LogFile log;
    log.setPath("log", -1, 0);
    writeLine(log, 1);
    EXPECT_EQ(memoryFiles().content["log"], mark + "INFO : tiINFO : time 1\r\n");
}

TEST_F(LogFaults, FilesThatVanishDuringARotationAreNoObstacle)
{
    for (const LogStep when : {LogStep::BeforeOldestGoes, LogStep::BeforeRename})
    {
        static LogStep sWhen;
        sWhen = when;
        memoryFiles() = {};
        LogFile log;
        log.setPath("log", 1, keep);
        for (int n = 0; n < 6; ++n)
            writeLine(log, n);
        ky::impl::logStepHook = [](LogStep step)
        {
            if (step == sWhen)
                for (int i = 0; i < keep; ++i)
                    memoryFiles().content.erase("log_" + std::to_string(i) + ".back");
        };
        writeLine(log, 6);
        ky::impl::logStepHook = nullptr;
        EXPECT_EQ(log.skippedLines(), 0U);
        EXPECT_EQ(memoryFiles().content["log"], mark + "INFO : time 6\r\n");
        EXPECT_EQ(writtenNumbers(), (std::vector<int>{5, 6}));
    }
}

TEST_F(LogFaults, ALongLineIsWrittenPieceByPieceWhenMemoryHasRunOut)
{
    const std::string text(2000, 'x');
    const std::string whole = "INFO(q) : time " + text + "\r\n";
    for (const int room : {0, 3, 7, 20, static_cast<int>(whole.size()) + 2, -1})
    {
        memoryFiles() = {};
        memoryFiles().room = room;
        LogFile log;
        log.setPath("log", -1, 0);
        ky::test::memoryRequests.failAt(1);
        LogLine line(ky::kyLogType::INFO, "q", "time", text);
        ky::test::memoryRequests.failNoMore();
        log.append(line, true);
        EXPECT_EQ(memoryFiles().content["log"], room < 0 ? mark + whole : "") << room;
        EXPECT_EQ(log.skippedLines(), room < 0 ? 0U : 1U);
    }
}

TEST_F(LogFaults, ADeviceGetsNoMarkHoweverEmptyItLooks)
{
    LogFile log;
    log.setPath("device", -1, 0);
    EXPECT_TRUE(log.prepare(0));
    EXPECT_EQ(memoryFiles().content.count("device"), 0u) << "it exists: nothing is created";
    writeLine(log, 0);
    EXPECT_EQ(memoryFiles().content["device"], "INFO : time 0\r\n");
}

TEST_F(LogFaults, InstallationNeverDeletesWhatItCouldNotRotate)
{
    memoryFiles().content["log"] = mark + "INFO : time 0\r\n";
    memoryFiles().fail(FileCall::Rename, 1, 1000000);
    LogFile log;
    log.setPath("log", -1, keep);
    EXPECT_TRUE(log.prepare(3));
    writeLine(log, 1);
    EXPECT_EQ(writtenNumbers(), (std::vector<int>{0, 1}));
}

} // namespace
