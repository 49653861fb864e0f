// SPDX-License-Identifier: MIT
#pragma once

#include "numbered_lines.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ky::test
{

/// What a set of rotated log files holds, and everything that is wrong with it.
struct LogContent
{
    /// Numbers by writer and thread, in the order of the files.
    std::map<std::pair<int, int>, std::vector<int>> numbers;
    std::vector<std::string> faults;
    /// Lines that are not whole, with their files.
    std::vector<std::string> torn;
    /// Lines that expectRun() missed up to the first gap of each thread, or found doubled or out of order.
    std::uint64_t missing = 0;
    int rotatedFiles = 0;
    std::size_t lines = 0;
};

/// Paths of a log's files, oldest first.
std::vector<std::string> logFiles(const std::string& path, int filesToKeep);

/// Reads the files, oldest first, and checks marks, line ends, prefixes and checksums. Lines that are not whole are
/// collected apart. With `maxSize` the sizes of the rotated files are checked too.
LogContent readLog(const std::string& path, int filesToKeep, std::size_t maxSize = 0);

/// Adds a fault unless the numbers of the writer's thread run without a gap from `first` (or anything, when files have
/// been dropped) to `last`.
void expectRun(LogContent& log, int writer, int thread, bool fromZero, int last);

/// The faults as text for a failed expectation; empty when there are none.
std::string describe(const LogContent& log);

} // namespace ky::test
