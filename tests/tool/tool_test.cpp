// SPDX-License-Identifier: MIT
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace
{

using ky::test::readFile;
using ky::test::TempDir;
using ky::test::writeFile;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

struct Result
{
    int exitCode = -1;
    std::string output; ///< standard output and error, line ends as "\n"
};

class Tool : public testing::Test
{
protected:
    Result ky(const std::vector<std::string>& arguments)
    {
        // A process that the system starts on behalf of the tool may still hold the file of the last run.
        const std::string file = dir.file("output" + std::to_string(++runs) + ".txt");
        Result result;
        result.exitCode = ky::test::ChildProcess::program("ky", arguments, file).wait();
        result.output = readFile(file);
        result.output.erase(std::remove(result.output.begin(), result.output.end(), '\r'), result.output.end());
        return result;
    }

    TempDir dir;
    int runs = 0;
};

TEST_F(Tool, WrongUsageIsTwoAndHelpIsZero)
{
    const std::string file = dir.file("a.ini");
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"unknown"},
        {"csv"},
        {"csv", "a.csv", "--delimiter", "ab"},
        {"csv", "a.csv", "--to", "b.txt"},
        {"csv", "a.csv", "--to", ".csv"},
        {"csv", "a.csv", "--to", ""},
        {"csv", "a.csv", "b.csv", "--to", "c.csv"},
        {"csv", "a.csv", "--to", "b.csv", "--ini", "c.ini"},
        {"csv", "a.csv", "--to", "b.csv", "--to-separator", "\""},
        {"csv", "a.csv", "--to", "b.csv", "--rows-per-file", "0"},
        {"csv", "a.csv", "--bom"},
        {"ini", file},
        {"ini", file, "remove", "x"},
        {"ini", file, "get"},
        {"ini", file, "set", "only-path"},
        {"ini", file, "list", "extra"},
        {"log", file},
        {"log", file, "--type", "loud", "x"},
        {"log", file, "--keep", "129", "x"},
        {"log", file, "--max-size", "many", "x"},
        {"pipe", "serve"},
        {"pipe", "serve", "name", "text"},
        {"pipe", "listen", "name"},
        {"report", "extra"},
        {"report", "--ini"},
    };
    for (const auto& arguments : wrong)
        EXPECT_EQ(ky(arguments).exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_FALSE(ky::test::exists(file));
    EXPECT_EQ(ky({"--help"}).exitCode, 0);
    EXPECT_THAT(ky({"csv", "--help"}).output, HasSubstr("--ini"));
}

