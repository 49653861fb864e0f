// SPDX-License-Identifier: MIT
// From the cells of a table builder to lines of text.
#pragma once

#include <ky/kyAsciiTableBuilder.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

struct TableFrame;

class TableLayout
{
public:
    explicit TableLayout(const AsciiTableBuilder& table);

    void write(std::string& out);

private:
    using Alignment = AsciiTableBuilder::Alignment;
    using Overflow = AsciiTableBuilder::Overflow;

    struct Column
    {
        std::size_t width = 0;
        Alignment alignment = Alignment::Left;
        std::size_t beforePoint = 0; ///< with Alignment::Decimal: widest text before the '.'
        std::size_t fromPoint = 0;   ///< and from there on
    };

    /// One line of a cell, or a part of one.
    struct Line
    {
        std::string_view text;
        std::size_t width = 0; ///< without the mark of what is cut off
        bool isCut = false;
    };

    std::string_view cellText(std::size_t cell) const;
    std::size_t firstCell(std::size_t row) const { return row == 0 ? 0 : mTable.mRows[row - 1].endCell; }

    void measure();
    void measureHeaders();
    void resolveAlignments();
    void measureDecimals();
    void limitWidths();
    void limitTable();
    std::size_t fixedWidth() const;

    void setLines(std::size_t column, std::string_view text, std::size_t width, bool isMultiline);
    void addLine(std::size_t column, std::string_view line);
    void truncate(std::size_t column, std::string_view line);
    void wrap(std::size_t column, std::string_view line);

    void writeHeader(std::string& out);
    void writeRow(std::string& out, std::size_t row);
    void writeLines(std::string& out) const;
    void writeLine(std::string& out, std::size_t column, const Line& line) const;
    void writeRule(std::string& out, const std::string_view (&joints)[3]) const;
    std::size_t blanksBefore(const Column& column, const Line& line, std::size_t blanks) const;

    const AsciiTableBuilder& mTable;
    const TableFrame& mFrame;
    std::vector<Column> mColumns;
    std::vector<std::vector<Line>> mLines; // of the row that is being written, by column
    bool mHasHeader = false;
    bool mWritesHeader = false;
};

} // namespace ky::impl
