// SPDX-License-Identifier: MIT
// Single operations on folders, and what only the system knows about them. Paths are UTF-8 with either separator; codes
// are those of the system.
#pragma once

#include "platform/file_handle.h"

#include <cstdint>
#include <string>

namespace ky::impl::native
{

bool isFolder(const std::string& path);

/// One folder, which must be empty; not what a link leads to. 0 on success.
ErrorCode removeEmptyFolder(const std::string& path);

enum class FolderState
{
    Missing, ///< or not to be told
    Folder,
    NoFolder
};

FolderState folderState(const std::string& path);

/// True also when the folder has come into being meanwhile.
bool makeFolder(const std::string& path);

bool setWorkingFolder(const std::string& path);

/// The system's spelling; empty on failure.
std::string workingFolder();

/// Where the system puts temporary files; empty on failure.
std::string systemTempFolder();

/// Value of the environment variable TEMP as bytes. False when it is not set.
bool temporaryVariable(std::string& value);

/// A name that was free: "prefix<hexadecimal number>.tmp" in the folder. Made and removed at once; empty on failure.
std::string uniqueName(const std::string& folder, const std::string& prefix);

bool isNameTaken(const std::string& path);

/// The folder of the running program without a separator at its end. False on failure.
bool programFolder(std::string& folder);

/// Root of the volume that holds an absolute path; empty when it is none, or on failure.
std::string volumeRoot(const std::string& path);

/// Bytes free to this user.
bool freeBytes(const std::string& root, std::uint64_t& bytes);

} // namespace ky::impl::native
