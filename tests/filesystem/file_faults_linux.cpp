// SPDX-License-Identifier: MIT
// What paths, rights, limits and other programs do to copying, moving and clearing.
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

std::vector<std::string> namesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

mode_t modeOf(const std::string& path)
{
    struct stat info = {};
    EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

/// An environment variable for a while.
class Variable
{
public:
    Variable(const char* name, const char* value) : mName(name)
    {
        const char* const before = std::getenv(name);
        mHad = before != nullptr;
        mBefore = mHad ? before : "";
        set(value);
    }
    ~Variable() { set(mHad ? mBefore.c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void set(const char* value) const
    {
        if (value == nullptr)
            unsetenv(mName);
        else
            setenv(mName, value, 1);
    }

    const char* mName;
    bool mHad;
    std::string mBefore;
};

/// Without the rights that nothing can be denied to.
void asOrdinaryUser(const std::function<void()>& body)
{
    const uid_t user = geteuid();
    ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0);
    body();
    ASSERT_EQ(seteuid(user), 0);
}

class FileFaults : public testing::Test
{
protected:
    void clears(const std::string& path)
    {
        EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(path, true, &error, nullptr)) << error;
        EXPECT_FALSE(exists(path));
    }

    TempDir dir;
    std::string error;
};

TEST_F(FileFaults, ClearingTakesEveryName)
{
    makeFolder(dir.file("outside"));
    writeFile(dir.file("outside/x"), "");
    for (const std::string& name : {std::string("line\nbreak"), std::string(255, 'n'), std::string("bad \xFF\xC0 utf8"),
                                    std::string("..\\outside"), std::string("*?:|\"<>"), std::string("-rf"),
                                    std::string("..."), std::string("\\"), std::string(" ")})
    {
        ASSERT_EQ(mkdir(dir.file("tree").c_str(), 0777) == 0 || errno == EEXIST, true);
        const std::string folder = dir.file("tree/" + name);
        ASSERT_EQ(mkdir(folder.c_str(), 0777), 0);
        close(open((folder + "/..\\..\\outside\\x").c_str(), O_CREAT | O_WRONLY, 0444));
        ASSERT_EQ(mkfifo((folder + "/" + name).c_str(), 0), 0);
    }
    clears(dir.file("tree"));
    EXPECT_THAT(namesIn(dir.file("outside")), UnorderedElementsAre("x"));
}

TEST_F(FileFaults, ClearingReachesAnyDepth)
{
    constexpr int depth = 2000;
    makeFolder(dir.file("tree"));
    int at = open(dir.file("tree").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string name(200, 'd');
    for (int level = 0; level < depth; ++level)
    {
        close(openat(at, "file", O_CREAT | O_WRONLY, 0666));
        ASSERT_EQ(mkdirat(at, name.c_str(), 0777), 0);
        const int below = openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        close(at);
        at = below;
    }
    close(at);
    std::string path = dir.file("tree");
    for (int level = 0; level < 30; ++level)
        path += "/" + name;
    // Longer than what the system takes at a time.
    ky::kyFileInfoUtf8 info;
    EXPECT_TRUE(kyDirUtils::GetFileInfoUtf8(path + "/file", info));
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8(path + "/file", path + "/copy", false));
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(path + "/copy", path + "/moved"));
    EXPECT_TRUE(kyDirUtils::RemoveFileUtf8(path + "/moved"));
    EXPECT_TRUE(kyDirUtils::MkpathUtf8(path + "/a/b"));
    EXPECT_TRUE(kyDirUtils::ClearFolderUtf8(path, true, &error)) << error;
    EXPECT_FALSE(kyDirUtils::DirExistsUtf8(path));
    clears(dir.file("tree"));
}

