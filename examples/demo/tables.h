// SPDX-License-Identifier: MIT
#pragma once

#include <ky/ky.h>

#include <cstdint>
#include <string>
#include <vector>

namespace demo
{

/// What the cells of one column look like; empty ones belong to no type.
struct Column
{
    std::string name;
    std::uint64_t integers = 0;
    std::uint64_t reals = 0;
    std::uint64_t texts = 0;
    std::uint64_t empty = 0;
};

/// A CSV file. Its rows stay in the reader, the header among them.
struct Table
{
    std::string path;
    std::uint64_t bytes = 0;
    double milliseconds = 0;
    std::string error; ///< empty when the whole file was read
    std::vector<Column> columns;
    ky::kyCsvFileReader reader; ///< every cell as the text that the file holds

    /// Without the header.
    [[nodiscard]] std::size_t rowCount() const { return reader.getTable().empty() ? 0 : reader.getTable().size() - 1; }
    /// Place of a column, -1 without it.
    [[nodiscard]] int findColumn(const std::string& name) const;
};

/// What two who have seen the same cells agree about.
struct Tally
{
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0; ///< of all cells

    void addCell(const std::string& cell) { bytes += cell.size(); }
    [[nodiscard]] bool operator==(const Tally& other) const { return rows == other.rows && bytes == other.bytes; }
};

/// The tables below the folders, by name as people order them.
std::vector<Table> findTables(const std::vector<std::string>& folders);

/// Reads and types the tables on all processors; `progress` counts their bytes. False when one of them failed.
bool readTables(std::vector<Table>& tables, ky::kyProgressNotifierInterface& progress);

/// The names of all columns in the order of their first table.
std::vector<std::string> mergedColumns(const std::vector<Table>& tables);

/// The text of a cell as it goes into the merged table.
std::string mergedCell(const ky::kyVariant& cell);

/// Writes all rows into one table, split into `folder`/merged.csv, `folder`/merged (1).csv and so on, each with the
/// header. `progress` counts rows. False when something could not be written.
bool writeMerged(const std::vector<Table>& tables, const std::string& folder, unsigned int rowsPerFile,
                 ky::kyProgressNotifierInterface& progress, Tally& written);

/// The files of the merged table, in their order.
std::vector<std::string> mergedFiles(const std::string& folder);

/// Reads the merged table back.
bool readMerged(const std::vector<std::string>& files, Tally& read);

} // namespace demo
