// SPDX-License-Identifier: MIT
#include "tables.h"

#include <algorithm>

namespace demo
{

using ky::kyCsvFileReader;
using ky::kyDirUtils;
using ky::kyVariant;

namespace
{

constexpr std::size_t rowsAtATime = 500;
constexpr const char* mergedName = "merged";

bool inNaturalOrder(const std::string& a, const std::string& b)
{
    const std::string nameA = kyDirUtils::ExtractFileBaseName(a);
    const std::string nameB = kyDirUtils::ExtractFileBaseName(b);
    if (nameA != nameB)
        return ky::kyStringUtils::UTF8NaturalSortFunctionCaseInsensitive(nameA, nameB);
    return a < b;
}

void typeCell(const std::string& text, Column& column)
{
    if (text.empty())
    {
        ++column.empty;
        return;
    }
    switch (kyVariant::BuildFromString(text).getType())
    {
    case kyVariant::Type::Integer: ++column.integers; break;
    case kyVariant::Type::Real: ++column.reals; break;
    default: ++column.texts; break;
    }
}

/// Every column of a table has a name of its own.
void addColumn(Table& table, const std::string& name)
{
    Column column;
    column.name = name;
    if (name.empty() || table.findColumn(name) >= 0)
        column.name = "column " + ky::kyStringUtils::fromInt64(static_cast<std::int64_t>(table.columns.size()) + 1);
    table.columns.push_back(column);
}

/// From row `first` on, which is the header when it is 0.
void typeRows(Table& table, std::size_t first)
{
    const kyCsvFileReader::Table& rows = table.reader.getTable();
    for (; first < rows.size(); ++first)
    {
        const kyCsvFileReader::Row& row = rows[first];
        while (table.columns.size() < row.size())
            addColumn(table, first == 0 ? mergedCell(row[table.columns.size()]) : std::string());
        for (std::size_t i = 0; i < row.size() && first > 0; ++i)
            typeCell(row[i].getString(), table.columns[i]);
    }
}

/// Runs on any thread; touches its own table only.
void readTable(Table& table, ky::kyProgressNotifierInterface& progress)
{
    kyHighResTimer timer;
    timer.start();
    table.reader.setFileName(table.path);
    bool finished = false;
    std::size_t typed = 0;
    std::uint64_t reported = 0;
    bool isOk = table.reader.getLastError().empty() && table.reader.startParsing();
    while (isOk && !finished)
    {
        isOk = table.reader.parseNext(finished, false, rowsAtATime);
        typeRows(table, typed);
        typed = table.reader.getTable().size();
        progress.incrementCurrentStepProgress(static_cast<double>(table.reader.getParsedSize() - reported));
        reported = table.reader.getParsedSize();
    }
    table.error = table.reader.getLastError();
    table.milliseconds = timer.getElapsedTimeInMilliSec();
    if (table.error.empty())
        ky::logInfo("demo") << table.path << ": " << table.rowCount() << " rows, " << table.columns.size()
                            << " columns";
    else
        ky::logCritical("demo") << table.path << ": " << table.error;
}

/// The cells of a row at these places, empty ones for -1 and beyond the end of the row.
std::vector<std::string> mergedRow(const kyCsvFileReader::Row& row, const std::vector<int>& places)
{
    std::vector<std::string> cells;
    for (const int place : places)
    {
        const auto index = static_cast<std::size_t>(place);
        cells.push_back(index < row.size() ? mergedCell(row[index]) : std::string());
    }
    return cells;
}

void writeRow(ky::kyCsvStream& csv, const std::vector<std::string>& cells)
{
    for (const std::string& cell : cells)
        csv << cell;
    csv << ky::kyCsvStream::EndOfRow();
}

} // namespace

int Table::findColumn(const std::string& name) const
{
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& column) { return column.name == name; });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

