// SPDX-License-Identifier: MIT
#include "sysinfo/management.h"

#include "sysinfo/system_text.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <charconv>

namespace ky::impl
{

namespace
{

/// `select`, in a full run `more`, and `from` make the text of the query.
struct QueryParts
{
    const char* select;
    const char* more;
    const char* from;
    bool isOnlyOne; ///< there is exactly one row by nature
};

// What tells persons and computers apart is asked for in a full run only.
constexpr QueryParts queries[] = {
    {"SELECT Caption, BuildNumber,Version, OSArchitecture", "", " FROM Win32_OperatingSystem", true},
    {"SELECT Caption,Name,MaxClockSpeed", "", " FROM Win32_Processor", false},
    {"SELECT DriverDate,DriverVersion,Caption,AdapterRAM, "
     "Description,CurrentHorizontalResolution,CurrentVerticalResolution",
     "", " FROM Win32_VideoController", false},
    {"SELECT Name,ScreenHeight,ScreenWidth", "", " FROM Win32_DesktopMonitor", false},
    {"SELECT Manufacturer,Model,TotalPhysicalMemory, SystemFamily", ",Domain,UserName, Name",
     " FROM Win32_ComputerSystem", true},
};

constexpr const char* numberColumns[] = {
    "MaxClockSpeed", "AdapterRAM",  "CurrentHorizontalResolution", "CurrentVerticalResolution",
    "ScreenHeight",  "ScreenWidth", "TotalPhysicalMemory"};

ManagementQuery buildQuery(const QueryParts& parts, bool full)
{
    const std::string selected = std::string(parts.select) + (full ? parts.more : "");
    ManagementQuery query;
    query.text = selected + parts.from;
    query.className = parts.from + std::string_view(" FROM ").size();
    query.columns = kyStringUtils::Split(selected.substr(std::string_view("SELECT ").size()), ',');
    for (std::string& column : query.columns)
        kyStringUtils::trim(column);
    return query;
}

/// 32-bit numbers arrive signed, 64-bit ones as text.
kyVariant asNumber(const kyVariant& raw)
{
    if (raw.getType() == kyVariant::Type::Integer)
        return raw.toInteger() < 0 ? kyVariant(raw.toInteger() & 0xffffffff) : raw;
    const auto number = parseNumber(raw.toString(), 10);
    return kyVariant(number && *number <= INT64_MAX ? static_cast<std::int64_t>(*number) : 0);
}

/// Dates arrive as "YYYYMMDDhhmmss...".
std::string asDate(const std::string& text)
{
    if (text.size() < 8 || text.find_first_not_of("0123456789") < 8)
        return {};
    return text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6, 2);
}

kyVariant typedValue(const std::string& column, const kyVariant& raw)
{
    if (std::find(std::begin(numberColumns), std::end(numberColumns), column) != std::end(numberColumns))
        return asNumber(raw);
    const std::string text = cleanLine(raw.toString());
    return column == "DriverDate" ? asDate(text) : text;
}

std::string lowerCase(std::string text) { return kyStringUtils::toLower(text); }

kyVariant typedRow(const ManagementQuery& query, const ManagementRow& row)
{
    kyVariant::kyVariantMapImpl result;
    for (const std::string& column : query.columns)
        result[lowerCase(column)] = typedValue(column, row.getValue(column));
    return result;
}

} // namespace

std::string managementFailureText(ManagementStep step, std::uint32_t code)
{
    static constexpr const char* texts[] = {
        "Failed to initialize COM library. Error code = 0x", "Failed to initialize security. Error code = 0x",
        "Failed to create IWbemLocator object. Err code = 0x", "Could not connect. Error code = 0x",
        "Could not set proxy blanket. Error code = 0x"};
    char digits[8];
    const auto end = std::to_chars(digits, digits + sizeof(digits), code, 16).ptr;
    return texts[static_cast<std::size_t>(step)] + std::string(digits, end);
}

void collectManagement(const ManagementSelect& select, bool full, kyVariant::kyVariantMapImpl& out)
{
    out.clear();
    for (const QueryParts& parts : queries)
    {
        const ManagementQuery query = buildQuery(parts, full);
        const std::vector<ManagementRow> rows = select(query);
        kyVariant& found = out[lowerCase(query.className.substr(std::string_view("Win32_").size()))];
        if (parts.isOnlyOne)
        {
            found = typedRow(query, rows.empty() ? ManagementRow() : rows.front());
            continue;
        }
        found.setType(kyVariant::Type::Map);
        for (std::size_t i = 0; i < rows.size(); ++i)
            found.editMap()[std::to_string(i + 1)] = typedRow(query, rows[i]);
    }
}

} // namespace ky::impl
