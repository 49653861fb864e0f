// SPDX-License-Identifier: MIT
// Single operations on files. Paths are UTF-8 with either separator; codes are those of the system.
#pragma once

#include "platform/file_handle.h"

#include <cstdint>
#include <string>

namespace ky::impl::native
{

struct FileStatus
{
    std::int64_t lastAccess = 0; ///< this and the next two: seconds since 1970-01-01 UTC
    std::int64_t creation = 0;
    std::int64_t lastModified = 0;
    std::int64_t size = 0;
    bool hasType = false;
    bool isFolder = false;
};

/// Links are followed. False when there is nothing of this name.
bool queryStatus(const std::string& path, FileStatus& status);

/// Content, permissions and time of the last change. Links are followed.
bool copyFile(const std::string& source, const std::string& destination, bool overwrite);

/// Replaces a file; takes a file to another volume. 0 on success.
ErrorCode moveFile(const std::string& from, const std::string& to);

bool deleteFile(const std::string& path);

/// Every right to everybody. Links are refused.
bool grantEverything(const std::string& path);

} // namespace ky::impl::native
