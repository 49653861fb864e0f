// SPDX-License-Identifier: MIT
#include "csv_support.h"

#include "platform/file_handle.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using ky::kyCsvFileReader;
using ky::kyVariant;
using namespace ky::test;

const std::string headerError = "Header cell size during parsing exceed max size of 65535 characters";

std::string text(const char* bytes, std::size_t size) { return std::string(bytes, size); }

class CsvReader : public testing::Test
{
protected:
    CsvResult parse(const std::string& bytes, CsvFormat format = {}, Portions portions = {})
    {
        writeFile(path, bytes);
        return readCsv(path, format, portions);
    }

    const TempDir dir;
    const std::string path = dir.file("t.csv");
    kyCsvFileReader reader{false};
    bool finished = true;
};

// As files come, damaged ones included: nothing that is still readable is lost.
TEST_F(CsvReader, SplitsRowsAndCells)
{
    const struct
    {
        const char* kind;
        std::string bytes;
        const char* expected; ///< as show() has it
        CsvFormat format = {};
    } rows[] = {
        {"nothing", "", ""},
        {"a line break alone", "\n", "/"},
        {"a carriage return alone", "\r", "/"},
        {"CR LF", "a,b\r\nc,d\r\n\r\n", "a|b/c|d//"},
        {"CR CR LF and a CR at the end", "a\r\r\nb\nc\r", "a/b/c/"},
        {"CR runs rows together", "a,b\rc\r", "a|bc/"},
        {"no final line break", "a,b\nc", "a|b/c/"},
        {"empty and blank lines", "a\n\n  \nb\n\n\n", "a//  /b///"},
        {"empty cells", ",\n,,\n", "|/||/"},
        {"other line separators are text", "a\f\v\xE2\x80\xA8\xC2\x85\n", "a\\x0c\\x0b\\xe2\\x80\\xa8\\xc2\\x85/"},
        {"rows of several widths", "a,b\n1\n1,2,3,\n", "a|b/1/1|2|3|/"},
        {"other delimiters and quotes are text", "a;b\tc,'d,e'\n", "a;b\\x09c|'d|e'/"},
        {"titles and comments are rows", "Title\n\nsep=,\n# x\na , b\n", "Title//sep=|/# x/a | b/"},
        {"delimiter in quotes", "a,\"b,c\",d", "a|b,c|d/"},
        {"quotes in quotes", "\"x\"\"y\",\"\"\"\",\"\"\n", "x\"y|\"|/"},
        {"nothing but quotes", "\"\"\"\"\"\"\n", "\"\"/"},
        {"line break in quotes", "\"1\r\n2\",x\n", "1\\x0d\\x0a2|x/"},
        {"everything quoted", "\"a\",\"b\"\n\"1\",\"2\"\n", "a|b/1|2/"},
        {"quoted sections anywhere", "a\"b,c\"d,\"e\"f\"g\"\n", "ab,cd|efg/"},
        {"blanks around quotes", "1, \"a,b\" ,2\n", "1| a,b |2/"},
        {"a backslash is text", "\"L\\\"ee\\\"\",3\n", "L\\ee\\|3/"},
        {"quotes not doubled", "1,\"a \"b\" c\",2\n", "1|a b c|2/"},
        {"opening quote missing", "a\n1,b\",2\n3,4\n", "a/1|b,2\\x0a3,4\\x0a/"},
        {"closing quote missing", "a\n1,\"b,2\n3,4", "a/1|b,2\\x0a3,4/"},
        {"a quote at the end", "a\n1,\"", "a/1|/"},
        {"byte-order mark", "\xEF\xBB\xBF\"a\",b\n", "a|b/"},
        {"only a mark", "\xEF\xBB\xBF", ""},
        {"later marks are text", "\xEF\xBB\xBF\xEF\xBB\xBF,\xEF\xBB\xBF\n", "\\xef\\xbb\\xbf|\\xef\\xbb\\xbf/"},
        {"NUL and control characters", text("a\0b,\0\n\1\x1A\x7F\n", 10), "a\\x00b|\\x00/\\x01\\x1a\\x7f/"},
        {"long characters", "\xC3\xA4,\xF0\x9F\x98\x80\n", "\\xc3\\xa4|\\xf0\\x9f\\x98\\x80/"},
        {"Latin-1", "a\n1,M\xFCller\n", "a/!Invalid UTF-8"},
        {"UTF-16", text("\xFF\xFEi\0d\0\n\0", 8), "!Invalid UTF-8"},
        {"other characters", "a;'b;c';\"d\"\n", "a|b;c|\"d\"/", {';', '\''}},
        {"the quote comes before the delimiter", "a\"b\"c,d\n", "abc,d/", {'"', '"'}},
        {"the delimiter comes before the line break", "a\nb\n", "a|b|/", {'\n', '"'}},
        {"the delimiter comes before the return", "a\rb\r\n", "a|b|/", {'\r', '"'}},
        {"the quote comes before the line break", "a\nb,c\nd", "ab,cd/", {',', '\n'}},
        {"the quote comes before the return", "\ra\r,b\n", "a|b/", {',', '\r'}},
        {"NUL as quote", text("\0a,b\0,c\n", 8), "a,b|c/", {',', '\0'}},
        {"NUL as delimiter", text("a\0b\n", 4), "a|b/", {'\0', '"'}},
        {"bytes of long characters are no delimiters",
         "\xC3\xA4,\xC2\xA4\n",
         "\\xc3\\xa4,\\xc2\\xa4/",
         {'\xA4', '\xC3'}},
        {"nor are characters beyond ASCII", "\xC3\xBF,b\n", "\\xc3\\xbf,b/", {'\xFF', '\xFF'}},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.kind);
        EXPECT_EQ(show(parse(row.bytes, row.format)), row.expected);
        EXPECT_EQ(show(referenceCsv(row.bytes, row.format)), row.expected);
        const BlockSize small(4);
        EXPECT_EQ(show(parse(row.bytes, row.format, {1, true})), row.expected);
    }
}

