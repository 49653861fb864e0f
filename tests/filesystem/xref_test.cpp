// SPDX-License-Identifier: MIT
#include "support/temp_dir.h"

#include <ky/kyDirUtils.h>
#include <ky/kyXRefResolverSearchPath.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <thread>
#include <tuple>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;
using Resolver = ky::kyXRefResolverSearchPath;
using Match = Resolver::Match;
using testing::ElementsAre;
using testing::IsEmpty;

std::filesystem::path toPath(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

class XRefResolver : public testing::Test
{
protected:
    void make(const std::vector<std::string>& files)
    {
        for (const std::string& file : files)
        {
            std::filesystem::create_directories(toPath(dir.file(file)).parent_path());
            writeFile(dir.file(file), "");
        }
    }

    /// Below the folder of the test; empty when nothing was found.
    std::string shown(const std::string& path) const
    {
        return path.rfind(dir.path() + "/", 0) == 0 ? path.substr(dir.path().size() + 1) : path;
    }

    TempDir dir;
    Resolver resolver;
};

TEST_F(XRefResolver, PrefersTheExactPathThenTheLongestTail)
{
    make({"bridge/textures/oak.png", "bridge/old/textures/oak.png", "library/textures/oak.png", "library/sub/Oak.PNG",
          "library/\xC3\xBC \xC3\xB6.dwg", "bridge/zz/same.txt", "bridge/aa/same.txt", "bridge/x.tar",
          "library/x.tar"});
    ASSERT_TRUE(resolver.addRoot(dir.file("bridge")));
    ASSERT_TRUE(resolver.addRoot(dir.file("library")));
    EXPECT_FALSE(resolver.addRoot(dir.file("library"))) << "once";
    EXPECT_FALSE(resolver.addRoot(""));
    EXPECT_EQ(resolver.resolve("textures/oak.png"), "") << "nothing is indexed yet";
    ASSERT_TRUE(resolver.refresh());
    EXPECT_EQ(resolver.getFileCount(), 9U);
    EXPECT_EQ(resolver.getFolderCount(), 9U);

    const std::string root = dir.path();
    std::string backslashes = root + "/LIBRARY/textures/oak.png";
    std::replace(backslashes.begin(), backslashes.end(), '/', '\\');
    const std::string oak = "bridge/textures/oak.png";
    struct Case
    {
        std::string reference;
        std::string document;
        std::string found;
        std::size_t common;
        bool isExact;
    };
    const std::size_t whole = 0; // not checked
    const Case cases[] = {
        // From other machines.
        {"D:\\Work\\Bridge\\textures\\oak.png", "", oak, 3, false},
        {"\\\\?\\D:\\Work\\Bridge\\textures\\oak.png", "", oak, 3, false},
        {"\\\\?\\UNC\\server\\share\\library\\textures/oak.png", "", "library/textures/oak.png", 3, false},
        {"\\\\server\\share\\old/textures\\oak.png", "", "bridge/old/textures/oak.png", 3, false},
        {"/home/me/library/textures/oak.png", "", "library/textures/oak.png", 3, false},
        {"D:\\\xC3\xBC \xC3\xB6.DWG", "", "library/\xC3\xBC \xC3\xB6.dwg", 1, false},
        // The path itself, in any spelling.
        {root + "/library/textures/oak.png", "", "library/textures/oak.png", whole, true},
        {root + "/library/none/..//./textures/oak.png", "", "library/textures/oak.png", whole, true},
        {backslashes, "", "library/textures/oak.png", whole, true},
        // Below a root, or the document's folder.
        {"textures/oak.png", "", oak, 2, true},
        {".\\sub\\oak.png", "", "library/sub/Oak.PNG", 2, true},
        {"textures/oak.png", root + "/library", "library/textures/oak.png", 2, true},
        {"../textures/oak.png", root + "/library/docs", "library/textures/oak.png", 2, true},
        {"..\\textures\\oak.png", "", oak, 2, false},
        {"../sub/oak.png", root + "/bridge/docs", "library/sub/Oak.PNG", 2, false},
        // Ties: spelling, root, depth, byte order.
        {"C:/none/Oak.PNG", "", "library/sub/Oak.PNG", 1, false},
        {"C:/none/oak.png", "", oak, 1, false},
        {"C:/none/x.tar", "", "bridge/x.tar", 1, false},
        {"C:/none/same.txt", "", "bridge/aa/same.txt", 1, false},
        {"C:same.txt", "", "bridge/aa/same.txt", 1, false},
    };
    for (const Case& c : cases)
    {
        Match match;
        EXPECT_TRUE(resolver.resolve(c.reference, match, c.document)) << c.reference;
        EXPECT_EQ(shown(match.path), c.found) << c.reference;
        EXPECT_EQ(match.isExact, c.isExact) << c.reference;
        EXPECT_EQ(match.root, c.found.rfind("bridge", 0) == 0 ? 0U : 1U) << c.reference;
        EXPECT_TRUE(c.common == whole || match.commonComponents == c.common)
            << c.reference << ' ' << match.commonComponents;
        EXPECT_EQ(resolver.resolve(c.reference, c.document), match.path);
    }
}

TEST_F(XRefResolver, FindsNothingForWhatNamesNoFile)
{
    make({"bridge/textures/oak.png", "bridge/x.tar"});
    ASSERT_TRUE(resolver.addRoot(dir.file("bridge")));
    ASSERT_TRUE(resolver.refresh());
    Match found;
    ASSERT_TRUE(resolver.resolve("oak.png", found));
    for (const char* nothing : {"", "/", "C:", "C:\\", "..", "textures/..", "oak.png/", "oak.png/.", "none.png", "oak"})
    {
        Match match{"untouched", 7, 7, true};
        EXPECT_FALSE(resolver.resolve(nothing, match)) << nothing;
        EXPECT_EQ(match.path, "untouched");
        EXPECT_THAT(resolver.findCandidates(nothing), IsEmpty());
    }
}

TEST_F(XRefResolver, TakesTheCaseRuleAtOnce)
{
    make({"Docs/Plan.txt"});
    resolver.addRoot(dir.path());
    ASSERT_TRUE(resolver.refresh());
    EXPECT_EQ(resolver.getCaseRule(), Resolver::CaseRule::CaseInsensitive);
    EXPECT_EQ(shown(resolver.resolve("docs/PLAN.TXT")), "Docs/Plan.txt");
    resolver.setCaseRule(Resolver::CaseRule::CaseSensitive);
    EXPECT_EQ(resolver.resolve("docs/PLAN.TXT"), "");
    Match match;
    EXPECT_TRUE(resolver.resolve("docs/Plan.txt", match));
    EXPECT_EQ(match.commonComponents, 1U);
    EXPECT_FALSE(match.isExact);
}

TEST_F(XRefResolver, RefreshSeesWhatHasChanged)
{
    make({"tree/a.txt", "tree/b.log", "tree/deep/c.txt"});
    resolver.addRoot(dir.file("tree"));
    resolver.addRoot(dir.file("missing"));
    EXPECT_FALSE(resolver.isRootIndexed(0));
    ASSERT_TRUE(resolver.refresh());
    EXPECT_TRUE(resolver.isRootIndexed(0));
    EXPECT_FALSE(resolver.isRootIndexed(1));
    EXPECT_FALSE(resolver.isRootIndexed(2));

    make({"tree/new.txt"});
    ASSERT_TRUE(kyDirUtils::RemoveFileUtf8(dir.file("tree/a.txt")));
    EXPECT_EQ(shown(resolver.resolve("a.txt")), "tree/a.txt") << "still the old index";
    resolver.setFilters({"TXT"});
    ASSERT_TRUE(resolver.refresh());
    EXPECT_EQ(resolver.resolve("a.txt"), "");
    EXPECT_EQ(resolver.resolve("b.log"), "") << "filtered";
    EXPECT_EQ(shown(resolver.resolve("new.txt")), "tree/new.txt");
    resolver.clearRoots();
    ASSERT_TRUE(resolver.refresh());
    EXPECT_EQ(resolver.getFileCount(), 0U);
}

TEST_F(XRefResolver, CancellationKeepsTheOldIndex)
{
    make({"tree/a.txt", "tree/b.txt", "tree/sub/c.txt"});
    resolver.addRoot(dir.file("tree"));
    ASSERT_TRUE(resolver.refresh());

    struct EndsAfter : ky::XRefResolverFileSystemVisitor
    {
        explicit EndsAfter(int questions) : left(questions) {}
        bool shouldCancel() override { return left-- == 0; }
        int left;
    };
    resolver.addRoot(dir.path());
    bool isComplete = false;
    int questions = 0;
    for (; !isComplete; ++questions)
    {
        EndsAfter visitor(questions);
        isComplete = resolver.refresh(visitor);
        EXPECT_EQ(resolver.getFileCount(), isComplete ? 6U : 3U);
    }
    EXPECT_GT(questions, 10) << "asked before every entry";
    const std::atomic<bool> isCancelled{true};
    EXPECT_FALSE(resolver.refresh(&isCancelled));
    EXPECT_EQ(resolver.getFileCount(), 6U);
}

TEST_F(XRefResolver, TheVisitorDecidesWhatIsIndexed)
{
    make({"tree/a.txt", "tree/skip/a.txt", "tree/skip/sub/a.txt", "tree/b.tmp"});
    struct Choosy : ky::XRefResolverFileSystemVisitor
    {
        bool acceptFile(const std::string&, const std::string& name) override { return name != "b.tmp"; }
        bool acceptFolder(const std::string& folder) override { return folder.substr(folder.size() - 4) != "skip"; }
    };
    Choosy visitor;
    resolver.addRoot(dir.file("tree"));
    ASSERT_TRUE(resolver.refresh(visitor));
    EXPECT_EQ(resolver.resolve("b.tmp"), "");
    std::vector<std::string> found;
    for (const Match& match : resolver.findCandidates("skip/sub/a.txt"))
        found.push_back(shown(match.path));
    EXPECT_THAT(found, ElementsAre("tree/skip/sub/a.txt", "tree/a.txt"));

    const Choosy copy = visitor;
    Choosy alone = copy;
    EXPECT_TRUE(alone.visit(dir.path(), true)) << "a walk of its own has no index";
}

TEST_F(XRefResolver, LinksDoNotLeadOut)
{
    make({"tree/a.txt", "outside/secret.txt"});
    std::error_code error;
    std::filesystem::create_directory_symlink(toPath(dir.file("outside")), toPath(dir.file("tree/link")), error);
    if (error)
        GTEST_SKIP() << "no links here";
    std::filesystem::create_directory_symlink(toPath(dir.file("tree")), toPath(dir.file("tree/loop")), error);
    resolver.addRoot(dir.file("tree"));
    ASSERT_TRUE(resolver.refresh());
    EXPECT_EQ(resolver.resolve("link/secret.txt"), "");
    EXPECT_EQ(resolver.getFileCount(), 1U);
}

/// The rules once more, on whole paths.
class Model
{
public:
    using Names = std::vector<std::string>;

    void add(std::size_t root, const Names& above, const Names& below) { mFiles.push_back({root, above, below}); }

    std::vector<std::string> candidates(const Names& reference, bool fold) const
    {
        std::vector<std::tuple<bool, int, int, std::size_t, std::size_t, Names>> found;
        for (const File& file : mFiles)
        {
            Names all = file.above;
            all.insert(all.end(), file.below.begin(), file.below.end());
            const int common = tail(all, reference, fold);
            if (common == 0)
                continue;
            const bool isExact =
                static_cast<std::size_t>(common) == reference.size() && reference.size() == file.below.size();
            found.emplace_back(!isExact, -common, -tail(all, reference, false), file.root, file.below.size(),
                               file.below);
        }
        std::sort(found.begin(), found.end());
        std::vector<std::string> paths;
        for (const auto& entry : found)
            paths.push_back(std::to_string(std::get<3>(entry)) + ":" + joined(std::get<5>(entry)));
        return paths;
    }

    static std::string joined(const Names& names)
    {
        std::string path;
        for (const std::string& name : names)
            path += (path.empty() ? "" : "/") + name;
        return path;
    }

private:
    struct File
    {
        std::size_t root;
        Names above;
        Names below;
    };

    static std::string folded(std::string text)
    {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        return text;
    }

    static int tail(const Names& a, const Names& b, bool fold)
    {
        int common = 0;
        for (std::size_t i = 1; i <= std::min(a.size(), b.size()); ++i, ++common)
        {
            const std::string& one = a[a.size() - i];
            const std::string& other = b[b.size() - i];
            if (fold ? folded(one) != folded(other) : one != other)
                break;
        }
        return common;
    }

    std::vector<File> mFiles;
};

TEST_F(XRefResolver, AgreesWithThePlainRules)
{
    std::mt19937 random(4711);
    const auto pick = [&](const std::vector<std::string>& from) { return from[random() % from.size()]; };
    // Names that differ in case only never meet in one folder, which not every system could hold.
    const auto names = [&](const std::vector<std::string>& folders, const std::vector<std::string>& files)
    {
        Model::Names result;
        for (std::size_t depth = random() % 4; depth > 0; --depth)
            result.push_back(pick(folders));
        result.push_back(pick(files));
        return result;
    };
    Model model;
    for (std::size_t root = 0; root < 3; ++root)
    {
        const std::string folder = "root" + std::to_string(root) + "/A";
        resolver.addRoot(dir.file(folder));
        std::vector<std::string> made;
        for (int i = 0; i < 60; ++i)
        {
            const std::vector<std::string> spelled =
                root == 1 ? std::vector<std::string>{"A", "b", "b-"} : std::vector<std::string>{"a", "B"};
            const Model::Names below = names(spelled, {root == 2 ? "F.txt" : "f.txt", "g"});
            if (std::find(made.begin(), made.end(), Model::joined(below)) != made.end())
                continue;
            made.push_back(Model::joined(below));
            make({folder + "/" + made.back()});
            model.add(root, {"root" + std::to_string(root), "A"}, below);
        }
    }
    ASSERT_TRUE(resolver.refresh());
    for (int i = 0; i < 2000; ++i)
    {
        const bool fold = random() % 2 == 0;
        resolver.setCaseRule(fold ? Resolver::CaseRule::CaseInsensitive : Resolver::CaseRule::CaseSensitive);
        const Model::Names reference = names({"a", "A", "b", "B", "root1"}, {"f.txt", "F.txt", "g", "G"});
        std::vector<std::string> found;
        for (const Match& match : resolver.findCandidates(Model::joined(reference)))
            found.push_back(std::to_string(match.root) + ":" + shown(match.path).substr(8));
        ASSERT_EQ(found, model.candidates(reference, fold)) << Model::joined(reference) << fold;
        const std::string best = resolver.resolve(Model::joined(reference));
        ASSERT_EQ(best.empty(), found.empty());
        ASSERT_TRUE(found.empty() || shown(best).substr(8) == found.front().substr(2));
    }
}

TEST_F(XRefResolver, ResolvesWhileAnotherThreadRefreshes)
{
    make({"one/deep/file.txt", "two/file.txt"});
    resolver.addRoot(dir.file("one"));
    ASSERT_TRUE(resolver.refresh());
    std::atomic<bool> isDone{false};
    std::vector<std::thread> readers;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 3; ++i)
    {
        readers.emplace_back(
            [&]
            {
                while (!isDone)
                {
                    const std::string path = shown(resolver.resolve("C:\\two\\file.txt"));
                    const std::size_t files = resolver.getFileCount();
                    if ((path != "one/deep/file.txt" && path != "two/file.txt") || files < 1 || files > 2)
                        ++wrong;
                }
            });
    }
    for (int i = 0; i < 100; ++i)
    {
        resolver.clearRoots();
        resolver.addRoot(dir.file(i % 2 == 0 ? "two" : "one"));
        EXPECT_TRUE(resolver.refresh());
        resolver.setCaseRule(i % 2 == 0 ? Resolver::CaseRule::CaseSensitive : Resolver::CaseRule::CaseInsensitive);
    }
    isDone = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
