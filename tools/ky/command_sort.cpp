// SPDX-License-Identifier: MIT
#include "ky/commands.h"
#include "ky/console_native.h"
#include "ky/line_cutter.h"
#include "ky/progress.h"
#include "ky/utf8_path.h"

#include <ky/kyLog.h>
#include <ky/kyStringUtils.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string_view>

namespace ky::tool
{

namespace
{

constexpr std::size_t blockSize = 64 * 1024;
using Lines = std::vector<std::string>;

/// Appends the lines of `text`.
void splitLines(std::string_view text, Lines& lines)
{
    LineCutter cutter;
    const auto keep = [&](const std::string& line) { lines.push_back(line); };
    cutter.add(text, keep);
    cutter.finish(keep);
}

bool readFile(const std::string& path, std::string& content)
{
    std::ifstream file(utf8Path(path), std::ios::binary);
    std::vector<char> block(blockSize);
    while (file)
    {
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        content.append(block.data(), static_cast<std::size_t>(file.gcount()));
    }
    return file.eof() && !file.bad();
}

/// False when cancelled.
bool readInput(std::string& content)
{
    const auto progress = makeProgress();
    std::vector<char> block(blockSize);
    for (;;)
    {
        std::size_t size = 0;
        const native::Input input = native::readInput(block.data(), block.size(), size);
        if (progress->shouldCancel())
            return false;
        if (input == native::Input::End)
            return true;
        if (input == native::Input::Bytes)
            content.append(block.data(), size);
    }
}

void sortLines(const SortOptions& options, Lines& lines)
{
    const bool caseSensitive = !options.ignoreCase;
    const auto isBefore = [&](const std::string& a, const std::string& b)
    {
        const int order = kyStringUtils::CompareUTF8Natural(a, b, caseSensitive);
        return options.reverse ? order == 1 : order == -1;
    };
    std::stable_sort(lines.begin(), lines.end(), isBefore);
    if (!options.unique)
        return;
    const auto isEqual = [&](const std::string& a, const std::string& b)
    { return kyStringUtils::CompareUTF8Natural(a, b, caseSensitive) == 0; };
    lines.erase(std::unique(lines.begin(), lines.end(), isEqual), lines.end());
}

bool print(const Lines& lines)
{
    std::string block;
    for (const std::string& line : lines)
    {
        block.append(line).push_back('\n');
        if (block.size() < blockSize)
            continue;
        if (!std::cout.write(block.data(), static_cast<std::streamsize>(block.size())))
            return false;
        block.clear();
    }
    return std::cout.write(block.data(), static_cast<std::streamsize>(block.size())).flush().good();
}

} // namespace

ExitCode runSort(const SortOptions& options)
{
    static const std::string input = "standard input";
    Lines lines;
    std::string content;
    if (options.files.empty())
    {
        if (!readInput(content))
            return cancelled(input);
        splitLines(content, lines);
    }
    for (const std::string& file : options.files)
    {
        content.clear();
        if (!readFile(file, content))
            return fail(file, "cannot be read");
        splitLines(content, lines);
    }
    sortLines(options, lines);
    logInfo("sort") << lines.size() << " lines";
    return print(lines) ? Done : fail("standard output", "cannot be written");
}

} // namespace ky::tool
