// SPDX-License-Identifier: MIT
#include "log_checker.h"

#include "support/temp_dir.h"

#include <algorithm>

namespace ky::test
{

namespace
{

const std::string mark = "\xEF\xBB\xBF";

void checkLine(const std::string& file, const std::string& line, LogContent& log)
{
    // INFO : Sun Nov 15 07:44:17 2026 message
    constexpr std::size_t prefix = 7 + 24 + 1;
    NumberedLine parsed;
    ++log.lines;
    if (line.compare(0, 7, "INFO : ") == 0 && line.size() > prefix && parseMessage(line.substr(prefix), parsed))
    {
        log.numbers[{parsed.writer, parsed.thread}].push_back(parsed.number);
        return;
    }
    log.torn.push_back(file + ": " + line.substr(0, 200));
}

void checkFile(const std::string& file, const std::string& content, LogContent& log)
{
    if (content.compare(0, mark.size(), mark) != 0)
        log.faults.push_back(file + ": no mark at the start");
    if (content.find(mark, 1) != std::string::npos)
        log.faults.push_back(file + ": second mark");
    std::size_t at = content.compare(0, mark.size(), mark) == 0 ? mark.size() : 0;
    while (at < content.size())
    {
        const std::size_t end = content.find("\r\n", at);
        if (end == std::string::npos)
        {
            log.torn.push_back(file + ", end: " + content.substr(at, 200));
            return;
        }
        checkLine(file, content.substr(at, end - at), log);
        at = end + 2;
    }
}

} // namespace

std::vector<std::string> logFiles(const std::string& path, int filesToKeep)
{
    std::vector<std::string> files;
    for (int i = filesToKeep - 1; i >= 0; --i)
    {
        const std::string rotated = path + "_" + std::to_string(i) + ".back";
        if (exists(rotated))
            files.push_back(rotated);
    }
    files.push_back(path);
    return files;
}

LogContent readLog(const std::string& path, int filesToKeep, std::size_t maxSize)
{
    constexpr std::size_t longestLine = 10000;
    LogContent log;
    for (const std::string& file : logFiles(path, filesToKeep))
    {
        const std::string content = readFile(file);
        checkFile(file, content, log);
        if (file == path)
            continue;
        ++log.rotatedFiles;
        if (maxSize != 0 && (content.size() <= maxSize || content.size() > maxSize + longestLine))
            log.faults.push_back(file + ": size " + std::to_string(content.size()));
    }
    return log;
}

void expectRun(LogContent& log, int writer, int thread, bool fromZero, int last)
{
    const std::vector<int>& numbers = log.numbers[{writer, thread}];
    const std::string who = "writer " + std::to_string(writer) + " thread " + std::to_string(thread) + ": ";
    for (std::size_t i = 1; i < numbers.size(); ++i)
    {
        if (numbers[i] != numbers[i - 1] + 1)
        {
            log.faults.push_back(who + std::to_string(numbers[i]) + " after " + std::to_string(numbers[i - 1]));
            log.missing += static_cast<std::uint64_t>(std::max(numbers[i] - numbers[i - 1] - 1, 1));
            return;
        }
    }
    if (last >= 0 && (numbers.empty() || numbers.back() != last))
    {
        log.faults.push_back(who + "last line is missing");
        log.missing += static_cast<std::uint64_t>(std::max(last - (numbers.empty() ? -1 : numbers.back()), 1));
    }
    if (fromZero && !numbers.empty() && numbers.front() != 0)
    {
        log.faults.push_back(who + "begins with " + std::to_string(numbers.front()));
        log.missing += static_cast<std::uint64_t>(numbers.front());
    }
}

std::string describe(const LogContent& log)
{
    std::string text;
    for (const std::string& fault : log.faults)
        text += fault + "\n";
    return text;
}

} // namespace ky::test
