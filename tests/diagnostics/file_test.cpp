// SPDX-License-Identifier: MIT
#include "diagnostics/file_holder.h"
#include "diagnostics/log_checker.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

namespace
{

using ky::kyLog;
using ky::kyLogType;
using ky::test::exists;
using ky::test::readFile;
using ky::test::TempDir;
using ky::test::writeFile;

const std::string mark = "\xEF\xBB\xBF";

std::filesystem::path toPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

/// Content with the prefix of every line reduced to "TYPE(qualifier)|", and the mark to "^".
std::string shortened(const std::string& path)
{
    std::string content = readFile(path);
    const std::string bar = "|";
    const std::string caret = "^";
    for (std::size_t at = content.find(" : "); at != std::string::npos; at = content.find(" : ", at))
        content.replace(at, 3 + 24 + 1, bar);
    for (std::size_t at = content.find(mark); at != std::string::npos; at = content.find(mark))
        content.replace(at, mark.size(), caret);
    return content;
}

class LogFile : public testing::Test
{
protected:
    void SetUp() override
    {
        ky::initializeKySystem(ky::InitType::Full, false);
        log().setEchoToConsole(false);
    }
    void TearDown() override { ky::terminateKySystem(); }

    static kyLog& log() { return kyLog::edit(); }
    std::string rotated(int index) const { return mPath + "_" + std::to_string(index) + ".back"; }
    static void line(const std::string& text) { log().Write(text, kyLogType::INFO, ""); }

    const TempDir mDir;
    const std::string mPath = mDir.file("l\xC3\xB6g \xE6\x97\xA5.txt");
};

TEST_F(LogFile, LinesCarryThePrefixAndEndWithCarriageReturn)
{
    log().installFileHandlerUtf8(mPath);
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), mPath);
    EXPECT_EQ(readFile(mPath), mark);
    ky::logWarning("io") << "device closed";
    log().Write("two\nlines\r\n", kyLogType::DEBUG, "");
    log().Write("", static_cast<kyLogType>(77), "q");
    EXPECT_EQ(shortened(mPath), "^WARNING(io)|device closed\r\nDEBUG|two\nlines\r\n\r\nUNKNOWN(q)|\r\n");
    log().removeFileHandler();
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), "");
    ky::logWarning() << "nowhere";
    EXPECT_EQ(shortened(mPath).find("nowhere"), std::string::npos);
}

TEST_F(LogFile, MessagesPassByteForByte)
{
    log().installFileHandlerUtf8(mPath);
    std::string expected = "^";
    for (const std::string& message :
         {std::string(), std::string("a\0b\r\n\0", 6), std::string("\xFF\xC3(\xED\xA0\x80"), std::string(1023, 'x'),
          std::string(1024, 'y'), std::string(1 << 20, 'z')})
    {
        line(message);
        expected += "INFO|" + message + "\r\n";
    }
    EXPECT_EQ(shortened(mPath), expected);
}

TEST_F(LogFile, HugeMessagesPass)
{
    log().installFileHandlerUtf8(mPath);
    {
        ky::kyLogObject object = ky::logInfo();
        const std::string piece(10 << 20, 'h');
        for (int i = 0; i < 10; ++i)
            object << piece;
    }
    line("after");
    EXPECT_EQ(std::filesystem::file_size(toPath(mPath)), 3u + (32 + 2) + (100u << 20) + (32 + 5 + 2));
}

