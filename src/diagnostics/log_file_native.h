// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ky::impl::native
{

enum class PathKind
{
    Nothing, ///< no such name, or a link that leads nowhere
    File,    ///< an ordinary file
    Folder,
    Other,  ///< a device or a pipe
    Unknown ///< it cannot be told: no access, or a name that the system does not take
};

/// What the name leads to. UTF-8; on Linux '\' counts as '/'.
PathKind pathKind(const std::string& pathUtf8);

/// The live file while one line is written: open for appending, shared with everybody, created when missing, never
/// inherited by child processes; creation follows no link on Linux. Readable too where the file's rights allow it.
class AppendFile
{
public:
    explicit AppendFile(const std::string& pathUtf8);
    ~AppendFile() { close(); }
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    bool isOpen() const { return mHandle != invalidHandle; }

    /// Position of the end in bytes, -1 when there is none. Cheaper than asking for the file's attributes: on Linux a
    /// file that is asked for its times pays for exact ones with every later write.
    std::int64_t end() const;

    /// Writes at the end, as a rule in one call. Bytes written; less than `size` when the disk is full.
    std::size_t write(const char* data, std::size_t size);

    /// Reads exactly `size` bytes at the position.
    bool readAt(std::int64_t position, char* data, std::size_t size) const;

    void close();

private:
    static constexpr std::intptr_t invalidHandle = -1;
    std::intptr_t mHandle = invalidHandle;
};

/// Cuts the existing file to `size` bytes.
bool cutFile(const std::string& pathUtf8, std::int64_t size);

} // namespace ky::impl::native
