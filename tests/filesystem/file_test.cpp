// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;
using ky::kyFileInfoUtf8;

namespace fs = std::filesystem;

fs::path toPath(const std::string& utf8) { return fs::path(std::u8string(utf8.begin(), utf8.end())); }

std::size_t entriesOf(const std::string& folder)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(toPath(folder)), fs::directory_iterator()));
}

bool isMoveError(const std::string& text)
{
    const std::string start = "MoveFileExW error ";
    return text.size() > start.size() && text.rfind(start, 0) == 0 &&
           text.find_first_not_of("0123456789", start.size()) == std::string::npos;
}

class Files : public testing::Test
{
protected:
    TempDir dir;
};

TEST_F(Files, WhatTheRecordTells)
{
    writeFile(dir.file("f"), "12345");
    EXPECT_TRUE(kyDirUtils::FileExistsUtf8(dir.file("f")));
    EXPECT_TRUE(kyDirUtils::FileExistsUtf8(dir.path()));
    EXPECT_FALSE(kyDirUtils::FileExistsUtf8(dir.file("g")));
    EXPECT_TRUE(kyDirUtils::DirExistsUtf8(dir.path()));
    EXPECT_FALSE(kyDirUtils::DirExistsUtf8(dir.file("f")));
    EXPECT_FALSE(kyDirUtils::DirExistsUtf8(""));

    fs::last_write_time(toPath(dir.file("f")), fs::file_time_type::clock::now() - std::chrono::hours(50));
    const auto now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
    kyFileInfoUtf8 info;
    EXPECT_TRUE(kyDirUtils::GetFileInfoUtf8(dir.file("f"), info));
    EXPECT_EQ(info.path, dir.file("f"));
    EXPECT_EQ(info.size, 5);
    EXPECT_TRUE(info.exists && info.typed && !info.folder);
    EXPECT_NEAR(static_cast<double>(info.lastModified), static_cast<double>(now.count() - 50 * 3600), 600);
    EXPECT_GE(info.creation, info.lastModified);
    EXPECT_LE(info.creation, now.count() + 600);

    kyFileInfoUtf8 folder;
    EXPECT_TRUE(kyDirUtils::GetFileInfoUtf8(dir.path(), folder));
    EXPECT_TRUE(folder.exists && folder.typed && folder.folder);
    EXPECT_NE(info, folder);

    // A record in use, asked for its own path.
    info.path = dir.file("missing");
    EXPECT_FALSE(kyDirUtils::GetFileInfoUtf8(info.path, info));
    kyFileInfoUtf8 fresh;
    fresh.path = dir.file("missing");
    EXPECT_EQ(info, fresh);
    fresh.path += "2";
    EXPECT_NE(info, fresh);
    folder.clearInfos();
    EXPECT_EQ(folder, kyFileInfoUtf8());
}

TEST_F(Files, CopiesHaveContentTimeAndRights)
{
    // Larger than any buffer, and not a multiple of one.
    std::string content(3'000'001, '\0');
    std::minstd_rand random(7);
    for (char& byte : content)
        byte = static_cast<char>(random() >> 8);
    for (const std::string& text : {content, std::string("x"), std::string()})
    {
        writeFile(dir.file("from"), text);
        const auto time = fs::last_write_time(toPath(dir.file("from"))) - std::chrono::hours(1000);
        fs::last_write_time(toPath(dir.file("from")), time);
        fs::permissions(toPath(dir.file("from")), fs::perms::owner_read | fs::perms::group_read);
        ASSERT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("from"), dir.file("to"), false));
        EXPECT_EQ(readFile(dir.file("to")), text);
        EXPECT_EQ(fs::last_write_time(toPath(dir.file("to"))), time);
        EXPECT_EQ(fs::status(toPath(dir.file("to"))).permissions(), fs::status(toPath(dir.file("from"))).permissions());
        for (const char* name : {"from", "to"})
        {
            fs::permissions(toPath(dir.file(name)), fs::perms::all);
            EXPECT_TRUE(kyDirUtils::RemoveFileUtf8(dir.file(name)));
        }
    }
    EXPECT_EQ(entriesOf(dir.path()), 0u);
}

TEST_F(Files, CopiesReplaceOnlyWhenAskedTo)
{
    writeFile(dir.file("a"), "new");
    writeFile(dir.file("b"), "a longer old content");
    makeFolder(dir.file("folder"));
    EXPECT_FALSE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("b"), false));
    EXPECT_EQ(readFile(dir.file("b")), "a longer old content");
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("a"), dir.file("b"), true));
    EXPECT_EQ(readFile(dir.file("b")), "new");
    const struct
    {
        const char* from;
        const char* to;
    } refused[] = {{"a", "a"},        {"a", "folder"}, {"folder", "c"}, {"missing", "c"},     {"missing", "a"},
                   {"a", "no/where"}, {"a", ""},       {"", "c"},       {"a", "folder/../a"}, {"folder/../a", "a"}};
    for (const auto& [from, to] : refused)
    {
        const std::string source = *from == '\0' ? "" : dir.file(from);
        const std::string destination = *to == '\0' ? "" : dir.file(to);
        EXPECT_FALSE(kyDirUtils::CopyFileUtf8(source, destination, true)) << from << " -> " << to;
        EXPECT_FALSE(kyDirUtils::CopyFileUtf8(source, destination, false)) << from << " -> " << to;
    }
    EXPECT_EQ(readFile(dir.file("a")), "new");
    EXPECT_EQ(entriesOf(dir.path()), 3u);
    EXPECT_EQ(entriesOf(dir.file("folder")), 0u);
}