TEST_F(FileFaults, WhatClearingSaysWhenItIsRefused)
{
    makeFolder(dir.file("file"));
    writeFile(dir.file("file/f"), "");
    makeFolder(dir.file("folder/empty"));
    makeFolder(dir.file("closed"));
    makeFolder(dir.file("below/closed"));
    for (const char* name : {"file", "folder"})
        fs::permissions(dir.file(name), static_cast<fs::perms>(0555));
    for (const char* name : {"closed", "below/closed"})
        fs::permissions(dir.file(name), static_cast<fs::perms>(0));
    const struct
    {
        const char* name;
        std::string text;
    } cases[] = {{"file", "DeleteFileW error 13 for " + dir.path() + "/file//f"},
                 {"folder", "RemoveDirectoryW error 13 for " + dir.path() + "/folder//empty"},
                 {"closed", "FindFirstFileW error 13 for " + dir.path() + "/closed/"},
                 {"below", "FindFirstFileW error 13 for " + dir.path() + "/below//closed"}};
    asOrdinaryUser(
        [&]
        {
            for (const auto& [name, text] : cases)
            {
                EXPECT_FALSE(kyDirUtils::ClearFolderUtf8(dir.file(name) + "/", true, &error, nullptr)) << name;
                EXPECT_EQ(error, text);
            }
            // A walk passes over what it may not enter.
            std::vector<std::string> folders;
            kyDirUtils::GlobFileAndFolderUtf8(dir.path(), nullptr, &folders, nullptr, 2 | 4);
            EXPECT_THAT(folders, UnorderedElementsAre("file", "folder", "empty", "closed", "below", "closed"));
        });
    for (const auto& [name, text] : cases)
        fs::permissions(dir.file(name), fs::perms::all);
    fs::permissions(dir.file("below/closed"), fs::perms::all);
    EXPECT_EQ(namesIn(dir.path()).size(), 4u);
    EXPECT_TRUE(exists(dir.file("file/f")) && exists(dir.file("folder/empty")));
    EXPECT_FALSE(kyDirUtils::ClearFolderUtf8(dir.file("file/."), true, &error, nullptr));
    EXPECT_EQ(error, "RemoveDirectoryW error 22 for " + dir.file("file/."));
}

/// Makes a folder and swaps it for a link to the outside and back, as fast as it goes.
class Swapper
{
public:
    Swapper(const std::string& victim, const std::string& outside, const std::string& kept)
        : mThread([this, victim, outside, kept] { run(victim, outside, kept); })
    {
    }
    ~Swapper()
    {
        mStop = true;
        mThread.join();
    }

    std::atomic<int> swaps{0};

private:
    void run(const std::string& victim, const std::string& outside, const std::string& kept)
    {
        while (!mStop)
        {
            mkdir(victim.c_str(), 0777);
            mkdir((victim + "/inner").c_str(), 0777);
            close(open((victim + "/inner/file").c_str(), O_CREAT | O_WRONLY | O_NOFOLLOW, 0666));
            rename(victim.c_str(), kept.c_str());
            swaps += symlink(outside.c_str(), victim.c_str()) == 0;
            unlink(victim.c_str());
            rename(kept.c_str(), victim.c_str());
        }
    }

    std::atomic<bool> mStop{false};
    std::thread mThread;
};

TEST_F(FileFaults, ClearingIsNotLedOutByAFolderSwappedForALink)
{
    makeFolder(dir.file("outside/inner"));
    writeFile(dir.file("outside/inner/file"), "");
    writeFile(dir.file("outside/sentinel"), "");
    makeFolder(dir.file("tree/sub"));
    const int wanted = ky::test::isSoak() ? 50000 : 3000;
    std::uint64_t clearings = 0;
    Swapper swapper(dir.file("tree/sub/victim"), dir.file("outside"), dir.file("kept"));
    while (swapper.swaps < wanted)
    {
        kyDirUtils::ClearFolderUtf8(dir.file("tree/sub"), false, &error, nullptr);
        ASSERT_TRUE(exists(dir.file("outside/inner/file")) && exists(dir.file("outside/sentinel")));
        ++clearings;
    }
    const int left = exists(dir.file("outside/inner/file")) + exists(dir.file("outside/sentinel"));
    ky::test::account("files and folders", {clearings, "clearings"},
                      {swapper.swaps.load(), "folders swapped for a link"}, {2 - left, "files outside"});
}