TEST_F(LogFile, InstallationFollowsTheFlags)
{
    struct Case
    {
        int flags;
        int filesToKeep;
        const char* before; // null: no file
        const char* after;  // null: no file
        const char* newest; // content of the first rotated file, null: none
        const char* withLine;
    };
    const Case cases[] = {
        {0, 0, nullptr, "^", nullptr, "^INFO|x\r\n"},
        {0, 2, "old\r\n", "old\r\n", nullptr, "old\r\nINFO|x\r\n"},
        {0, 2, "^old\r\n", "^old\r\n", nullptr, "^old\r\nINFO|x\r\n"},
        {0, 2, "no line end", "no line end", nullptr, "no line endINFO|x\r\n"},
        {1, 2, "old", "^", nullptr, "^INFO|x\r\n"},
        {2, 2, "old", "old", nullptr, "oldINFO|x\r\n"},
        {3, 2, "old", "^", "old", "^INFO|x\r\n"},
        {3, 0, "old", "^", nullptr, "^INFO|x\r\n"},
        {3, 2, nullptr, "^", nullptr, "^INFO|x\r\n"},
        {8, 0, nullptr, nullptr, nullptr, "^INFO|x\r\n"},
        {8, 0, "old", "old", nullptr, "oldINFO|x\r\n"},
        {9, 0, "old", nullptr, nullptr, "^INFO|x\r\n"},
        {11, 1, "old", nullptr, "old", "^INFO|x\r\n"},
        {8 + 4, 0, nullptr, nullptr, nullptr, "^INFO|x\r\n"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE("flags " + std::to_string(c.flags) + ", before " + (c.before == nullptr ? "none" : c.before));
        std::filesystem::remove(toPath(mPath));
        std::filesystem::remove(toPath(rotated(0)));
        if (c.before != nullptr)
            writeFile(mPath, c.before[0] == '^' ? mark + (c.before + 1) : c.before);
        log().installFileHandlerExUtf8(mPath, c.flags, -1, c.filesToKeep);
        EXPECT_EQ(exists(mPath), c.after != nullptr);
        EXPECT_EQ(shortened(mPath), c.after == nullptr ? "" : c.after);
        EXPECT_EQ(exists(rotated(0)), c.newest != nullptr);
        EXPECT_EQ(shortened(rotated(0)), c.newest == nullptr ? "" : c.newest);
        testing::internal::CaptureStdout();
        line("x");
        EXPECT_EQ(testing::internal::GetCapturedStdout().empty(), (c.flags & 4) == 0);
        EXPECT_EQ(shortened(mPath), c.withLine);
        log().removeFileHandler();
    }
}

TEST_F(LogFile, RotationAtInstallationShiftsTheKeptFiles)
{
    writeFile(mPath, "live");
    writeFile(rotated(0), "zero");
    writeFile(rotated(1), "one");
    writeFile(rotated(2), "not ours");
    log().installFileHandlerExUtf8(mPath, 3, 1000, 2);
    EXPECT_EQ(readFile(mPath), mark);
    EXPECT_EQ(readFile(rotated(0)), "live");
    EXPECT_EQ(readFile(rotated(1)), "zero");
    EXPECT_EQ(readFile(rotated(2)), "not ours");
}

TEST_F(LogFile, ALineIsAddedUpToTheLimitAndRotatesAbove)
{
    log().installFileHandlerExUtf8(mPath, 0, 1000, 3);
    // 3 bytes of mark, 32 of prefix, 2 of line end.
    line(std::string(1000 - 37, 'a'));
    EXPECT_EQ(std::filesystem::file_size(toPath(mPath)), 1000u);
    line("b");
    EXPECT_EQ(std::filesystem::file_size(toPath(mPath)), 1035u);
    EXPECT_FALSE(exists(rotated(0)));
    line("c");
    EXPECT_EQ(shortened(mPath), "^INFO|c\r\n");
    EXPECT_EQ(std::filesystem::file_size(toPath(rotated(0))), 1035u);
    for (const char* text : {"d", "e", "f"})
    {
        line(std::string(1000, text[0]));
        line(text);
    }
    EXPECT_EQ(shortened(mPath), "^INFO|f\r\n");
    EXPECT_EQ(shortened(rotated(0)).substr(0, 16), "^INFO|e\r\nINFO|ff");
    EXPECT_EQ(shortened(rotated(2)).substr(0, 16), "^INFO|c\r\nINFO|dd");
    EXPECT_FALSE(exists(rotated(3)));
}

TEST_F(LogFile, WithNothingToKeepAnOversizedFileStartsAnew)
{
    for (const int keep : {0, -5})
    {
        log().installFileHandlerExUtf8(mPath, 1, 100, keep);
        line(std::string(200, 'a'));
        line("b");
        EXPECT_EQ(shortened(mPath), "^INFO|b\r\n");
        EXPECT_FALSE(exists(rotated(0)));
    }
}

TEST_F(LogFile, NoMoreThan128FilesAreKept)
{
    log().installFileHandlerExUtf8(mPath, 0, 1, 500);
    for (int i = 0; i < 140; ++i)
        line(std::to_string(i));
    EXPECT_TRUE(exists(rotated(127)));
    EXPECT_FALSE(exists(rotated(128)));
    EXPECT_EQ(shortened(mPath), "^INFO|139\r\n");
    EXPECT_EQ(shortened(rotated(127)), "^INFO|11\r\n");
}

TEST_F(LogFile, LinesThatTheFileCouldNotTakeAreCounted)
{
    log().installFileHandlerExUtf8(mPath, 8, -1, 0);
    line("taken");
    EXPECT_EQ(log().getSkippedLineCount(), 0u);
    log().installFileHandlerExUtf8(mDir.file("none/x.log"), 8, -1, 0);
    line("lost");
    line("lost");
    EXPECT_EQ(log().getSkippedLineCount(), 2u);
    log().removeFileHandler();
    line("no file, nothing lost");
    EXPECT_EQ(log().getSkippedLineCount(), 0u);
}

TEST_F(LogFile, AFailedInstallationIsReportedAndLeavesNoFile)
{
    std::vector<std::string> messages;
    log().installCustomHandler(
        [](const std::string& message, kyLogType type, const std::string&, void* out)
        {
            static_cast<std::vector<std::string>*>(out)->push_back(
                (type == kyLogType::CRITICAL ? "" : "not critical: ") + message);
        },
        &messages);
    const std::string missing = mDir.file("none/x.log");
    for (const std::string& path : {missing, mDir.path(), std::string(), mDir.file(std::string(300, 'x'))})
    {
        messages.clear();
        log().installFileHandlerExUtf8(path, 4, -1, 0);
        EXPECT_EQ(messages, std::vector<std::string>{"Fail to install log file handler to " + path});
        EXPECT_EQ(log().getCurrentLogFileNameUtf8(), "");
        line("still works");
    }
    messages.clear();
    log().setLogTypeEnabled(kyLogType::CRITICAL, false);
    log().installFileHandlerUtf8(missing);
    EXPECT_TRUE(messages.empty());
    log().setLogTypeEnabled(kyLogType::CRITICAL, true);
    log().installFileHandlerUtf8(mDir.file("none\n\x1B/forged"));
    EXPECT_EQ(messages.back(), "Fail to install log file handler to " + mDir.file("none\\n\\x1B/forged"))
        << "a path must not forge a line";
}

TEST_F(LogFile, LinesResumeWhenThePathIsUsableAgain)
{
    log().installFileHandlerExUtf8(mPath, 0, 300, 2);
    line("one");
    std::filesystem::remove(toPath(mPath));
    line("two");
    EXPECT_EQ(shortened(mPath), "^INFO|two\r\n") << "a file that was taken away is made anew, with its mark";
    std::filesystem::remove(toPath(mPath));
    std::filesystem::create_directory(toPath(mPath));
    line("lost");
    std::filesystem::remove(toPath(mPath));
    line("three");
    EXPECT_EQ(shortened(mPath), "^INFO|three\r\n");
    std::filesystem::rename(toPath(mPath), toPath(mDir.file("elsewhere")));
    line("four");
    EXPECT_EQ(shortened(mPath), "^INFO|four\r\n");
}

TEST_F(LogFile, ATornLastLineOfALogIsEndedFirst)
{
    for (const std::string before : {"INFO|whole\r\nINFO|to", "INFO|to\r", ""})
    {
        writeFile(mPath, mark + before);
        log().installFileHandlerUtf8(mPath);
        line("x");
        EXPECT_EQ(shortened(mPath), "^" + before + (before.empty() ? "" : "\r\n") + "INFO|x\r\n");
    }
}

TEST_F(LogFile, AReadOnlyFileIsSkippedSilently)
{
    writeFile(mPath, "kept");
    std::filesystem::permissions(toPath(mPath), std::filesystem::perms::owner_read);
    const bool mayWrite = std::ofstream(toPath(mPath), std::ios::app).is_open();
    log().installFileHandlerUtf8(mPath);
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), mPath);
    line("x");
    if (!mayWrite)
    {
        EXPECT_EQ(readFile(mPath), "kept");
    }
    std::filesystem::permissions(toPath(mPath), std::filesystem::perms::owner_all);
    line("y");
    EXPECT_EQ(readFile(mPath).substr(0, 4), "kept");
    EXPECT_NE(shortened(mPath).find("INFO|y\r\n"), std::string::npos);
}

