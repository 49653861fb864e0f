// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::tool
{

/// The rotating log that a run of the tool keeps of its own steps, when asked for.
struct SessionLog
{
    std::string file;
    long long maxSizeBytes = -1;
    int filesToKeep = 0;
};

/// Library up while it lives. Warnings of the library go to standard error; standard output stays the command's own.
class Session
{
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// False when the log file cannot be used.
    bool startLog(const SessionLog& log);
};

} // namespace ky::tool