std::vector<Table> findTables(const std::vector<std::string>& folders)
{
    std::vector<std::string> paths;
    const std::vector<std::string> filters = {"csv"};
    for (const std::string& folder : folders)
    {
        std::vector<std::string> found;
        kyDirUtils::GlobFileAndFolderUtf8(folder, &found, nullptr, &filters,
                                          kyDirUtils::GlobRecursive | kyDirUtils::GlobCaseInsensitive);
        paths.insert(paths.end(), found.begin(), found.end());
    }
    std::sort(paths.begin(), paths.end(), &inNaturalOrder);
    std::vector<Table> tables(paths.size());
    for (std::size_t i = 0; i < paths.size(); ++i)
    {
        ky::kyFileInfoUtf8 info;
        kyDirUtils::GetFileInfoUtf8(paths[i], info);
        tables[i].path = paths[i];
        tables[i].bytes = static_cast<std::uint64_t>(info.size);
    }
    return tables;
}

bool readTables(std::vector<Table>& tables, ky::kyProgressNotifierInterface& progress)
{
    ky::kyProgressNotifierThreadSafeProxy shared(&progress);
    ky::concurrent::parallelFor(
        std::size_t{0}, tables.size(), [&](std::size_t i) { readTable(tables[i], shared); }, 1);
    return std::all_of(tables.begin(), tables.end(), [](const Table& table) { return table.error.empty(); });
}

std::vector<std::string> mergedColumns(const std::vector<Table>& tables)
{
    std::vector<std::string> names;
    for (const Table& table : tables)
    {
        for (const Column& column : table.columns)
        {
            if (std::find(names.begin(), names.end(), column.name) == names.end())
                names.push_back(column.name);
        }
    }
    return names;
}

std::string mergedCell(const kyVariant& cell)
{
    // The CSV writer quotes for the sake of separators, not of line breaks.
    std::string text = cell.getString();
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

bool writeMerged(const std::vector<Table>& tables, const std::string& folder, unsigned int rowsPerFile,
                 ky::kyProgressNotifierInterface& progress, Tally& written)
{
    for (const std::string& old : mergedFiles(folder))
        kyDirUtils::RemoveFileUtf8(old);
    const std::vector<std::string> columns = mergedColumns(tables);
    ky::kyCsvFileWriter writer(folder, mergedName, rowsPerFile, ',', '"', "\r\n", true);
    std::uint32_t filesWithHeader = 0;
    for (const Table& table : tables)
    {
        std::vector<int> places;
        for (const std::string& name : columns)
            places.push_back(table.findColumn(name));
        const kyCsvFileReader::Table& rows = table.reader.getTable();
        for (std::size_t i = 1; i < rows.size() && writer.getStream().isOk(); ++i)
        {
            // The stream for this row is that of the next file when the present one is full.
            ky::kyCsvStream& csv = writer.getStream();
            if (filesWithHeader != writer.getFileCount())
                writeRow(csv, columns);
            filesWithHeader = writer.getFileCount();
            const std::vector<std::string> cells = mergedRow(rows[i], places);
            for (const std::string& cell : cells)
                written.addCell(cell);
            writeRow(csv, cells);
            ++written.rows;
        }
        progress.incrementCurrentStepProgress(static_cast<double>(table.rowCount()));
    }
    return writer.finish();
}

std::vector<std::string> mergedFiles(const std::string& folder)
{
    std::vector<std::string> files;
    const std::vector<std::string> filters = {"csv"};
    kyDirUtils::GlobFileAndFolderUtf8(folder, &files, nullptr, &filters, 0);
    const auto isOther = [](const std::string& file)
    { return kyDirUtils::ExtractFileBaseName(file).rfind(mergedName, 0) != 0; };
    files.erase(std::remove_if(files.begin(), files.end(), isOther), files.end());
    std::sort(files.begin(), files.end(), &inNaturalOrder);
    return files;
}

bool readMerged(const std::vector<std::string>& files, Tally& read)
{
    for (const std::string& file : files)
    {
        kyCsvFileReader reader;
        reader.setFileName(file);
        if (!reader.getLastError().empty() || !reader.parseCsvFile())
            return false;
        const kyCsvFileReader::Table& rows = reader.getTable();
        for (std::size_t i = 1; i < rows.size(); ++i)
        {
            ++read.rows;
            for (const kyVariant& cell : rows[i])
                read.addCell(cell.getString());
        }
    }
    return true;
}

} // namespace demo
