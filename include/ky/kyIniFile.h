// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// INI files: a tree of variants stored as text.
///
/// The top level of the tree stands in the section `[General]`, every map of the top level in a section of its own
/// name, and deeper maps become keys joined with `/`:
///
/// \code
/// [General]
/// a=1
///
/// [window]
/// title=main
/// position/x=20
/// \endcode
///
/// Integers, reals, booleans and strings can be stored. Lines end with a line feed (CR LF is read as well), `;` begins
/// a comment line, and the content is UTF-8 by convention. What a round trip does not keep:
/// - a real keeps 6 significant digits;
/// - a string that looks like a number or a boolean is read back as one, with the prefixes `0x` and `0` for
///   hexadecimal and octal (007 becomes the integer 7);
/// - white space at the ends of a string is trimmed, unless the string contains a double quote;
/// - a backslash in front of the letters n, r or t is read as part of a line feed, carriage return or tab;
/// - a list of one value is stored as that value, longer lists not at all;
/// - keys that are empty, begin with `;` or `[`, contain `=` or line breaks, or have white space at their
///   ends.
///
/// Both functions keep no state; calls for different maps may run at the same time. Calls that save one path at the
/// same time leave the text of one of them.

#include <ky/kyExport.h>
#include <ky/kyVariant.h>

#include <string>

namespace ky
{

/// Writes `map` to the file at `path` (UTF-8), replacing it. With `mergeWithExisting`, what an existing file holds is
/// kept where `map` has no value under the same path.
///
/// The new text is written to a temporary file in the same folder (`ini-*.tmp`), which then takes the target's place:
/// whenever the process is killed, the file holds its old or its new content. A link is followed; permissions are kept.
/// Where no file can be made beside the target or renamed over it, it is overwritten in place.
///
/// False when the file cannot be written, in which case it keeps its content (unless that happens in place), and when a
/// value has a type that cannot be stored. That is logged as a warning; the file then holds what was composed before
/// that value. A file that should be merged but cannot be loaded is logged as "Fail to load " with its path, and `map`
/// is written alone. Control characters in logged texts are escaped.
KY_API bool SaveIniFile(const std::string& path, const kyVariant::kyVariantMapImpl& map,
                        bool mergeWithExisting = false);

/// Reads the file at `path` (UTF-8) into `map`. Entries that `map` already has are never changed: a key that exists
/// already, or lies below one that holds a value, is a duplicate. Duplicates, lines without `=` and lines without a
/// key are logged as warnings, with the line number counted from 0, and skipped.
///
/// False only when the file cannot be opened or read; nothing is logged then.
KY_API bool LoadIniFile(const std::string& path, kyVariant::kyVariantMapImpl& map);

} // namespace ky
