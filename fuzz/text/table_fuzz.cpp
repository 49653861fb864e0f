// SPDX-License-Identifier: MIT
// Tables of arbitrary bytes: whatever cells hold, lines are well-formed and columns stand straight.
#include "require.h"

#include "text/display_text.h"

#include <ky/kyAsciiTableBuilder.h>
#include <ky/kyStringUtils.h>

#include <algorithm>
#include <cstdint>

namespace
{

using Table = ky::AsciiTableBuilder;

constexpr char rowEnd = '\x1E';

void checkWidths(std::string_view text, std::size_t width)
{
    const std::string shown = Table::Shorten(text, Table::unlimited);
    KY_REQUIRE(ky::kyStringUtils::IsUtf8String(shown));
    KY_REQUIRE(Table::DisplayWidth(shown) == Table::DisplayWidth(text));
    KY_REQUIRE(std::none_of(shown.begin(), shown.end(), [](char byte) { return byte >= 0 && byte < ' '; }));
    const std::string cut = Table::Shorten(text, width);
    KY_REQUIRE(Table::DisplayWidth(cut) <= width);
    KY_REQUIRE((cut == shown) == (Table::DisplayWidth(text) <= width));

    std::size_t sum = 0;
    for (std::string_view left = text; !left.empty();)
    {
        const ky::impl::DisplayCharacter next = ky::impl::firstDisplayCharacter(left);
        KY_REQUIRE(next.bytes > 0 && next.bytes <= left.size() && next.baseBytes <= next.bytes);
        sum += next.width;
        left.remove_prefix(next.bytes);
    }
    KY_REQUIRE(sum == Table::DisplayWidth(text));
}

void fill(Table& table, std::string_view text)
{
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find_first_of("\x1E\x1F"), text.size());
        table.addCell(text.substr(0, end));
        if (end == text.size() || text[end] == rowEnd)
            table.endRow();
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    table.endRow();
}

void checkStraight(const std::string& text, std::size_t mostWidth)
{
    KY_REQUIRE(ky::kyStringUtils::IsUtf8String(text));
    std::string_view left = text;
    const std::size_t width = Table::DisplayWidth(left.substr(0, left.find('\n')));
    KY_REQUIRE(width <= mostWidth);
    while (!left.empty())
    {
        const std::size_t end = left.find('\n');
        KY_REQUIRE(end != std::string_view::npos);
        KY_REQUIRE(Table::DisplayWidth(left.substr(0, end)) == width);
        left.remove_prefix(end + 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::string text(data + 2, data + size);
    const std::size_t width = data[0] % 64;
    checkWidths(text, width);
    const auto alignment = static_cast<Table::Alignment>(data[1] % 5);
    for (const Table::Style style : {Table::Style::Ascii, Table::Style::Box, Table::Style::Plain})
    {
        Table table({text}, style);
        fill(table, text);
        const auto overflow = (data[1] & 0x80) != 0 ? Table::Overflow::Wrap : Table::Overflow::Truncate;
        for (std::size_t column = 0; column < table.getColumnCount(); ++column)
            table.setAlignment(column, alignment)
                .setMaxWidth(column, (data[1] & 0x40) != 0 ? width : text.size(), overflow);
        const std::size_t least = 5 * table.getColumnCount() + 1;
        if (style != Table::Style::Plain)
            checkStraight(table.setMaxTableWidth(2 * width).toString(), std::max(2 * width, least));
        else
            KY_REQUIRE(ky::kyStringUtils::IsUtf8String(table.toString()));
    }
    return 0;
}
