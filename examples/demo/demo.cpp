// SPDX-License-Identifier: MIT
// A job that uses the whole library: `ky_demo SETTINGS` merges the CSV files below some folders. It reads and types
// them on all processors, writes the merged table to files of limited length, has a worker process examine the columns,
// goes on after a fault, and logs it all into one file, which other programs may write at the same time. The settings:
//
//   [input]              every entry names a folder
//   folder=/usr/share/distro-info
//   [output]
//   folder=demo-output   made when it is missing
//   rowsPerFile=10000    with the header
//   [log]
//   file=demo.log
//   maxSize=131072       bytes
//   keep=16              files
#include "fault.h"
#include "tables.h"
#include "worker.h"

#include <atomic>
#include <iostream>

namespace
{

using ky::AsciiTableBuilder;
using ky::kyDirUtils;
using ky::kySystemUtils;
using ky::kyVariant;
using Map = kyVariant::kyVariantMapImpl;

constexpr int faultyJobs = 8;

struct Settings
{
    std::string path;
    std::string output = "demo-output";
    std::vector<std::string> folders;
    unsigned int rowsPerFile = 10000;
    std::string log = "demo.log";
    long long logSize = 128 * 1024;
    int logKeep = 16;
};

/// What the log has shown of the fault; filled by the logger under its lock.
struct FaultWatch
{
    int faults = 0;
    std::string report;
};

void watchForFaults(const std::string& message, ky::kyLogType, const std::string&, void* watch)
{
    auto& found = *static_cast<FaultWatch*>(watch);
    if (message.find("EXCEPTION_ACCESS_VIOLATION") == std::string::npos)
        return;
    ++found.faults;
    found.report = message;
}

/// Called by the updater's thread, every second.
void watchMemory(void* peak)
{
    auto& most = *static_cast<std::atomic<long long>*>(peak);
    const long long used = kySystemUtils::GetUsedRamQuantityInBytes();
    if (used > most)
        most = used;
}

bool loadSettings(const std::string& path, Settings& settings)
{
    Map map;
    if (!ky::LoadIniFile(path, map))
        return false;
    settings.path = path;
    settings.output = map.getValuePath("output/folder", settings.output).toString();
    settings.rowsPerFile =
        static_cast<unsigned int>(map.getValuePath("output/rowsPerFile", settings.rowsPerFile).toInteger());
    settings.log = map.getValuePath("log/file", settings.log).toString();
    settings.logSize = map.getValuePath("log/maxSize", settings.logSize).toInteger();
    settings.logKeep = static_cast<int>(map.getValuePath("log/keep", settings.logKeep).toInteger());
    const kyVariant* const input = map.findPath("input");
    if (input != nullptr && input->getType() == kyVariant::Type::Map)
    {
        for (const auto& [name, folder] : input->getMap())
            settings.folders.push_back(folder.toString());
    }
    return !settings.folders.empty();
}

std::string number(std::uint64_t value)
{
    return ky::kyMathUtils::FormatIntegerSeparator(static_cast<unsigned long>(value));
}

std::string mebibytes(long long bytes)
{
    return ky::kyStringUtils::fromFloat(static_cast<double>(bytes) / 1048576.0, 1, true) + " MiB";
}

void headline(const std::string& text) { std::cout << '\n' << text << '\n' << std::string(text.size(), '=') << '\n'; }

void describeMachine(Map& summary)
{
    headline("The machine");
    const std::string machine = kySystemUtils::GetOSInfo() + '\n' + kySystemUtils::GetCPUInfo().getBrand() + ", " +
                                std::to_string(kySystemUtils::GetIdealThreadCount()) + " logical processors, " +
                                mebibytes(kySystemUtils::GetRamQuantityInBytes()) + " of memory";
    std::cout << machine << '\n';
    ky::logInfo("demo") << machine;
    Map report;
    kySystemUtils::GenerateHardwareReport(report, false);
    summary["machine"] = report;
}

/// Reading takes longer than writing. Reports to one bar, step after step.
bool mergeTables(const Settings& settings, std::vector<demo::Table>& tables, demo::Tally& written)
{
    double bytes = 0;
    double rows = 0;
    for (const demo::Table& table : tables)
        bytes += static_cast<double>(table.bytes);
    ky::kyProgressNotifierConsoleView bar;
    bar.beginStepGroupWeights({2.0, 1.0}, bytes, nullptr);
    const bool isRead = demo::readTables(tables, bar);
    for (const demo::Table& table : tables)
        rows += static_cast<double>(table.rowCount());
    bar.changeCurrentStep(rows, 1);
    const bool isWritten = demo::writeMerged(tables, settings.output, settings.rowsPerFile, bar, written);
    bar.endStepGroup();
    std::cout << "\n\n";
    ky::logInfo("demo") << written.rows << " rows written to the merged table";
    return isRead && isWritten;
}

void showTables(const std::vector<demo::Table>& tables, Map& summary)
{
    AsciiTableBuilder shown({"Table", "Bytes", "Rows", "Columns", "Integers", "Reals", "Texts", "Empty", "ms"});
    for (std::size_t i = 1; i < 9; ++i)
        shown.setAlignment(i, AsciiTableBuilder::Alignment::Right);
    int count = 0;
    for (const demo::Table& table : tables)
    {
        demo::Column sum;
        for (const demo::Column& column : table.columns)
        {
            sum.integers += column.integers;
            sum.reals += column.reals;
            sum.texts += column.texts;
            sum.empty += column.empty;
        }
        shown.addRow(kyDirUtils::ExtractFileBaseName(table.path), number(table.bytes), number(table.rowCount()),
                     number(table.columns.size()), number(sum.integers), number(sum.reals), number(sum.texts),
                     number(sum.empty), ky::kyStringUtils::fromFloat(table.milliseconds, 1, true));
        Map entry = {{"path", table.path},       {"rows", table.rowCount()}, {"columns", table.columns.size()},
                     {"integers", sum.integers}, {"reals", sum.reals},       {"texts", sum.texts},
                     {"empty", sum.empty}};
        summary["table" + std::to_string(++count)] = entry;
    }
    std::cout << shown;
    for (const demo::Table& table : tables)
    {
        if (!table.error.empty())
            std::cout << table.path << ": " << table.error << '\n';
    }
}

/// Whether the files hold what was written.
bool checkMerged(const Settings& settings, const demo::Tally& written, Map& summary)
{
    const std::vector<std::string> files = demo::mergedFiles(settings.output);
    demo::Tally read;
    const bool isSame = demo::readMerged(files, read) && read == written;
    std::cout << '\n'
              << number(written.rows) << " rows written to " << files.size() << " files and read back"
              << (isSame ? ": the same\n" : ": NOT the same\n");
    for (const std::string& file : files)
        std::cout << "  " << file << '\n';
    summary["merged"] = Map{{"rows", written.rows}, {"bytes", written.bytes}, {"files", files.size()}};
    return isSame;
}

bool consultWorker(const Settings& settings, const std::vector<demo::Table>& tables, const std::string& lock,
                   Map& summary)
{
    headline("A worker process examines the columns");
    const demo::WorkerResult worker = demo::askWorker(tables, settings.path, lock);
    AsciiTableBuilder shown({"Column", "Cells", "Different", "Times", "Most frequent"});
    for (std::size_t i = 1; i < 4; ++i)
        shown.setAlignment(i, AsciiTableBuilder::Alignment::Right);
    shown.setMaxWidth(4, 48);
    int count = 0;
    for (const demo::ColumnAnswer& answer : worker.answers)
    {
        const std::string& frequent = answer.mostFrequent;
        shown.addRow(answer.column, number(answer.tally.rows), number(answer.distinct), number(answer.times),
                     frequent.empty() ? "(empty)" : frequent);
        summary["column" + std::to_string(++count)] = Map{{"name", answer.column},
                                                          {"cells", answer.tally.rows},
                                                          {"different", answer.distinct},
                                                          {"mostFrequent", frequent},
                                                          {"times", answer.times}};
    }
    std::cout << shown << "\nProcess " << worker.pid << " answered over a named pipe: it has "
              << (worker.agrees ? "counted the same cells\n" : "NOT counted the same cells\n") << "It was "
              << (worker.isLockRefused ? "refused" : "NOT refused") << " the lock of this program, " << lock << '\n';
    return worker.isComplete && worker.agrees && worker.isLockRefused;
}

bool surviveFault(const FaultWatch& watch, Map& summary)
{
    headline("A fault on purpose");
    const int done = demo::runFaultyJobs(faultyJobs, 3);
    std::cout << "One of " << faultyJobs << " jobs of the worker pool wrote through a null pointer; " << done
              << " are done, and the program goes on. The log has:\n";
    std::vector<std::string> lines = ky::kyStringUtils::Split(watch.report, '\n');
    for (std::size_t i = 0; i < lines.size() && i < 4; ++i)
        std::cout << "  " << AsciiTableBuilder::Shorten(ky::kyStringUtils::trim(lines[i]), 116) << '\n';
    summary["fault"] = Map{{"jobs", faultyJobs}, {"done", done}, {"logged", watch.faults}};
    return done == faultyJobs - 1 && watch.faults == 1 && lines.size() > 1;
}

/// Every step is tried, whatever has become of the one before.
bool runSteps(const Settings& settings, const std::string& lock, const FaultWatch& watch, Map& summary)
{
    describeMachine(summary);
    std::vector<demo::Table> tables = demo::findTables(settings.folders);
    headline("The tables below the folders, read and typed by all processors");
    if (tables.empty())
    {
        std::cout << "There is none.\n";
        return false;
    }
    demo::Tally written;
    bool isOk = mergeTables(settings, tables, written);
    showTables(tables, summary);
    isOk = checkMerged(settings, written, summary) && isOk;
    isOk = consultWorker(settings, tables, lock, summary) && isOk;
    isOk = surviveFault(watch, summary) && isOk;
    return isOk;
}

int runDemo(const Settings& settings, const FaultWatch& watch)
{
    kyHighResTimer timer;
    timer.start();
    kyDirUtils::MkpathUtf8(settings.output);
    ky::kyLockFile lock;
    const std::string lockPath = kyDirUtils::JoinPath(settings.output, "demo.lock");
    if (!lock.takeLockUtf8(lockPath))
    {
        std::cout << "another demo is running in " << settings.output << '\n';
        return 1;
    }
    std::atomic<long long> peakMemory{0};
    Map summary;
    bool isOk = false;
    {
        ky::kyThreadPeriodicalUpdater updater(1);
        updater.addCallback(&watchMemory, &peakMemory);
        isOk = runSteps(settings, lockPath, watch, summary);
    }
    const std::string summaryPath = kyDirUtils::JoinPath(settings.output, "demo-summary.ini");
    summary["run"] = Map{{"ok", isOk}, {"seconds", timer.getElapsedTimeInSec()}, {"peakMemory", peakMemory.load()}};
    isOk = ky::SaveIniFile(summaryPath, summary) && isOk;
    headline("Done");
    std::cout << (isOk ? "Everything went as it should" : "SOMETHING WENT WRONG") << ", in "
              << ky::kyStringUtils::fromFloat(timer.getElapsedTimeInSec(), 2, true) << " s with "
              << mebibytes(peakMemory) << " of memory.\n  results: " << summaryPath << "\n  log:     " << settings.log
              << '\n';
    ky::logInfo("demo") << (isOk ? "the demo is complete" : "the demo has failed");
    return isOk ? 0 : 1;
}

int run(const std::vector<std::string>& arguments)
{
    Settings settings;
    const bool isWorker = arguments.size() == 5 && arguments[2] == "work";
    if ((arguments.size() != 2 && !isWorker) || !loadSettings(arguments[1], settings))
    {
        std::cout << "ky_demo SETTINGS, an INI file with the folders to read in the section [input]\n";
        return 2;
    }
    // The worker's lines go to the same file.
    ky::kyLog::edit().installFileHandlerExUtf8(settings.log, 0, settings.logSize, settings.logKeep);
    if (isWorker)
        return demo::answerQuestions(arguments[3], arguments[4]);
    FaultWatch watch;
    ky::kyLog::edit().installCustomHandler(&watchForFaults, &watch);
    const int result = runDemo(settings, watch);
    ky::kyLog::edit().installCustomHandler(nullptr, nullptr);
    return result;
}

} // namespace

int main()
{
    kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full);
    const int result = run(kySystemUtils::ExtractCommandLineUtf8());
    ky::terminateKySystem();
    return result;
}