TEST_F(CsvReader, RefusesTextThatIsNotUtf8AndKeepsTheRowsBefore)
{
    const std::pair<const char*, std::string> rows[] = {
        {"\xFF", "Invalid UTF-8"},
        {"\x80", "Invalid UTF-8"},
        {"\xC3(", "Invalid UTF-8"},
        {"\xC0\xAF", "Invalid UTF-8"},
        {"\xE0\x80\xAF", "Invalid UTF-8"},
        {"\xED\xA0\x80", "Invalid code point"},
        {"\xF4\x90\x80\x80", "Invalid code point"},
        {"\xF8\x88\x80\x80\x80", "Invalid UTF-8"},
        {"\xE2\x82", "Not enough space"},
        {"\xF0\x9F\x98", "Not enough space"},
    };
    for (const auto& [bytes, error] : rows)
    {
        const std::string expected = "a|b/c|d/!" + error;
        EXPECT_EQ(show(parse(std::string("a,b\nc,d\ne,f") + bytes)), expected);
        // The same with something behind it, and across a block border.
        const BlockSize small(5);
        const char* const behind = error == "Not enough space" ? "" : ",g\n";
        EXPECT_EQ(show(parse(std::string("a,b\nc,d\n\"e,f") + bytes + behind)), expected);
    }
}

TEST_F(CsvReader, LimitsCellsOfTheFirstRowOfAFile)
{
    const std::string most(65535, 'x');
    const std::string euros = most.substr(0, 65534) + "\xE2\x82\xAC";
    const std::pair<std::string, bool> rows[] = {
        {most + "," + most + "\n" + most + "yz\n", true},
        {"\"" + most + "\",b", true},
        {most + "\r\"\"\n", true},
        {most + "y\n", false},
        {"a," + most + "y", false},
        {"\"" + most + "\"\"\"\n", false},
        {euros + "\n", false},
        {"a\n" + euros + "\n", true},
        {"a\n\"" + most + most + "\",b\n", true},
    };
    for (const std::size_t block : {0x100000U, 4096U, 65537U})
    {
        const BlockSize small(block);
        for (const auto& [bytes, ok] : rows)
        {
            // Also when no row is in the table any more.
            const CsvResult result = parse(bytes, {}, {1, true});
            EXPECT_EQ(result.error, ok ? "" : headerError);
            EXPECT_EQ(result, referenceCsv(bytes));
        }
    }
    // Another file has another first row.
    writeFile(path, "a\n");
    reader.setFileName(path);
    ASSERT_TRUE(reader.parseCsvFile());
    writeFile(dir.file("u.csv"), most + "y\n");
    reader.setFileName(dir.file("u.csv"));
    EXPECT_FALSE(reader.parseCsvFile());
    EXPECT_EQ(reader.getLastError(), headerError);
    EXPECT_TRUE(reader.getTable().empty());
}

TEST_F(CsvReader, KeepsRowWidthsAndGuessesTypes)
{
    writeFile(path, "a,b\n1,-2,\"3\",0x1A,010\n1.5,\"2,5\",\"12 \"\n,true,\xC3\xA4\n");
    reader.setEnableTypeGuess(true);
    reader.setFileName(path);
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getMaxColumnCount(), 5U);
    const kyCsvFileReader::Table expected = {
        {kyVariant("a"), kyVariant("b")},
        {kyVariant(1), kyVariant(-2), kyVariant(3), kyVariant(26), kyVariant(8)},
        {kyVariant(1.5), kyVariant(2.5), kyVariant("12 ")},
        {kyVariant(0), kyVariant("true"), kyVariant("\xC3\xA4")},
    };
    EXPECT_EQ(reader.getTable(), expected);
    reader.setEnableTypeGuess(false);
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable()[1][3], kyVariant("0x1A"));
    EXPECT_EQ(reader.getTable()[3][0], kyVariant(""));
}

