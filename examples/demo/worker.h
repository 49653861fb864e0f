// SPDX-License-Identifier: MIT
#pragma once

#include "tables.h"

namespace demo
{

/// What the worker has found out about one column of the merged table.
struct ColumnAnswer
{
    std::string column;
    Tally tally;
    std::uint64_t distinct = 0;
    std::string mostFrequent;
    std::uint64_t times = 0;
};

/// What has become of the worker.
struct WorkerResult
{
    long long pid = 0;
    bool isComplete = false;    ///< every question was answered, and the worker ended well
    bool agrees = false;        ///< it has counted what was sent
    bool isLockRefused = false; ///< it was not given the lock that this program holds
    std::vector<ColumnAnswer> answers;
};

/// Starts this program as a worker and asks it about every column. `settings` is the path of the settings, `lock` that
/// of the lock file.
WorkerResult askWorker(const std::vector<Table>& tables, const std::string& settings, const std::string& lock);

/// What the worker does: answers until it is told to end. The exit code of the process.
int answerQuestions(const std::string& pipeName, const std::string& lock);

} // namespace demo
