// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyProcess.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "process/child_program.h"

namespace
{

using ky::kyProcess;
using ky::test::amplyMs;
using ky::test::childProgram;
using ky::test::eventually;
using ky::test::isHeld;
using ky::test::TempDir;

bool startChild(kyProcess& process, const std::vector<std::string>& arguments)
{
    return process.startProcess(childProgram(), arguments, true, kyProcess::Inherit);
}

TEST(ProcessOutput, BothChannelsAtOnceWithoutALimit)
{
    std::size_t sizes[2] = {};
    kyProcess process;
    process.setOutputHandler([&](kyProcess::OutputChannel channel, std::string_view bytes)
                             { sizes[channel] += bytes.size(); });
    ASSERT_TRUE(startChild(process, {"process_write", "50"}));
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(sizes[0], 50U << 20);
    EXPECT_EQ(sizes[1], 50U << 20);
}

TEST(ProcessOutput, QueriesPassItOnAsWell)
{
    std::size_t size = 0;
    kyProcess process;
    process.setOutputHandler([&](kyProcess::OutputChannel, std::string_view bytes) { size += bytes.size(); });
    ASSERT_TRUE(startChild(process, {"process_write", "4"}));
    EXPECT_TRUE(eventually([&] { return process.getState() == kyProcess::Finished; }));
    EXPECT_EQ(size, 8U << 20);
}

// The usual order of two locals: what the handler refers to is gone before the process object is.
TEST(ProcessOutput, ADestructorCallsNoHandler)
{
    bool isLate = false;
    bool calledLate = false;
    {
        kyProcess process;
        process.setOutputHandler([&](kyProcess::OutputChannel, std::string_view) { calledLate |= isLate; });
        ASSERT_TRUE(startChild(process, {"process_write", "1"}));
        std::this_thread::sleep_for(std::chrono::milliseconds(200)); // there is something to read, as a rule
        isLate = true;
    }
    EXPECT_FALSE(calledLate);
}

TEST(ProcessOutput, InputGoesInWhileOutputComesOut)
{
    std::string input;
    for (int i = 0; input.size() < 20'000'000; ++i)
        input += std::to_string(i) + ",";
    std::string output;
    std::string errors = "old";
    std::string error = "untouched";
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_copy"}, "", true, amplyMs, output, &errors, &error,
                                          input),
              0);
    EXPECT_TRUE(output == input) << output.size() << " of " << input.size();
    EXPECT_EQ(errors, "");
    EXPECT_EQ(error, "untouched");
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_copy"}, "", true, amplyMs, output), 0)
        << "an empty input ends at once";
    EXPECT_EQ(output, "");
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_end", "6"}, "", true, amplyMs, output, nullptr,
                                          &error, input),
              6)
        << "a child that does not read is no harm";
    EXPECT_EQ(error, "process return an error");
}

TEST(ProcessOutput, ATimeOutKeepsWhatCameAndEndsTheTree)
{
    const TempDir dir;
    std::string output = "old";
    std::string error;
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_hold", dir.file("lock")}, "", true, 3000, output,
                                          nullptr, &error),
              -2);
    EXPECT_EQ(error, "timeout");
    EXPECT_EQ(output, "ready");
    EXPECT_TRUE(eventually([&] { return !isHeld(dir.file("lock")); }));
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(dir.file("none.exe"), {}, "", false, amplyMs, output, nullptr, &error), -1);
    EXPECT_EQ(output, "");
}

TEST(ProcessOutput, AChildThatClosesItsOutputIsWaitedFor)
{
    std::string output;
    EXPECT_EQ(kyProcess::ExecCapturedUtf8(childProgram(), {"process_close", "300", "9"}, "", true, amplyMs, output), 9);
    EXPECT_EQ(output, "said");
}

TEST(ProcessOutput, WhatAChildLeavesBehindHoldsNothingUpAndEndsWithTheTree)
{
    const TempDir dir;
    const std::string lock = dir.file("lock");
    std::string text;
    kyProcess process;
    process.setOwnTree(true);
    process.setOutputHandler([&](kyProcess::OutputChannel, std::string_view bytes) { text += bytes; });
    ASSERT_TRUE(startChild(process, {"process_leave", lock}));
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_THAT(text, testing::HasSubstr("left"));
    EXPECT_TRUE(eventually([&] { return isHeld(lock); }));
    EXPECT_TRUE(process.killProcessTree()) << "the child itself has ended before";
    EXPECT_TRUE(eventually([&] { return !isHeld(lock); }));

    // The whole of a tree that runs.
    ASSERT_TRUE(startChild(process, {"process_hold", lock}));
    EXPECT_TRUE(eventually([&] { return isHeld(lock); }));
    EXPECT_TRUE(process.killProcessTree());
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(process.exitCode(), 65535);
    process.clearProcess();
    EXPECT_FALSE(process.killProcessTree());
}

TEST(ProcessOutput, AHandlerMayEndTheProcessAndMayThrow)
{
    const TempDir dir;
    kyProcess process;
    process.setOutputHandler(
        [&](kyProcess::OutputChannel, std::string_view)
        {
            EXPECT_FALSE(process.waitForFinished(amplyMs)) << "not from within";
            EXPECT_FALSE(startChild(process, {"process_end", "0"}));
            process.killProcess();
        });
    ASSERT_TRUE(startChild(process, {"process_hold", dir.file("lock")}));
    EXPECT_TRUE(process.waitForFinished(amplyMs));
    EXPECT_EQ(process.exitCode(), 65535);

    int calls = 0;
    process.setOutputHandler(
        [&](kyProcess::OutputChannel, std::string_view)
        {
            ++calls;
            throw std::runtime_error("handler");
        });
    ASSERT_TRUE(startChild(process, {"process_write", "1"}));
    EXPECT_TRUE(process.waitForFinished(amplyMs)) << "the rest is dropped, not left in the way";
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(calls, 1);
}

TEST(ProcessOutput, AnObjectThatDiesDoesNotEndTheProcess)
{
    const TempDir dir;
    const std::string lock = dir.file("lock");
    {
        kyProcess process;
        process.setInput(std::string(10'000'000, 'x'));
        process.setOutputHandler([](kyProcess::OutputChannel, std::string_view) {});
        ASSERT_TRUE(startChild(process, {"process_hold", lock}));
        EXPECT_TRUE(eventually([&] { return isHeld(lock); }));
        process.setOutputHandler(nullptr);
        EXPECT_FALSE(process.waitForFinished(0));
    }
    EXPECT_TRUE(eventually([&] { return isHeld(lock); }));
    ky::test::writeFile(lock + ".stop", "");
    EXPECT_TRUE(eventually([&] { return !isHeld(lock); }));
}

} // namespace