TEST_F(LogFile, PlantedLinksAreNeitherFollowedNorFilled)
{
    const std::string victim = mDir.file("victim");
    std::error_code failed;
    writeFile(victim, "precious");
    log().installFileHandlerExUtf8(mPath, 0, 1, 2);
    std::filesystem::create_symlink(toPath(victim), toPath(rotated(0)), failed);
    if (failed)
        GTEST_SKIP() << "links cannot be made here";
    std::filesystem::create_symlink(toPath(mDir.file("dangling")), toPath(rotated(1)));
    for (const char* text : {"a", "b", "c", "d"})
        line(text);
    EXPECT_EQ(readFile(victim), "precious");
    EXPECT_FALSE(exists(mDir.file("dangling")));
    EXPECT_EQ(shortened(rotated(0)) + shortened(rotated(1)), "^INFO|c\r\n^INFO|b\r\n");

    const std::string planted = mDir.file("planted.log");
    std::filesystem::create_symlink(toPath(mDir.file("dangling")), toPath(planted));
    log().installFileHandlerUtf8(planted);
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), "") << "creation does not follow a link";
    log().installFileHandlerExUtf8(planted, kyLog::CreateAtFirstLine, -1, 0);
    line("x");
    EXPECT_FALSE(exists(mDir.file("dangling")));
}

