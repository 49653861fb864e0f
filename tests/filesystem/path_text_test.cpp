// SPDX-License-Identifier: MIT
#include "filesystem/path_reference.h"

#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <random>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;

std::string systemCurrentFolder()
{
    const std::u8string text = std::filesystem::current_path().generic_u8string();
    return std::string(text.begin(), text.end());
}

TEST(PathText, CasesThatAreEasilyBroken)
{
    EXPECT_EQ(kyDirUtils::JoinPath("a", "b"), "a/b");
    EXPECT_EQ(kyDirUtils::JoinPath("a/", "/b"), "a/b");
    EXPECT_EQ(kyDirUtils::JoinPath("a\\", "b"), "a\\b");
    EXPECT_EQ(kyDirUtils::JoinPath("x//", "//y"), "x///y");
    EXPECT_EQ(kyDirUtils::ExtractFileExtension("C:\\Dir\\FILE.TXT"), "txt");
    EXPECT_EQ(kyDirUtils::ExtractFileExtension(".profile"), "");
    EXPECT_EQ(kyDirUtils::ExtractFileExtension("dir/.profile"), "profile");
    EXPECT_EQ(kyDirUtils::ExtractFileExtension("a.b/c"), "");
    EXPECT_EQ(kyDirUtils::GenerateValidFileName("a:b?c", '_'), "a_b_c");
    EXPECT_EQ(kyDirUtils::ExtractFolder("C:\\a\\b.txt"), "C:/a");
    EXPECT_EQ(kyDirUtils::ExtractFileBaseName("dir/archive.tar.gz"), "archive.tar");
    EXPECT_EQ(kyDirUtils::ExtractFileBaseName("dir/.profile"), "");
    EXPECT_EQ(kyDirUtils::GetParentPathUtf8("C:\\a\\b"), "");
    EXPECT_EQ(kyDirUtils::GetParentPathUtf8("/"), "");
    EXPECT_EQ(kyDirUtils::GetParentPathUtf8("a/b/"), "a");
    std::string same = "C:\\a\\b.txt";
    std::string name;
    kyDirUtils::SplitFolderFilename(same, same, name);
    EXPECT_EQ(same, "C:\\a");
    EXPECT_EQ(name, "b.txt");
}

/// Few letters, so that every meeting of separators, dots and ends comes up.
std::string randomPath(std::mt19937& random)
{
    static const std::array<std::string, 12> pieces = {"/", "\\",  "/",        ".",    ":", "a",
                                                       "B", "txt", "\xC3\x84", "\xFF", "*", std::string(1, '\0')};
    std::string path;
    for (std::size_t count = random() % 9; count > 0; --count)
        path += pieces[random() % pieces.size()];
    return path;
}

TEST(PathText, AgreesWithThePlainRules)
{
    std::mt19937 random(7);
    const int rounds = isSoak() ? 2'500'000 : 100'000;
    int agreed = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round)
    {
        const std::string a = randomPath(random);
        const std::string b = randomPath(random);
        const std::string c = randomPath(random);
        const std::string d = randomPath(random);
        SCOPED_TRACE(testing::PrintToString(std::array{a, b, c, d}));
        EXPECT_EQ(kyDirUtils::JoinPath(a, b), referenceJoin(a, b));
        EXPECT_EQ(kyDirUtils::JoinPath(a, b, c), referenceJoin(referenceJoin(a, b), c));
        EXPECT_EQ(kyDirUtils::JoinPath(a, b, c, d), referenceJoin(referenceJoin(a, b), referenceJoin(c, d)));
        EXPECT_EQ(kyDirUtils::ExtractFileExtension(a), referenceExtension(a));
        EXPECT_EQ(kyDirUtils::GenerateValidFileName(a, '_'), referenceValidName(a, '_'));
        EXPECT_EQ(kyDirUtils::ExtractFolder(a), referenceFolder(a));
        EXPECT_EQ(kyDirUtils::ExtractFileBaseName(a), referenceBaseName(a));
        EXPECT_EQ(kyDirUtils::GetParentPathUtf8(a), referenceParent(a));
        std::string folder;
        std::string name;
        kyDirUtils::SplitFolderFilename(a, folder, name);
        EXPECT_EQ(std::pair(folder, name), referenceSplit(a));
        agreed += HasFailure() ? 0 : 1;
    }
    account("path texts", {4 * rounds, "random paths beside the plain rules"}, {}, {rounds - agreed, "wrong answers"});
}

TEST(PathText, DrivesAndSharesGiveTheSameVerdictsEverywhere)
{
    struct Verdict
    {
        const char* path;
        bool isRelative;
        bool isNetwork;
    };
    const Verdict verdicts[] = {
        {"", true, false},
        {"a", true, false},
        {"a\\b", true, false},
        {"..\\b", true, false},
        {"C:\\a", false, false},
        {"C:/a", false, false},
        {"c:", false, false},
        {"c:a", false, false},
        {"\\a", false, false},
        {"\\\\server\\share", false, true},
        {"\\\\server\\share\\a.txt", false, true},
    };
    for (const Verdict& verdict : verdicts)
    {
        EXPECT_EQ(kyDirUtils::IsPathRelativeUtf8(verdict.path), verdict.isRelative) << verdict.path;
        EXPECT_EQ(kyDirUtils::IsNetworkPath(verdict.path), verdict.isNetwork) << verdict.path;
    }
    EXPECT_FALSE(kyDirUtils::IsPathRelativeUtf8(TempDir().path()));
}

TEST(PathText, AbsolutePathsAreCleanedInTheText)
{
    const std::string here = systemCurrentFolder();
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {".", here},
        {"a", here + "/a"},
        {"a/", here + "/a/"},
        {"a\\.\\b\\..\\c", here + "/a/c"},
        {"a//b\\\\c", here + "/a/b/c"},
        {"a/..", here},
        {here + "/./x", here + "/x"},
        {"C:\\a\\..\\b", "C:/b"},
        {"C:\\..\\..\\b", "C:/b"},
        {"\\\\server\\share\\a\\..\\b", "//server/share/b"},
        {"missing-\xC3\xA4/\xE6\x97\xA5", here + "/missing-\xC3\xA4/\xE6\x97\xA5"},
    };
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(kyDirUtils::GetAbsolutePathUtf8(path), expected) << path;
    const std::string up = kyDirUtils::GetAbsolutePathUtf8("../../../../../../../../../../../../../../../x");
    EXPECT_EQ(up, kyDirUtils::GetAbsolutePathUtf8("/x"));
}

TEST(PathText, ActualNamesAreThoseStored)
{
    const TempDir dir;
    const std::string base = kyDirUtils::GetActualPathNameUtf8(dir.path());
    EXPECT_EQ(base, dir.path());
    makeFolder(dir.file("MixedCase/Inner"));
    writeFile(dir.file("MixedCase/Inner/File-\xC3\x84.Data"), "");
    const std::string stored = base + "/MixedCase/Inner/File-\xC3\x84.Data";
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8(dir.path() + "/MIXEDCASE\\inner/file-\xC3\xA4.DATA"), stored);
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8(stored), stored);
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8(dir.path() + "/mixedCASE/Missing/\xC3\x84.x"),
              base + "/MixedCase/Missing/\xC3\x84.x");
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8("q:\\No\\\\Such\\"), "Q:/No//Such/");
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8("q:") + kyDirUtils::GetActualPathNameUtf8("q:x"), "Q:Q:x");
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8("No-such\\Name"), "No-such/Name");
    EXPECT_EQ(kyDirUtils::GetActualPathNameUtf8(""), "");
}

} // namespace
