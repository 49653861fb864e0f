// SPDX-License-Identifier: MIT
#include "ini_support.h"

#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace
{

using namespace ky;
using namespace ky::test;

struct Case
{
    std::string text;
    std::string tree;
    Messages messages = {};
};

void expectLoads(const std::vector<Case>& cases)
{
    const TempDir dir;
    LogCapture log;
    for (const Case& item : cases)
    {
        writeFile(dir.file("t.ini"), item.text);
        Map map;
        EXPECT_TRUE(LoadIniFile(dir.file("t.ini"), map));
        EXPECT_EQ(show(map), item.tree) << item.text;
        EXPECT_EQ(log.take(), item.messages) << item.text;
    }
}

TEST(IniLoad, ReadsSectionsKeysAndPaths)
{
    expectLoads({
        {"", "{}"},
        {"\n\r\n  ;a=1\n;\n[S]\n", "{}"},
        {"a=1", "{a: INTEGER 1}"},
        {"\t a \t=\v 1 \f\r\n", "{a: INTEGER 1}"},
        {"[General]\na=1\nb=x y\n\n[S]\nk=true\nsub/z=2.5\n",
         "{S: {k: BOOL true, sub: {z: REAL 2.5}}, a: INTEGER 1, b: STRING x y}"},
        {"[S]\na=1\n[General]\nb=2\n[S]\nc=3\n", "{S: {a: INTEGER 1, c: INTEGER 3}, b: INTEGER 2}"},
        {"[ S ]\na=1\n[general]\nb=2\n", "{ S : {a: INTEGER 1}, general: {b: INTEGER 2}}"},
        {"[]\na=1\n", "{: {a: INTEGER 1}}"},
        {"[A/B]\na=1\n[A]\nB/b=2\n", "{A: {B: {a: INTEGER 1, b: INTEGER 2}}}"},
        {"[[a=b]]\nc=d=e\n", "{[a=b]: {c: STRING d=e}}"},
        {"[x=1\n", "{[x: INTEGER 1}"},
        {"/=1\na//b=2\n", "{: {: INTEGER 1}, a: {: {b: INTEGER 2}}}"},
        {"General/a=1\n", "{General: {a: INTEGER 1}}"},
        {"k=;no comment\n", "{k: STRING ;no comment}"},
        {"\xC3\xA4=\xE2\x82\xAC\xFF\n", "{\xC3\xA4: STRING \xE2\x82\xAC\xFF}"},
        {std::string("a\0b=\0\n", 6), std::string("{a\0b: STRING \0}", 15)},
    });
}

TEST(IniLoad, TypesValues)
{
    expectLoads({
        {"k=TRUE\n", "{k: BOOL true}"},
        {"k=fAlse\n", "{k: BOOL false}"},
        {"k=t\n", "{k: STRING t}"},
        {"k=truex\n", "{k: STRING truex}"},
        {"k=\n", "{k: STRING }"},
        {"k=\"\"\n", "{k: STRING }"},
        {"k=\"\n", "{k: STRING \"}"},
        {"k=-12\n", "{k: INTEGER -12}"},
        {"k=007\n", "{k: INTEGER 7}"},
        {"k=08\n", "{k: REAL 8}"},
        {"k=0x1A\n", "{k: INTEGER 26}"},
        {"k=99999999999999999999\n", "{k: INTEGER 9223372036854775807}"},
        {"k=1.5\n", "{k: REAL 1.5}"},
        {"k=1e3\n", "{k: REAL 1000}"},
        {"k=1,5\n", "{k: STRING 1,5}"},
        {"k=12 x\n", "{k: STRING 12 x}"},
        {"k=\"12\"\n", "{k: INTEGER 12}"},
        {"k=\" 12\"\n", "{k: INTEGER 12}"},
        {"k=\"12 \"\n", "{k: STRING 12 }"},
        {"k=\"true\"\n", "{k: BOOL true}"},
        {"k=\" true\"\n", "{k: STRING  true}"},
        {std::string("k=1\0\n", 5), std::string("{k: STRING 1\0}", 14)},
    });
}

TEST(IniLoad, UnescapesInItsOwnOrder)
{
    expectLoads({
        {R"(k=\"a\tb\rc\nd\\e)", "{k: STRING \"a\tb\rc\nd\\e}"},
        {R"(k="\"hi\"")", "{k: STRING \"hi\"}"},
        {R"(k=a\)", "{k: STRING a\\}"},
        {R"(k=\\)", "{k: STRING \\}"},
        {R"(k=\\\\)", "{k: STRING \\\\}"},
        {R"(k=\\x)", "{k: STRING \\x}"},
        {R"(k=C:\\temp)", "{k: STRING C:\\\temp}"},
        {R"(k=\\n)", "{k: STRING \\\n}"},
        {R"(k=\q)", "{k: STRING \\q}"},
        {R"(k=\\")", "{k: STRING \\\"}"},
        {R"(k=1\n)", "{k: STRING 1\n}"},
        {R"(k=\n1)", "{k: INTEGER 1}"},
    });
}

TEST(IniLoad, WarnsAboutBadLinesAndGoesOn)
{
    expectLoads({
        {"just text\nk=1\n", "{k: INTEGER 1}", {"Invalid line (0) just text in Ini file"}},
        {"k=1\n\n;\n  [ \n", "{k: INTEGER 1}", {"Invalid line (3) [ in Ini file"}},
        {"[S] x\n", "{}", {"Invalid line (0) [S] x in Ini file"}},
        {" =5\n", "{}", {"Invalid key at line (0) =5 in Ini file"}},
        {"[S]\na=1\na=2\n", "{S: {a: INTEGER 1}}", {"Duplicated key at line (2) a=2 in Ini file"}},
        {"a/b=1\na=2\n", "{a: {b: INTEGER 1}}", {"Duplicated key at line (1) a=2 in Ini file"}},
        {"a=1\na/b/c=2\n[a]\nx=3\ny=4\n[a/b]\nz=5\n",
         "{a: INTEGER 1}",
         {"Duplicated key at line (1) a/b/c=2 in Ini file", "Duplicated key at line (3) x=3 in Ini file",
          "Duplicated key at line (4) y=4 in Ini file", "Duplicated key at line (6) z=5 in Ini file"}},
        // A mark at the start is not white space.
        {"\xEF\xBB\xBF[S]\na=1\n", "{a: INTEGER 1}", {"Invalid line (0) \xEF\xBB\xBF[S] in Ini file"}},
        // A line cannot forge a second line of the log.
        {"bad\rWARNING : x\n", "{}", {"Invalid line (0) bad\\rWARNING : x in Ini file"}},
    });
}

TEST(IniLoad, NeverChangesWhatTheMapHolds)
{
    const TempDir dir;
    LogCapture log;
    writeFile(dir.file("t.ini"), "a=1\nl/x=2\n[S]\nb=3\nc=4\n");
    Map map;
    map["a"] = kyVariant("old");
    map["l"] = kyVariant(kyVariant::Type::List);
    map.editValuePath("S/b") = kyVariant();
    EXPECT_TRUE(LoadIniFile(dir.file("t.ini"), map));
    EXPECT_EQ(show(map), "{S: {b: UNKNOWN , c: INTEGER 4}, a: STRING old, l: LIST }");
    EXPECT_EQ(log.take().size(), 3U);
}

TEST(IniLoad, TellsOnlyWhetherTheFileCouldBeRead)
{
    const TempDir dir;
    LogCapture log;
    Map map;
    for (const std::string& path : {dir.file("none.ini"), dir.path(), dir.file("x/y.ini"), std::string()})
        EXPECT_FALSE(LoadIniFile(path, map)) << path;
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(log.take(), Messages());
}

TEST(IniLoad, IsSilentWithoutALog)
{
    const TempDir dir;
    writeFile(dir.file("t.ini"), "bad\nk=1\n");
    Map map;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(LoadIniFile(dir.file("t.ini"), map));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(map.size(), 1U);
}

TEST(IniLoad, HoldsLongLinesAndDeepPaths)
{
    const TempDir dir;
    LogCapture log;
    const std::string longValue(10000000, 'x');
    std::string path = "a";
    for (int level = 1; level < 100000; ++level)
        path += "/a";
    writeFile(dir.file("t.ini"), "long=" + longValue + "\n" + path + "=1\n[" + path + "]\nb=2\n");
    Map map;
    EXPECT_TRUE(LoadIniFile(dir.file("t.ini"), map));
    EXPECT_TRUE(map["long"].getString() == longValue);
    ASSERT_NE(map.findPath(path.c_str()), nullptr);
    EXPECT_EQ(*map.findPath(path.c_str()), kyVariant(1));
    EXPECT_EQ(log.take().size(), 1U);
    EXPECT_TRUE(SaveIniFile(dir.file("u.ini"), map, false));
    Map again;
    EXPECT_TRUE(LoadIniFile(dir.file("u.ini"), again));
    EXPECT_TRUE(again == map);
}

} // namespace