TEST_F(FileFaults, CopiesFollowLinksAndKeepThem)
{
    writeFile(dir.file("a"), "a");
    writeFile(dir.file("b"), "b");
    fs::create_symlink("b", dir.file("link"));
    fs::create_symlink("nowhere", dir.file("dead"));
    fs::create_hard_link(dir.file("a"), dir.file("same"));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("b"), dir.file("link"), true));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("link"), dir.file("b"), true));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("same"), true));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("dead"), false));
    EXPECT_EQ(readFile(dir.file("b")), "b");
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("link"), true));
    EXPECT_TRUE(fs::is_symlink(dir.file("link")));
    EXPECT_EQ(readFile(dir.file("b")), "a");
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("link"), dir.file("c"), false));
    EXPECT_FALSE(fs::is_symlink(dir.file("c")));
    EXPECT_THAT(namesIn(dir.path()), UnorderedElementsAre("a", "b", "c", "dead", "link", "same"));
}

TEST_F(FileFaults, CopiesOfWhatIsNoPlainFile)
{
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0666), 0);
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("pipe"), dir.file("to"), true));
    writeFile(dir.file("a"), "a");
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("pipe"), true));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("a"), "/dev/null", true));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    // It tells no size and is made up as it is read.
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8("/proc/self/status", dir.file("status"), true));
    EXPECT_THAT(readFile(dir.file("status")), testing::HasSubstr("VmRSS"));
}

TEST_F(FileFaults, ModesOfCopies)
{
    writeFile(dir.file("a"), "a");
    for (const mode_t mode : {0640u, 0777u, 0400u, 06755u})
    {
        ASSERT_EQ(chmod(dir.file("a").c_str(), mode), 0);
        EXPECT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("b"), false));
        EXPECT_EQ(modeOf(dir.file("b")), mode & 0777);
        kyDirUtils::RemoveFileUtf8(dir.file("b"));
    }
    writeFile(dir.file("protected"), "old");
    ASSERT_EQ(chmod(dir.file("protected").c_str(), 0444), 0);
    ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
    asOrdinaryUser([&] { EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("protected"), true)); });
    EXPECT_EQ(readFile(dir.file("protected")), "old");
    EXPECT_TRUE(kyDirUtils::GrantAllFilePermissionsUtf8(dir.file("protected")));
    EXPECT_EQ(modeOf(dir.file("protected")), 0777u);
    fs::create_symlink("a", dir.file("link"));
    EXPECT_FALSE(kyDirUtils::GrantAllFilePermissionsUtf8(dir.file("link")));
    EXPECT_EQ(modeOf(dir.file("a")), 06755u);
}

TEST_F(FileFaults, HolesStayHoles)
{
    const int file = open(dir.file("sparse").c_str(), O_CREAT | O_WRONLY, 0666);
    ASSERT_EQ(pwrite(file, "begin", 5, 0), 5);
    ASSERT_EQ(pwrite(file, "middle", 6, 64 << 20), 6);
    ASSERT_EQ(ftruncate(file, 256 << 20), 0);
    close(file);
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("sparse"), dir.file("copy"), false));
    struct stat info = {};
    ASSERT_EQ(stat(dir.file("copy").c_str(), &info), 0);
    EXPECT_EQ(info.st_size, 256 << 20);
    EXPECT_LT(info.st_blocks * 512, 16 << 20);
    std::string text(6, ' ');
    const int copy = open(dir.file("copy").c_str(), O_RDONLY);
    EXPECT_EQ(pread(copy, text.data(), 6, 64 << 20), 6);
    close(copy);
    EXPECT_EQ(text, "middle");
}

