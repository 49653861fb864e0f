// SPDX-License-Identifier: MIT
// What saving does to the file system: other files, rights, links, full disks, killed savers.
#include "ini_support.h"

#include "support/child_process.h"
#include "support/fs_path.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

namespace
{

namespace fs = std::filesystem;

using namespace ky;
using namespace ky::test;

std::size_t entriesIn(const TempDir& dir)
{
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(fsPath(dir.path())), fs::directory_iterator()));
}

const std::string text = "[General]\na=1\n";
const Map tree = {{"a", 1}};

TEST(IniStorage, LeavesNothingBesideTheFile)
{
    const TempDir dir;
    EXPECT_TRUE(SaveIniFile(dir.file("t.ini"), tree, false));
    EXPECT_TRUE(SaveIniFile(dir.file("t.ini"), tree, true));
    EXPECT_TRUE(SaveIniFile(dir.file(std::string(250, 'n')), tree, false));
    EXPECT_FALSE(SaveIniFile(dir.file("none/t.ini"), tree, false));
    EXPECT_FALSE(SaveIniFile(dir.path(), tree, false));
    EXPECT_FALSE(SaveIniFile("", tree, false));
    EXPECT_EQ(readFile(dir.file("t.ini")), text);
    // On Windows a file that is held open like this cannot be replaced, only written.
    const std::ifstream held(fsPath(dir.file("t.ini")));
    EXPECT_TRUE(held.is_open() && SaveIniFile(dir.file("t.ini"), {{"b", 2}}, false));
    EXPECT_EQ(readFile(dir.file("t.ini")), "[General]\nb=2\n");
    EXPECT_EQ(entriesIn(dir), 2U);
}

TEST(IniStorage, PathTooLongForAnotherNameBesideIt)
{
    const TempDir dir;
    std::string folder = dir.path();
    while (folder.size() < 4080)
        folder.append("/").append(std::min<std::size_t>(200, 4080 - folder.size()), 'd');
    std::error_code error;
    fs::create_directories(fsPath(folder), error);
    if (error)
        GTEST_SKIP() << "no paths of this length here";
    EXPECT_TRUE(SaveIniFile(folder + "/t.ini", tree, false));
    EXPECT_TRUE(SaveIniFile(folder + "/t.ini", tree, true));
    EXPECT_EQ(readFile(folder + "/t.ini"), text);
}

