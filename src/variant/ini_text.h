// SPDX-License-Identifier: MIT
// The text form of INI files, apart from the files themselves.
#pragma once

#include <ky/kyVariant.h>

#include <string>
#include <string_view>

namespace ky::impl
{

using IniMap = kyVariant::kyVariantMapImpl;

/// Section of the top level, in the text as well as in the tree.
inline constexpr std::string_view iniGeneral = "General";

inline constexpr char iniPathSeparator = '/';

/// Adds the entries of the text to `map`; existing ones stay. Bad lines are logged and skipped.
void readIni(std::string_view text, IniMap& map);

/// Appends the text of `map` to `text`. At the first value that cannot be stored, logs it and returns false; `text`
/// then holds what stands before it.
bool writeIni(const IniMap& map, std::string& text);

/// Logs a warning through the library log; nothing when there is no log.
void warnIni(std::string_view message);

} // namespace ky::impl