TEST_F(Tool, CsvShowsTypesAndWritesTheSummary)
{
    const std::string table = dir.file("st\xC3\xA4"
                                       "dte.csv");
    writeFile(table, "\xEF\xBB\xBF"
                     "name,people,share\n\"Z\xC3\xBCrich, ZH\",434736,0.05\nBern,unknown,\"0,02\"\n");
    const Result result = ky({"csv", table, "--ini", dir.file("sum.ini"), "--rows", "1"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("2 rows, 3 columns"));
    EXPECT_THAT(result.output, HasSubstr("INTEGER 1, STRING 1        7\n"));
    EXPECT_THAT(result.output, HasSubstr("REAL 2"));
    EXPECT_THAT(result.output, HasSubstr("Z\xC3\xBCrich, ZH  434736"));
    EXPECT_THAT(result.output, Not(HasSubstr("Bern")));
    EXPECT_EQ(readFile(dir.file("sum.ini")),
              "[General]\n\n[st\xC3\xA4"
              "dte.csv]\n"
              "column1/longest=11\ncolumn1/name=name\ncolumn1/type/STRING=2\n"
              "column2/longest=7\ncolumn2/name=people\ncolumn2/type/INTEGER=1\ncolumn2/type/STRING=1\n"
              "column3/longest=4\ncolumn3/name=share\ncolumn3/type/REAL=2\n"
              "columns=3\nrows=2\n");
    EXPECT_THAT(ky({"csv", table, "--text"}).output, Not(HasSubstr("REAL")));
}

TEST_F(Tool, CsvRewritesATableInAnotherShape)
{
    const std::string table = dir.file("t.csv");
    const std::string to = dir.file("n\xC3\xA4.csv");
    writeFile(table, "a;'b,c';\"\n007;\"x\"\n\n'it''s';'l1\r\n,l2'\n\n");
    const std::vector<std::string> common = {"csv", table, "--to", to, "--delimiter", ";", "--quote", "'"};
    const auto rewrite = [&](std::vector<std::string> options)
    {
        options.insert(options.begin(), common.begin(), common.end());
        return ky(options);
    };
    const Result whole = rewrite({});
    EXPECT_EQ(whole.output, to + ": 5 rows in 1 file(s)\n");
    EXPECT_EQ(whole.exitCode, 0);
    EXPECT_EQ(readFile(to), "a,\"b,c\",\"\"\"\"\r\n007,\"\"\"x\"\"\"\r\n\r\nit's,\"l1\r\n,l2\"\r\n");
    const Result split =
        rewrite({"--to-separator", "'", "--to-quote", "|", "--rows-per-file", "2", "--bom", "--line-breaks", " / "});
    EXPECT_EQ(split.output, to + ": 5 rows in 3 file(s)\n");
    EXPECT_EQ(readFile(to), "\xEF\xBB\xBF"
                            "a'b,c'\"\r\n007'\"x\"");
    EXPECT_EQ(readFile(dir.file("n\xC3\xA4 (1).csv")), "\xEF\xBB\xBF"
                                                       "\r\n|it's|'l1 / ,l2");
    EXPECT_EQ(readFile(dir.file("n\xC3\xA4 (2).csv")), "\xEF\xBB\xBF");
    const Result torn = rewrite({"--to-separator", ";"});
    EXPECT_EQ(torn.exitCode, 1);
    EXPECT_THAT(torn.output, HasSubstr(to + ": row 4: a line break in a cell cannot be written"));
}

TEST_F(Tool, CsvRewritesNothingOntoItself)
{
    writeFile(dir.file("t (3).csv"), "a\nb\n");
    writeFile(dir.file("u.csv"), "");
    for (const std::string& name : {dir.file("t.csv"), dir.file("t (3).csv")})
    {
        const Result result = ky({"csv", dir.file("t (3).csv"), "--to", name});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.output, HasSubstr("t (3).csv: cannot be rewritten onto itself"));
    }
    EXPECT_EQ(readFile(dir.file("t (3).csv")), "a\nb\n");
    EXPECT_EQ(ky({"csv", dir.file("u.csv"), "--to", dir.file("v.csv")}).exitCode, 0);
    EXPECT_TRUE(ky::test::exists(dir.file("v.csv")));
    EXPECT_EQ(ky({"csv", dir.file("none.csv"), "--to", dir.file("w.csv")}).exitCode, 1);
    EXPECT_FALSE(ky::test::exists(dir.file("w.csv")));
    const Result folder = ky({"csv", dir.file("t (3).csv"), "--to", dir.file("none/t.csv")});
    EXPECT_EQ(folder.exitCode, 1);
    EXPECT_THAT(folder.output, HasSubstr("none/t.csv: cannot be written"));
}

TEST_F(Tool, CsvTellsTheReasonAndTheFileAndGoesOn)
{
    const std::string good = dir.file("good.csv");
    const std::string broken = dir.file("broken.csv");
    writeFile(good, "a,b\n1,2\n");
    writeFile(broken, "a,b\n1,2\n\xFF,3\n");
    const Result result = ky({"csv", dir.file("missing.csv"), broken, good});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("missing.csv: Failed to open the file"));
    EXPECT_THAT(result.output, HasSubstr("broken.csv: Invalid UTF-8"));
    EXPECT_THAT(result.output, HasSubstr("good.csv\n  1 rows, 2 columns"));
    EXPECT_EQ(ky({"csv", dir.path()}).exitCode, 1);
}