TEST(IniStorage, KeepsRightsAndRespectsThem)
{
    const TempDir dir;
    const std::string path = dir.file("t.ini");
    writeFile(path, "old");
    const auto rights = fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read;
    fs::permissions(fsPath(path), rights);
    const fs::perms before = fs::status(fsPath(path)).permissions();
    EXPECT_TRUE(SaveIniFile(path, tree, false));
    EXPECT_EQ(fs::status(fsPath(path)).permissions(), before);
    fs::permissions(fsPath(path), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    if (std::ofstream(fsPath(path), std::ios::app).is_open())
        GTEST_SKIP() << "write protection does not bind this user";
    EXPECT_FALSE(SaveIniFile(path, {{"b", 2}}, false));
    EXPECT_EQ(readFile(path), text);
}

TEST(IniStorage, FollowsLinks)
{
    const TempDir dir;
    const TempDir other;
    writeFile(other.file("real.ini"), "old");
    std::error_code error;
    fs::create_symlink(fsPath(other.file("real.ini")), fsPath(dir.file("link.ini")), error);
    if (error)
        GTEST_SKIP() << "no symbolic links here";
    EXPECT_TRUE(SaveIniFile(dir.file("link.ini"), tree, false));
    EXPECT_TRUE(fs::is_symlink(fsPath(dir.file("link.ini"))));
    EXPECT_EQ(readFile(other.file("real.ini")), text);
    // A link that leads nowhere yet.
    fs::create_symlink(fsPath(other.file("new.ini")), fsPath(dir.file("dangling.ini")));
    EXPECT_TRUE(SaveIniFile(dir.file("dangling.ini"), tree, false));
    EXPECT_TRUE(fs::is_symlink(fsPath(dir.file("dangling.ini"))));
    EXPECT_EQ(readFile(other.file("new.ini")), text);
}

TEST(IniStorage, FullDiskKeepsTheOldFile)
{
    // A small file system of its own, where the user may mount one; the child judges, since only it can see that.
    const TempDir dir;
    makeFolder(dir.file("disk"));
    const std::string command = "unshare -m sh -c \"mount -t tmpfs -o size=256k none '" + dir.file("disk") + "' && '" +
                                binFolder() + "/ky_child' ini-full-disk '" + dir.file("disk/t.ini") +
                                "'; echo $?\" > '" + dir.file("result") + "' 2> '" + dir.file("errors") + "'";
    const int status = std::system(command.c_str());
    const std::string errors = readFile(dir.file("errors"));
    if (status != 0 || errors.find("mount") != std::string::npos || !exists(dir.file("result")))
        GTEST_SKIP() << "no file system can be mounted here";
    EXPECT_EQ(readFile(dir.file("result")), "0\n") << errors;
}

TEST(IniStorage, KilledSaverLeavesTheOldOrTheNewText)
{
    const TempDir dir;
    const std::string path = dir.file("t.ini");
    std::string texts[2];
    for (int which = 0; which < 2; ++which)
    {
        ChildProcess child("ini-save-once", {path, std::to_string(which)});
        ASSERT_EQ(child.wait(), 0);
        texts[which] = readFile(path);
        ASSERT_GT(texts[which].size(), 100000U);
    }
    std::mt19937 random(7);
    const bool soak = isSoak();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(soak ? 600 : 8);
    int kills = 0;
    int torn = 0;
    for (; kills < (soak ? 2000 : 300) && std::chrono::steady_clock::now() < end; ++kills)
    {
        const std::string mark = dir.file("started" + std::to_string(kills));
        ChildProcess child("ini-save-forever", {path, mark});
        ASSERT_TRUE(eventually([&] { return exists(mark); }));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 6000));
        child.kill();
        child.wait();
        const std::string found = readFile(path);
        const bool isWhole = found == texts[0] || found == texts[1];
        EXPECT_TRUE(isWhole) << found.size() << " bytes after " << kills << " kills";
        torn += !isWhole;
    }
    EXPECT_GT(kills, 0);
    account("INI files", {kills, "looks after a kill"}, {kills, "savers killed"}, {torn, "torn files"});
}

TEST(IniStorage, TwoSaversLeaveTheTextOfOne)
{
    const TempDir dir;
    const std::string path = dir.file("t.ini");
    Map trees[2];
    for (int which = 0; which < 2; ++which)
    {
        for (int key = 0; key < 2000; ++key)
            trees[which]["key" + std::to_string(key)] = kyVariant(which);
    }
    ASSERT_TRUE(SaveIniFile(path, trees[0], false));
    std::thread other(
        [&]
        {
            for (int round = 0; round < 40; ++round)
                EXPECT_TRUE(SaveIniFile(path, trees[1], false));
        });
    for (int round = 0; round < 40; ++round)
    {
        EXPECT_TRUE(SaveIniFile(path, trees[0], false));
        Map found;
        EXPECT_TRUE(LoadIniFile(path, found));
        EXPECT_TRUE(found == trees[0] || found == trees[1]) << found.size();
    }
    other.join();
    EXPECT_EQ(entriesIn(dir), 1U);
}

TEST(IniStorage, DevicesAreUsedInPlace)
{
    std::error_code error;
    if (!fs::is_character_file("/dev/full", error))
        GTEST_SKIP() << "no such devices here";
    EXPECT_FALSE(SaveIniFile("/dev/full", tree, false));
    EXPECT_TRUE(SaveIniFile("/dev/null", tree, false));
    Map map;
    EXPECT_TRUE(LoadIniFile("/dev/null", map));
    EXPECT_FALSE(LoadIniFile("/proc/self/mem", map)) << "can be opened, but not read at 0";
    EXPECT_TRUE(map.empty());
    EXPECT_TRUE(LoadIniFile("/proc/self/mountinfo", map)) << "has no size";
    EXPECT_FALSE(map.empty());
    EXPECT_TRUE(fs::is_character_file("/dev/full") && fs::is_character_file("/dev/null"));
}

} // namespace
