// SPDX-License-Identifier: MIT
// The process, its program and its user. All texts are UTF-8; empty or 0 when the system does not tell.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ky::impl::native
{

/// Committed or used private memory in bytes.
std::int64_t privateMemory();

std::string userName();

/// May carry a domain.
std::string computerName();

/// The characters that separate the parts of a path here.
extern const std::string_view pathSeparators;

/// Absolute, with the separators of the system.
std::string programPath();

/// The program first.
std::vector<std::string> commandLine();

} // namespace ky::impl::native
