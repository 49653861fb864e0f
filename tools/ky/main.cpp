// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/console_native.h"
#include "ky/progress.h"
#include "ky/rewrite_table.h"
#include "ky/session.h"

#include <CLI/CLI.hpp>
#include <ky/kySystem.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace ky::tool
{

ExitCode fail(const std::string& file, const std::string& reason)
{
    hideBar();
    std::cout.flush();
    std::cerr << "ky: " << file << ": " << reason << '\n';
    return Failed;
}

namespace
{

struct Options
{
    ClearOptions clear;
    CsvOptions csv;
    FindOptions find;
    IniOptions ini;
    LogOptions log;
    PipeOptions pipe;
    ReportOptions report;
    SortOptions sort;
    RunOptions run;
    SessionLog session;
};

void defineClear(CLI::App& app, ClearOptions& clear)
{
    CLI::App* const command =
        app.add_subcommand("clear", "Remove a folder and what is in it; links are removed, not followed");
    command->add_option("FOLDER", clear.folder, "the folder; may be missing")->required();
    command->add_flag("--keep", clear.keep, "empty the folder only");
}

void defineCsv(CLI::App& app, CsvOptions& csv)
{
    CLI::App* const command =
        app.add_subcommand("csv", "Read tables; print columns, types seen and first rows, or rewrite one with --to");
    command->add_option("FILE", csv.files, "UTF-8 tables")->required();
    auto* const ini = command->add_option("--ini", csv.iniFile, "write the summary to this INI file");
    command->add_option("--rows", csv.shownRows, "rows to show of each table")->capture_default_str();
    command->add_option("--delimiter", csv.delimiter, "column delimiter")->capture_default_str();
    command->add_option("--quote", csv.quote, "string delimiter")->capture_default_str();
    command->add_flag("!--text", csv.typed, "keep every cell as text instead of typing it");
    RewriteOptions& rewrite = csv.rewrite;
    auto* const to = command->add_option("--to", rewrite.file, "rewrite the one table FILE to this .csv file instead");
    to->excludes(ini)->check([](const std::string& name) { return name.empty() ? "an empty name" : std::string(); });
    command->add_option("--to-separator", rewrite.separator, "column separator to write")
        ->capture_default_str()
        ->needs(to);
    command->add_option("--to-quote", rewrite.quote, "quote character to write")->capture_default_str()->needs(to);
    command
        ->add_option("--rows-per-file", rewrite.rowsPerFile,
                     "go on in \"NAME (1).csv\", \"NAME (2).csv\" and so on after so many rows")
        ->check(CLI::Range(1U, 0xFFFFFFFFU))
        ->needs(to);
    command->add_flag("--bom", rewrite.bom, "begin every file with a UTF-8 byte-order mark")->needs(to);
    command
        ->add_option("--line-breaks", rewrite.lineBreak,
                     "put this in place of line breaks in cells that are not quoted; without it they are an error")
        ->needs(to)
        ->each([&rewrite](const std::string&) { rewrite.replaceLineBreaks = true; });
}

void defineFind(CLI::App& app, FindOptions& find)
{
    CLI::App* const command = app.add_subcommand("find", "List the files below a folder; links are not entered");
    command->add_option("ROOT", find.root, "the folder")->required();
    command->add_option("--ext", find.extensions, "only files with these extensions, for example txt,csv")
        ->delimiter(',');
    command->add_flag("--ignore-case", find.ignoreCase, "compare extensions without regard to case");
    command->add_flag("--names", find.names, "names only, without their folder");
    command->add_flag("--folders", find.folders, "list folders as well");
}

void defineIni(CLI::App& app, IniOptions& ini)
{
    CLI::App* const command = app.add_subcommand(
        "ini", "Read or change an INI file: list | get PATH | set PATH VALUE | merge OTHER (comments are not kept)");
    command->add_option("FILE", ini.file, "the INI file")->required();
    command->add_option("ACTION", ini.action)->required()->check(CLI::IsMember({"list", "get", "set", "merge"}));
    command->add_option("ARGUMENT", ini.arguments);
}

void defineLog(CLI::App& app, LogOptions& log)
{
    CLI::App* const command = app.add_subcommand("log", "Append a line to a rotating log shared between processes");
    command->add_option("FILE", log.file, "the log file")->required();
    command->add_option("--type", log.type, "debug, info, warning or critical")
        ->check(CLI::IsMember({"debug", "info", "warning", "critical"}, CLI::ignore_case))
        ->capture_default_str();
    command->add_option("--qualifier", log.qualifier, "shown in parentheses behind the type");
    command->add_option("--max-size", log.maxSizeBytes, "rotate above this size, for example 64k")
        ->transform(CLI::AsSizeValue(false));
    command->add_option("--keep", log.filesToKeep, "rotated files to keep")->check(CLI::Range(0, 128));
    command->add_flag("--stdin", log.readInput, "every line of standard input is a message");
    command->add_option("MESSAGE", log.words, "the message; several words are joined by blanks");
}

void definePipe(CLI::App& app, PipeOptions& pipe)
{
    CLI::App* const command = app.add_subcommand(
        "pipe", "Talk over a named pipe: serve NAME prints what clients send, send NAME [TEXT...] prints the replies");
    command->add_option("ACTION", pipe.action)->required()->check(CLI::IsMember({"serve", "send"}));
    command->add_option("NAME", pipe.name, "the name of the pipe")->required();
    command->add_option("TEXT", pipe.words, "send: the line to send, words joined by blanks; none: standard input");
    command->add_flag("--echo", pipe.echo, "serve: send everything back as well");
    command->add_option("--replies", pipe.replyLines, "send: wait for so many lines of reply, however long it takes")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--wait", pipe.waitMs, "send: without --replies, end after a pause of so many milliseconds")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
}

void defineReport(CLI::App& app, ReportOptions& report)
{
    CLI::App* const command = app.add_subcommand("report", "Print the machine: system, processor, memory, displays");
    command->add_flag("--full", report.full, "also what tells this computer and its user, and long lists");
    command->add_option("--ini", report.iniFile, "write everything to this INI file");
    command->add_option("--csv", report.csvFile, "write everything to this CSV file, a path and a value a row");
}

void defineSort(CLI::App& app, SortOptions& sort)
{
    CLI::App* const command = app.add_subcommand(
        "sort", "Print lines in natural order: file2 before file10, letters as the user's locale has them");
    command->add_option("FILE", sort.files, "UTF-8 texts; standard input when there is none");
    command->add_flag("-i,--ignore-case", sort.ignoreCase, "compare letters without regard to case");
    command->add_flag("-r,--reverse", sort.reverse, "last line first");
    command->add_flag("-u,--unique", sort.unique, "of lines that compare equal only the first");
}

void defineSession(CLI::App& app, SessionLog& session)
{
    app.add_option("--log", session.file, "keep a log of the steps in this rotating file");
    app.add_option("--log-max-size", session.maxSizeBytes)->transform(CLI::AsSizeValue(false));
    app.add_option("--log-keep", session.filesToKeep)->check(CLI::Range(0, 128));
}

/// What follows the first word that is no option of the tool is the program and its arguments, whatever it looks like.
CLI::App* defineProgram(CLI::App& app, const char* name, const std::string& description, RunOptions& run)
{
    CLI::App* const command = app.add_subcommand(name, description);
    command->prefix_command()->fallthrough(false);
    command->footer("ky " + std::string(name) + " [OPTIONS] [--] PROGRAM [ARGUMENTS...]");
    command->parse_complete_callback([command, &run] { run.command = command->remaining(); });
    return command;
}

void defineRun(CLI::App& app, RunOptions& run, SessionLog& session)
{
    CLI::App* const command = defineProgram(
        app, "run", "Run a program; its output and exit code are passed on, its lines kept with --log", run);
    command->add_option("--timeout", run.timeoutMs,
                        "milliseconds after which it is ended, with all that it has started (exit code 124)");
    command->add_option("--dir", run.folder, "the folder to start it in");
    command->add_option("--env", run.variables, "NAME=VALUE in addition to the present environment; may be repeated")
        ->allow_extra_args(false)
        ->check([](const std::string& text)
                { return text.find('=', 1) == std::string::npos ? "NAME=VALUE expected" : std::string(); });
    defineSession(*command, session);
    defineProgram(app, "detach", "Start a program that goes on by itself", run);
}

/// Number of arguments that an action of `ky ini` takes.
std::size_t argumentCount(const std::string& action)
{
    if (action == "list")
        return 0;
    return action == "set" ? 2 : 1;
}

/// What the parser cannot see is wrong; empty if nothing.
std::string mistake(const CLI::App& app, const Options& options)
{
    if (app.got_subcommand("ini") && options.ini.arguments.size() != argumentCount(options.ini.action))
        return "ini " + options.ini.action + " takes " + std::to_string(argumentCount(options.ini.action)) +
               " argument(s)";
    if (app.got_subcommand("log") && options.log.words.empty() != options.log.readInput)
        return "log takes either a MESSAGE or --stdin";
    if (app.got_subcommand("csv") && !options.csv.rewrite.file.empty())
        return rewriteMistake(options.csv);
    if (app.got_subcommand("pipe") && options.pipe.action == "serve" && !options.pipe.words.empty())
        return "pipe serve takes no TEXT";
    if ((app.got_subcommand("run") || app.got_subcommand("detach")) && options.run.command.empty())
        return "there is no PROGRAM to start";
    if (app.got_subcommand("detach") && options.run.command.front().rfind('-', 0) == 0)
        return "detach takes no " + options.run.command.front();
    return {};
}

ExitCode runCommand(const std::string& name, const Options& options)
{
    if (name == "clear")
        return runClear(options.clear);
    if (name == "csv")
        return runCsv(options.csv);
    if (name == "detach")
        return runDetach(options.run);
    if (name == "find")
        return runFind(options.find);
    if (name == "ini")
        return runIni(options.ini);
    if (name == "pipe")
        return runPipe(options.pipe);
    if (name == "report")
        return runReport(options.report);
    if (name == "run")
        return runRun(options.run);
    if (name == "sort")
        return runSort(options.sort);
    return runLog(options.log);
}

ExitCode run(const CLI::App& app, const Options& options)
{
    if (const std::string reason = mistake(app, options); !reason.empty())
    {
        std::cerr << "ky: " << reason << "\nRun with --help for more information.\n";
        return WrongUsage;
    }
    const std::string command = app.get_subcommands().front()->get_name();
    // Clearing cannot be asked to stop: it is interrupted as any program.
    if (command != "clear")
        watchInterrupt();
    Session session;
    if (!session.startLog(options.session))
        return Failed;
    const ExitCode result = runCommand(command, options);
    const bool isPrinted = std::cout.flush().good() && std::ferror(stdout) == 0;
    return isPrinted || result != Done ? result : fail("standard output", "cannot be written");
}

/// Where the options from `at` on end; every one of them has a value.
std::size_t behindOptions(const std::vector<std::string>& arguments, std::size_t at)
{
    while (at < arguments.size() && arguments[at].rfind("--", 0) == 0 && arguments[at] != "--")
        at += arguments[at].find('=') == std::string::npos ? 2U : 1U;
    return at;
}

/// Takes out the "--" in front of a program to start: behind it, the parser would look for arguments of the tool.
void dropMark(std::vector<std::string>& arguments)
{
    std::size_t at = behindOptions(arguments, 0);
    if (at >= arguments.size() || (arguments[at] != "run" && arguments[at] != "detach"))
        return;
    at = behindOptions(arguments, at + 1);
    if (at < arguments.size() && arguments[at] == "--")
        arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(at));
}

ExitCode runTool(std::vector<std::string> arguments)
{
    CLI::App app("System services from the command line", "ky");
    Options options;
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", std::string("ky ") + kySystem::Version::GetDescStringMajorMinorRelease());
    defineSession(app, options.session);
    defineClear(app, options.clear);
    defineCsv(app, options.csv);
    defineFind(app, options.find);
    defineIni(app, options.ini);
    defineLog(app, options.log);
    definePipe(app, options.pipe);
    defineReport(app, options.report);
    defineSort(app, options.sort);
    defineRun(app, options.run, options.session);
    try
    {
        dropMark(arguments);
        std::reverse(arguments.begin(), arguments.end());
        app.parse(arguments);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error, std::cout, std::cerr) == 0 ? Done : WrongUsage;
    }
    return run(app, options);
}

} // namespace

} // namespace ky::tool

int main(int argc, char** argv)
{
    ky::tool::native::prepareConsole();
    try
    {
        return ky::tool::runTool(ky::tool::native::utf8Arguments(argc, argv));
    }
    catch (const std::exception& error)
    {
        std::cerr << "ky: " << error.what() << '\n';
        return ky::tool::Failed;
    }
}
