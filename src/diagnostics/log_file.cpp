// SPDX-License-Identifier: MIT
#include "diagnostics/log_file.h"

#include "diagnostics/log_file_native.h"
#include "diagnostics/log_line.h"
#include "platform/file_handle.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>

namespace ky::impl
{

void (*logStepHook)(LogStep step) = nullptr;

namespace
{

using native::AppendFile;
using native::ErrorCode;
using native::FileHandle;
using native::OpenMode;
using native::PathKind;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view lineEnd = "\r\n";

void step(LogStep which)
{
    if (logStepHook != nullptr)
        logStepHook(which);
}

bool holds(const AppendFile& file, std::int64_t position, std::string_view bytes)
{
    char found[4];
    return file.readAt(position, found, bytes.size()) && std::string_view(found, bytes.size()) == bytes;
}

/// Only a file that begins with the mark is known to consist of whole lines.
bool endsTorn(const AppendFile& file, std::int64_t size)
{
    return size > static_cast<std::int64_t>(byteOrderMark.size()) &&
           !holds(file, size - static_cast<std::int64_t>(lineEnd.size()), lineEnd) && holds(file, 0, byteOrderMark);
}

} // namespace

void LogFile::setPath(const std::string& pathUtf8, std::int64_t maxSizeBytes, int filesToKeep)
{
    mPath = pathUtf8;
    mMaxSize = maxSizeBytes;
    mFilesToKeep = std::clamp(filesToKeep, 0, maxFilesToKeep);
    mKnownSize = -1;
    mSkippedLines = 0;
    mRefusedBefore = false;
}

bool LogFile::prepare(int flags)
{
    constexpr int rotateAndDelete = kyLog::DeleteExisting | kyLog::RotateExisting;
    const Rotation rotation = (flags & rotateAndDelete) == rotateAndDelete ? rotate() : Rotation::Nothing;
    if ((flags & kyLog::DeleteExisting) != 0 && rotation != Rotation::Refused)
        native::removeFile(mPath);
    const PathKind kind = native::pathKind(mPath);
    return kind == PathKind::File || kind == PathKind::Other || (flags & kyLog::CreateAtFirstLine) != 0 || create();
}

/// A link that was planted in the meantime is not followed.
bool LogFile::create() const
{
    ErrorCode error = 0;
    FileHandle file = FileHandle::open(mPath, OpenMode::CreateNew, error);
    if (!file.isOpen())
        return native::pathKind(mPath) == PathKind::File;
    std::size_t written = 0;
    if (!file.write(byteOrderMark.data(), byteOrderMark.size(), written, error))
    {
        // The disk is full. An empty file gets its mark with the first line.
        file.close();
        native::cutFile(mPath, 0);
    }
    return true;
}

void LogFile::append(LogLine& line, bool exclusive)
{
    if (!tryAppend(line, exclusive))
        ++mSkippedLines;
}

bool LogFile::tryAppend(LogLine& line, bool exclusive)
{
    {
        AppendFile file(mPath);
        if (!file.isOpen())
            return false;
        const std::int64_t size = file.end();
        if (mMaxSize < 1 || size <= mMaxSize)
            return write(file, size, line, exclusive);
    }
    startAnew(rotate());
    AppendFile file(mPath);
    return file.isOpen() && write(file, file.end(), line, exclusive);
}

bool LogFile::write(AppendFile& file, std::int64_t size, LogLine& line, bool exclusive)
{
    std::string_view head;
    if (size == 0 && native::pathKind(mPath) == PathKind::File)
        head = byteOrderMark;
    else if (exclusive && size != mKnownSize && endsTorn(file, size))
        head = lineEnd;
    step(LogStep::BeforeMark);
    std::int64_t total = 0;
    const bool ok = line.emit(head, lineEnd,
                              [&](std::string_view bytes)
                              {
                                  const std::size_t written = file.write(bytes.data(), bytes.size());
                                  total += static_cast<std::int64_t>(written);
                                  return written == bytes.size();
                              });
    step(LogStep::AfterWrite);
    mKnownSize = ok ? size + total : -1;
    if (ok || total == 0 || file.end() != size + total)
        return ok;
    // The disk is full. Without the part that still went in, the log goes on with whole lines when there is room again.
    file.close();
    native::cutFile(mPath, size);
    return false;
}

LogFile::Rotation LogFile::rotate()
{
    if (native::pathKind(mPath) != PathKind::File)
        return Rotation::Nothing;
    if (mFilesToKeep == 0)
        return Rotation::Empty;
    // Somebody may look into a file for a moment without letting others rename it.
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(mRefusedBefore ? 0 : 250);
    bool moved = shiftFiles();
    while (!moved && Clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        moved = shiftFiles();
    }
    mRefusedBefore = !moved;
    return moved ? Rotation::Moved : Rotation::Refused;
}

/// False when a file could not be renamed; the files above it have moved, those below stay, and a later call goes on
/// from there.
bool LogFile::shiftFiles() const
{
    int target = firstFreeIndex();
    if (target == mFilesToKeep)
    {
        step(LogStep::BeforeOldestGoes);
        --target;
        const ErrorCode removed = native::removeFile(rotatedName(target));
        if (removed != 0 && !native::isMissingFile(removed))
            return false;
    }
    for (; target >= 0; --target)
    {
        step(LogStep::BeforeRename);
        const ErrorCode renamed =
            native::renameFile(target == 0 ? mPath : rotatedName(target - 1), rotatedName(target));
        if (renamed != 0 && !native::isMissingFile(renamed))
            return false;
    }
    return true;
}

int LogFile::firstFreeIndex() const
{
    int index = 0;
    while (index < mFilesToKeep && native::pathKind(rotatedName(index)) != PathKind::Nothing)
        ++index;
    return index;
}

std::string LogFile::rotatedName(int index) const { return mPath + "_" + std::to_string(index) + ".back"; }

/// Makes or empties the live file. It is opened for its line like any other: writers without the shared lock must not
/// overwrite each other.
void LogFile::startAnew(Rotation rotation) const
{
    step(LogStep::BeforeReopen);
    ErrorCode error = 0;
    if (rotation == Rotation::Moved)
        FileHandle::open(mPath, OpenMode::CreateNew, error);
    else if (rotation == Rotation::Empty)
        FileHandle::open(mPath, OpenMode::Truncate, error);
}

} // namespace ky::impl
