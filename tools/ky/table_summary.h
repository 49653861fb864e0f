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
    explicit TableSummary(const Table& table);

    void print(std::ostream& out) const;

    /// Writes the summary below the key `section` of `ini`.
    void store(kyVariant::kyVariantMapImpl& ini, const std::string& section) const;

    std::size_t rowCount() const { return mRows; }
    std::size_t columnCount() const { return mColumns.size(); }

private:
    struct Column
    {
        std::string name;
        std::map<std::string, std::size_t> typeCounts; ///< type name -> cells
        std::size_t longest = 0;                       ///< bytes of the longest cell's text
    };

    std::vector<Column> mColumns;
    std::size_t mRows = 0;
};

/// Prints the first `count` rows behind the header, cells cut to a readable width.
void printRows(const Table& table, std::size_t count, std::ostream& out);

} // namespace ky::tool
