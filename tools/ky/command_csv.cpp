// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/progress.h"
#include "ky/rewrite_table.h"
#include "ky/table_summary.h"
#include "ky/utf8_path.h"

#include <ky/kyCsvFileReader.h>
#include <ky/kyIniFile.h>
#include <ky/kyLog.h>

#include <algorithm>
#include <iostream>
#include <vector>

namespace ky::tool
{

namespace
{

constexpr std::size_t rowsAtATime = 1000;

std::string baseName(const std::string& path)
{
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

/// Two tables of one name get two sections.
std::string freeSection(const kyVariant::kyVariantMapImpl& ini, const std::string& file)
{
    const std::string name = baseName(file);
    std::string section = name;
    for (int i = 2; ini.contains(section); ++i)
        section = name + " (" + std::to_string(i) + ")";
    return section;
}

/// Larger files take a larger part of the bar. A file that is not there has a part as well: it is worked on, too.
std::vector<double> sizesOf(const std::vector<std::string>& files)
{
    std::vector<double> sizes;
    for (const std::string& file : files)
    {
        std::error_code failed;
        const std::uintmax_t size = std::filesystem::file_size(utf8Path(file), failed);
        sizes.push_back(failed ? 1.0 : static_cast<double>(std::max<std::uintmax_t>(size, 1)));
    }
    return sizes;
}

/// Reads in portions, so that a table of any length fits. False after an error or a cancellation.
bool readRows(kyCsvFileReader& reader, kyProgressNotifierInterface& progress, TableSummary& summary)
{
    if (!reader.startParsing())
        return false;
    progress.setCurrentStepMaxProgress(static_cast<double>(reader.getFileSize()));
    bool finished = false;
    bool ok = true;
    while (ok && !finished && !progress.shouldCancel())
    {
        ok = reader.parseNext(finished, true, rowsAtATime);
        summary.add(reader.getTable());
        progress.setCurrentStepProgress(static_cast<double>(reader.getParsedSize()));
    }
    return ok && finished;
}

/// Rows before an error are kept and shown; the result tells about the error.
ExitCode readTable(const std::string& file, const CsvOptions& options, kyProgressNotifierInterface& progress,
                   kyVariant::kyVariantMapImpl& ini)
{
    kyCsvFileReader reader(options.typed);
    reader.setColumnDelimiter(options.delimiter);
    reader.setStringDelimiter(options.quote);
    reader.setFileName(file);
    if (!reader.getLastError().empty())
    {
        logWarning("csv") << file << ": " << reader.getLastError();
        return fail(file, reader.getLastError());
    }
    TableSummary summary(options.shownRows);
    const bool ok = readRows(reader, progress, summary);
    hideBar();
    if (!ok && reader.getLastError().empty())
        return Failed; // cancelled: half a summary would mislead
    std::cout << file << '\n';
    summary.print(std::cout);
    summary.store(ini, freeSection(ini, file));
    logInfo("csv") << file << ": " << summary.rowCount() << " rows, " << summary.columnCount() << " columns";
    if (ok)
        return Done;
    logCritical("csv") << file << ": " << reader.getLastError();
    return fail(file, reader.getLastError());
}

} // namespace

ExitCode runCsv(const CsvOptions& options)
{
    kyVariant::kyVariantMapImpl ini;
    ExitCode result = Done;
    const auto progress = makeProgress();
    progress->resetNotifier();
    progress->beginStepGroupWeights(sizesOf(options.files), 1.0, nullptr);
    for (std::size_t i = 0; i < options.files.size(); ++i)
    {
        progress->changeCurrentStep(1.0, i);
        const std::string& file = options.files[i];
        if ((options.rewrite.file.empty() ? readTable(file, options, *progress, ini)
                                          : rewriteTable(file, options, *progress)) != Done)
            result = Failed;
        if (progress->shouldCancel())
            return cancelled(file);
    }
    if (options.iniFile.empty())
        return result;
    if (!SaveIniFile(options.iniFile, ini, false))
        return fail(options.iniFile, "cannot be written");
    logInfo("csv") << "summary written to " << options.iniFile;
    return result;
}

} // namespace ky::tool
