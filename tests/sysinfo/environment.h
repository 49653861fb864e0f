// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::test
{

/// The environment of this process, as programs started by it inherit it.
std::string environmentText(const char* name);
void setEnvironmentText(const char* name, const char* text);
void removeEnvironmentText(const char* name);

/// Processors that this process may run on, counted in another way than the library does.
unsigned processorsForThisProcess();

} // namespace ky::test
