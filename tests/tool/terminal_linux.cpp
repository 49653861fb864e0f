// SPDX-License-Identifier: MIT
// The tool on a terminal, and under signals.
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using ky::test::readFile;
using ky::test::TempDir;
using ky::test::writeFile;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// A run of the tool with its standard streams in the test's hand.
class RunningTool
{
public:
    enum class Screen
    {
        Terminal,
        Pipe
    };

    RunningTool(Screen screen, std::vector<std::string> arguments)
    {
        int in[2] = {-1, -1};
        int out[2] = {-1, -1};
        if (screen == Screen::Pipe && (pipe(in) != 0 || pipe(out) != 0))
            std::abort();
        mPid = screen == Screen::Terminal ? forkpty(&mOut, nullptr, nullptr, nullptr) : fork();
        if (mPid == 0)
        {
            if (screen == Screen::Pipe)
            {
                dup2(in[0], STDIN_FILENO);
                dup2(out[1], STDOUT_FILENO);
                dup2(out[1], STDERR_FILENO);
                for (const int end : {in[0], in[1], out[0], out[1]})
                    close(end);
            }
            execute(arguments);
        }
        if (screen == Screen::Terminal)
            return;
        close(in[0]);
        close(out[1]);
        mIn = in[1];
        mOut = out[0];
    }

