// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::bench
{

/// A program that does nothing.
std::string trueProgram();

/// Runs a program without arguments by the bare calls of the system; its exit code.
int runByBareCalls(const std::string& program);

} // namespace ky::bench
