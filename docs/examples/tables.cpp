// SPDX-License-Identifier: MIT
// The examples of docs/tables.md.
#include "expect.h"

// [table]
#include <ky/kyAsciiTableBuilder.h>

// [table]
// [names]
#include <ky/kyEnumHelper.h>

// [names]
#include <iostream>
#include <sstream>
#include <string>

// [names]
enum class Access
{
    None = 0,
    Read = 1,
    Write = 2
};

inline constexpr auto accessNames =
    ky::makeEnumHelper<Access>("Access", {{Access::None, "None"}, {Access::Read, "Read"}, {Access::Write, "Write"}});
static_assert(accessNames.isConsistent());
// [names]

namespace
{

struct Menu
{
    void add(std::string_view name, Access) { names += std::string(name) + ' '; }
    std::string names;
};

} // namespace

int main()
{
    // [table]
    ky::AsciiTableBuilder table({"Name", "Size", "Share"}, ky::AsciiTableBuilder::Style::Box);
    table.addRow("report.pdf", 120394, 0.25);
    table.addRow("日本.txt", 77, 12.5);
    std::cout << table;
    // [table]
    std::ostringstream text;
    text << table;
    expect(text.str().find("│ 日本.txt   │     77 │ 12.5  │") != std::string::npos, "wide characters take two columns");

    Menu menu;
    // [names]
    std::string_view name = accessNames.name(Access::Read);            // "Read", without a copy
    std::string number = accessNames.text(static_cast<Access>(9));     // "9": values without a name are numbers
    std::string flags = accessNames.flagsText(static_cast<Access>(7)); // "Read|Write|0x4"
    Access access{};
    bool isRead = accessNames.parseFlags("read | write", access, ky::EnumHelperInterface::Case::Insensitive);
    for (const auto& entry : accessNames)
        menu.add(entry.name, entry.value);
    // [names]
    expect(name == "Read" && number == "9" && flags == "Read|Write|0x4", "names and numbers");
    expect(isRead && static_cast<int>(access) == 3, "flags are read back");
    expect(menu.names == "None Read Write ", "the entries in the order of the table");
    return failures;
}
