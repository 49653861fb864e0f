// SPDX-License-Identifier: MIT
#include <ky/kyAsciiTableBuilder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <tuple>

namespace
{

using Table = ky::AsciiTableBuilder;
using Alignment = Table::Alignment;
using Overflow = Table::Overflow;
using Style = Table::Style;

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

TEST(DisplayWidth, CountsColumnsOfATerminal)
{
    const std::pair<const char*, std::size_t> cases[] = {
        {"", 0},
        {"plain text", 10},
        {"Zürich", 6},
        {"Zu\u0308rich", 6},                               // combining
        {"\u0301", 0},                                     // with nothing to stand on
        {"日本語", 6},                                     // wide
        {"ｱ", 1},                                          // half-width form
        {"Ａ", 2},                                         // full-width form
        {"한국", 4},                                       // syllables
        {"\u1112\u1161\u11AB", 2},                         // the first of them in its parts
        {"กำ", 2},                                         // a vowel that has a place of its own
        {"ก\u0E34", 1},                                    // and one that has none
        {"a\u200Bb\u200Ec", 3},                            // invisible
        {"so\u00ADft", 5},                                 // soft hyphen
        {"…±Я─", 4},                                       // ambiguous
        {"\U0001F600", 2},                                 // emoji
        {"\u2764", 1},                                     // text by default
        {"\u2764\uFE0F", 2},                               // as emoji
        {"1\uFE0F\u20E3", 2},                              // keycap
        {"\U0001F44D\U0001F3FD", 2},                       // with a skin tone
        {"\u261D\U0001F3FD", 2},                           // narrow without it
        {"\U0001F3FD", 2},                                 // a tone of its own
        {"\U0001F1E8\U0001F1ED", 2},                       // flag
        {"\U00020000\U0003FFFD", 4},                       // ideographs, one of them not assigned yet
        {"\U0001F468\u200D\U0001F469\u200D\U0001F467", 2}, // family
        {"\U0001F468\u200Dx", 3},                          // joined with no emoji
        {"x\uFE0F", 1},
        {"\u231A\U0001F3FD", 2},                                       // among the symbols
        {"\U0001F3F3\uFE0F\u200D\U0001F308", 2},                       // flag of two
        {"日\u200D本", 4},                                             // no sequence
        {"\u0915\u094D\u200D\u0937", 2},                               // nor this one
        {"\t|\n|\x1B[31m|\x7F|\u0085|\u2028|\u2029|\u202E|\u2066", 52} // by their escapes
    };
    for (const auto& [text, width] : cases)
        EXPECT_EQ(Table::DisplayWidth(text), width) << text;
    EXPECT_EQ(Table::DisplayWidth(std::string_view("\0", 1)), 4U);
    // One for each longest beginning of a sequence.
    EXPECT_EQ(Table::DisplayWidth("a\xFFz\xC0\xAF\xED\xA0\x80\xE2\x82"), 9U);
    EXPECT_EQ(Table::DisplayWidth("\xF0\x9F\x98"), 1U);
}

TEST(DisplayWidth, OfACharacterIsTheSameAtEveryPlace)
{
    for (unsigned byte = 0; byte < 128; ++byte)
        for (std::size_t size = 1; size < 25; ++size)
            for (std::size_t place = 0; place < size; ++place)
            {
                std::string text(size, '~');
                text[place] = static_cast<char>(byte);
                const std::size_t alone = Table::DisplayWidth(text.substr(place, 1));
                ASSERT_EQ(Table::DisplayWidth(text), size - 1 + alone) << byte << " at " << place << " of " << size;
            }
}

TEST(Shorten, KeepsCharactersWhole)
{
    const std::tuple<const char*, std::size_t, const char*> cases[] = {
        {"short", 5, "short"},
        {"longer", 5, "lo..."},
        {"longer", 2, ".."},
        {"longer", 0, ""},
        {"日本語日本語", 8, "日本..."}, // the third one would be half shown
        {"xe\u0301e\u0301y12", 5, "xe\u0301..."},
        {"a\tb", 4, "a\\tb"},
        {"ab\tcd", 5, "ab..."},
        {"\xFF\xFE", 2, "\uFFFD\uFFFD"},
    };
    for (const auto& [text, width, shown] : cases)
        EXPECT_EQ(Table::Shorten(text, width), shown) << text;
    EXPECT_EQ(Table::Shorten("longer", 4, "…"), "lon…");
    EXPECT_EQ(Table::Shorten("longer", 4, ""), "long");
}

Table mixed(Style style)
{
    Table table({"Name", "Größe", "Share"}, style);
    table.addRow("report.pdf", 120394, 0.25);
    table.addRow("日本.txt", 77, 12.5);
    table.addSeparator();
    table.addRow(std::string("e\u0301te\u0301"), std::uint64_t{5});
    return table;
}

TEST(TableBuilder, LooksAsItsStyle)
{
    EXPECT_EQ(mixed(Style::Plain).toString(), "Name         Größe  Share\n"
                                              "report.pdf  120394   0.25\n"
                                              "日本.txt        77  12.5\n"
                                              "\n"
                                              "e\u0301te\u0301              5\n");
    EXPECT_EQ(mixed(Style::Underlined).setIndent(2).toString(), "  Name         Größe  Share\n"
                                                                "  ----------  ------  -----\n"
                                                                "  report.pdf  120394   0.25\n"
                                                                "  日本.txt        77  12.5\n"
                                                                "  ----------  ------  -----\n"
                                                                "  e\u0301te\u0301              5\n");
    EXPECT_EQ(mixed(Style::Ascii).toString(), "+------------+--------+-------+\n"
                                              "| Name       |  Größe | Share |\n"
                                              "+------------+--------+-------+\n"
                                              "| report.pdf | 120394 |  0.25 |\n"
                                              "| 日本.txt   |     77 | 12.5  |\n"
                                              "+------------+--------+-------+\n"
                                              "| e\u0301te\u0301        |      5 |       |\n"
                                              "+------------+--------+-------+\n");
    EXPECT_EQ(mixed(Style::Box).setIndent(1).toString(), " ┌────────────┬────────┬───────┐\n"
                                                         " │ Name       │  Größe │ Share │\n"
                                                         " ├────────────┼────────┼───────┤\n"
                                                         " │ report.pdf │ 120394 │  0.25 │\n"
                                                         " │ 日本.txt   │     77 │ 12.5  │\n"
                                                         " ├────────────┼────────┼───────┤\n"
                                                         " │ e\u0301te\u0301        │      5 │       │\n"
                                                         " └────────────┴────────┴───────┘\n");
}

TEST(TableBuilder, AlignsEachColumn)
{
    Table table({"l", "right", "center", "decimal", "auto"}, Style::Ascii);
    table.setAlignment(1, Alignment::Right).setAlignment(2, Alignment::Center).setAlignment(3, Alignment::Decimal);
    table.addRow("a", "b", "odd", "1.5", -1);
    table.addRow("", "", "even", "n/a", "text");
    table.addRow("", "", "", "12345.25", "");
    EXPECT_EQ(table.toString(), "+---+-------+--------+----------+------+\n"
                                "| l | right | center |  decimal | auto |\n"
                                "+---+-------+--------+----------+------+\n"
                                "| a |     b |  odd   |     1.5  | -1   |\n"
                                "|   |       |  even  |   n/a    | text |\n"
                                "|   |       |        | 12345.25 |      |\n"
                                "+---+-------+--------+----------+------+\n");
    // Too narrow for one place of the point.
    table.setMaxWidth(3, 6);
    EXPECT_THAT(linesOf(table.toString()), testing::IsSupersetOf({"| a |     b |  odd   |    1.5 | -1   |",
                                                                  "|   |       |        | 123... |      |"}));
}

TEST(TableBuilder, TakesCellsOfManyTypesUnderEveryLocale)
{
    struct Grouping : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    Table table({}, Style::Plain);
    table.addRow('c', true, std::int64_t{std::numeric_limits<std::int64_t>::min()},
                 std::numeric_limits<std::uint64_t>::max(), 1.0F / 3, 1e300, static_cast<const char*>(nullptr), "end");
    std::ostringstream out;
    out << table;
    std::locale::global(old);
    EXPECT_EQ(out.str(), "c  true  -9223372036854775808  18446744073709551615  0.333333  1e+300    end\n");
    EXPECT_EQ(table.toString(), out.str());
    table.clearRows();
    EXPECT_EQ(table.getColumnCount(), 8U) << "columns stay";

    // Cells left over from an unfinished row come first; a row of nothing is an empty line.
    Table parts;
    parts.addCell("one").addRow({"two", "three"}).addRow().addCell("not shown");
    EXPECT_EQ(parts.toString(), "one  two  three\n\n");
    EXPECT_EQ(parts.getRowCount(), 2U);

    EXPECT_EQ(Table().toString(), "");
    EXPECT_EQ(Table({"a", "b"}).addSeparator().toString(), "a  b\n-  -\n") << "a separator below nothing";
}

TEST(TableBuilder, KeepsItsShapeWhateverCellsHold)
{
    Table table({"key", "two\r\nlines"}, Style::Ascii);
    table.addRow("a\nb\n", "\tx\x1B[0m");
    table.addRow("\xFF\xF0\x9F|", "a\r\nb\rc\n\nd");
    EXPECT_EQ(table.toString(), "+-----+------------+\n"
                                "| key | two        |\n"
                                "|     | lines      |\n"
                                "+-----+------------+\n"
                                "| a   | \\tx\\x1B[0m |\n"
                                "| b   |            |\n"
                                "| \uFFFD\uFFFD| | a          |\n"
                                "|     | b\\rc       |\n"
                                "|     |            |\n"
                                "|     | d          |\n"
                                "+-----+------------+\n");
}

TEST(TableBuilder, CutsWhatIsTooWide)
{
    Table table({"number of things"}, Style::Box);
    table.setMaxWidth(0, 6).addRow("exactly").addRow("日本語日").addRow("日本語").addRow("ab\nabcdefg");
    EXPECT_EQ(table.toString(), "┌────────┐\n"
                                "│ numbe… │\n"
                                "├────────┤\n"
                                "│ exact… │\n"
                                "│ 日本…  │\n"
                                "│ 日本語 │\n"
                                "│ ab     │\n"
                                "│ abcde… │\n"
                                "└────────┘\n");
    EXPECT_THAT(linesOf(table.setMaxWidth(0, 0).setStyle(Style::Plain).toString()),
                testing::Each(testing::SizeIs(testing::Le(2U))))
        << "two columns are the least";
}

TEST(TableBuilder, WrapsAtBlanks)
{
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"a few words", {"a few", "words"}},
        {"exact size  of", {"exact", "size", "of"}},
        {"abcdefghijkl", {"abcdef", "ghijkl"}},
        {"ab abcdefghi", {"ab", "abcdef", "ghi"}},
        {"日本語日", {"日本語", "日"}},
        {"a日本語日", {"a日本", "語日"}},
        {"e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301",
         {"e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301", "e\u0301"}},
        {"  in  out", {"  in", "out"}},
        {"one\ntwo three", {"one", "two", "three"}},
        {"         x", {"", "   x"}},
    };
    for (const auto& [text, lines] : cases)
    {
        Table table({}, Style::Plain);
        table.setMaxWidth(0, 6, Overflow::Wrap).addRow(text);
        EXPECT_EQ(linesOf(table.toString()), lines) << text;
    }
}

