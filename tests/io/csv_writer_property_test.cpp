// SPDX-License-Identifier: MIT
// What the writer writes, the reader reads, but for what no file can tell: a row without cells, line breaks in a cell
// that is not quoted, and a last row that is one empty cell.
#include "csv_support.h"

#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyCsvFileWriter.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace
{

using namespace ky::test;
using ky::kyCsvFileWriter;

const ky::kyCsvStream::EndOfRow endOfRow;
constexpr std::string_view mark = "\xEF\xBB\xBF";

struct Format : CsvFormat
{
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
    std::tie(format.delimiter, format.quote) = characters[random() % std::size(characters)];
    format.rowSeparator = rowSeparators[random() % std::size(rowSeparators)];
    format.maxRows = 1 + static_cast<unsigned int>(random()) % 12;
    format.bom = random() % 2 == 0;
    return format;
}

std::string randomCell(std::mt19937& random, const Format& format)
{
    std::vector<std::string> pieces =
        split(",|;|\"|'|a|1|-| |\t|\n|\r\n|\r|\xC3\xA4|\xE2\x82\xAC|word|\xF0\x9F\x98\x80");
    pieces.insert(pieces.end(), {std::string(1, '\0'), std::string(mark), std::string(60, 'z'),
                                 std::string(1, format.quote), std::string(1, format.delimiter)});
    std::string cell;
    for (auto count = random() % 6; count > 0; --count)
        cell += pieces[random() % pieces.size()];
    // A line break stays in its cell only where there is another reason for quotes.
    const bool quoted =
        cell.find(format.quote) != std::string::npos || cell.find(format.delimiter) != std::string::npos;
    if (!quoted && cell.find_first_of("\r\n") != std::string::npos)
        cell += format.delimiter;
    return cell;
}

TextTable randomTable(std::mt19937& random, const Format& format)
{
    TextTable table(random() % 30);
    for (TextRow& row : table)
    {
        row.resize(1 + random() % 5);
        for (std::string& cell : row)
            cell = randomCell(random, format);
    }
    return table;
}

bool write(const std::string& folder, const TextTable& table, const Format& format)
{
    kyCsvFileWriter writer(folder, "t", format.maxRows, format.delimiter, format.quote, format.rowSeparator,
                           format.bom);
    for (const TextRow& row : table)
    {
        ky::kyCsvStream& stream = writer.getStream();
        for (const std::string& cell : row)
            stream << cell;
        stream << endOfRow;
    }
    return writer.finish();
}

/// The rows of one file as they come back.
TextTable expectedRows(TextTable rows, const Format& format)
{
    // A first cell that begins like a mark and is not quoted.
    if (!format.bom && !rows.empty() && rows[0][0].compare(0, mark.size(), mark) == 0 &&
        rows[0][0].find(format.quote) == std::string::npos && rows[0][0].find(format.delimiter) == std::string::npos)
        rows[0][0].erase(0, mark.size());
    if (!rows.empty() && rows.back() == TextRow{""})
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
        const TextTable table = randomTable(random, format);
        ASSERT_TRUE(write(dir.path(), table, format));
        for (std::size_t first = 0; first < table.size(); first += format.maxRows)
        {
            const std::size_t file = first / format.maxRows;
            const std::string name = file == 0 ? "t.csv" : "t (" + std::to_string(file) + ").csv";
            const auto from = table.begin() + static_cast<std::ptrdiff_t>(first);
            const std::size_t count = std::min<std::size_t>(format.maxRows, table.size() - first);
            const TextTable expected = expectedRows(TextTable(from, from + static_cast<std::ptrdiff_t>(count)), format);
            EXPECT_EQ(show(readCsv(dir.file(name), format)), show({expected, ""}))
                << "round " << round << ", " << name << ":\n"
                << readFile(dir.file(name));
            ++files;
        }
        agreed += HasFailure() ? 0 : 1;
    }
    account("CSV writing", {files, "random files read again"}, {}, {rounds - agreed, "wrong tables"});
}

} // namespace
