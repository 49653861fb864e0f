// SPDX-License-Identifier: MIT
#include "text/table_layout.h"

#include "text/display_text.h"

#include <algorithm>

namespace ky::impl
{

/// What stands around and between the columns.
struct TableFrame
{
    bool isFramed;
    bool hasRules;
    std::string_view dash;
    std::string_view vertical;
    std::string_view top[3]; ///< left, between columns, right
    std::string_view middle[3];
    std::string_view bottom[3];
    std::string_view cutMark;
};

namespace
{

using Style = AsciiTableBuilder::Style;

constexpr std::size_t gap = 2; // between columns without frames
constexpr std::size_t minColumnWidth = 2;

constexpr TableFrame plain = {false, false, " ", "", {"", "  ", ""}, {"", "  ", ""}, {"", "  ", ""}, "..."};
constexpr TableFrame underlined = {false, true, "-", "", {"", "  ", ""}, {"", "  ", ""}, {"", "  ", ""}, "..."};
constexpr TableFrame ascii = {true, true, "-", "|", {"+-", "-+-", "-+"}, {"+-", "-+-", "-+"}, {"+-", "-+-", "-+"},
                              "..."};
constexpr TableFrame box = {true, true, "─", "│", {"┌─", "─┬─", "─┐"}, {"├─", "─┼─", "─┤"}, {"└─", "─┴─", "─┘"}, "…"};

const TableFrame& frameOf(Style style)
{
    switch (style)
    {
    case Style::Plain: return plain;
    case Style::Ascii: return ascii;
    case Style::Box: return box;
    case Style::Underlined: break;
    }
    return underlined;
}

void appendRepeated(std::string& out, std::string_view text, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        out += text;
}

/// Cuts the first line off.
std::string_view takeLine(std::string_view& text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

struct PointPlace
{
    std::size_t before = 0;
    std::size_t from = 0;
};

PointPlace pointPlace(std::string_view line, std::size_t width)
{
    const std::size_t before = displayWidth(line.substr(0, line.find('.')));
    return {before, width - before};
}

/// The widths together, each cut down to `cap`.
std::size_t cappedSum(const std::vector<std::size_t>& widths, std::size_t cap)
{
    std::size_t sum = 0;
    for (const std::size_t width : widths)
        sum += std::min(width, cap);
    return sum;
}

void trimRight(std::string& out, std::size_t from)
{
    std::size_t end = out.size();
    while (end > from && out[end - 1] == ' ')
        --end;
    out.resize(end);
}

} // namespace

TableLayout::TableLayout(const AsciiTableBuilder& table)
    : mTable(table),
      mFrame(frameOf(table.mStyle)),
      mColumns(table.mColumns.size()),
      mLines(table.mColumns.size())
{
    measure();
}

std::string_view TableLayout::cellText(std::size_t cell) const
{
    const std::size_t begin = cell == 0 ? 0 : mTable.mCells[cell - 1].end;
    return std::string_view(mTable.mText).substr(begin, mTable.mCells[cell].end - begin);
}

void TableLayout::measure()
{
    measureHeaders();
    resolveAlignments();
    measureDecimals();
    for (std::size_t row = 0; row < mTable.mRows.size(); ++row)
    {
        const std::size_t first = firstCell(row);
        for (std::size_t cell = first; cell < mTable.mRows[row].endCell; ++cell)
            mColumns[cell - first].width = std::max(mColumns[cell - first].width, mTable.mCells[cell].width);
    }
    limitWidths();
    limitTable();
}

void TableLayout::measureHeaders()
{
    for (std::size_t c = 0; c < mColumns.size(); ++c)
    {
        std::string_view header = mTable.mColumns[c].header;
        mHasHeader = mHasHeader || !header.empty();
        while (!header.empty())
            mColumns[c].width = std::max(mColumns[c].width, displayWidth(takeLine(header)));
    }
}

void TableLayout::resolveAlignments()
{
    std::vector<bool> hasNumber(mColumns.size());
    std::vector<bool> hasText(mColumns.size());
    for (std::size_t row = 0; row < mTable.mRows.size(); ++row)
    {
        const std::size_t first = firstCell(row);
        for (std::size_t cell = first; cell < mTable.mRows[row].endCell; ++cell)
        {
            if (mTable.mCells[cell].isNumber)
                hasNumber[cell - first] = true;
            else if (!cellText(cell).empty())
                hasText[cell - first] = true;
        }
    }
    for (std::size_t c = 0; c < mColumns.size(); ++c)
    {
        const bool isNumeric = hasNumber[c] && !hasText[c];
        const Alignment wanted = mTable.mColumns[c].alignment;
        mColumns[c].alignment = wanted != Alignment::Auto ? wanted : isNumeric ? Alignment::Decimal : Alignment::Left;
    }
}

void TableLayout::measureDecimals()
{
    for (std::size_t row = 0; row < mTable.mRows.size(); ++row)
    {
        const std::size_t first = firstCell(row);
        for (std::size_t cell = first; cell < mTable.mRows[row].endCell; ++cell)
        {
            Column& column = mColumns[cell - first];
            if (column.alignment != Alignment::Decimal)
                continue;
            std::string_view text = cellText(cell);
            while (!text.empty())
            {
                const std::string_view line = takeLine(text);
                const PointPlace place = pointPlace(line, displayWidth(line));
                column.beforePoint = std::max(column.beforePoint, place.before);
                column.fromPoint = std::max(column.fromPoint, place.from);
            }
        }
    }
    for (Column& column : mColumns)
        column.width = std::max(column.width, column.beforePoint + column.fromPoint);
}

void TableLayout::limitWidths()
{
    for (std::size_t c = 0; c < mColumns.size(); ++c)
    {
        const AsciiTableBuilder::Column& wanted = mTable.mColumns[c];
        mColumns[c].width = std::min(std::max(mColumns[c].width, wanted.minWidth), wanted.maxWidth);
    }
}

std::size_t TableLayout::fixedWidth() const
{
    const std::size_t columns = mColumns.size();
    return mTable.mIndent + (mFrame.isFramed ? 3 * columns + 1 : gap * (columns - 1));
}

/// All columns above one common width are cut down to it; what is left over by the division goes to the first of them.
void TableLayout::limitTable()
{
    std::vector<std::size_t> widths;
    for (const Column& column : mColumns)
        widths.push_back(column.width);
    const std::size_t widest = widths.empty() ? 0 : *std::max_element(widths.begin(), widths.end());
    if (widths.empty() || fixedWidth() + cappedSum(widths, widest) <= mTable.mMaxTableWidth)
        return;
    const std::size_t room = mTable.mMaxTableWidth - std::min(fixedWidth(), mTable.mMaxTableWidth);
    std::size_t cap = minColumnWidth;
    for (std::size_t tooMuch = std::max(widest, cap + 1); tooMuch - cap > 1;)
    {
        const std::size_t half = cap + (tooMuch - cap) / 2;
        (cappedSum(widths, half) <= room ? cap : tooMuch) = half;
    }
    std::size_t left = room - std::min(room, cappedSum(widths, cap));
    for (Column& column : mColumns)
    {
        const bool isMore = column.width > cap && left > 0;
        column.width = std::min(column.width, cap + (isMore ? 1 : 0));
        left -= isMore ? 1 : 0;
    }
}

void TableLayout::setLines(std::size_t column, std::string_view text, std::size_t width, bool isMultiline)
{
    mLines[column].clear();
    if (!isMultiline && width <= mColumns[column].width)
    {
        mLines[column].push_back({text, width, false});
        return;
    }
    do
        addLine(column, takeLine(text));
    while (!text.empty());
}

void TableLayout::addLine(std::size_t column, std::string_view line)
{
    const std::size_t width = displayWidth(line);
    if (width <= mColumns[column].width)
        mLines[column].push_back({line, width, false});
    else if (mTable.mColumns[column].overflow == Overflow::Truncate)
        truncate(column, line);
    else
        wrap(column, line);
}

void TableLayout::truncate(std::size_t column, std::string_view line)
{
    const std::size_t width = mColumns[column].width;
    const Fitting kept = fittingPrefix(line, width - std::min(width, displayWidth(mFrame.cutMark)));
    mLines[column].push_back({line.substr(0, kept.bytes), kept.width, true});
}

void TableLayout::wrap(std::size_t column, std::string_view line)
{
    while (!line.empty())
    {
        const Fitting fitting = fittingPrefix(line, mColumns[column].width);
        std::size_t end = std::max<std::size_t>(fitting.bytes, 1);
        std::size_t next = end;
        if (end < line.size())
        {
            // A blank that would begin the next line, or the last one in this line.
            const std::size_t blank = line.rfind(' ', end);
            const std::size_t word =
                blank == std::string_view::npos ? std::string_view::npos : line.substr(0, blank).find_last_not_of(' ');
            if (word != std::string_view::npos)
            {
                end = word + 1;
                next = std::min(line.find_first_not_of(' ', blank), line.size());
            }
        }
        const std::string_view part = line.substr(0, end);
        mLines[column].push_back({part, displayWidth(part), false});
        line.remove_prefix(next);
    }
}

void TableLayout::write(std::string& out)
{
    if (mColumns.empty())
        return;
    if (mFrame.isFramed)
        writeRule(out, mFrame.top);
    if (mHasHeader)
        writeHeader(out);
    for (std::size_t row = 0; row < mTable.mRows.size(); ++row)
        writeRow(out, row);
    if (mFrame.isFramed)
        writeRule(out, mFrame.bottom);
}

void TableLayout::writeHeader(std::string& out)
{
    for (std::size_t c = 0; c < mColumns.size(); ++c)
        setLines(c, mTable.mColumns[c].header, 0, true);
    mWritesHeader = true;
    writeLines(out);
    mWritesHeader = false;
    if (mFrame.hasRules)
        writeRule(out, mFrame.middle);
}

void TableLayout::writeRow(std::string& out, std::size_t row)
{
    const std::size_t first = firstCell(row);
    const std::size_t count = mTable.mRows[row].endCell - first;
    for (std::size_t c = 0; c < mColumns.size(); ++c)
    {
        if (c < count)
            setLines(c, cellText(first + c), mTable.mCells[first + c].width, mTable.mCells[first + c].isMultiline);
        else
            mLines[c].clear();
    }
    writeLines(out);
    if (mTable.mRows[row].separatorBelow)
        writeRule(out, mFrame.middle);
}

void TableLayout::writeLines(std::string& out) const
{
    std::size_t height = 1;
    for (const std::vector<Line>& lines : mLines)
        height = std::max(height, lines.size());
    for (std::size_t i = 0; i < height; ++i)
    {
        const std::size_t start = out.size();
        out.append(mTable.mIndent, ' ');
        for (std::size_t c = 0; c < mColumns.size(); ++c)
        {
            if (mFrame.isFramed)
                (out += mFrame.vertical) += ' ';
            else if (c > 0)
                out.append(gap, ' ');
            writeLine(out, c, i < mLines[c].size() ? mLines[c][i] : Line());
            if (mFrame.isFramed)
                out += ' ';
        }
        out += mFrame.vertical;
        trimRight(out, start);
        out += '\n';
    }
}

std::size_t TableLayout::blanksBefore(const Column& column, const Line& line, std::size_t blanks) const
{
    switch (column.alignment)
    {
    case Alignment::Right: return blanks;
    case Alignment::Center: return blanks / 2;
    case Alignment::Decimal:
    {
        if (mWritesHeader || line.isCut || column.beforePoint + column.fromPoint > column.width)
            return blanks;
        return column.width - column.fromPoint - pointPlace(line.text, line.width).before;
    }
    case Alignment::Auto:
    case Alignment::Left: break;
    }
    return 0;
}

void TableLayout::writeLine(std::string& out, std::size_t column, const Line& line) const
{
    std::size_t blanks = mColumns[column].width - line.width;
    std::string_view mark;
    if (line.isCut)
    {
        mark = mFrame.cutMark.substr(0, fittingPrefix(mFrame.cutMark, blanks).bytes);
        blanks -= displayWidth(mark);
    }
    const std::size_t before = blanksBefore(mColumns[column], line, blanks);
    out.append(before, ' ');
    out += line.text;
    out += mark;
    out.append(blanks - before, ' ');
}

void TableLayout::writeRule(std::string& out, const std::string_view (&joints)[3]) const
{
    const std::size_t start = out.size();
    out.append(mTable.mIndent, ' ');
    for (std::size_t c = 0; c < mColumns.size(); ++c)
    {
        out += joints[c == 0 ? 0 : 1];
        appendRepeated(out, mFrame.dash, mColumns[c].width);
    }
    out += joints[2];
    trimRight(out, start);
    out += '\n';
}

} // namespace ky::impl