TEST_F(LogFile, AFileThatAViewerHoldsIsAppendedToUntilItIsFree)
{
    log().installFileHandlerExUtf8(mPath, 0, 1, 2);
    line("a");
    line("b");
    for (const std::string& held : {mPath, rotated(0)})
    {
        const std::string before = readFile(mPath);
        {
            const ky::test::FileHolder viewer(held);
            if (!viewer.holds())
                GTEST_SKIP() << "files cannot be held on this platform";
            line("c");
            line("d");
            EXPECT_EQ(readFile(mPath).substr(0, before.size()), before);
            const std::string now = shortened(mPath);
            EXPECT_EQ(now.substr(now.size() - 16), "INFO|c\r\nINFO|d\r\n") << held;
        }
        line("e");
        EXPECT_EQ(shortened(mPath), "^INFO|e\r\n");
        EXPECT_EQ(readFile(rotated(0)).substr(0, before.size()), before);
    }
}

TEST_F(LogFile, AViewerThatLooksBrieflyDelaysTheRotationOnly)
{
    log().installFileHandlerExUtf8(mPath, 0, 1, 2);
    line("a");
    auto viewer = std::make_unique<ky::test::FileHolder>(mPath);
    if (!viewer->holds())
        GTEST_SKIP() << "files cannot be held on this platform";
    std::thread end([&viewer] { viewer.reset(); });
    line("b");
    end.join();
    line("c");
    EXPECT_EQ(shortened(mPath), "^INFO|c\r\n");
}

TEST_F(LogFile, DevicesGetNoMarkAndMayRefuseEverything)
{
    for (const char* device : {"/dev/full", "/dev/null"})
    {
        if (!exists(device))
            GTEST_SKIP() << "no such device here";
        log().installFileHandlerExUtf8(device, 0, 10, 2);
        EXPECT_EQ(log().getCurrentLogFileNameUtf8(), device);
        line("swallowed");
        EXPECT_FALSE(exists(std::string(device) + "_0.back"));
    }
}

TEST_F(LogFile, TheLoggerMayBeMadeThreadSafeAfterTheInstallation)
{
    ky::terminateKySystem();
    ky::initializeKySystem(ky::InitType::Light, false);
    log().installFileHandlerExUtf8(mPath, 0, 2000, 100);
    ky::initializeKySystem(ky::InitType::Full, false);
    std::vector<std::thread> threads;
    const auto write = [](int thread)
    {
        for (int n = 0; n < 100; ++n)
            ky::logInfo() << ky::test::makeMessage({1, thread, n});
    };
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(write, t);
    ky::test::ChildProcess other("log-write", {mPath, "2000", "100", "2", "2", "100"});
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(other.wait(), 0);
    ky::terminateKySystem();
    ky::test::LogContent content = ky::test::readLog(mPath, 100);
    for (int t = 0; t < 4; ++t)
        ky::test::expectRun(content, 1, t, content.rotatedFiles < 100, 99);
    EXPECT_EQ(ky::test::describe(content), "");
    EXPECT_EQ(content.torn, std::vector<std::string>());
}

} // namespace
