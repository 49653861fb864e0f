// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/progress.h"
#include "ky/utf8_path.h"

#include <ky/kyAsciiTableBuilder.h>
#include <ky/kyCsvStream.h>
#include <ky/kyIniFile.h>
#include <ky/kyIoDeviceMemory.h>
#include <ky/kyLog.h>
#include <ky/kySystemUtils.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

namespace ky::tool
{

namespace
{

using Map = kyVariant::kyVariantMapImpl;

constexpr std::size_t labelWidth = 12;
constexpr std::size_t textWidth = 86;

/// Lines of text under labels on the left.
class Page
{
public:
    Page() : mTable({}, AsciiTableBuilder::Style::Plain) { mTable.setMinWidth(0, labelWidth); }

    /// Texts under the same label stand below one another. An empty text shows nothing.
    void add(const std::string& label, const std::string& text)
    {
        mWidest = std::max(mWidest, AsciiTableBuilder::DisplayWidth(text));
        addLong(label, text);
    }

    /// A text that may go on in further lines.
    void addLong(const std::string& label, const std::string& text)
    {
        if (text.empty())
            return;
        mTable.addRow(label == mLastLabel ? std::string() : label, text);
        mLastLabel = label;
    }

    void print()
    {
        mTable.setMaxWidth(1, std::max(mWidest, textWidth), AsciiTableBuilder::Overflow::Wrap);
        std::cout << mTable;
    }

private:
    AsciiTableBuilder mTable;
    std::string mLastLabel;
    std::size_t mWidest = 0; // of the texts that stay on one line
};

/// The parts that are not empty, joined.
std::string joined(const std::vector<std::string>& parts, const char* separator)
{
    std::string text;
    for (const std::string& part : parts)
        if (!part.empty())
            text += (text.empty() ? "" : separator) + part;
    return text;
}

/// Empty when nothing is there.
std::string textAt(const Map& map, const char* path) { return map.getValuePath(path).toString(); }

/// Empty for 0, for -1 and when nothing is there.
std::string sizeAt(const Map& map, const char* path)
{
    static constexpr const char* units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
    double value = static_cast<double>(map.getValuePath(path).toInteger());
    if (value <= 0)
        return {};
    std::size_t unit = 0;
    for (; value >= 1024 && unit + 1 < std::size(units); ++unit)
        value /= 1024;
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%.*f %s", unit == 0 ? 0 : 1, value, units[unit]);
    return buffer;
}

/// Empty when `text` is.
std::string with(const std::string& before, const std::string& text, const std::string& behind)
{
    return text.empty() ? std::string() : before + text + behind;
}

std::string screenAt(const Map& map, const char* width, const char* height)
{
    const bool isKnown = map.getValuePath(width).toInteger() > 0 && map.getValuePath(height).toInteger() > 0;
    return isKnown ? textAt(map, width) + " x " + textAt(map, height) : std::string();
}

/// Calls for each of the maps "1", "2", ... below `path`.
void forEachRow(const Map& report, const std::string& path, const std::function<void(const Map& row)>& call)
{
    for (int i = 1;; ++i)
    {
        const kyVariant* const row = report.findPath((path + "/" + std::to_string(i)).c_str());
        if (row == nullptr || row->getType() != kyVariant::Type::Map)
            return;
        call(row->getMap());
    }
}

void showProcessor(const Map& report, Page& page)
{
    const std::string brand = textAt(report, "processor/brand");
    const std::size_t first = brand.find_first_not_of(' ');
    page.add("Processor", first == std::string::npos ? textAt(report, "processor/vendor") : brand.substr(first));
    const std::string count = textAt(report, "processor/logicalprocessors");
    const kyVariant clock = report.getValuePath("management/processor/1/maxclockspeed");
    const bool threads = report.getValuePath("processor/ishyperthreaded").toBool();
    const bool isVirtual = report.getValuePath("processor/ishypervisor").toBool();
    page.add("Processor", joined({count + (count == "1" ? " logical processor" : " logical processors"),
                                  clock.toInteger() > 0 ? clock.toString() + " MHz" : "",
                                  threads ? "hyper-threading" : "", isVirtual ? "inside a virtual machine" : ""},
                                 ", "));
}

void showDisplays(const Map& report, bool full, Page& page)
{
    forEachRow(report, "adapters",
               [&](const Map& row)
               {
                   page.add("Display", joined({textAt(row, "description"), sizeAt(row, "dedicatedmemory"),
                                               with("", sizeAt(row, "sharedsystemmemory"), " shared")},
                                              ", "));
               });
    forEachRow(
        report, "management/desktopmonitor",
        [&](const Map& row) {
            page.add("Monitor", joined({textAt(row, "name"), screenAt(row, "screenwidth", "screenheight")}, ", "));
        });
    if (!full)
        return;
    forEachRow(report, "management/videocontroller",
               [&](const Map& row)
               {
                   const std::string driver = textAt(row, "driverversion");
                   page.add("Driver",
                            with(textAt(row, "caption") + ": ", driver, with(" of ", textAt(row, "driverdate"), "")));
               });
}

void showPower(const Map& report, Page& page)
{
    if (!report.getValuePath("power/hasbattery").toBool())
    {
        const std::string source = textAt(report, "power/source");
        return page.add("Power", source == "unknown" ? std::string() : source);
    }
    const kyVariant percent = report.getValuePath("power/batterypercent", -1);
    const std::string charge = percent.toInteger() < 0 ? "battery" : "battery at " + percent.toString() + " %";
    const bool charging = report.getValuePath("power/ischarging").toBool();
    page.add("Power", joined({textAt(report, "power/source"), charge, charging ? "charging" : ""}, ", "));
}

/// What tells this computer and its user from others, and the long lists.
void showRest(const Map& report, Page& page)
{
    page.add("Disk", textAt(report, "disk/main"));
    page.addLong("Instructions", textAt(report, "processor/instructionsets"));
    page.addLong("Switched off", textAt(report, "processor/disabledinstructionsets"));
    page.add("Name",
             joined({textAt(report, "computer/name"), textAt(report, "management/computersystem/domain")}, ", "));
    page.add("User", textAt(report, "user/name"));
    page.add("Program",
             joined({textAt(report, "program/name"), with("in ", textAt(report, "program/folder"), "")}, " "));
    page.add("Program", joined({with("process ", textAt(report, "program/processid"), ""),
                                with("", sizeAt(report, "program/usedmemory"), " used")},
                               ", "));
    for (const auto& [name, version] : report.getValuePath("libraries").toMap())
        page.add("Libraries", name + " " + version.toString());
}

void show(const Map& report, bool full)
{
    Page page;
    const std::string family = textAt(report, "management/computersystem/systemfamily");
    page.add("Computer", joined({textAt(report, "management/computersystem/manufacturer"),
                                 textAt(report, "management/computersystem/model"), with("(", family, ")")},
                                " "));
    page.add("System", textAt(report, "os/description"));
    showProcessor(report, page);
    const std::string usable = sizeAt(report, "management/computersystem/totalphysicalmemory");
    page.add("Memory",
             joined({with("", sizeAt(report, "memory/installed"), " installed"), with("", usable, " usable")}, ", "));
    showDisplays(report, full, page);
    showPower(report, page);
    if (full)
        showRest(report, page);
    page.print();
}

/// A line break would end the row.
std::string oneLine(std::string text)
{
    const auto isBreak = [](char c) { return c == '\r' || c == '\n'; };
    std::replace_if(text.begin(), text.end(), isBreak, ' ');
    return text;
}

bool write(const std::filesystem::path& path, const std::string& content)
{
    std::ofstream out(path, std::ios::binary);
    out << content;
    out.close();
    return out.good();
}

/// Writes beside the file and renames over it: when the disk is full the old file stays, and there is never half a one.
bool replaceFile(const std::filesystem::path& file, const std::string& content)
{
    std::error_code error;
    std::filesystem::path target = std::filesystem::canonical(file, error); // a link stays a link
    if (error)
        target = file;
    const std::filesystem::file_status old = std::filesystem::status(target, error);
    if (std::filesystem::exists(old) && !std::filesystem::is_regular_file(old))
        return write(target, content); // a device or a pipe
    std::filesystem::path beside = target;
    beside += "." + std::to_string(kySystemUtils::GetCurrentProcessID()) + ".tmp";
    bool done = write(beside, content);
    if (done)
    {
        if (std::filesystem::exists(old))
            std::filesystem::permissions(beside, old.permissions(), error);
        std::filesystem::rename(beside, target, error);
        done = !error;
    }
    if (!done)
        std::filesystem::remove(beside, error);
    return done;
}

bool saveCsv(const std::string& file, const Map& report)
{
    kyIoDeviceMemory table;
    kyCsvStream csv(&table, ',', '"', "\n");
    csv << "path"
        << "value" << kyCsvStream::EndOfRow();
    Map flat;
    report.toFlattenMap(flat, '/');
    for (const auto& [path, value] : flat)
        csv << path << oneLine(value.toString()) << kyCsvStream::EndOfRow();
    const std::vector<char> text = table.takeData();
    return csv.isOk() && replaceFile(utf8Path(file), std::string(text.begin(), text.end()) + '\n');
}

} // namespace

ExitCode runReport(const ReportOptions& options)
{
    // Asking the machine is one step, which goes on to its end.
    const auto progress = makeProgress();
    progress->resetNotifier();
    Map report;
    kySystemUtils::GenerateHardwareReport(report, options.full);
    if (progress->shouldCancel())
        return cancelled("report");
    hideBar();
    show(report, options.full);
    if (!options.iniFile.empty() && !SaveIniFile(options.iniFile, report))
        return fail(options.iniFile, "cannot be written");
    if (!options.csvFile.empty() && !saveCsv(options.csvFile, report))
        return fail(options.csvFile, "cannot be written");
    logInfo("report") << (options.full ? "full" : "short");
    return Done;
}

} // namespace ky::tool
