// SPDX-License-Identifier: MIT
#include "ky/table_summary.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <iomanip>
#include <ostream>

namespace ky::tool
{

namespace
{

constexpr std::size_t shownCharacters = 28;

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// At most `shownCharacters` code points on one line.
std::string shortened(const std::string& text)
{
    std::string result;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (!continuesCharacter(text[i]) && ++characters > shownCharacters)
            return result + "...";
        result += static_cast<unsigned char>(text[i]) < ' ' ? ' ' : text[i];
    }
    return result;
}

std::string padded(const std::string& text, std::size_t width)
{
    const std::size_t characters = kyStringUtils::CountUtf8Char(text);
    return text + std::string(characters < width ? width - characters : 0, ' ');
}

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
    out << "  " << mRows << " rows, " << mColumns.size() << " columns\n";
    for (const Column& column : mColumns)
    {
        out << "  " << padded(shortened(column.name), 24);
        for (const auto& [type, count] : column.typeCounts)
            out << "  " << type << ' ' << count;
        out << "  longest " << column.longest << '\n';
    }
    for (std::size_t r = 0; r < mFirstRows.size(); ++r)
    {
        out << "  " << std::setw(4) << r + 1 << " ";
        for (const kyVariant& cell : mFirstRows[r])
            out << " | " << shortened(cell.toString());
        out << '\n';
    }
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
