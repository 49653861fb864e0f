// SPDX-License-Identifier: MIT
#pragma once

#include "ky/commands.h"

#include <ky/kyProgressNotifier.h>

#include <string>

namespace ky::tool
{

/// `ky csv --to`: reads the table and writes it in another shape.
ExitCode rewriteTable(const std::string& file, const CsvOptions& options, kyProgressNotifierInterface& progress);

/// Why the table cannot be rewritten like this; empty when it can.
std::string rewriteMistake(const CsvOptions& options);

} // namespace ky::tool
