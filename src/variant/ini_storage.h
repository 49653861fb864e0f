// SPDX-License-Identifier: MIT
// How the text of an INI file gets in and out of its file.
#pragma once

#include <string>
#include <string_view>

namespace ky::impl
{

/// Reads a whole file. False when it cannot be opened or read; `text` is then unspecified.
bool readIniText(const std::string& pathUtf8, std::string& text);

/// Gives the file its new content in one step: the text is written beside it and renamed over it, so that the name
/// leads to the old or the new text at every moment. Links are followed, permissions kept. Writes in place where no
/// file can be made in the folder or renamed over this one, and to what is no regular file. False when the content
/// could not be written; the old content then stays, except in place.
bool writeIniText(const std::string& pathUtf8, std::string_view text);

} // namespace ky::impl
