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

TableSummary::TableSummary(const Table& table)
{
    for (std::size_t r = 0; r < table.size(); ++r)
    {
        if (table[r].size() > mColumns.size())
            mColumns.resize(table[r].size());
        for (std::size_t c = 0; c < table[r].size(); ++c)
        {
            if (r == 0)
            {
                mColumns[c].name = table[r][c].toString();
                continue;
            }
            ++mColumns[c].typeCounts[table[r][c].getTypeAsString()];
            mColumns[c].longest = std::max(mColumns[c].longest, table[r][c].toString().size());
        }
    }
    mRows = table.empty() ? 0 : table.size() - 1;
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

void printRows(const Table& table, std::size_t count, std::ostream& out)
{
    const std::size_t last = std::min(table.size(), count + 1);
    for (std::size_t r = 1; r < last; ++r)
    {
        out << "  " << std::setw(4) << r << " ";
        for (const kyVariant& cell : table[r])
            out << " | " << shortened(cell.toString());
        out << '\n';
    }
}

} // namespace ky::tool
