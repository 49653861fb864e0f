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

CsvResult parse(const std::string& bytes, CsvFormat format = {})
{
    const TempDir dir;
    writeFile(dir.file("t.csv"), bytes);
    return readCsv(dir.file("t.csv"), format);
}

TEST(CsvReader, SplitsRowsAndCells)
{
    const std::vector<std::pair<std::string, TextTable>> cases = {
        {"", {}},
        {"\n", {{""}}},
        {"\r\n\r\n", {{""}, {""}}},
        {"\r", {{""}}},
        {"a,\"b,c\",d", {{"a", "b,c", "d"}}},
        {"\"x\"\"y\"\n", {{"x\"y"}}},
        {"a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}},
        {"a\rb\n", {{"ab"}}},
        {"a,b\nc", {{"a", "b"}, {"c"}}},
        {"a\n\nb\n", {{"a"}, {""}, {"b"}}},
        {",\n", {{"", ""}}},
        {"\"line 1\r\nline 2\",x\n", {{"line 1\r\nline 2", "x"}}},
        {"a\"b,c\"d\n", {{"ab,cd"}}},
        {"\"a\"b\"c\"\n", {{"abc"}}},
        {"\"\",\"\"\"\"\n", {{"", "\""}}},
        {"\"open,\nto the end", {{"open,\nto the end"}}},
        {"\"open\n", {{"open\n"}}},
        {"\"", {{""}}},
        {"\xEF\xBB\xBF"
         "a,b\n",
         {{"a", "b"}}},
        {"\xEF\xBB\xBF", {}},
        {"\xEF\xBB\xBF\xEF\xBB\xBF"
         "a\n",
         {{"\xEF\xBB\xBF"
           "a"}}},
        {std::string("a\0b,\0\n", 6), {{std::string("a\0b", 3), std::string(1, '\0')}}},
        {"\xC3\xA4,\xF0\x9F\x98\x80\xE2\x82\xAC\n", {{"\xC3\xA4", "\xF0\x9F\x98\x80\xE2\x82\xAC"}}},
    };
    for (const auto& [bytes, rows] : cases)
        EXPECT_EQ(show(parse(bytes)), show({rows, ""})) << bytes;
}

TEST(CsvReader, ChecksQuoteBeforeDelimiterBeforeLineBreak)
{
    struct Case
    {
        CsvFormat format;
        std::string bytes;
        TextTable rows;
    };
    const std::vector<Case> cases = {
        {{';', '\''}, "a;'b;c';\"d\"\n", {{"a", "b;c", "\"d\""}}},
        {{'"', '"'}, "a\"b\"c,d\n", {{"abc,d"}}},
        {{'\n', '"'}, "a\nb\n", {{"a", "b", ""}}},
        {{'\r', '"'}, "a\rb\r\n", {{"a", "b", ""}}},
        {{',', '\n'}, "a\nb,c\nd", {{"ab,cd"}}},
        {{',', '\r'}, "\ra\r,b\n", {{"a", "b"}}},
        {{',', '\0'}, std::string("\0a,b\0,c\n", 8), {{"a,b", "c"}}},
        {{'\0', '"'}, std::string("a\0b\n", 4), {{"a", "b"}}},
        // The bytes of multi-byte characters are no delimiters, and no character of 128 or above is one.
        {{'\xA4', '\xC3'}, "\xC3\xA4,b\xC2\xA4\n", {{"\xC3\xA4,b\xC2\xA4"}}},
        {{'\xFF', '\xFF'}, "\xC3\xBF,b\n", {{"\xC3\xBF,b"}}},
    };
    for (const Case& item : cases)
    {
        EXPECT_EQ(show(parse(item.bytes, item.format)), show({item.rows, ""})) << item.bytes;
        EXPECT_EQ(show(referenceCsv(item.bytes, item.format)), show({item.rows, ""})) << item.bytes;
    }
}

TEST(CsvReader, RefusesTextThatIsNotUtf8AndKeepsTheRowsBefore)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
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
    for (const auto& [bytes, error] : cases)
    {
        const CsvResult expected{{{"a", "b"}, {"c", "d"}}, error};
        EXPECT_EQ(show(parse("a,b\nc,d\ne,f" + bytes)), show(expected));
        // The same with something behind it, and across a block border.
        const BlockSize small(5);
        const std::string behind = error == "Not enough space" ? "" : ",g\n";
        EXPECT_EQ(show(parse("a,b\nc,d\n\"e,f" + bytes + behind)), show(expected));
    }
}

