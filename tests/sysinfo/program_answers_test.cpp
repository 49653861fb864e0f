// SPDX-License-Identifier: MIT
// What becomes of the system's answers, with made-up ones.
#include "sysinfo/program_native.h"

#include <ky/kyLog.h>
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

namespace
{

struct Answers
{
    std::string computer;
    std::string path;
    std::vector<std::string> commandLine;
};

Answers sAnswers;

} // namespace

namespace ky::impl::native
{

const std::string_view pathSeparators = R"(\/)";
std::int64_t privateMemory() { return 0; }
std::string userName() { return {}; }
std::string computerName() { return sAnswers.computer; }
std::string programPath() { return sAnswers.path; }
std::vector<std::string> commandLine() { return sAnswers.commandLine; }

} // namespace ky::impl::native

namespace
{

using ky::kySystemUtils;

void collect(const std::string& message, ky::kyLogType type, const std::string&, void* messages)
{
    static_cast<std::vector<std::string>*>(messages)->push_back(std::to_string(static_cast<int>(type)) + message);
}

TEST(ProgramAnswers, AreSplitAtTheLastSeparator)
{
    const struct
    {
        const char* path;
        const char* folder;
        const char* name;
    } rows[] = {{"/opt/a b/ky", "/opt/a b", "ky"},
                {"/ky", "/", "ky"},
                {R"(C:\Program Files\ky.exe)", R"(C:\Program Files)", "ky.exe"},
                {R"(C:\ky.exe)", R"(C:\)", "ky.exe"},
                {R"(\\server\share\ky.exe)", R"(\\server\share)", "ky.exe"},
                {"ky", "", "ky"},
                {"", "", ""}};
    for (const auto& row : rows)
    {
        sAnswers.path = row.path;
        EXPECT_EQ(kySystemUtils::GetProgramFullPath(), row.path);
        EXPECT_EQ(kySystemUtils::GetProgramFolder(), row.folder) << row.path;
        EXPECT_EQ(kySystemUtils::GetProgramName(), row.name) << row.path;
    }
}

TEST(ProgramAnswers, CutTheDomainOfTheComputer)
{
    for (const auto& [answer, name] : {std::pair("host", "host"), {"host.example.org", "host"}, {".x", ""}, {"", ""}})
    {
        sAnswers.computer = answer;
        EXPECT_EQ(kySystemUtils::GetLocalComputerName(), name) << answer;
    }
}

TEST(ProgramAnswers, ReportAMissingCommandLine)
{
    std::vector<std::string> messages;
    ky::kyLog::createInstance(false);
    ky::kyLog::edit().setEchoToConsole(false);
    ky::kyLog::edit().installCustomHandler(&collect, &messages);
    sAnswers.commandLine = {"ky", ""};
    EXPECT_EQ(kySystemUtils::ExtractCommandLineUtf8(), sAnswers.commandLine);
    EXPECT_TRUE(messages.empty());
    sAnswers.commandLine.clear();
    EXPECT_TRUE(kySystemUtils::ExtractCommandLineUtf8().empty());
    EXPECT_EQ(messages, std::vector<std::string>{"2Fail to retrieve command line"});
    ky::kyLog::destroyInstance();
}

} // namespace
