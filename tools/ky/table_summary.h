// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyVariant.h>

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace ky::tool
{

using Table = std::vector<std::vector<kyVariant>>;

/// What `ky csv` tells about one table. The first row is taken to be the header.
class TableSummary
{
public:
    /// \param shownRows how many rows behind the header are kept to be printed
    explicit TableSummary(std::size_t shownRows) : mShownRows(shownRows) {}

    /// Takes the next rows of the table.
    void add(const Table& rows);

    /// Prints size and columns, then the first rows, cells cut to a readable width.
    void print(std::ostream& out) const;

    /// Writes the summary below the key `section` of `ini`.
    void store(kyVariant::kyVariantMapImpl& ini, const std::string& section) const;

    std::size_t rowCount() const { return mRows; } ///< without the header
    std::size_t columnCount() const { return mColumns.size(); }

private:
    struct Column
    {
        std::string name;
        std::map<std::string, std::size_t> typeCounts; ///< type name -> cells
        std::size_t longest = 0;                       ///< bytes of the longest cell's text
    };

    void addHeader(const std::vector<kyVariant>& row);
    void addRow(const std::vector<kyVariant>& row);
    void printColumns(std::ostream& out) const;
    void printRows(std::ostream& out) const;

    std::vector<Column> mColumns;
    Table mFirstRows;
    std::size_t mShownRows;
    std::size_t mRows = 0;
    bool mHeaderSeen = false;
};

} // namespace ky::tool