TEST_F(CsvReader, HandsOutRowsInPortions)
{
    writeFile(path, "1\n2\n3\n4\n5");
    reader.setFileName(path);
    ASSERT_TRUE(reader.parseFirst(finished, 2));
    EXPECT_FALSE(finished);
    EXPECT_EQ(reader.getTable().size(), 2U);
    EXPECT_EQ(reader.getParsedSize(), 4U);
    const struct
    {
        bool clear;
        bool finished;
        std::size_t rows;
    } steps[] = {{false, false, 4}, {true, true, 1}, {false, true, 1}};
    for (const auto& step : steps)
    {
        ASSERT_TRUE(reader.parseNext(finished, step.clear, 2));
        EXPECT_EQ(finished, step.finished);
        EXPECT_EQ(reader.getTable().size(), step.rows);
    }
    EXPECT_EQ(reader.getTable()[0][0], kyVariant("5"));
    EXPECT_EQ(reader.getParsedSize(), reader.getFileSize());
    // The last row of a portion may be the last of the file: that is known at once.
    writeFile(dir.file("u.csv"), "1\n2\n");
    reader.setFileName(dir.file("u.csv"));
    ASSERT_TRUE(reader.parseFirst(finished, 2));
    EXPECT_TRUE(finished);
}

TEST_F(CsvReader, ReportsFilesThatCannotBeRead)
{
    EXPECT_FALSE(reader.parseNext(finished, false, 10));
    EXPECT_FALSE(finished);
    EXPECT_EQ(reader.getLastError(), headerError);
    EXPECT_FALSE(reader.startParsing());
    EXPECT_EQ(reader.getLastError(), "");
    for (const std::string& bad : {dir.file("none.csv"), dir.path(), dir.file("a\xFF"), path + "/x"})
    {
        reader.setFileName(bad);
        EXPECT_EQ(reader.getLastError(), "Failed to open the file") << bad;
        bool more = true;
        EXPECT_FALSE(reader.getData(more) || more);
        EXPECT_FALSE(reader.parseCsvFile() || reader.parseFirst(finished, 1));
    }
    // A name that is set again is not tried again.
    reader.setFileName(path);
    writeFile(path, "a\n");
    reader.setFileName(path);
    EXPECT_FALSE(reader.parseCsvFile());
    reader.setFileName(dir.path() + "/./t.csv");
    EXPECT_TRUE(reader.parseCsvFile());
}

TEST_F(CsvReader, EndsWhereAShrunkFileEnds)
{
    const BlockSize small(64);
    std::string bytes;
    for (int i = 0; i < 100; ++i)
        bytes += "0123456\n";
    writeFile(path, bytes);
    reader.setFileName(path);
    // What is appended while a file is read belongs to the next reading.
    for (const std::string& meanwhile : {bytes.substr(0, 83), bytes})
    {
        ASSERT_TRUE(reader.parseFirst(finished, 1));
        writeFile(path, meanwhile);
        ASSERT_TRUE(reader.parseNext(finished, false, 0));
        EXPECT_TRUE(finished);
        ASSERT_EQ(reader.getTable().size(), 11U);
        EXPECT_EQ(reader.getTable()[10][0], kyVariant("012"));
    }
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable().size(), 100U);
}

TEST_F(CsvReader, FileCanBeRenamedAndRemovedWhileItIsRead)
{
    using namespace ky::impl::native;
    writeFile(path, "a\nb\n");
    reader.setFileName(path);
    EXPECT_EQ(renameFile(path, dir.file("old.csv")), 0);
    EXPECT_EQ(removeFile(dir.file("old.csv")), 0);
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable().size(), 2U);
}

TEST_F(CsvReader, CopiesHoldTheTableNotTheFile)
{
    writeFile(path, "a;b\nc\n");
    reader.setColumnDelimiter(';');
    reader.setFileName(path);
    ASSERT_TRUE(reader.parseCsvFile());
    kyCsvFileReader copy(reader);
    EXPECT_EQ(copy.getTable(), reader.getTable());
    EXPECT_EQ(copy.getMaxColumnCount(), 2U);
    EXPECT_FALSE(copy.startParsing());
    copy = reader;
    const kyCsvFileReader& same = copy;
    copy = same;
    EXPECT_EQ(copy.getTable().size(), 2U);
    copy.setFileName(path);
    ASSERT_TRUE(copy.parseCsvFile());
    EXPECT_EQ(copy.getTable(), reader.getTable());
    // A moved reader goes on where it was.
    ASSERT_TRUE(reader.parseFirst(finished, 1));
    kyCsvFileReader moved(std::move(reader));
    ASSERT_TRUE(moved.parseNext(finished, false, 0));
    EXPECT_EQ(moved.getTable(), copy.getTable());
}

} // namespace
