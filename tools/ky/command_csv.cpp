// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/table_summary.h"

#include <ky/kyCsvFileReader.h>
#include <ky/kyIniFile.h>
#include <ky/kyLog.h>

#include <iostream>

namespace ky::tool
{

namespace
{

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

/// Rows before an error are kept and shown; the result tells about the error.
ExitCode readTable(const std::string& file, const CsvOptions& options, kyVariant::kyVariantMapImpl& ini)
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
    const bool ok = reader.parseCsvFile();
    const TableSummary summary(reader.getTable());
    std::cout << file << '\n';
    summary.print(std::cout);
    printRows(reader.getTable(), options.shownRows, std::cout);
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
    for (const std::string& file : options.files)
    {
        if (readTable(file, options, ini) != Done)
            result = Failed;
    }
    if (options.iniFile.empty())
        return result;
    if (!SaveIniFile(options.iniFile, ini, false))
        return fail(options.iniFile, "cannot be written");
    logInfo("csv") << "summary written to " << options.iniFile;
    return result;
}

} // namespace ky::tool