TEST_F(FileFaults, ACopyThatFailsHalfWayLeavesNothing)
{
    writeFile(dir.file("large"), std::string(4'000'000, 'x'));
    writeFile(dir.file("old"), "old");
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit lowered = {1'000'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &lowered);
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("large"), dir.file("old"), true));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("large"), dir.file("new"), false));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, ignored);
    EXPECT_EQ(readFile(dir.file("old")), "old");
    EXPECT_THAT(namesIn(dir.path()), UnorderedElementsAre("large", "old"));
}

TEST_F(FileFaults, AKilledCopierLeavesTheOldOrTheNewFile)
{
    constexpr std::size_t size = 2'000'000;
    writeFile(dir.file("a"), std::string(size, 'a'));
    writeFile(dir.file("b"), std::string(size, 'b'));
    writeFile(dir.file("to"), std::string(size, 'b'));
    const int kills = ky::test::isSoak() ? 1000 : 20;
    std::uint64_t looks = 0;
    std::uint64_t torn = 0;
    for (int i = 0; i < kills; ++i)
    {
        const pid_t child = fork();
        if (child == 0)
        {
            for (;;)
            {
                kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("to"), true);
                kyDirUtils::CopyFileUtf8(dir.file("b"), dir.file("to"), true);
            }
        }
        for (int look = 0; look < 5; ++look)
        {
            const std::string content = readFile(dir.file("to"));
            torn += content.size() != size || content.find_first_not_of(content[0]) != std::string::npos;
            ++looks;
        }
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    ky::test::account("files and folders", {looks, "looks at a file that is replaced"}, {kills, "copiers killed"},
                      {torn, "torn files"});
}

TEST_F(FileFaults, ProcessesNeverGetOneTemporaryName)
{
    constexpr int processes = 64;
    const int names = ky::test::isSoak() ? 2'000 : 20;
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i)
    {
        children.push_back(fork());
        if (children.back() != 0)
            continue;
        for (int name = 0; name < names; ++name)
            close(open(kyDirUtils::GetTempFileUtf8(dir.path(), "t").c_str(), O_CREAT | O_EXCL | O_WRONLY, 0666));
        _exit(0);
    }
    for (const pid_t child : children)
        waitpid(child, nullptr, 0);
    const auto made = std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator());
    ky::test::account("temporary names", {processes * names, "names of 64 processes"}, {},
                      {processes * names - made, "names given twice"});
}

TEST_F(FileFaults, MovesToAnotherVolume)
{
    std::string other = "/dev/shm/ky-move-XXXXXX";
    struct stat here = {};
    struct stat there = {};
    if (mkdtemp(other.data()) == nullptr || stat(other.c_str(), &there) != 0 || stat(dir.path().c_str(), &here) != 0 ||
        here.st_dev == there.st_dev)
        GTEST_SKIP() << "there is no other volume";
    writeFile(dir.file("f"), "content");
    ASSERT_EQ(chmod(dir.file("f").c_str(), 0640), 0);
    writeFile(other + "/f", "old");
    ASSERT_EQ(chmod((other + "/f").c_str(), 0400), 0);
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("f"), other + "/f", &error)) << error;
    EXPECT_EQ(readFile(other + "/f"), "content");
    EXPECT_EQ(modeOf(other + "/f"), 0640u);
    fs::create_symlink("nowhere", dir.file("link"));
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("link"), other + "/link", &error)) << error;
    EXPECT_EQ(fs::read_symlink(other + "/link"), "nowhere");
    EXPECT_TRUE(namesIn(dir.path()).empty());
    // As on the other platform, whole folders are not taken along.
    makeFolder(dir.file("folder"));
    EXPECT_FALSE(kyDirUtils::RenameFileUtf8(dir.file("folder"), other + "/folder", &error));
    EXPECT_EQ(error, "MoveFileExW error " + std::to_string(EXDEV));
    EXPECT_FALSE(kyDirUtils::RenameFileUtf8(other + "/f", dir.file("folder"), &error));
    EXPECT_EQ(readFile(other + "/f"), "content");
    EXPECT_THAT(namesIn(other), UnorderedElementsAre("f", "link"));
    clears(other);
}

