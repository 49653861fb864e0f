// SPDX-License-Identifier: MIT
#include "ini_support.h"

#include "support/soak.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace
{

using namespace ky;
using namespace ky::test;

using Type = kyVariant::Type;

kyVariant map(const Map& entries) { return kyVariant(entries); }

/// The text of the file that saving leaves behind.
std::string saved(const Map& tree, bool expected = true)
{
    const TempDir dir;
    EXPECT_EQ(SaveIniFile(dir.file("t.ini"), tree, false), expected);
    return readFile(dir.file("t.ini"));
}

TEST(IniSave, WritesGeneralFirstThenSections)
{
    const std::vector<std::pair<Map, std::string>> cases = {
        {{}, "[General]\n"},
        {{{"a", 1}, {"b", "x y"}, {"S", map({{"k", true}, {"sub", map({{"z", 2.5}})}})}},
         "[General]\na=1\nb=x y\n\n[S]\nk=true\nsub/z=2.5\n"},
        {{{"General", map({{"c", 1}, {"d", map({{"e", 2}})}})}, {"A", 0}, {"Z", 3}, {"B", map({})}},
         "[General]\nA=0\nc=1\nd/e=2\nZ=3\n\n[B]\n"},
        {{{"General", 5}}, "[General]\nGeneral=5\n"},
        // Order is that of the joined keys, and equal ones collapse.
        {{{"S", map({{"a", map({{"b", "x"}})}, {"a!", 2}, {"a/b", "x"}})}}, "[General]\n\n[S]\na!=2\na/b=x\n"},
        // One element of a list passes as a value, under a key that ends in a separator.
        {{{"S", map({{"l", kyVariant::kyVariantListImpl{1}}})}}, "[General]\n\n[S]\nl/=1\n"},
    };
    for (const auto& [tree, text] : cases)
        EXPECT_EQ(saved(tree), text);
}

TEST(IniSave, WritesValuesEscapedAndQuoted)
{
    const std::vector<std::pair<kyVariant, std::string>> cases = {
        {-12, "-12"},
        {3.14159265, "3.14159"},
        {1234567.0, "1.23457e+06"},
        {false, "false"},
        {"", ""},
        {"007", "007"},
        {" blanks ", " blanks "},
        {"\"hi\"", R"("\"hi\"")"},
        {"a\\b\nc\rd\te", R"(a\\b\nc\rd\te)"},
        {"\\\"\n", R"("\\\"\n")"},
        {std::string("a\0b\xFF", 4), std::string("a\0b\xFF", 4)},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(saved({{"k", value}}), "[General]\nk=" + text + "\n");
}

TEST(IniSave, StopsAtAValueThatCannotBeStored)
{
    LogCapture log;
    const double zeros[2] = {};
    const std::vector<std::pair<kyVariant, std::string>> cases = {
        {kyVariant(), "0"},
        {kyVariant(zeros, 2), "5"},
        {kyVariant(Type::StringList), "9"},
        {kyVariant(Type::List), "11"},
        {kyVariant(kyVariant::DateTime(1)), "14"},
    };
    for (const auto& [value, type] : cases)
    {
        EXPECT_EQ(saved({{"a", 1}, {"b", value}, {"c", 2}}, false), "[General]\na=1\n");
        EXPECT_EQ(log.take(), Messages{"saveVariantToIni unsupported variant type (" + type + ") for key b"});
    }
    const Map lists = {{"A", map({{"x", 1}})}, {"B", map({{"l", kyVariant::kyVariantListImpl{1, 2}}, {"m", 1}})}};
    EXPECT_EQ(saved(lists, false), "[General]\n\n[A]\nx=1\n\n[B]\n");
    EXPECT_EQ(log.take(), Messages{"saveVariantToIni unsupported variant type (11) for key l/"});
}

TEST(IniSave, MergesWithTheFile)
{
    const TempDir dir;
    LogCapture log;
    const std::string path = dir.file("t.ini");
    const auto merged = [&](const std::string& before, const Map& tree)
    {
        writeFile(path, before);
        EXPECT_TRUE(SaveIniFile(path, tree, true));
        return readFile(path);
    };
    EXPECT_EQ(merged(";old\nkeep=1\nnew=2\n[S]\nx=1\ny=2\n", {{"new", 3}, {"S", map({{"y", 4}, {"z", 5}})}}),
              "[General]\nkeep=1\nnew=3\n\n[S]\nx=1\ny=4\nz=5\n");
    EXPECT_EQ(merged("a=1\n", {{"a", map({{"b", 2}})}}), "[General]\n\n[a]\nb=2\n");
    EXPECT_EQ(merged("[a]\nb=2\n", {{"a", 1}}), "[General]\na=1\n");
    EXPECT_EQ(merged(std::string("a\0b=1\na\0c=2\n", 12), {{"d", 3}}),
              std::string("[General]\na\0b=1\na\0c=2\nd=3\n", 26));
    EXPECT_EQ(log.take(), Messages());
    // Nothing to merge with; a folder in the file's place.
    EXPECT_TRUE(SaveIniFile(dir.file("u.ini"), {{"a", 1}}, true));
    EXPECT_EQ(readFile(dir.file("u.ini")), "[General]\na=1\n");
    EXPECT_FALSE(SaveIniFile(dir.path(), {{"a", 1}}, true));
    EXPECT_EQ(log.take(), Messages{"Fail to load " + dir.path()});
}

TEST(IniSave, ValuesThatSetTypeHasEmptied)
{
    const TempDir dir;
    LogCapture log;
    Map tree{{"r", 1.5}, {"t", "x"}, {"S", map({{"a", 1}})}, {"T", map({{"n", map({{"a", "x"}})}})}};
    for (const char* const path : {"r", "t", "S", "T/n/a"})
        tree.findPath(path)->setType(kyVariant::Type::Unknown);
    EXPECT_TRUE(SaveIniFile(dir.file("t.ini"), tree, false));
    EXPECT_EQ(readFile(dir.file("t.ini")), "[General]\nr=0\nt=\n\n[S]\n\n[T]\nn/a=\n");
    writeFile(dir.file("t.ini"), "[S]\na=2\n");
    EXPECT_TRUE(LoadIniFile(dir.file("t.ini"), tree));
    EXPECT_EQ(tree.getValuePath("S/a"), kyVariant(2));
    EXPECT_EQ(log.take(), Messages());
}

/// Texts that come back as they were: no blanks at the ends, nothing that looks like a number, no backslash in front of
/// n, r or t.
std::string randomText(std::mt19937& random)
{
    static const char* const pieces[] = {"x",  "yz", "\"", "=", ";",  "[",        "]", "\n",
                                         "\r", "\t", "\\", " ", "12", "\xC3\xA4", "/", "\\\\"};
    std::string text = "<";
    for (std::uint32_t count = random() % 8; count > 0; --count)
        text += pieces[random() % std::size(pieces)];
    return text + ">";
}

kyVariant randomValue(std::mt19937& random, int depth)
{
    switch (random() % (depth > 0 ? 6 : 5))
    {
    case 0: return kyVariant(static_cast<std::int64_t>((std::uint64_t(random()) << 32) | random()));
    case 1:
    {
        // Never so near to a whole number that six digits make it one.
        const auto pick = random() % 819200;
        return kyVariant(static_cast<double>(pick / 8192) + 0.1 + static_cast<double>(pick % 8192) / 10240.0);
    }
    case 2: return kyVariant(random() % 2 == 0);
    case 3: return kyVariant("");
    case 4: return kyVariant(randomText(random));
    default: break;
    }
    Map tree;
    for (std::uint32_t count = 1 + random() % 4; count > 0; --count)
        tree[randomText(random).substr(1, 1 + random() % 3) + static_cast<char>('a' + random() % 26)] = kyVariant(1);
    Map result;
    for (const auto& entry : tree)
    {
        std::string key = "k";
        for (const char character : entry.first)
            key += character == '=' || character == '/' || character < ' ' ? '_' : character;
        result[key] = randomValue(random, depth - 1);
    }
    return kyVariant(result);
}

TEST(IniSave, RandomTreesComeBack)
{
    const TempDir dir;
    LogCapture log;
    std::mt19937 random(34);
    const int rounds = isSoak() ? 50000 : 400;
    int lost = 0;
    for (int round = 0; round < rounds; ++round)
    {
        Map tree;
        while (tree.size() < 1 + random() % 4)
            tree[std::string("t").append(std::to_string(tree.size()))] = randomValue(random, 3);
        ASSERT_TRUE(SaveIniFile(dir.file("t.ini"), tree, false));
        Map again;
        ASSERT_TRUE(LoadIniFile(dir.file("t.ini"), again));
        // Reals lose digits, but no more in a second round.
        Map third;
        ASSERT_TRUE(SaveIniFile(dir.file("u.ini"), again, false) && LoadIniFile(dir.file("u.ini"), third));
        const bool isSame = show(tree) == show(again) && again == third;
        if (!isSame && ++lost == 1)
            ADD_FAILURE() << show(tree) << '\n' << show(again) << '\n' << readFile(dir.file("t.ini"));
    }
    account("INI files", {rounds, "random trees saved and loaded"}, {}, {lost, "trees changed"});
    EXPECT_EQ(log.take(), Messages());
}

} // namespace
