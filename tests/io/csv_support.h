// SPDX-License-Identifier: MIT
#pragma once

#include "csv_reference.h"

#include "io/csv_block.h"

#include <ky/kyCsvFileReader.h>

#include <cstddef>
#include <string>

namespace ky::test
{

/// Makes the reader take its files in small blocks while the object lives.
class BlockSize
{
public:
    explicit BlockSize(std::size_t bytes) : mBefore(impl::csvBlockSize) { impl::csvBlockSize = bytes; }
    ~BlockSize() { impl::csvBlockSize = mBefore; }
    BlockSize(const BlockSize&) = delete;
    BlockSize& operator=(const BlockSize&) = delete;

private:
    std::size_t mBefore;
};

/// Adds the rows of a table whose cells are all strings.
inline void addRows(TextTable& rows, const kyCsvFileReader::Table& table)
{
    for (const kyCsvFileReader::Row& row : table)
    {
        TextRow& texts = rows.emplace_back();
        for (const kyVariant& cell : row)
            texts.push_back(cell.getType() == kyVariant::Type::String ? cell.getString() : "not a string");
    }
}

/// How the rows are asked for.
struct Portions
{
    std::size_t maxRows = 0;
    bool clearTable = false;
};

/// Reads the reader's file to its end or to the first error.
inline CsvResult readPortions(kyCsvFileReader& reader, Portions portions)
{
    CsvResult result;
    bool finished = false;
    bool ok = reader.startParsing();
    while (ok && !finished)
    {
        ok = reader.parseNext(finished, portions.clearTable, portions.maxRows);
        if (portions.maxRows != 0 && portions.clearTable && reader.getTable().size() > portions.maxRows)
            return {{}, "more rows than asked for"};
        if (portions.clearTable)
            addRows(result.rows, reader.getTable());
    }
    if (!portions.clearTable)
        addRows(result.rows, reader.getTable());
    result.error = ok ? "" : reader.getLastError();
    return result;
}

inline CsvResult readCsv(const std::string& path, CsvFormat format = {}, Portions portions = {})
{
    kyCsvFileReader reader(false);
    reader.setColumnDelimiter(format.delimiter);
    reader.setStringDelimiter(format.quote);
    reader.setFileName(path);
    return readPortions(reader, portions);
}

} // namespace ky::test