TEST_F(Tool, IniListsGetsSetsAndMerges)
{
    const std::string file = dir.file("a.ini");
    EXPECT_EQ(ky({"ini", file, "list"}).exitCode, 1);
    EXPECT_EQ(ky({"ini", file, "set", "S/sub/z", "3.14159265"}).exitCode, 0);
    EXPECT_EQ(ky({"ini", file, "set", "top", "two words"}).exitCode, 0);
    EXPECT_EQ(readFile(file), "[General]\ntop=two words\n\n[S]\nsub/z=3.14159\n");
    writeFile(dir.file("b.ini"), "top=1\n[S]\nflag=TRUE\n");
    EXPECT_EQ(ky({"ini", file, "merge", dir.file("b.ini")}).exitCode, 0);
    const Result list = ky({"ini", file, "list"});
    EXPECT_EQ(list.output, "S/flag = true  (BOOL)\nS/sub/z = 3.14159  (REAL)\ntop = 1  (INTEGER)\n");
    EXPECT_EQ(ky({"ini", file, "get", "S/flag"}).output, "true\n");
    const Result missing = ky({"ini", file, "get", "S/none"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.output, HasSubstr("a.ini: has no value S/none"));
    EXPECT_EQ(ky({"ini", file, "merge", dir.file("none.ini")}).exitCode, 1);
    EXPECT_EQ(ky({"ini", dir.path(), "set", "a", "b"}).exitCode, 1);
}

TEST_F(Tool, LogAppendsWholeLinesFromSeveralProcesses)
{
    const std::string file = dir.file("l\xC3\xB6g.log");
    EXPECT_EQ(ky({"log", file, "--type", "Warning", "--qualifier", "disk", "nearly", "full"}).exitCode, 0);
    EXPECT_THAT(readFile(file), testing::StartsWith("\xEF\xBB\xBFWARNING(disk) : "));
    EXPECT_THAT(readFile(file), EndsWith(" nearly full\r\n"));

    std::vector<ky::test::ChildProcess> writers;
    for (int i = 0; i < 4; ++i)
        writers.push_back(ky::test::ChildProcess::program("ky", {"log", file, "--max-size", "1k", "--keep", "9", "x"}));
    for (auto& writer : writers)
        EXPECT_EQ(writer.wait(), 0);
    const std::string content = readFile(file);
    EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 5);

    EXPECT_EQ(ky({"log", dir.path(), "x"}).exitCode, 1) << "a folder takes no lines";
    const Result folder = ky({"log", dir.path() + "/none/x.log", "x"});
    EXPECT_EQ(folder.exitCode, 1);
    EXPECT_THAT(folder.output, HasSubstr("none/x.log"));
}

TEST_F(Tool, SortPrintsLinesInNaturalOrder)
{
    const std::string first = dir.file("first.txt");
    const std::string second = dir.file("zw\xC3\xB6lf.txt");
    writeFile(first, "file10\nfile2\r\nfile2\n\nfile1");
    writeFile(second, "File2\n");
    EXPECT_EQ(ky({"sort", first}).output, "\nfile1\nfile2\nfile2\nfile10\n");
    EXPECT_EQ(ky({"sort", "-r", "-u", first}).output, "file10\nfile2\nfile1\n\n");
    EXPECT_EQ(ky({"sort", "-i", "-u", first, second}).output, "\nfile1\nfile2\nfile10\n");
    EXPECT_EQ(ky({"sort", "-i", "-u", second, first}).output, "\nfile1\nFile2\nfile10\n");
    const Result missing = ky({"sort", first, dir.file("none.txt")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.output, HasSubstr("none.txt: cannot be read"));
    EXPECT_THAT(missing.output, Not(HasSubstr("file1"))) << "half a result would mislead";
    EXPECT_EQ(ky({"sort", dir.path()}).exitCode, 1);
}

TEST_F(Tool, ReportShowsTheMachineAndWritesIt)
{
    const std::string ini = dir.file("m\xC3\xA4.ini");
    const std::string csv = dir.file("m\xC3\xA4.csv");
    const Result brief = ky({"report"});
    EXPECT_EQ(brief.exitCode, 0);
    EXPECT_THAT(brief.output, testing::AnyOf(HasSubstr("System        Linux "), HasSubstr("System        Windows ")));
    EXPECT_THAT(brief.output, HasSubstr("\nProcessor     "));
    EXPECT_THAT(brief.output, Not(HasSubstr("Instructions")));
    EXPECT_THAT(brief.output, Not(HasSubstr("ky: "))) << "no warnings on the way";

    const Result full = ky({"report", "--full", "--ini", ini, "--csv", csv});
    EXPECT_EQ(full.exitCode, 0);
    EXPECT_THAT(full.output, HasSubstr("Instructions  "));
    EXPECT_THAT(full.output, HasSubstr("Program       ky"));
    EXPECT_THAT(readFile(ini), HasSubstr("\nprocessor/1/name="));
    const std::string description = ky({"ini", ini, "get", "os/description"}).output;
    EXPECT_THAT(full.output, HasSubstr("System        " + description));
    EXPECT_THAT(readFile(csv), testing::StartsWith("path,value\n"));
    // The description holds a comma.
    EXPECT_THAT(readFile(csv),
                HasSubstr("\nos/description,\"" + description.substr(0, description.size() - 1) + "\"\n"));

    for (const char* const option : {"--ini", "--csv"})
    {
        const Result result = ky({"report", option, dir.file("none/x.txt")});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.output, HasSubstr("none/x.txt: cannot be written"));
    }
}

