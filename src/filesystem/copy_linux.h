// SPDX-License-Identifier: MIT
// Copies that appear under their name only when they are whole. For *_linux.cpp files only.
#pragma once

#include "platform/file_handle.h"

#include <string>

namespace ky::impl::native
{

enum class CopyTo
{
    NewName,      ///< fails when the name exists
    ExistingFile, ///< or a new name; a link there leads to the file that is replaced
    ReplaceName   ///< takes the place of a file or link, whatever rights that has
};

/// A regular file with its permissions and time of change. System paths. 0 on success.
ErrorCode copyRegularFile(const std::string& source, const std::string& destination, CopyTo to);

/// The same link under another name, whatever file has that name now. System paths. 0 on success.
ErrorCode copyLink(const std::string& source, const std::string& destination);

} // namespace ky::impl::native
