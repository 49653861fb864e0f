// SPDX-License-Identifier: MIT
// The examples of docs/faults.md.
#include "expect.h"

#include <ky/ky.h>

#include <stdexcept>

namespace
{

struct Document
{
};

struct Plugin
{
    void refresh(const Document&) { throw std::runtime_error("the plug-in is broken"); }
};

std::string lastMessage;

void remember(const std::string& message, ky::kyLogType, const std::string&, void*) { lastMessage = message; }

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installCustomHandler(&remember, nullptr);

    Plugin plugin;
    const Document document;
    // [guard]
    ky::exception::ExecGuardedCode([&] { plugin.refresh(document); });
    // reached in any case; a failure is in the log
    // [guard]
    expect(lastMessage == "Catch std exception : the plug-in is broken", "the exception is reported");

    ky::terminateKySystem();
    return failures;
}
