// SPDX-License-Identifier: MIT
// What the writer writes, the reader reads, but for what no file can tell: a row without cells, line breaks in a cell
// that is not quoted, and a last row that is one empty cell.
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyCsvFileReader.h>
#include <ky/kyCsvFileWriter.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyCsvFileReader;
using ky::kyCsvFileWriter;
using Row = std::vector<std::string>;
using Table = std::vector<Row>;

const ky::kyCsvStream::EndOfRow endOfRow;
constexpr std::string_view mark = "\xEF\xBB\xBF";

struct Format
{
    char separator = ',';
    char quote = '"';
    std::string rowSeparator = "\n";
    unsigned int maxRows = 1;
    bool bom = false;
};

Format randomFormat(std::mt19937& random)
{
    const std::pair<char, char> characters[] = {{',', '"'}, {';', '"'},  {'\t', '\''}, {'"', ','},
                                                {'a', '1'}, {'\0', '"'}, {',', '\0'},  {' ', '-'}};
    const char* const rowSeparators[] = {"\r\n", "\n", "\r\r\n"};
    Format format;
    std::tie(format.separator, format.quote) = characters[random() % std::size(characters)];
    format.rowSeparator = rowSeparators[random() % std::size(rowSeparators)];
    format.maxRows = 1 + static_cast<unsigned int>(random()) % 12;
    format.bom = random() % 2 == 0;
    return format;
}

std::string randomCell(std::mt19937& random, const Format& format)
{
    const std::string pieces[] = {",",
                                  ";",
                                  "\"",
                                  "'",
                                  "a",
                                  "1",
                                  "-",
                                  " ",
                                  "\t",
                                  "\n",
                                  "\r\n",
                                  "\r",
                                  "\xC3\xA4",
                                  "\xE2\x82\xAC",
                                  "word",
                                  "\xF0\x9F\x98\x80",
                                  std::string(1, '\0'),
                                  std::string(mark),
                                  std::string(60, 'z'),
                                  std::string(1, format.quote),
                                  std::string(1, format.separator)};
    std::string cell;
    for (auto count = random() % 6; count > 0; --count)
        cell += pieces[random() % std::size(pieces)];
    // A line break stays in its cell only where there is another reason for quotes.
    const bool quoted =
        cell.find(format.quote) != std::string::npos || cell.find(format.separator) != std::string::npos;
    if (!quoted && cell.find_first_of("\r\n") != std::string::npos)
        cell += format.separator;
    return cell;
}

Table randomTable(std::mt19937& random, const Format& format)
{
    Table table(random() % 30);
    for (Row& row : table)
    {
        row.resize(1 + random() % 5);
        for (std::string& cell : row)
            cell = randomCell(random, format);
    }
    return table;
}

bool write(const std::string& folder, const Table& table, const Format& format)
{
    kyCsvFileWriter writer(folder, "t", format.maxRows, format.separator, format.quote, format.rowSeparator,
                           format.bom);
    for (const Row& row : table)
    {
        ky::kyCsvStream& stream = writer.getStream();
        for (const std::string& cell : row)
            stream << cell;
        stream << endOfRow;
    }
    return writer.finish();
}

Table read(const std::string& path, const Format& format)
{
    kyCsvFileReader reader(false);
    reader.setColumnDelimiter(format.separator);
    reader.setStringDelimiter(format.quote);
    reader.setFileName(path);
    EXPECT_TRUE(reader.parseCsvFile()) << reader.getLastError();
    Table table;
    for (const auto& cells : reader.getTable())
    {
        Row& row = table.emplace_back();
        for (const ky::kyVariant& cell : cells)
            row.push_back(cell.getString());
    }
    return table;
}

/// The rows of one file as they come back.
Table expectedRows(Table rows, const Format& format)
{
    // A first cell that begins like a mark and is not quoted.
    if (!format.bom && !rows.empty() && rows[0][0].compare(0, mark.size(), mark) == 0 &&
        rows[0][0].find(format.quote) == std::string::npos && rows[0][0].find(format.separator) == std::string::npos)
        rows[0][0].erase(0, mark.size());
    if (!rows.empty() && rows.back() == Row{""})
        rows.pop_back();
    return rows;
}

TEST(CsvWriterProperty, WhatIsWrittenIsRead)
{
    const TempDir dir;
    std::mt19937 random(64);
    const int rounds = ky::test::isSoak() ? 20000 : 300;
    int agreed = 0;
    std::uint64_t files = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round)
    {
        const Format format = randomFormat(random);
        const Table table = randomTable(random, format);
        ASSERT_TRUE(write(dir.path(), table, format));
        for (std::size_t first = 0; first < table.size(); first += format.maxRows)
        {
            const std::size_t file = first / format.maxRows;
            const std::string name = file == 0 ? "t.csv" : "t (" + std::to_string(file) + ").csv";
            const auto from = table.begin() + static_cast<std::ptrdiff_t>(first);
            const std::size_t count = std::min<std::size_t>(format.maxRows, table.size() - first);
            const Table expected = expectedRows(Table(from, from + static_cast<std::ptrdiff_t>(count)), format);
            EXPECT_EQ(read(dir.file(name), format), expected) << "round " << round << ", " << name << ":\n"
                                                              << readFile(dir.file(name));
            ++files;
        }
        agreed += HasFailure() ? 0 : 1;
    }
    account("CSV writing", {files, "random files read again"}, {}, {rounds - agreed, "wrong tables"});
}

TEST(CsvWriterProperty, NumbersKeepTheirValueAndType)
{
    const TempDir dir;
    std::mt19937_64 random(65);
    std::vector<std::int64_t> integers;
    kyCsvFileWriter writer(dir.path(), "t");
    for (int row = 0; row < 2000; ++row)
    {
        integers.push_back(static_cast<std::int64_t>(random() >> (random() % 64)) * (row % 2 == 0 ? 1 : -1));
        writer.getStream() << integers.back() << 0.001 * row << (row % 2 == 0) << endOfRow;
    }
    ASSERT_TRUE(writer.finish());
    kyCsvFileReader reader(true);
    reader.setFileName(dir.file("t.csv"));
    ASSERT_TRUE(reader.parseCsvFile());
    ASSERT_EQ(reader.getTable().size(), integers.size());
    for (std::size_t row = 0; row < integers.size(); ++row)
    {
        const auto& cells = reader.getTable()[row];
        ASSERT_EQ(cells[0].getType(), ky::kyVariant::Type::Integer);
        ASSERT_EQ(cells[0].toInteger(), integers[row]);
        ASSERT_NEAR(cells[1].toReal(), 0.001 * static_cast<double>(row), 0.005) << "three digits";
        ASSERT_EQ(cells[2].getString(), row % 2 == 0 ? "true" : "false");
    }
}

} // namespace
