// SPDX-License-Identifier: MIT
// Files as they come: one sample table, damaged in the ways that real CSV files are. Every row says what is wrong and
// what the reader makes of it; nothing that is still readable may be lost.
#include "csv_support.h"

#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace ky::test;

struct Pollution
{
    const char* kind;
    std::string bytes;
    TextTable rows;
    std::string error = "";
};

const TextRow header = {"id", "name", "amount"};
const TextRow first = {"1", "Smith, J", "2.50"};
const TextRow second = {"2", "Lee", "3"};
const TextTable clean = {header, first, second};

std::vector<Pollution> lineEnds()
{
    return {
        {"clean", "id,name,amount\n1,\"Smith, J\",2.50\n2,Lee,3\n", clean},
        {"no final line break", "id,name,amount\n1,\"Smith, J\",2.50\n2,Lee,3", clean},
        {"several final line breaks",
         "id,name,amount\n1,\"Smith, J\",2.50\n2,Lee,3\n\n\n",
         {header, first, second, {""}, {""}}},
        {"CR LF", "id,name,amount\r\n1,\"Smith, J\",2.50\r\n2,Lee,3\r\n", clean},
        {"mixed line ends", "id,name,amount\r\n1,\"Smith, J\",2.50\n2,Lee,3\r", clean},
        {"CR CR LF", "id,name,amount\r\r\n1,\"Smith, J\",2.50\r\r\n2,Lee,3\r\r\n", clean},
        {"CR alone runs rows together", "id,name\r1,Lee\r", {{"id", "name1", "Lee"}}},
        {"empty lines between rows",
         "id,name,amount\n\n1,\"Smith, J\",2.50\n\n2,Lee,3\n",
         {header, {""}, first, {""}, second}},
        {"blank line", "id,name,amount\n   \n2,Lee,3\n", {header, {"   "}, second}},
        {"form feed and vertical tab are text",
         "id,name,amount\f\n2,Lee,3\v\n",
         {{"id", "name", "amount\f"}, {"2", "Lee", "3\v"}}},
        {"Unicode line separators are text",
         "id,name,amount\n2,\xE2\x80\xA8Lee\xC2\x85,3\n",
         {header, {"2", "\xE2\x80\xA8Lee\xC2\x85", "3"}}},
        {"no content", "", {}},
        {"only a line break", "\n", {{""}}},
        {"only a header", "id,name,amount\n", {header}},
    };
}

std::vector<Pollution> quotes()
{
    return {
        {"everything quoted", "\"id\",\"name\",\"amount\"\n\"1\",\"Smith, J\",\"2.50\"\n\"2\",\"Lee\",\"3\"\n", clean},
        {"unquoted delimiter", "id,name,amount\n1,Smith, J,2.50\n", {header, {"1", "Smith", " J", "2.50"}}},
        {"quote inside an unquoted cell", "id,name,amount\n2,L\"ee,3\n4,x,5\n", {header, {"2", "Lee,3\n4,x,5\n"}}},
        {"two quotes inside an unquoted cell", "id,name,amount\n2,L\"e\"e,3\n", {header, second}},
        {"text behind the closing quote", "id,name,amount\n2,\"Le\"e,3\n", {header, second}},
        {"blank before the opening quote",
         "id,name,amount\n1, \"Smith, J\",2.50\n",
         {header, {"1", " Smith, J", "2.50"}}},
        {"blank behind the closing quote",
         "id,name,amount\n1,\"Smith, J\" ,2.50\n",
         {header, {"1", "Smith, J ", "2.50"}}},
        {"quote escaped with a backslash", "id,name,amount\n2,\"L\\\"ee\\\"\",3\n", {header, {"2", "L\\ee\\", "3"}}},
        {"single quote not doubled", "id,name,amount\n2,\"a \"b\" c\",3\n", {header, {"2", "a b c", "3"}}},
        {"opening quote missing", "id,name,amount\n2,Lee\",3\n4,x,5\n", {header, {"2", "Lee,3\n4,x,5\n"}}},
        {"closing quote missing", "id,name,amount\n2,\"Lee,3\n4,x,5\n", {header, {"2", "Lee,3\n4,x,5\n"}}},
        {"closing quote missing in the last row", "id,name,amount\n2,Lee,\"3", {header, second}},
        {"line break in quotes", "id,name,amount\n2,\"L\r\nee\",3\n", {header, {"2", "L\r\nee", "3"}}},
        {"apostrophes as quotes", "id,name,amount\n1,'Smith, J',2.50\n", {header, {"1", "'Smith", " J'", "2.50"}}},
        {"typographic quotes",
         "id,name,amount\n2,\xE2\x80\x9CLee\xE2\x80\x9D,3\n",
         {header, {"2", "\xE2\x80\x9CLee\xE2\x80\x9D", "3"}}},
        {"only quotes", "\"\"\"\"\"\"\n", {{"\"\""}}},
    };
}

