// SPDX-License-Identifier: MIT
// Logging: types, qualifiers that are switched off at run time, a file that other processes may write as well, and a
// handler that sees every message.
#include <ky/ky.h>

#include <iostream>

namespace
{

void countMessages(const std::string&, ky::kyLogType, const std::string&, void* userData)
{
    ++*static_cast<int*>(userData);
}

} // namespace

int main()
{
    int messages = 0;
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog& log = ky::kyLog::edit();
    log.installFileHandlerExUtf8("shared.log", 0, 64 * 1024, 5);
    log.installCustomHandler(&countMessages, &messages);

    ky::logDebug("net") << "not written: DEBUG is off at start";
    log.setLogTypeEnabled(ky::kyLogType::DEBUG, true);
    log.setDebugSubTypeEnabled("net, disk", false);
    ky::logDebug("net") << "not written: on the blacklist";
    ky::logDebug("ui") << "window of " << 800 << " x " << 600;
    ky::logWarning("disk") << "only " << 3.5 << " % free";

    // The announcement of the blacklist, the debug line and the warning.
    std::cout << messages << " messages in " << log.getCurrentLogFileNameUtf8() << '\n';
    ky::terminateKySystem();
    return messages == 3 ? 0 : 1;
}
