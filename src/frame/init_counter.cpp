// SPDX-License-Identifier: MIT
#include <ky/kySystem.h>

namespace ky::impl
{

bool LibInitCounter::msLibInitWarnings = true;

LibInitCounter::LibInitCounter(const char* name, bool flag) : mFlag(flag), mName(name != nullptr ? name : "n/a") {}

bool LibInitCounter::incrementInitCounter()
{
    mEverInitialized = true;
    return ++mCounter == 1;
}

bool LibInitCounter::decrementInitCounter() { return --mCounter == 0; }

void LibInitCounter::SetLibInitWarningsEnabled(bool enabled) { msLibInitWarnings = enabled; }

} // namespace ky::impl
