// SPDX-License-Identifier: MIT
// An owning handle of one open file, and the few calls on names that go with it. Shared by the log file, the INI files
// and the readers; what each of them does with it stays in its own room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ky::impl::native
{

/// Raw error of the system: errno on Linux, GetLastError() on Windows; 0 for success.
using ErrorCode = int;

enum class OpenMode
{
    Read,         ///< existing file, for reading
    Append,       ///< every write goes to the end; created when missing
    Truncate,     ///< for writing, emptied; created when missing
    CreateNew,    ///< for writing; fails when the name exists, links included
    CreatePrivate ///< like CreateNew, readable by the owner alone where that is a matter of the file's mode
};

/// Opened with delete and write sharing and never inherited by child processes. Paths are UTF-8. On Linux '\' in the
/// path is taken as '/'. A folder never opens.
class FileHandle
{
public:
    FileHandle() = default;
    ~FileHandle() { close(); }
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    static FileHandle open(const std::string& pathUtf8, OpenMode mode, ErrorCode& error);

    bool isOpen() const { return mHandle != invalidHandle; }

    /// Bytes read, 0 at the end of the file, -1 on failure.
    std::int64_t read(void* buffer, std::size_t size, ErrorCode& error);

    /// One system call as a rule; short writes are continued. False when not everything could be written: `written`
    /// then tells how much was.
    bool write(const void* data, std::size_t size, std::size_t& written, ErrorCode& error);

    /// Size in bytes, -1 on failure.
    std::int64_t size() const;

    /// Absolute position from the start of the file.
    bool seek(std::int64_t position);

    /// Cuts the file to `size` bytes.
    bool truncate(std::int64_t size);

    /// Content handed to the storage device.
    bool flushToDisk();

    /// False when the system reports a failure of earlier writes. Never retried.
    bool close();

private:
    friend ErrorCode passRights(const std::string& model, FileHandle& file, const std::string& nameUtf8);

    static constexpr std::intptr_t invalidHandle = -1;
    std::intptr_t mHandle = invalidHandle;
};

/// Whether something of this name exists, folders included.
bool pathExists(const std::string& pathUtf8);

/// Size of the file of this name in bytes; -1 when it cannot be told.
std::int64_t fileSizeOf(const std::string& pathUtf8);

/// Removes a file (not a folder). 0 on success.
ErrorCode removeFile(const std::string& pathUtf8);

/// Renames, replacing an existing file of the new name in one step. 0 on success.
ErrorCode renameFile(const std::string& from, const std::string& to);

/// Whether the code says that the file, or a folder on the way to it, is not there.
bool isMissingFile(ErrorCode code);

/// Whether the code says that the system refuses to make or open the file here: rights, a read-only volume, or a path
/// that is too long (which Windows reports as missing).
bool isRefusal(ErrorCode code);

/// Whether another file can take the name's place: it is free, or leads to a regular file. Not a folder, a device, a
/// pipe, nor a link that leads nowhere.
bool isReplaceable(const std::string& pathUtf8);

/// Gives the open `file` the permissions of the file `model` where there is one, as far as this user may: owner, group
/// and mode on Linux, access list and attributes on Windows. On Linux it is the open file that gets them, whatever
/// somebody else may have put under its name meanwhile; Windows goes by the name. 0 on success.
ErrorCode passRights(const std::string& model, FileHandle& file, const std::string& nameUtf8);

/// Moves the finished and closed file `temporary` over `target`, where the system lets it also while others have
/// `target` open. 0 on success.
ErrorCode replaceFile(const std::string& temporary, const std::string& target);

/// The file that `pathUtf8` leads to when it is a link; the path itself otherwise or when that cannot be told.
std::string resolveLinks(const std::string& pathUtf8);

} // namespace ky::impl::native
