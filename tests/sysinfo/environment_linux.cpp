// SPDX-License-Identifier: MIT
#include "environment.h"

#include <cstdlib>
#include <sched.h>

namespace ky::test
{

std::string environmentText(const char* name)
{
    const char* const text = std::getenv(name);
    return text != nullptr ? text : "";
}

void setEnvironmentText(const char* name, const char* text) { ::setenv(name, text, 1); }

void removeEnvironmentText(const char* name) { ::unsetenv(name); }

unsigned processorsForThisProcess()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    return ::sched_getaffinity(0, sizeof(set), &set) == 0 ? static_cast<unsigned>(CPU_COUNT(&set)) : 1024 * 1024;
}

} // namespace ky::test