TEST_F(Tool, KeepsALogOfItsSteps)
{
    writeFile(dir.file("t.csv"), "a\n1\n");
    EXPECT_EQ(ky({"csv", dir.file("t.csv"), "--log", dir.file("steps.log")}).exitCode, 0);
    EXPECT_THAT(readFile(dir.file("steps.log")), HasSubstr("t.csv: 1 rows, 1 columns\r\n"));
}

TEST_F(Tool, FindListsWhatMatches)
{
    ky::test::makeFolder(dir.file("tree/sub.txt"));
    for (const char* name : {"tree/a.txt", "tree/B.TXT", "tree/c.csv", "tree/sub.txt/d.bin"})
        writeFile(dir.file(name), "");
    const auto found = [&](std::vector<std::string> options)
    {
        options.insert(options.begin(), {"find", dir.file("tree")});
        const Result result = ky(options);
        EXPECT_EQ(result.exitCode, 0);
        std::vector<std::string> lines;
        std::istringstream text(result.output);
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    };
    const std::string root = dir.file("tree");
    EXPECT_THAT(found({"--ext", "txt,csv"}), testing::UnorderedElementsAre(root + "/a.txt", root + "/c.csv"));
    EXPECT_THAT(found({"--ext", "Txt", "--ignore-case", "--names"}), testing::UnorderedElementsAre("a.txt", "B.TXT"));
    EXPECT_THAT(found({"--ext", "bin", "--folders"}),
                testing::UnorderedElementsAre(root + "/sub.txt", root + "/sub.txt/d.bin"));
    const Result missing = ky({"find", dir.file("missing")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.output, HasSubstr("cannot be listed"));
}

TEST_F(Tool, ClearEmptiesOrRemovesAFolder)
{
    ky::test::makeFolder(dir.file("tree/sub"));
    writeFile(dir.file("tree/sub/f"), "");
    EXPECT_EQ(ky({"clear", dir.file("tree"), "--keep"}).exitCode, 0);
    EXPECT_TRUE(ky::test::exists(dir.file("tree")));
    EXPECT_FALSE(ky::test::exists(dir.file("tree/sub")));
    EXPECT_EQ(ky({"clear", dir.file("tree")}).exitCode, 0);
    EXPECT_FALSE(ky::test::exists(dir.file("tree")));
    EXPECT_EQ(ky({"clear", dir.file("tree")}).exitCode, 0);
    writeFile(dir.file("file"), "");
    const Result file = ky({"clear", dir.file("file")});
    EXPECT_EQ(file.exitCode, 1);
    EXPECT_THAT(file.output, HasSubstr("is not a folder"));
    EXPECT_TRUE(ky::test::exists(dir.file("file")));
}

TEST_F(Tool, PipesReachSeveralClients)
{
    const std::string name = "ky tool/" + dir.path();
    EXPECT_EQ(ky({"pipe", "send", name, "hello"}).exitCode, 1);
    ky::test::ChildProcess server =
        ky::test::ChildProcess::program("ky", {"pipe", "serve", name, "--echo"}, dir.file("served"));
    const auto hasServed = [&](const char* text)
    { return ky::test::eventually([&] { return readFile(dir.file("served")).find(text) != std::string::npos; }); };
    ASSERT_TRUE(hasServed("listening"));
    // One that stays, beside others that come and go.
    ky::test::ChildProcess waiting = ky::test::ChildProcess::program(
        "ky", {"pipe", "send", name, "first", "line", "--replies", "2"}, dir.file("waiting"));
    ASSERT_TRUE(hasServed("first line\n"));
    for (const std::string text : {"gr\xC3\xBC\xC3\x9F", "with blanks "})
    {
        const Result result = ky({"pipe", "send", name, text, "--replies", "1"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output, text + "\n");
        EXPECT_TRUE(hasServed((text + "\n").c_str()));
    }
    EXPECT_TRUE(waiting.isRunning());
    server.kill();
    EXPECT_EQ(waiting.wait(), 1);
    EXPECT_THAT(readFile(dir.file("waiting")), HasSubstr("first line\n"));
    EXPECT_THAT(readFile(dir.file("waiting")), HasSubstr("the server has closed the pipe"));
}

} // namespace