TEST(CsvReader, LimitsCellsOfTheFirstRowOnly)
{
    const std::string most(65535, 'x');
    const std::string euros = most.substr(0, 65534) + "\xE2\x82\xAC";
    struct Case
    {
        std::string bytes;
        bool ok;
    };
    const std::vector<Case> cases = {
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
    for (const std::size_t block : {std::size_t(0x100000), std::size_t(4096), std::size_t(65537)})
    {
        const BlockSize small(block);
        for (const Case& item : cases)
        {
            const CsvResult result = parse(item.bytes);
            EXPECT_EQ(result.error, item.ok ? "" : headerError);
            EXPECT_EQ(result, referenceCsv(item.bytes));
        }
    }
}

TEST(CsvReader, CountsTheHeaderByFileNotByTable)
{
    const TempDir dir;
    const std::string big(70000, 'x');
    writeFile(dir.file("t.csv"), "a\n" + big + "\n");
    EXPECT_EQ(readCsv(dir.file("t.csv"), {}, {1, true}), (CsvResult{{{"a"}, {big}}, ""}));
    kyCsvFileReader reader(false);
    reader.setFileName(dir.file("t.csv"));
    ASSERT_TRUE(reader.parseCsvFile());
    writeFile(dir.file("u.csv"), big + "\n");
    reader.setFileName(dir.file("u.csv"));
    EXPECT_FALSE(reader.parseCsvFile());
    EXPECT_EQ(reader.getLastError(), headerError);
    EXPECT_TRUE(reader.getTable().empty());
}

TEST(CsvReader, KeepsRowWidthsAndGuessesTypes)
{
    const TempDir dir;
    writeFile(dir.file("t.csv"), "a,b\n1,-2,\"3\",0x1A,010\n1.5,\"2,5\",\"12 \"\n,true,\xC3\xA4\n");
    kyCsvFileReader reader(true);
    reader.setFileName(dir.file("t.csv"));
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getMaxColumnCount(), 5U);
    ASSERT_EQ(reader.getTable().size(), 4U);
    const auto& table = reader.getTable();
    const std::vector<std::size_t> widths = {2, 5, 3, 3};
    for (std::size_t i = 0; i < widths.size(); ++i)
        EXPECT_EQ(table[i].size(), widths[i]);
    const auto integer = [](std::int64_t value) { return kyVariant(value); };
    const std::vector<kyVariant> second = {integer(1), integer(-2), integer(3), integer(26), integer(8)};
    EXPECT_EQ(table[1], second);
    const std::vector<kyVariant> third = {kyVariant(1.5), kyVariant(2.5), kyVariant("12 ")};
    EXPECT_EQ(table[2], third);
    const std::vector<kyVariant> fourth = {integer(0), kyVariant("true"), kyVariant("\xC3\xA4")};
    EXPECT_EQ(table[3], fourth);

    reader.setEnableTypeGuess(false);
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable()[1][3], kyVariant("0x1A"));
    EXPECT_EQ(reader.getTable()[3][0], kyVariant(""));
}

TEST(CsvReader, HandsOutRowsInPortions)
{
    const TempDir dir;
    writeFile(dir.file("t.csv"), "1\n2\n3\n4\n5");
    kyCsvFileReader reader(false);
    reader.setFileName(dir.file("t.csv"));
    bool finished = true;
    ASSERT_TRUE(reader.parseFirst(finished, 2));
    EXPECT_FALSE(finished);
    EXPECT_EQ(reader.getTable().size(), 2U);
    ASSERT_TRUE(reader.parseNext(finished, false, 2));
    EXPECT_FALSE(finished);
    EXPECT_EQ(reader.getTable().size(), 4U);
    ASSERT_TRUE(reader.parseNext(finished, true, 2));
    EXPECT_TRUE(finished);
    ASSERT_EQ(reader.getTable().size(), 1U);
    EXPECT_EQ(reader.getTable()[0][0], kyVariant("5"));
    ASSERT_TRUE(reader.parseNext(finished, false, 2));
    EXPECT_TRUE(finished);
    EXPECT_EQ(reader.getTable().size(), 1U);
    // The last row of a portion may be the last of the file: that is known at once.
    writeFile(dir.file("u.csv"), "1\n2\n");
    reader.setFileName(dir.file("u.csv"));
    ASSERT_TRUE(reader.parseFirst(finished, 2));
    EXPECT_TRUE(finished);
}