TEST_F(FileFaults, AFolderTakesNoFilesPlace)
{
    makeFolder(dir.file("folder"));
    writeFile(dir.file("f"), "content");
    EXPECT_FALSE(kyDirUtils::RenameFileUtf8(dir.file("folder"), dir.file("f"), &error));
    EXPECT_EQ(readFile(dir.file("f")), "content");
}

TEST_F(FileFaults, SharesAreNotLookedUp)
{
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8("\\\\no-server\\share"), "//no-server/share");
}

TEST_F(FileFaults, RenamingOneOfTwoNamesOfAFile)
{
    writeFile(dir.file("a"), "content");
    fs::create_hard_link(dir.file("a"), dir.file("b"));
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("a"), dir.path() + "//./a", &error)) << error;
    EXPECT_THAT(namesIn(dir.path()), UnorderedElementsAre("a", "b"));
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("a"), dir.file("b"), &error)) << error;
    EXPECT_THAT(namesIn(dir.path()), UnorderedElementsAre("b"));
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("b"), dir.file("b"), &error)) << error;
    EXPECT_EQ(readFile(dir.file("b")), "content");
}

TEST_F(FileFaults, WellKnownFoldersFollowTheDesktopsFiles)
{
    makeFolder(dir.file("home/.config"));
    writeFile(dir.file("home/.config/user-dirs.dirs"), "# comment\nXDG_PICTURES_DIR=\"/old\"\n"
                                                       "  XDG_PICTURES_DIR=\"$HOME/My \\\"Pics\\\"\"\n"
                                                       "XDG_DOCUMENTS_DIR=\"/data/docs\"\nXDG_DOWNLOAD_DIR=\"rel\"");
    const std::string home = dir.file("home");
    const Variable homeVariable("HOME", home.c_str());
    const Variable config("XDG_CONFIG_HOME", nullptr);
    const Variable data("XDG_DATA_HOME", "relative");
    const Variable shared("XDG_DATA_DIRS", ("/no/such:" + dir.path()).c_str());
    EXPECT_EQ(kyDirUtils::GetPicturesFolderUtf8(), home + "/My \"Pics\"");
    EXPECT_EQ(kyDirUtils::GetDocumentsFolderUtf8(), "/data/docs");
    EXPECT_EQ(kyDirUtils::GetDownloadFolderUtf8(), home + "/Downloads");
    EXPECT_EQ(kyDirUtils::GetAppDataFolderUtf8(), home + "/.config");
    EXPECT_EQ(kyDirUtils::GetLocalAppDataFolderUtf8(), home + "/.local/share");
    EXPECT_EQ(kyDirUtils::GetCommonAppDataFolderUtf8(), dir.path());
    const Variable nothingShared("XDG_DATA_DIRS", "/no/such");
    EXPECT_EQ(kyDirUtils::GetCommonAppDataFolderUtf8(), ".");
}

TEST_F(FileFaults, TheTemporaryFolderComesFromTheEnvironment)
{
    {
        const Variable temp("TEMP", "C:\\Some where\\");
        EXPECT_EQ(kyDirUtils::GetTempFolderUtf8(), "C:/Some where/");
    }
    const Variable temp("TEMP", nullptr);
    const Variable other("TMPDIR", dir.path().c_str());
    EXPECT_EQ(kyDirUtils::GetTempFolderUtf8(), dir.path());
    const Variable missing("TMPDIR", "/no/such");
    EXPECT_EQ(kyDirUtils::GetTempFolderUtf8(), "/tmp");
    for (const std::string& prefix :
         {std::string("../x"), std::string("..\\x"), std::string("/x"), std::string("x\0y", 3)})
        EXPECT_EQ(kyDirUtils::GetTempFileUtf8(dir.path(), prefix), "") << prefix;
}

} // namespace
