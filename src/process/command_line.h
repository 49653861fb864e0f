// SPDX-License-Identifier: MIT
// Command lines as texts, in UTF-8. Nothing here asks the system.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ky::impl
{

/// Cuts a line into a program and its arguments; false when a double quote stands inside an unquoted token, or when the
/// line is not well-formed. The results are set only on success.
bool splitCommandLine(std::string_view line, std::string& program, std::vector<std::string>& arguments);

/// The program and its arguments, each in double quotes: what a program that splits its command line in the usual way
/// on Windows cannot take apart differently.
std::string quotedCommandLine(std::string_view program, const std::vector<std::string>& arguments);

/// The same for a program that the command interpreter runs. Only for texts that fit.
std::string interpreterCommandLine(std::string_view interpreter, std::string_view program,
                                   const std::vector<std::string>& arguments);

/// Whether the interpreter takes the texts as they are. It expands percent signs and reads double quotes in its own
/// way, and a line break ends its line, quoted or not: no quoting helps.
bool fitsInterpreter(std::string_view program, const std::vector<std::string>& arguments);

} // namespace ky::impl