std::vector<Pollution> shapes()
{
    return {
        {"row too short", "id,name,amount\n2,Lee\n", {header, {"2", "Lee"}}},
        {"row too long", "id,name,amount\n2,Lee,3,4,\n", {header, {"2", "Lee", "3", "4", ""}}},
        {"delimiter at every line end",
         "id,name,amount,\n2,Lee,3,\n",
         {{"id", "name", "amount", ""}, {"2", "Lee", "3", ""}}},
        {"other delimiter in one row", "id,name,amount\n2;Lee;3\n", {header, {"2;Lee;3"}}},
        {"tabs", "id\tname\tamount\n", {{"id\tname\tamount"}}},
        {"title above the header", "Amounts of 2026\n\nid,name,amount\n", {{"Amounts of 2026"}, {""}, header}},
        {"declared delimiter", "sep=,\nid,name,amount\n", {{"sep=", ""}, header}},
        {"comment", "id,name,amount\n# checked\n2,Lee,3\n", {header, {"# checked"}, second}},
        {"second header", "id,name,amount\n2,Lee,3\nid,name,amount\n", {header, second, header}},
        {"two tables", "id,name,amount\n2,Lee,3\n\nk,v\na,b\n", {header, second, {""}, {"k", "v"}, {"a", "b"}}},
        {"blanks around cells", "id , name\n", {{"id ", " name"}}},
    };
}

std::vector<Pollution> encodings()
{
    return {
        {"byte-order mark", "\xEF\xBB\xBFid,name,amount\n2,Lee,3\n", {header, second}},
        {"mark inside the file",
         "id,name,amount\n\xEF\xBB\xBF"
         "2,Lee,3\n",
         {header,
          {"\xEF\xBB\xBF"
           "2",
           "Lee", "3"}}},
        {"Latin-1", "id,name,amount\n2,Lee,3\n4,M\xFCller,5\n6,x,7\n", {header, second}, "Invalid UTF-8"},
        {"UTF-16", std::string("\xFF\xFEi\0d\0\n\0", 8), {}, "Invalid UTF-8"},
        {"overlong NUL", "id,name,amount\n2,\xC0\x80,3\n", {header}, "Invalid UTF-8"},
        {"surrogate", "id,name,amount\n2,\xED\xA0\xBD,3\n", {header}, "Invalid code point"},
        {"cut inside a character", "id,name,amount\n2,Lee,\xE2\x82", {header}, "Not enough space"},
        {"NUL bytes", std::string("id,name,amount\n2,L\0e,3\n", 23), {header, {"2", std::string("L\0e", 3), "3"}}},
        {"control characters",
         "id,name,amount\n2,\x01L\x1A"
         "ee\x7F,3\n",
         {header,
          {"2",
           "\x01L\x1A"
           "ee\x7F",
           "3"}}},
    };
}

TEST(CsvPollution, KeepsWhatIsReadable)
{
    const TempDir dir;
    std::size_t kinds = 0;
    for (const auto& group : {lineEnds(), quotes(), shapes(), encodings()})
    {
        for (const Pollution& item : group)
        {
            writeFile(dir.file("t.csv"), item.bytes);
            const std::string expected = show({item.rows, item.error});
            EXPECT_EQ(show(readCsv(dir.file("t.csv"))), expected) << item.kind;
            const BlockSize small(4);
            EXPECT_EQ(show(readCsv(dir.file("t.csv"), {}, {1, true})), expected) << item.kind << ", in small portions";
            ++kinds;
        }
    }
    RecordProperty("kinds", static_cast<int>(kinds));
}

} // namespace
