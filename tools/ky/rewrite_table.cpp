// SPDX-License-Identifier: MIT
#include "ky/rewrite_table.h"

#include "ky/progress.h"
#include "ky/utf8_path.h"

#include <ky/kyCsvFileReader.h>
#include <ky/kyCsvFileWriter.h>
#include <ky/kyLog.h>

#include <algorithm>
#include <iostream>
#include <string_view>

namespace ky::tool
{

namespace
{

constexpr std::size_t rowsAtATime = 1000;
constexpr std::string_view extension = ".csv";

bool endsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// Folder and base name of the files to write.
struct Target
{
    explicit Target(const std::string& file)
    {
        const std::size_t separator = file.find_last_of("/\\");
        const std::size_t name = separator == std::string::npos ? 0 : separator + 1;
        folder = name == 0 ? "." : file.substr(0, name);
        baseName = file.substr(name, file.size() - name - extension.size());
    }

    std::string folder;
    std::string baseName;
};

/// The base name with the number that the file of this name has; the base name itself when it has none.
std::string numberedName(const std::string& baseName, const std::string& fileName)
{
    const std::size_t open = fileName.rfind(" (");
    const std::size_t close = fileName.rfind(").");
    if (open == std::string::npos || close == std::string::npos || close <= open + 2)
        return baseName;
    const std::string number = fileName.substr(open + 2, close - open - 2);
    return number.find_first_not_of("0123456789") == std::string::npos ? baseName + " (" + number + ")" : baseName;
}

/// Whether one of the files to write would be `file` itself, by whatever name.
bool replaces(const Target& target, const std::string& file)
{
    std::error_code failed;
    const std::filesystem::path folder = utf8Path(target.folder);
    for (const auto& entry : std::filesystem::directory_iterator(folder, failed))
    {
        const std::u8string name = entry.path().filename().u8string();
        const std::string written =
            numberedName(target.baseName, std::string(name.begin(), name.end())) + std::string(extension);
        std::error_code unknown;
        if (std::filesystem::equivalent(folder / utf8Path(written), utf8Path(file), unknown))
            return true;
    }
    return false;
}

class Rewriter
{
public:
    Rewriter(const RewriteOptions& options, const Target& target)
        : mOptions(options),
          mWriter(target.folder, target.baseName, options.rowsPerFile, options.separator, options.quote, "\r\n",
                  options.bom)
    {
        mWriter.getStream(); // a table without rows gives a file as well
    }

    /// False when a row could not be written; `reason` tells why.
    bool add(const kyCsvFileReader::Row& row)
    {
        ++mRows;
        kyCsvStream& stream = mWriter.getStream();
        for (const kyVariant& cell : row)
        {
            const std::string text = cell.toString();
            if (survives(text))
                stream << text;
            else if (mOptions.replaceLineBreaks)
                stream << withoutLineBreaks(text);
            else
                return failed("row " + std::to_string(mRows) +
                              ": a line break in a cell cannot be written; --line-breaks tells what to put there");
        }
        stream << kyCsvStream::EndOfRow();
        return stream.isOk() || failed("cannot be written");
    }

    bool finish() { return mWriter.finish() || failed("cannot be written"); }

    std::size_t rowCount() const { return mRows; }
    std::size_t fileCount() const { return mWriter.getFileCount(); }
    const std::string& reason() const { return mReason; }

private:
    bool failed(const std::string& reason)
    {
        if (mReason.empty())
            mReason = reason;
        return false;
    }

    /// A line break is safe only in a cell that is quoted for another reason.
    bool survives(const std::string& text) const
    {
        return text.find_first_of("\r\n") == std::string::npos || text.find(mOptions.quote) != std::string::npos ||
               text.find(mOptions.separator) != std::string::npos;
    }

    std::string withoutLineBreaks(const std::string& text) const
    {
        std::string result;
        for (std::size_t i = 0; i < text.size(); ++i)
        {
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                continue;
            if (text[i] == '\r' || text[i] == '\n')
                result += mOptions.lineBreak;
            else
                result += text[i];
        }
        return result;
    }

    const RewriteOptions& mOptions;
    kyCsvFileWriter mWriter;
    std::size_t mRows = 0;
    std::string mReason;
};

/// In portions, so that a table of any length fits. False after an error or a cancellation.
bool copyRows(kyCsvFileReader& reader, Rewriter& rewriter, kyProgressNotifierInterface& progress)
{
    progress.setCurrentStepMaxProgress(static_cast<double>(reader.getFileSize()));
    bool finished = false;
    while (!finished && !progress.shouldCancel())
    {
        const bool ok = reader.parseNext(finished, true, rowsAtATime);
        for (const kyCsvFileReader::Row& row : reader.getTable())
        {
            if (!rewriter.add(row))
                return false;
        }
        if (!ok)
            return false;
        progress.setCurrentStepProgress(static_cast<double>(reader.getParsedSize()));
    }
    return finished;
}

} // namespace

std::string rewriteMistake(const CsvOptions& options)
{
    const RewriteOptions& to = options.rewrite;
    const auto isLineBreak = [](char character) { return character == '\r' || character == '\n'; };
    if (options.files.size() != 1)
        return "csv --to takes one FILE";
    if (!endsWith(to.file, extension) || Target(to.file).baseName.empty())
        return "csv --to takes the name of a .csv file";
    if (to.separator == to.quote || isLineBreak(to.separator) || isLineBreak(to.quote))
        return "csv --to takes a separator and a quote that differ and are no line breaks";
    return {};
}

ExitCode rewriteTable(const std::string& file, const CsvOptions& options, kyProgressNotifierInterface& progress)
{
    const Target target(options.rewrite.file);
    kyCsvFileReader reader(false);
    reader.setColumnDelimiter(options.delimiter);
    reader.setStringDelimiter(options.quote);
    reader.setFileName(file);
    if (!reader.getLastError().empty() || !reader.startParsing())
        return fail(file, reader.getLastError());
    if (replaces(target, file))
        return fail(file, "cannot be rewritten onto itself");
    Rewriter rewriter(options.rewrite, target);
    const bool copied = copyRows(reader, rewriter, progress);
    const bool written = rewriter.finish();
    hideBar();
    if (!reader.getLastError().empty())
        return fail(file, reader.getLastError());
    if (!rewriter.reason().empty())
        return fail(options.rewrite.file, rewriter.reason());
    if (!copied || !written)
        return Failed; // cancelled
    std::cout << options.rewrite.file << ": " << rewriter.rowCount() << " rows in " << rewriter.fileCount()
              << " file(s)\n";
    logInfo("csv") << file << ": " << rewriter.rowCount() << " rows written to " << options.rewrite.file;
    return Done;
}

} // namespace ky::tool