TEST(TableBuilder, FitsIntoAWidth)
{
    for (const Style style : {Style::Plain, Style::Underlined, Style::Ascii, Style::Box})
    {
        Table table({"a", "middle", "the longest of them all"}, style);
        table.addRow("1234567890", "x", "some more text that is long").setIndent(1);
        const std::string whole = table.toString();
        for (std::size_t width = 10; width < 60; ++width)
        {
            const std::vector<std::string> lines = linesOf(table.setMaxTableWidth(width).toString());
            const bool isFramed = style == Style::Ascii || style == Style::Box;
            const std::size_t least = 1 + 3 * 2 + (isFramed ? 10 : 4);
            std::size_t widest = 0;
            for (const std::string& line : lines)
                widest = std::max(widest, Table::DisplayWidth(line));
            EXPECT_LE(widest, std::max(width, least));
            const bool isFilled = isFramed && width >= least && width <= 50;
            EXPECT_GE(widest, isFilled ? width : 0) << "room is wasted";
        }
        EXPECT_EQ(table.setMaxTableWidth(Table::unlimited).toString(), whole);
    }
    Table narrow({"ab", "abcdefghij", "abcdefghij"}, Style::Plain);
    EXPECT_EQ(narrow.setMaxTableWidth(19).toString(), "ab  abcd...  abc...\n") << "only the widest give way";
}

TEST(TableBuilder, CopiesAndMovesAreWholeTables)
{
    Table first = mixed(Style::Ascii);
    const std::string text = first.toString();
    Table copy = first;
    first.clearRows().addRow("other");
    EXPECT_EQ(copy.toString(), text);
    const Table moved = std::move(copy);
    EXPECT_EQ(moved.toString(), text);
    first = moved;
    EXPECT_EQ(first.toString(), text);
}

} // namespace
