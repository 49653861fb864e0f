// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ky::tool
{

/// Exit codes of every command.
enum ExitCode : int
{
    Done = 0,
    Failed = 1, ///< the operation failed; reason and file name went to standard error
    WrongUsage = 2
};

struct ClearOptions
{
    std::string folder;
    bool keep = false; ///< the folder itself
};

struct RewriteOptions
{
    std::string file; ///< folder, base name and ".csv"; empty for no rewriting
    std::string lineBreak;
    bool replaceLineBreaks = false; ///< by `lineBreak`, in cells that would fall apart
    std::uint32_t rowsPerFile = 0xFFFFFFFF;
    char separator = ',';
    char quote = '"';
    bool bom = false;
};

struct CsvOptions
{
    std::vector<std::string> files;
    std::string iniFile; ///< where the summary goes; empty for none
    std::size_t shownRows = 5;
    char delimiter = ',';
    char quote = '"';
    bool typed = true;
    RewriteOptions rewrite;
};

struct IniOptions
{
    std::string file;
    std::string action;
    std::vector<std::string> arguments;
};

struct LogOptions
{
    std::string file;
    std::string type = "info";
    std::string qualifier;
    long long maxSizeBytes = -1;
    int filesToKeep = 0;
    bool readInput = false; ///< every line of standard input is a message
    std::vector<std::string> words;
};

struct FindOptions
{
    std::string root;
    std::vector<std::string> extensions; ///< of files; empty for all
    bool ignoreCase = false;
    bool names = false;   ///< bare names instead of paths
    bool folders = false; ///< folders as well
};

struct PipeOptions
{
    std::string action;
    std::string name;
    bool echo = false;              ///< serve: send back what comes
    int replyLines = -1;            ///< send: how many lines of reply to wait for; -1 for those that come in time
    int waitMs = 300;               ///< send: how long the last of them may take
    std::vector<std::string> words; ///< send: the text; empty for standard input
};

struct ReportOptions
{
    bool full = false;
    std::string iniFile; ///< empty for none
    std::string csvFile; ///< empty for none
};

struct SortOptions
{
    std::vector<std::string> files; ///< empty for standard input
    bool ignoreCase = false;
    bool reverse = false;
    bool unique = false;
};

struct RunOptions
{
    unsigned int timeoutMs = 0; ///< 0 for none
    std::string folder;
    std::vector<std::string> variables; ///< as "name=value", besides those of the tool
    std::vector<std::string> command;   ///< the program first
};

ExitCode runClear(const ClearOptions& options);
ExitCode runCsv(const CsvOptions& options);

/// Only the program and its arguments count.
ExitCode runDetach(const RunOptions& options);

ExitCode runFind(const FindOptions& options);
ExitCode runIni(const IniOptions& options);
ExitCode runLog(const LogOptions& options);
ExitCode runPipe(const PipeOptions& options);
ExitCode runReport(const ReportOptions& options);
ExitCode runSort(const SortOptions& options);

/// The exit code of the program, 124 when it was not finished in time, 127 when it cannot be started.
ExitCode runRun(const RunOptions& options);

/// Prints "ky: FILE: reason" to standard error.
ExitCode fail(const std::string& file, const std::string& reason);

/// The same for a command that the user stopped while it worked on this file.
inline ExitCode cancelled(const std::string& file) { return fail(file, "cancelled"); }

} // namespace ky::tool
