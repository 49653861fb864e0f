// SPDX-License-Identifier: MIT
#include "ky/commands.h"

#include <ky/kyLog.h>
#include <ky/kyStringUtils.h>

#include <iostream>

namespace ky::tool
{

namespace
{

kyLogType typeOf(std::string name)
{
    kyStringUtils::toLower(name);
    if (name == "debug")
        return kyLogType::DEBUG;
    if (name == "warning")
        return kyLogType::WARNING;
    return name == "critical" ? kyLogType::CRITICAL : kyLogType::INFO;
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

} // namespace

ExitCode runLog(const LogOptions& options)
{
    kyLog& log = kyLog::edit();
    log.installCustomHandler(nullptr, nullptr); // the messages are the user's, not problems of the tool
    log.installFileHandlerExUtf8(options.file, 0, options.maxSizeBytes, options.filesToKeep);
    if (log.getCurrentLogFileNameUtf8().empty())
        return fail(options.file, "cannot be used as a log file");
    const kyLogType type = typeOf(options.type);
    if (!options.readInput)
        log.Write(joined(options.words), type, options.qualifier);
    std::string line;
    while (options.readInput && std::getline(std::cin, line))
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        log.Write(line, type, options.qualifier);
    }
    if (log.getSkippedLineCount() != 0)
        return fail(options.file, std::to_string(log.getSkippedLineCount()) + " line(s) could not be written");
    return Done;
}

} // namespace ky::tool