TEST(CsvReader, ReportsFilesThatCannotBeRead)
{
    const TempDir dir;
    bool finished = true;
    kyCsvFileReader reader(false);
    EXPECT_FALSE(reader.parseNext(finished, false, 10));
    EXPECT_FALSE(finished);
    EXPECT_EQ(reader.getLastError(), headerError);
    EXPECT_FALSE(reader.startParsing());
    EXPECT_EQ(reader.getLastError(), "");
    for (const std::string& path : {dir.file("none.csv"), dir.path(), dir.file("a\xFF"), dir.file("t.csv/x")})
    {
        reader.setFileName(path);
        EXPECT_EQ(reader.getLastError(), "Failed to open the file") << path;
        bool more = true;
        EXPECT_FALSE(reader.getData(more));
        EXPECT_FALSE(more);
        EXPECT_FALSE(reader.parseCsvFile());
        EXPECT_FALSE(reader.parseFirst(finished, 1));
    }
    // A name that is set again is not tried again.
    writeFile(dir.file("t.csv"), "a\n");
    reader.setFileName(dir.file("late.csv"));
    writeFile(dir.file("late.csv"), "a\n");
    reader.setFileName(dir.file("late.csv"));
    EXPECT_FALSE(reader.parseCsvFile());
    reader.setFileName(dir.file("t.csv"));
    EXPECT_TRUE(reader.parseCsvFile());
}

TEST(CsvReader, EndsWhereAShrunkFileEnds)
{
    const TempDir dir;
    const BlockSize small(64);
    std::string bytes;
    for (int i = 0; i < 100; ++i)
        bytes += "0123456\n";
    writeFile(dir.file("t.csv"), bytes);
    kyCsvFileReader reader(false);
    reader.setFileName(dir.file("t.csv"));
    bool finished = false;
    ASSERT_TRUE(reader.parseFirst(finished, 1));
    writeFile(dir.file("t.csv"), bytes.substr(0, 83));
    ASSERT_TRUE(reader.parseNext(finished, false, 0));
    EXPECT_TRUE(finished);
    ASSERT_EQ(reader.getTable().size(), 11U);
    EXPECT_EQ(reader.getTable()[10][0], kyVariant("012"));
    // What is appended meanwhile belongs to the next reading.
    ASSERT_TRUE(reader.parseFirst(finished, 1));
    writeFile(dir.file("t.csv"), bytes);
    ASSERT_TRUE(reader.parseNext(finished, false, 0));
    EXPECT_EQ(reader.getTable().size(), 11U);
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable().size(), 100U);
}

TEST(CsvReader, FileCanBeRenamedAndRemovedWhileItIsRead)
{
    using namespace ky::impl::native;
    const TempDir dir;
    writeFile(dir.file("t.csv"), "a\nb\n");
    kyCsvFileReader reader(false);
    reader.setFileName(dir.file("t.csv"));
    EXPECT_EQ(renameFile(dir.file("t.csv"), dir.file("old.csv")), 0);
    EXPECT_EQ(removeFile(dir.file("old.csv")), 0);
    ASSERT_TRUE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable().size(), 2U);
}

TEST(CsvReader, CopiesHoldTheTableNotTheFile)
{
    const TempDir dir;
    writeFile(dir.file("t.csv"), "a;b\nc\n");
    kyCsvFileReader reader(false);
    reader.setColumnDelimiter(';');
    reader.setFileName(dir.file("t.csv"));
    ASSERT_TRUE(reader.parseCsvFile());
    kyCsvFileReader copy(reader);
    EXPECT_EQ(copy.getTable(), reader.getTable());
    EXPECT_EQ(copy.getMaxColumnCount(), 2U);
    EXPECT_FALSE(copy.startParsing());
    copy = reader;
    const kyCsvFileReader& same = copy;
    copy = same;
    EXPECT_EQ(copy.getTable().size(), 2U);
    copy.setFileName(dir.file("t.csv"));
    ASSERT_TRUE(copy.parseCsvFile());
    EXPECT_EQ(copy.getTable(), reader.getTable());
    // A moved reader goes on where it was.
    bool finished = false;
    ASSERT_TRUE(reader.parseFirst(finished, 1));
    kyCsvFileReader moved(std::move(reader));
    ASSERT_TRUE(moved.parseNext(finished, false, 0));
    EXPECT_EQ(moved.getTable(), copy.getTable());
}

} // namespace
