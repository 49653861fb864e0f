// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ky
{

namespace impl
{
class TableLayout;
} // namespace impl

/// Collects cells and lays them out as a table of aligned columns for terminals, logs and text files.
///
/// \code
/// ky::AsciiTableBuilder table({"Name", "Size", "Share"});
/// table.addRow("report.pdf", 120394, 0.25);
/// table.addRow("日本.txt", 77, 12.5);
/// std::cout << table;
///
/// Name          Size  Share
/// ----------  ------  -----
/// report.pdf  120394   0.25
/// 日本.txt        77  12.5
/// \endcode
///
/// Texts are UTF-8, and widths are counted in columns of a terminal: East Asian wide characters and emoji take two,
/// combining and invisible characters none, everything else one (characters of ambiguous width included). An emoji
/// sequence (joined, with a skin tone, or followed by U+FE0F) counts as one emoji.
///
/// Whatever the cells hold, a table keeps its shape:
/// - A line feed, or CR LF, begins a new line inside its cell.
/// - Other control characters, U+2028, U+2029 and the characters that turn the direction of writing (U+202A to U+202E,
///   U+2066 to U+2069) are written as "\t", "\r", "\xHH" or "\uHHHH".
/// - What is ill-formed UTF-8 becomes U+FFFD, one for each longest beginning of a well-formed sequence.
///
/// Rows may differ in length: missing cells are blank, and a row may have more cells than there are headers. Lines end
/// with a line feed and carry no blanks at their end.
///
/// A builder has no locking of its own: one thread at a time for changes, any number for const functions.
class KY_API AsciiTableBuilder
{
public:
    /// How rows and columns are set apart.
    enum class Style : std::uint8_t
    {
        Plain,      ///< columns two blanks apart, nothing else
        Underlined, ///< the same with a line of '-' below the headers
        Ascii,      ///< frames of '+', '-' and '|'
        Box         ///< frames of box-drawing characters
    };

    /// Where the text of a cell stands in its column.
    enum class Alignment : std::uint8_t
    {
        Auto,   ///< Decimal when every cell but empty ones was added as a number, else Left
        Left,   ///< from the left edge
        Right,  ///< to the right edge
        Center, ///< an odd blank goes to the right
        Decimal ///< the first '.' of each line stands in one place, a text without it ends before that place. Like
                ///< Right in a column that is too narrow for this
    };

    /// What becomes of lines that are wider than their column.
    enum class Overflow : std::uint8_t
    {
        Truncate, ///< cut, with "..." (U+2026 in the style Box) at the end
        Wrap      ///< go on in the next line: after a blank where there is one, else anywhere between characters
    };

    /// Without limit, as a width.
    static constexpr std::size_t unlimited = static_cast<std::size_t>(-1);

    AsciiTableBuilder();
    /// One column for each header.
    explicit AsciiTableBuilder(std::initializer_list<std::string_view> headers, Style style = Style::Underlined);
    /// Rows, an unfinished one included, columns and settings go along.
    /// @{
    AsciiTableBuilder(const AsciiTableBuilder& other);
    AsciiTableBuilder& operator=(const AsciiTableBuilder& other);
    AsciiTableBuilder(AsciiTableBuilder&& other) noexcept;
    AsciiTableBuilder& operator=(AsciiTableBuilder&& other) noexcept;
    /// @}
    ~AsciiTableBuilder();

    /// \name Columns
    /// They may be set before and after the rows. A column that does not exist yet is made, and those before it.
    /// @{

    /// Appends a column with this header. Without any header, or with empty ones only, a table has no header row.
    AsciiTableBuilder& addColumn(std::string_view header, Alignment alignment = Alignment::Auto);

    /// The header of a column goes with the alignment of its cells; a column starts with Alignment::Auto.
    AsciiTableBuilder& setAlignment(std::size_t column, Alignment alignment);

    /// The column becomes at least this wide, in terminal columns.
    AsciiTableBuilder& setMinWidth(std::size_t column, std::size_t width);

    /// The column becomes at most this wide, headers included; a width below 2 counts as 2. Stronger than the minimum.
    AsciiTableBuilder& setMaxWidth(std::size_t column, std::size_t width, Overflow overflow = Overflow::Truncate);
    /// @}

    /// \name The whole table
    /// @{

    /// How rows and columns are set apart; Underlined at first.
    AsciiTableBuilder& setStyle(Style style);

    /// Blanks before each line.
    AsciiTableBuilder& setIndent(std::size_t blanks);

    /// Narrows the widest columns until no line is wider than this, indent and frames included, for instance the width
    /// of the terminal. No column becomes narrower than 2, so a table of many columns may stay wider.
    AsciiTableBuilder& setMaxTableWidth(std::size_t width);
    /// @}

    /// \name Rows
    /// @{

    /// Adds a row of texts, characters, booleans ("true", "false") and numbers. Real numbers are written with up to 6
    /// significant digits, '.' and, where needed, an exponent under every locale. A null pointer is an empty text.
    /// Cells that addCell() left in an unfinished row come first.
    template <class... Cells>
    AsciiTableBuilder& addRow(const Cells&... cells)
    {
        (static_cast<void>(addCell(cells)), ...);
        return endRow();
    }
    /// Adds a row of texts.
    AsciiTableBuilder& addRow(const std::vector<std::string>& cells);

    /// Appends a cell to the row that endRow() will finish.
    AsciiTableBuilder& addCell(std::string_view text);
    /// The same; null is an empty text.
    AsciiTableBuilder& addCell(const char* text);
    /// The same.
    AsciiTableBuilder& addCell(const std::string& text) { return addCell(std::string_view(text)); }
    /// A number, a boolean or a character, written as addRow() writes them.
    template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
    AsciiTableBuilder& addCell(Number value)
    {
        if constexpr (std::is_same_v<Number, bool>)
            return addCell(value ? std::string_view("true") : std::string_view("false"));
        else if constexpr (std::is_same_v<Number, char>)
            return addCell(std::string_view(&value, 1));
        else if constexpr (std::is_floating_point_v<Number>)
            return addReal(static_cast<double>(value));
        else if constexpr (std::is_signed_v<Number>)
            return addInteger(static_cast<std::int64_t>(value));
        else
            return addUnsigned(static_cast<std::uint64_t>(value));
    }

    /// Finishes the row, which may be empty.
    AsciiTableBuilder& endRow();

    /// A line between the row finished last and the next one: '-' or a part of the frame, an empty line in the style
    /// Plain.
    AsciiTableBuilder& addSeparator();

    /// Removes all rows; columns and settings stay.
    AsciiTableBuilder& clearRows();
    /// @}

    [[nodiscard]] std::size_t getRowCount() const noexcept { return mRows.size(); } ///< finished rows
    /// Columns that were named or that rows have needed.
    [[nodiscard]] std::size_t getColumnCount() const noexcept { return mColumns.size(); }

    /// \name Output
    /// An unfinished row is not shown. A table without columns gives an empty text.
    /// @{

    /// The lines of the table.
    [[nodiscard]] std::string toString() const;
    /// Appends the lines to a text.
    void appendTo(std::string& out) const;
    /// Writes the lines.
    friend KY_API std::ostream& operator<<(std::ostream& out, const AsciiTableBuilder& table);
    /// @}

    /// \name Widths
    /// @{

    /// Columns that the text takes on a terminal, by the rules above, as one line: a line feed counts like other
    /// control characters, that is by its escape.
    [[nodiscard]] static std::size_t DisplayWidth(std::string_view text) noexcept;

    /// The text with controls escaped and ill-formed parts replaced as in a cell, line feeds included, and, when it is
    /// wider than `width`, cut with `ellipsis` at its end so that it takes at most `width` columns. Characters are
    /// never separated from their combining marks.
    [[nodiscard]] static std::string Shorten(std::string_view text, std::size_t width,
                                             std::string_view ellipsis = "...");
    /// @}

private:
    struct Cell
    {
        std::size_t end = 0;   // in mText; a cell begins where the one before it ends
        std::size_t width = 0; // of the widest line
        bool isNumber = false;
        bool isMultiline = false;
    };
    struct Row
    {
        std::size_t endCell = 0; // in mCells
        bool separatorBelow = false;
    };
    struct Column
    {
        std::string header; // as cells are kept: escaped, lines separated by '\n'
        Alignment alignment = Alignment::Auto;
        Overflow overflow = Overflow::Truncate;
        std::size_t minWidth = 0;
        std::size_t maxWidth = unlimited;
    };

    friend class impl::TableLayout;

    AsciiTableBuilder& addReal(double value);
    AsciiTableBuilder& addInteger(std::int64_t value);
    AsciiTableBuilder& addUnsigned(std::uint64_t value);
    AsciiTableBuilder& addNumber(std::string_view text);
    Column& columnAt(std::size_t column);

    std::string mText; // of all cells
    std::vector<Cell> mCells;
    std::vector<Row> mRows;
    std::vector<Column> mColumns;
    Style mStyle = Style::Underlined;
    std::size_t mIndent = 0;
    std::size_t mMaxTableWidth = unlimited;
};

/// Writes the table.
KY_API std::ostream& operator<<(std::ostream& out, const AsciiTableBuilder& table);

} // namespace ky
