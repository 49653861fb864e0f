// SPDX-License-Identifier: MIT
#include "ky/table_summary.h"

#include <ky/kyAsciiTableBuilder.h>

#include <algorithm>
#include <ostream>

namespace ky::tool
{

namespace
{

constexpr std::size_t shownWidth = 28; // of a cell
constexpr std::size_t indent = 2;

/// On one line.
std::string shortened(const std::string& text) { return AsciiTableBuilder::Shorten(text, shownWidth); }

} // namespace

void TableSummary::add(const Table& rows)
{
    for (const std::vector<kyVariant>& row : rows)
    {
        if (row.size() > mColumns.size())
            mColumns.resize(row.size());
        if (mHeaderSeen)
            addRow(row);
        else
            addHeader(row);
    }
}

void TableSummary::addHeader(const std::vector<kyVariant>& row)
{
    mHeaderSeen = true;
    for (std::size_t c = 0; c < row.size(); ++c)
        mColumns[c].name = row[c].toString();
}

void TableSummary::addRow(const std::vector<kyVariant>& row)
{
    for (std::size_t c = 0; c < row.size(); ++c)
    {
        ++mColumns[c].typeCounts[row[c].getTypeAsString()];
        mColumns[c].longest = std::max(mColumns[c].longest, row[c].toString().size());
    }
    if (++mRows <= mShownRows)
        mFirstRows.push_back(row);
}

void TableSummary::print(std::ostream& out) const
{
    out << std::string(indent, ' ') << mRows << " rows, " << mColumns.size() << " columns\n";
    printColumns(out);
    if (!mFirstRows.empty())
        printRows(out);
}

void TableSummary::printColumns(std::ostream& out) const
{
    AsciiTableBuilder table({"Column", "Types", "Longest"});
    table.setIndent(indent);
    for (const Column& column : mColumns)
    {
        std::string types;
        for (const auto& [type, count] : column.typeCounts)
            types += (types.empty() ? "" : ", ") + type + ' ' + std::to_string(count);
        table.addRow(shortened(column.name), types, column.longest);
    }
    out << table;
}

void TableSummary::printRows(std::ostream& out) const
{
    using Alignment = AsciiTableBuilder::Alignment;
    AsciiTableBuilder table({"Row"});
    table.setIndent(indent);
    for (const Column& column : mColumns)
    {
        const auto count = [&](const char* type)
        {
            const auto found = column.typeCounts.find(type);
            return found == column.typeCounts.end() ? 0 : found->second;
        };
        const bool isNumeric = mRows > 0 && count("INTEGER") + count("REAL") == mRows;
        table.addColumn(shortened(column.name), isNumeric ? Alignment::Decimal : Alignment::Left);
    }
    for (std::size_t r = 0; r < mFirstRows.size(); ++r)
    {
        table.addCell(r + 1);
        for (const kyVariant& cell : mFirstRows[r])
            table.addCell(shortened(cell.toString()));
        table.endRow();
    }
    out << '\n' << table;
}

void TableSummary::store(kyVariant::kyVariantMapImpl& ini, const std::string& section) const
{
    kyVariant::kyVariantMapImpl map;
    map["rows"] = mRows;
    map["columns"] = mColumns.size();
    for (std::size_t c = 0; c < mColumns.size(); ++c)
    {
        const std::string base = "column" + std::to_string(c + 1) + "/";
        map.editValuePath((base + "name").c_str(), kyVariant(mColumns[c].name), '/');
        map.editValuePath((base + "longest").c_str(), kyVariant(mColumns[c].longest), '/');
        for (const auto& [type, count] : mColumns[c].typeCounts)
            map.editValuePath((base + "type/" + type).c_str(), kyVariant(count), '/');
    }
    ini[section] = map;
}

} // namespace ky::tool
