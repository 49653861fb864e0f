// SPDX-License-Identifier: MIT
// Programs run by the tool. The helper program of the tests is what it runs.
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using ky::test::ChildProcess;
using ky::test::readFile;
using ky::test::TempDir;
using testing::HasSubstr;

class ToolRun : public testing::Test
{
protected:
    int ky(const std::vector<std::string>& arguments)
    {
        const std::string file = dir.file("output" + std::to_string(++runs) + ".txt");
        const int exitCode = ChildProcess::program("ky", arguments, file).wait();
        output = readFile(file);
        return exitCode;
    }

    const std::string child = ky::test::binFolder() + "/ky_child";
    TempDir dir;
    std::string output;
    int runs = 0;
};

TEST_F(ToolRun, OutputAndExitCodeArePassedOn)
{
    EXPECT_EQ(ky({"run", child, "process_close", "0", "77"}), 77);
    EXPECT_EQ(output, "said");
    EXPECT_EQ(ky({"run", "--", child, "process_arguments", "--", "--timeout", "a b"}), 0);
    EXPECT_EQ(output, "2d2d 2d2d74696d656f7574 612062 ");
    EXPECT_EQ(ky({"run", "--dir", dir.path(), "--env", "KY_A=1", "--env=KY_B=b c", "--", child, "process_surroundings",
                  "KY_B"}),
              0);
    EXPECT_THAT(output, HasSubstr(dir.path().substr(dir.path().rfind('/') + 1) + "|KY_B=b c"));
    EXPECT_EQ(ky({"run", "--env", "PATH=x", child, "process_surroundings", "PATH"}), 0);
    EXPECT_THAT(output, testing::EndsWith("|PATH=x")) << "once";
}

TEST_F(ToolRun, LinesGoIntoTheLog)
{
    const std::string log = dir.file("run.log");
    EXPECT_EQ(ky({"run", "--log", log, child, "process_close", "0", "5"}), 5);
    EXPECT_EQ(output, "said");
    EXPECT_THAT(readFile(log), testing::ContainsRegex("INFO\\(out\\) : .* said\r\n$"));
    EXPECT_EQ(ky({"run", "--log", dir.path(), child, "process_end", "0"}), 1);
    EXPECT_EQ(ky({"--log", log, "run", "--", child, "process_close", "0", "5"}), 5);
}

TEST_F(ToolRun, WhatCannotStartAndWhatDoesNotEnd)
{
    EXPECT_EQ(ky({"run", dir.file("none.exe")}), 127);
    EXPECT_THAT(output, HasSubstr("none.exe: cannot be started"));
    EXPECT_EQ(ky({"detach", dir.file("none.exe")}), 127);
    EXPECT_EQ(ky({"run", "--timeout", "300", "--", child, "process_end", "0", "60000"}), 124);
    EXPECT_THAT(output, HasSubstr("not finished within 300 ms"));
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"run"},
                                                  {"detach", "--"},
                                                  {"run", "--env", "x", child},
                                                  {"run", "--timeout", "x", child}})
        EXPECT_EQ(ky(wrong), 2) << testing::PrintToString(wrong);
    EXPECT_EQ(ky({"run", "--help"}), 0);
    EXPECT_THAT(output, HasSubstr("PROGRAM [ARGUMENTS...]"));
}

TEST_F(ToolRun, WhatIsDetachedGoesOn)
{
    EXPECT_EQ(ky({"detach", child, "process_write", "0", dir.file("mark")}), 0);
    EXPECT_TRUE(ky::test::eventually([&] { return ky::test::exists(dir.file("mark")); }));
}

} // namespace
