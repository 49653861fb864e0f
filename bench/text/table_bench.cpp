// SPDX-License-Identifier: MIT
// A table of 10 000 rows and 5 columns, ASCII or half of it beyond; the floor pads the same cells by their bytes, in
// columns of known width.
#include <ky/kyAsciiTableBuilder.h>

#include <benchmark/benchmark.h>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using benchmark::State;
using ky::AsciiTableBuilder;

constexpr std::size_t rowCount = 10000;
constexpr std::size_t columnCount = 5;
constexpr std::size_t columnWidth = 24;
constexpr std::size_t lineWidth = columnCount * (columnWidth + 2);

using Rows = std::vector<std::vector<std::string>>;

Rows makeRows(bool isAscii)
{
    Rows rows(rowCount);
    for (std::size_t r = 0; r < rowCount; ++r)
    {
        const std::string number = std::to_string(r);
        const std::string place = isAscii ? "Neustadt " : "Zürich 東京 ";
        rows[r] = {place + number, number, "some text of a row", std::to_string(r * 7919),
                   isAscii ? "end" : "größer ≥"};
    }
    return rows;
}

const Rows& rowsOf(bool isAscii)
{
    static const Rows ascii = makeRows(true);
    static const Rows other = makeRows(false);
    return isAscii ? ascii : other;
}

void finish(State& state, const std::string& text)
{
    if (text.size() < rowCount * columnCount)
        state.SkipWithError("the table is not there");
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * rowCount));
}

void tableKy(State& state, bool isAscii)
{
    const Rows& rows = rowsOf(isAscii);
    std::string text;
    for (auto _ : state)
    {
        AsciiTableBuilder table({"place", "number", "text", "product", "end"}, AsciiTableBuilder::Style::Underlined);
        for (const auto& row : rows)
            table.addRow(row);
        text = table.toString();
    }
    finish(state, text);
}

void tableFloor(State& state, bool isAscii)
{
    const Rows& rows = rowsOf(isAscii);
    std::string text;
    for (auto _ : state)
    {
        text.clear();
        text.reserve(rowCount * (lineWidth + 1));
        for (const auto& row : rows)
        {
            for (const std::string& cell : row)
                text.append(cell).append(cell.size() < columnWidth ? columnWidth - cell.size() : 0, ' ');
            text += '\n';
        }
        benchmark::DoNotOptimize(text.data());
    }
    finish(state, text);
}

void tableStream(State& state, bool isAscii)
{
    const Rows& rows = rowsOf(isAscii);
    std::string text;
    for (auto _ : state)
    {
        std::ostringstream out;
        out << std::left;
        for (const auto& row : rows)
        {
            for (const std::string& cell : row)
                out << std::setw(static_cast<int>(columnWidth)) << cell;
            out << '\n';
        }
        text = out.str();
    }
    finish(state, text);
}

BENCHMARK_CAPTURE(tableKy, ascii, true)->Name("table/10000_ascii/ky");
BENCHMARK_CAPTURE(tableFloor, ascii, true)->Name("table/10000_ascii/floor_known_widths");
BENCHMARK_CAPTURE(tableStream, ascii, true)->Name("table/10000_ascii/std_setw");
BENCHMARK_CAPTURE(tableKy, wide, false)->Name("table/10000_wide/ky");
BENCHMARK_CAPTURE(tableFloor, wide, false)->Name("table/10000_wide/floor_known_widths");
BENCHMARK_CAPTURE(tableStream, wide, false)->Name("table/10000_wide/std_setw");

} // namespace
