// SPDX-License-Identifier: MIT
#include "ky/commands.h"

#include "ky/console_native.h"
#include "ky/line_cutter.h"
#include "ky/progress.h"

#include <ky/kyLog.h>
#include <ky/kyStringUtils.h>

#include <string_view>

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

/// Writes every line of standard input until it ends. False when cancelled; what is left of a line is then dropped.
bool writeInput(kyLogType type, const std::string& qualifier)
{
    const auto progress = makeProgress(); // nobody knows how much will come: no bar
    std::vector<char> block(64 * 1024);
    LineCutter lines;
    const auto write = [&](const std::string& line) { kyLog::edit().Write(line, type, qualifier); };
    for (;;)
    {
        std::size_t size = 0;
        const native::Input input = native::readInput(block.data(), block.size(), size);
        if (progress->shouldCancel())
            return false;
        if (input == native::Input::End)
            break;
        if (input == native::Input::Bytes)
            lines.add(std::string_view(block.data(), size), write);
    }
    lines.finish(write);
    return true;
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
    else if (!writeInput(type, options.qualifier))
        return cancelled(options.file);
    if (log.getSkippedLineCount() != 0)
        return fail(options.file, std::to_string(log.getSkippedLineCount()) + " line(s) could not be written");
    return Done;
}

} // namespace ky::tool