TEST_F(Files, OneOfManyCopiersMakesTheName)
{
    for (int round = 0; round < 20; ++round)
    {
        std::atomic<int> made{0};
        std::vector<std::thread> threads;
        for (const char* name : {"1", "2", "3", "4"})
        {
            writeFile(dir.file(name), std::string(100'000, *name));
            threads.emplace_back([&, name]
                                 { made += kyDirUtils::CopyFileUtf8(dir.file(name), dir.file("to"), false); });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(made, 1);
        const std::string content = readFile(dir.file("to"));
        EXPECT_EQ(content, std::string(100'000, content.empty() ? ' ' : content[0]));
        EXPECT_TRUE(kyDirUtils::RemoveFileUtf8(dir.file("to")));
    }
    EXPECT_EQ(entriesOf(dir.path()), 4u);
}

TEST_F(Files, RenamesReplaceFilesButNoFolder)
{
    writeFile(dir.file("a"), "a");
    writeFile(dir.file("b"), "b");
    makeFolder(dir.file("full/inner"));
    makeFolder(dir.file("empty"));
    std::string error = "kept";
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("a"), dir.file("b"), &error));
    EXPECT_EQ(error, "kept");
    EXPECT_FALSE(exists(dir.file("a")));
    EXPECT_EQ(readFile(dir.file("b")), "a");
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(dir.file("full"), dir.file("full2"), nullptr));
    EXPECT_TRUE(exists(dir.file("full2/inner")));
    const struct
    {
        const char* from;
        const char* to;
    } refused[] = {
        {"full2", "empty"}, {"empty", "full2"}, {"b", "empty"}, {"full2", "full2/inner/x"}, {"missing", "b"}};
    for (const auto& [from, to] : refused)
    {
        EXPECT_FALSE(kyDirUtils::RenameFileUtf8(dir.file(from), dir.file(to), &error)) << from << " -> " << to;
        EXPECT_TRUE(isMoveError(error)) << error << ": " << from << " -> " << to;
        EXPECT_FALSE(kyDirUtils::RenameFileUtf8(dir.file(from), dir.file(to), nullptr));
    }
    kyDirUtils::RenameFileUtf8(dir.file("missing"), dir.file("b"), &error);
    EXPECT_EQ(error, "MoveFileExW error 2");
    EXPECT_EQ(readFile(dir.file("b")), "a");
    EXPECT_TRUE(exists(dir.file("full2/inner")) && exists(dir.file("empty")));
}

TEST_F(Files, RemovingIsForFiles)
{
    writeFile(dir.file("f"), "");
    makeFolder(dir.file("d"));
    EXPECT_FALSE(kyDirUtils::RemoveFileUtf8(dir.file("d")));
    EXPECT_FALSE(kyDirUtils::RemoveFileUtf8(dir.file("missing")));
    EXPECT_TRUE(kyDirUtils::RemoveFileUtf8(dir.file("f")));
    EXPECT_FALSE(exists(dir.file("f")));
    EXPECT_TRUE(exists(dir.file("d")));
}

TEST_F(Files, GrantsGiveBackWhatWasTakenAway)
{
    writeFile(dir.file("f"), "content");
    fs::permissions(toPath(dir.file("f")), fs::perms::owner_read);
    EXPECT_TRUE(kyDirUtils::GrantAllFilePermissionsUtf8(dir.file("f")));
    EXPECT_TRUE(kyDirUtils::GrantAllFilePermissionsUtf8(dir.path()));
    EXPECT_FALSE(kyDirUtils::GrantAllFilePermissionsUtf8(dir.file("missing")));
    EXPECT_EQ(readFile(dir.file("f")), "content");
}

TEST_F(Files, PathsLongerThanTheUsualLimit)
{
    std::string folder = dir.path();
    for (int level = 0; level < 6; ++level)
    {
        folder += "/" + std::string(60, static_cast<char>('a' + level));
        fs::create_directory(toPath(folder));
    }
    ASSERT_TRUE(kyDirUtils::DirExistsUtf8(folder));
    writeFile(dir.file("f"), "content");
    EXPECT_TRUE(kyDirUtils::CopyFileUtf8(dir.file("f"), folder + "/copy", false));
    EXPECT_TRUE(kyDirUtils::RenameFileUtf8(folder + "/copy", folder + "/moved", nullptr));
    kyFileInfoUtf8 info;
    EXPECT_TRUE(kyDirUtils::GetFileInfoUtf8(folder + "/moved", info));
    EXPECT_EQ(info.size, 7);
    EXPECT_FALSE(info.folder);
    EXPECT_TRUE(kyDirUtils::RemoveFileUtf8(folder + "/moved"));
    EXPECT_FALSE(kyDirUtils::FileExistsUtf8(folder + "/moved"));
}

} // namespace
