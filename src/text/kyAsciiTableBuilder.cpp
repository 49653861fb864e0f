// SPDX-License-Identifier: MIT
#include "text/display_text.h"
#include "text/number_text.h"
#include "text/table_layout.h"

#include <ky/kyAsciiTableBuilder.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>

namespace ky
{

namespace
{

constexpr std::size_t smallestMaxWidth = 2; // so that every character fits

struct CellSize
{
    std::size_t width = 0; // of the widest line
    bool isMultiline = false;
};

/// Appends the text as cells are kept: ready to be shown, lines separated by '\n'.
CellSize appendCellText(std::string& out, std::string_view text)
{
    CellSize size;
    if (impl::plainPrefix(text) == text.size())
    {
        out += text;
        size.width = text.size();
        return size;
    }
    for (;;)
    {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (end != std::string_view::npos && !line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        size.width = std::max(size.width, impl::appendDisplayText(out, line));
        if (end == std::string_view::npos)
            return size;
        size.isMultiline = true;
        out += '\n';
        text.remove_prefix(end + 1);
    }
}

} // namespace

AsciiTableBuilder::AsciiTableBuilder() = default;

AsciiTableBuilder::AsciiTableBuilder(std::initializer_list<std::string_view> headers, Style style) : mStyle(style)
{
    for (const std::string_view header : headers)
        addColumn(header);
}

AsciiTableBuilder::AsciiTableBuilder(const AsciiTableBuilder& other) = default;

AsciiTableBuilder& AsciiTableBuilder::operator=(const AsciiTableBuilder& other) = default;

AsciiTableBuilder::AsciiTableBuilder(AsciiTableBuilder&& other) noexcept = default;

AsciiTableBuilder& AsciiTableBuilder::operator=(AsciiTableBuilder&& other) noexcept = default;

AsciiTableBuilder::~AsciiTableBuilder() = default;

AsciiTableBuilder::Column& AsciiTableBuilder::columnAt(std::size_t column)
{
    if (column >= mColumns.size())
        mColumns.resize(column + 1);
    return mColumns[column];
}

AsciiTableBuilder& AsciiTableBuilder::addColumn(std::string_view header, Alignment alignment)
{
    Column& column = mColumns.emplace_back();
    appendCellText(column.header, header);
    column.alignment = alignment;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setAlignment(std::size_t column, Alignment alignment)
{
    columnAt(column).alignment = alignment;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setMinWidth(std::size_t column, std::size_t width)
{
    columnAt(column).minWidth = width;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setMaxWidth(std::size_t column, std::size_t width, Overflow overflow)
{
    columnAt(column).maxWidth = std::max(width, smallestMaxWidth);
    columnAt(column).overflow = overflow;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setStyle(Style style)
{
    mStyle = style;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setIndent(std::size_t blanks)
{
    mIndent = blanks;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setMaxTableWidth(std::size_t width)
{
    mMaxTableWidth = width;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addRow(const std::vector<std::string>& cells)
{
    for (const std::string& cell : cells)
        addCell(std::string_view(cell));
    return endRow();
}

AsciiTableBuilder& AsciiTableBuilder::addCell(std::string_view text)
{
    const CellSize size = appendCellText(mText, text);
    mCells.push_back({mText.size(), size.width, false, size.isMultiline});
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addCell(const char* text)
{
    return addCell(text == nullptr ? std::string_view() : std::string_view(text));
}

AsciiTableBuilder& AsciiTableBuilder::addNumber(std::string_view text)
{
    mText += text;
    mCells.push_back({mText.size(), text.size(), true, false});
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addReal(double value) { return addNumber(impl::RealText(value).view()); }

AsciiTableBuilder& AsciiTableBuilder::addInteger(std::int64_t value)
{
    return addNumber(impl::IntegerText(value).view());
}

AsciiTableBuilder& AsciiTableBuilder::addUnsigned(std::uint64_t value)
{
    std::array<char, 24> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return addNumber({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

AsciiTableBuilder& AsciiTableBuilder::endRow()
{
    const std::size_t first = mRows.empty() ? 0 : mRows.back().endCell;
    if (mCells.size() - first > mColumns.size())
        mColumns.resize(mCells.size() - first);
    mRows.push_back({mCells.size(), false});
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addSeparator()
{
    if (!mRows.empty())
        mRows.back().separatorBelow = true;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::clearRows()
{
    mText.clear();
    mCells.clear();
    mRows.clear();
    return *this;
}

std::string AsciiTableBuilder::toString() const
{
    std::string text;
    appendTo(text);
    return text;
}

void AsciiTableBuilder::appendTo(std::string& out) const { impl::TableLayout(*this).write(out); }

std::size_t AsciiTableBuilder::DisplayWidth(std::string_view text) noexcept { return impl::displayWidth(text); }

std::string AsciiTableBuilder::Shorten(std::string_view text, std::size_t width, std::string_view ellipsis)
{
    std::string shown;
    if (impl::appendDisplayText(shown, text) <= width)
        return shown;
    const std::size_t room = width - std::min(width, impl::displayWidth(ellipsis));
    shown.resize(impl::fittingPrefix(shown, room).bytes);
    return shown.append(ellipsis.substr(0, impl::fittingPrefix(ellipsis, width).bytes));
}

std::ostream& operator<<(std::ostream& out, const AsciiTableBuilder& table) { return out << table.toString(); }

} // namespace ky