    ~RunningTool()
    {
        if (!mEnded)
        {
            ::kill(mPid, SIGKILL);
            waitpid(mPid, &mStatus, 0);
        }
        for (const int end : {mIn, mOut})
        {
            if (end >= 0)
                close(end);
        }
    }

    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    void send(const std::string& bytes) const
    {
        EXPECT_EQ(write(mIn, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    void interrupt() const { ::kill(mPid, SIGINT); }

    /// Waits for output without taking it.
    bool hasWritten() const
    {
        pollfd out = {mOut, POLLIN, 0};
        return poll(&out, 1, 60000) == 1;
    }

    /// Everything until the tool closes its output.
    std::string readAll() const
    {
        std::string text;
        char block[4096];
        for (ssize_t got = 0; hasWritten() && (got = read(mOut, block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(got));
        return text;
    }

    bool hasEnded()
    {
        if (!mEnded)
            mEnded = waitpid(mPid, &mStatus, WNOHANG) == mPid;
        return mEnded;
    }

    /// Exit code, or 128 + N after signal N.
    int wait()
    {
        EXPECT_TRUE(ky::test::eventually([this] { return hasEnded(); }));
        return WIFEXITED(mStatus) ? WEXITSTATUS(mStatus) : 128 + WTERMSIG(mStatus);
    }

private:
    [[noreturn]] static void execute(std::vector<std::string>& arguments)
    {
        std::string program = ky::test::binFolder() + "/ky";
        std::vector<char*> argv{program.data()};
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(127);
    }

    pid_t mPid = -1;
    int mIn = -1;
    int mOut = -1;
    int mStatus = -1;
    bool mEnded = false;
};

using Screen = RunningTool::Screen;

/// A table whose rows do not fit into a pipe: who prints them all waits for a reader.
std::string writeLongTable(const TempDir& dir)
{
    std::string text = "name,value\n";
    for (int i = 0; i < 20000; ++i)
        text += "a rather long name in every row," + std::to_string(i) + "\n";
    writeFile(dir.file("long.csv"), text);
    return dir.file("long.csv");
}

TEST(ToolOnATerminal, DrawsTheBarAndRemovesIt)
{
    const TempDir dir;
    writeFile(dir.file("a.csv"), "a,b\n1,2\n");
    writeFile(dir.file("b.csv"), "\xFF,2\n");
    RunningTool tool(Screen::Terminal, {"csv", dir.file("a.csv"), dir.file("b.csv")});
    const std::string output = tool.readAll();
    EXPECT_EQ(tool.wait(), 1);
    const std::string blank = "\r" + std::string(70, ' ') + "\r";
    EXPECT_THAT(output, HasSubstr("\r[=================================                 ] 66/100  " + blank +
                                  dir.file("a.csv") + "\r\n"))
        << "the first file has 8 of 12 bytes";
    EXPECT_THAT(output, EndsWith("\r\nky: " + dir.file("b.csv") + ": Invalid UTF-8\r\n"));

    writeFile(dir.file("a.ini"), "a=1\n");
    RunningTool ini(Screen::Terminal, {"ini", dir.file("a.ini"), "list"});
    EXPECT_THAT(ini.readAll(), EndsWith("] 100/100  " + blank + "a = 1  (INTEGER)\r\n"));
    EXPECT_EQ(ini.wait(), 0);

    RunningTool piped(Screen::Pipe, {"csv", dir.file("a.csv")});
    EXPECT_THAT(piped.readAll(), Not(HasSubstr("\r")));
    EXPECT_EQ(piped.wait(), 0);
}

TEST(ToolInterrupted, StopsACsvRunAndLeavesNoSummary)
{
    const TempDir dir;
    const std::string table = writeLongTable(dir);
    writeFile(dir.file("never.csv"), "a\n1\n");
    RunningTool tool(Screen::Pipe,
                     {"csv", table, dir.file("never.csv"), "--rows", "20000", "--ini", dir.file("sum.ini")});
    ASSERT_TRUE(tool.hasWritten());
    tool.interrupt();
    const std::string output = tool.readAll();
    EXPECT_EQ(tool.wait(), 1);
    EXPECT_THAT(output, EndsWith("ky: " + table + ": cancelled\n"));
    EXPECT_THAT(output, Not(HasSubstr("never.csv")));
    EXPECT_FALSE(ky::test::exists(dir.file("sum.ini")));
}

TEST(ToolInterrupted, ASecondTimeEndsAtOnce)
{
    const TempDir dir;
    RunningTool tool(Screen::Pipe, {"csv", writeLongTable(dir), "--rows", "20000"});
    ASSERT_TRUE(tool.hasWritten());
    // Signals that are not delivered yet fold into one, so it may take more than two.
    EXPECT_TRUE(ky::test::eventually(
        [&]
        {
            tool.interrupt();
            return tool.hasEnded();
        }));
    EXPECT_EQ(tool.wait(), 128 + SIGINT);
}

TEST(ToolInterrupted, StopsWaitingForLogLines)
{
    const TempDir dir;
    const std::string file = dir.file("a.log");
    RunningTool tool(Screen::Pipe, {"log", file, "--stdin"});
    tool.send("one\r\ntwo\nthr");
    ASSERT_TRUE(ky::test::eventually([&] { return readFile(file).find("two\r\n") != std::string::npos; }));
    tool.interrupt();
    EXPECT_EQ(tool.readAll(), "ky: " + file + ": cancelled\n");
    EXPECT_EQ(tool.wait(), 1);
    EXPECT_THAT(readFile(file), EndsWith(" two\r\n"));
    EXPECT_THAT(readFile(file), HasSubstr(" one\r\n"));
}

/// Neither gone nor waiting for its parent to ask.
bool isRunning(pid_t id)
{
    const std::string state = readFile("/proc/" + std::to_string(id) + "/stat");
    const std::size_t name = state.rfind(") ");
    return name != std::string::npos && state[name + 2] != 'Z';
}

TEST(ToolWithoutAReader, EndsTheProgramWhenItIsTime)
{
    const TempDir dir;
    const std::string file = dir.file("id");
    for (const bool interrupted : {false, true})
    {
        RunningTool tool(Screen::Pipe, {"run", "--timeout", interrupted ? "600000" : "300", "--", "/bin/sh", "-c",
                                        "echo $$ > '" + file + "'; exec yes"});
        ASSERT_TRUE(tool.hasWritten());
        const pid_t id = std::stoi(readFile(file));
        if (interrupted)
            tool.interrupt();
        EXPECT_TRUE(ky::test::eventually([&] { return !isRunning(id); }));
        const std::string output = tool.readAll();
        const std::string last = interrupted ? "cancelled\n" : "not finished within 300 ms\n";
        EXPECT_THAT(output.substr(output.size() - std::min(output.size(), last.size())), last);
        EXPECT_EQ(tool.wait(), interrupted ? 1 : 124);
    }
}

/// No file may grow beyond `bytes` while it lives, as on a full disk. Started programs inherit that.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t bytes) : mHandler(signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit = {bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &mBefore);
        signal(SIGXFSZ, mHandler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    rlimit mBefore = {};
    sighandler_t mHandler;
};

TEST(ToolOnAFullDisk, AReportThatDoesNotFitLeavesTheOldFile)
{
    for (const char* const option : {"--ini", "--csv"})
    {
        const TempDir dir;
        const std::string file = dir.file("machine.txt");
        writeFile(file, "old");
        const std::string link = dir.file("link.txt");
        ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
        {
            const SmallDisk disk(256);
            RunningTool tool(Screen::Pipe, {"report", "--full", option, link});
            EXPECT_THAT(tool.readAll(), HasSubstr("ky: " + link + ": cannot be written\n"));
            EXPECT_EQ(tool.wait(), 1);
        }
        EXPECT_EQ(readFile(file), "old") << option;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2) << option << " left a file";

        RunningTool tool(Screen::Pipe, {"report", "--full", option, link});
        tool.readAll();
        EXPECT_EQ(tool.wait(), 0);
        EXPECT_GT(readFile(file).size(), 256u) << option << " goes through the link";
    }
}

TEST(ToolOnAFullDisk, OutputThatIsLostIsAFailure)
{
    const TempDir dir;
    writeFile(dir.file("t.csv"), "a,b\n");
    writeFile(dir.file("t.ini"), "[s]\na=1\n");
    const std::string here = "'" + dir.path() + "/";
    for (const std::string& command : {"find " + here + "'", "csv " + here + "t.csv'", "ini " + here + "t.ini' get s/a",
                                       "sort " + here + "t.csv'", std::string("run echo x")})
    {
        const std::string line =
            "'" + ky::test::binFolder() + "/ky' " + command + " > /dev/full 2> " + here + "errors'";
        EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 1) << command;
        EXPECT_EQ(readFile(dir.file("errors")), "ky: standard output: cannot be written\n") << command;
    }
}

} // namespace
