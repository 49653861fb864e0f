// SPDX-License-Identifier: MIT
// The rotating log file, shared with other processes. Every function expects the caller to hold the locks.
//
// What a writer that dies at any moment may leave behind, and who repairs it:
// - a rotation that stopped half-way leaves a gap in the numbers. The next one shifts the files below the gap only, so
//   that none but the oldest is ever dropped.
// - no live file, or an empty one: the next line creates it, and writes the mark because the file is empty.
// - a torn last line (a large write can be cut short by a kill): the next line first ends it.
#pragma once

#include <cstdint>
#include <string>

namespace ky::impl
{

class LogLine;

namespace native
{
class AppendFile;
}

class LogFile
{
public:
    static constexpr int maxFilesToKeep = 128;

    /// Takes effect without touching the disk.
    void setPath(const std::string& pathUtf8, std::int64_t maxSizeBytes, int filesToKeep);

    const std::string& path() const { return mPath; }

    /// What installation does to the files, by its flags (kyLog::FileFlags). False when the file cannot be created.
    bool prepare(int flags);

    /// Writes one line, rotating before when the file has exceeded its limit. `exclusive` says that no other process
    /// can be writing.
    void append(LogLine& line, bool exclusive);

    /// Lines that did not get into the file as a whole since the path was set.
    std::uint64_t skippedLines() const { return mSkippedLines; }

private:
    enum class Rotation
    {
        Nothing, ///< there was no file
        Moved,   ///< the file has got its new name
        Empty,   ///< no files are kept: the caller empties it
        Refused  ///< it could not be renamed and must not be emptied
    };

    Rotation rotate();
    bool shiftFiles() const;
    int firstFreeIndex() const;
    std::string rotatedName(int index) const;
    void startAnew(Rotation rotation) const;
    bool create() const;
    bool tryAppend(LogLine& line, bool exclusive);
    bool write(native::AppendFile& file, std::int64_t size, LogLine& line, bool exclusive);

    std::string mPath;
    std::int64_t mMaxSize = -1;
    int mFilesToKeep = 0;
    /// Size that our last line left; a file of this size ends with a whole line.
    std::int64_t mKnownSize = -1;
    std::uint64_t mSkippedLines = 0;
    /// A rotation was refused: do not wait again before every line.
    bool mRefusedBefore = false;
};

/// Points at which tests end the process.
enum class LogStep
{
    BeforeOldestGoes,
    BeforeRename,
    BeforeReopen,
    BeforeMark,
    AfterWrite
};

/// For tests only: called at each step when set.
extern void (*logStepHook)(LogStep step);

} // namespace ky::impl
