// SPDX-License-Identifier: MIT
#include "diagnostics/log_file.h"

#include "diagnostics/log_file_native.h"
#include "diagnostics/log_line.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>

namespace ky::impl
{

void (*logStepHook)(LogStep step) = nullptr;

namespace
{

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

/// True when exactly these bytes stand at the position.
bool holds(FileHandle& file, std::int64_t position, std::string_view bytes)
{
    char found[4];
    ErrorCode error = 0;
    return file.seek(position) && file.read(found, bytes.size(), error) == static_cast<std::int64_t>(bytes.size()) &&
           std::string_view(found, bytes.size()) == bytes;
}

} // namespace

void LogFile::setPath(const std::string& pathUtf8, std::int64_t maxSizeBytes, int filesToKeep)
{
    mPath = pathUtf8;
    mMaxSize = maxSizeBytes;
    mFilesToKeep = std::clamp(filesToKeep, 0, maxFilesToKeep);
    mKnownSize = -1;
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
    ErrorCode error = 0;
    FileHandle file = FileHandle::open(mPath, OpenMode::Append, error);
    if (!file.isOpen())
        return;
    std::int64_t size = file.size();
    if (mMaxSize >= 1 && size > mMaxSize)
    {
        file.close();
        file = reopen(rotate());
        if (!file.isOpen())
            return;
        size = file.size();
    }
    write(file, size, line, exclusive);
}

void LogFile::write(FileHandle& file, std::int64_t size, LogLine& line, bool exclusive)
{
    std::string_view head;
    if (size == 0 && native::pathKind(mPath) == PathKind::File)
        head = byteOrderMark;
    else if (exclusive && size != mKnownSize && endsTorn(size))
        head = lineEnd;
    step(LogStep::BeforeMark);
    std::int64_t total = 0;
    const bool ok = line.emit(head, lineEnd,
                              [&](std::string_view bytes)
                              {
                                  std::size_t written = 0;
                                  ErrorCode error = 0;
                                  const bool whole = file.write(bytes.data(), bytes.size(), written, error);
                                  total += static_cast<std::int64_t>(written);
                                  return whole;
                              });
    step(LogStep::AfterWrite);
    mKnownSize = ok ? size + total : -1;
    if (ok || total == 0 || file.size() != size + total)
        return;
    // The disk is full. Without the part that still went in, the log goes on with whole lines when there is room again.
    file.close();
    native::cutFile(mPath, size);
}

/// Only a file that begins with the mark is known to consist of whole lines.
bool LogFile::endsTorn(std::int64_t size) const
{
    ErrorCode error = 0;
    if (size <= static_cast<std::int64_t>(byteOrderMark.size()))
        return false;
    FileHandle file = FileHandle::open(mPath, OpenMode::Read, error);
    return file.isOpen() && !holds(file, size - static_cast<std::int64_t>(lineEnd.size()), lineEnd) &&
           holds(file, 0, byteOrderMark);
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

FileHandle LogFile::reopen(Rotation rotation) const
{
    step(LogStep::BeforeReopen);
    // The fresh or emptied file is closed again and opened as for any line: writers without the shared lock must not
    // overwrite each other.
    ErrorCode error = 0;
    if (rotation == Rotation::Moved)
        FileHandle::open(mPath, OpenMode::CreateNew, error);
    else if (rotation == Rotation::Empty)
        FileHandle::open(mPath, OpenMode::Truncate, error);
    return FileHandle::open(mPath, OpenMode::Append, error);
}

} // namespace ky::impl
