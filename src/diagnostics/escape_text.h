// SPDX-License-Identifier: MIT
// For messages of the library's own that carry text from outside (paths, command lines, lines of files): such text must
// not be able to forge lines of the log. Used by every room.
#pragma once

#include <string>
#include <string_view>

namespace ky::impl
{

/// The text with control characters (U+0000 to U+001F, U+007F to U+009F) and the line separators U+2028 and U+2029
/// written as "\n", "\r", "\t", "\xHH" or "\uHHHH". Everything else, backslashes and ill-formed bytes included, stays.
std::string escapeControls(std::string_view text);

} // namespace ky::impl
