// SPDX-License-Identifier: MIT
#include "ky/session.h"

#include "ky/progress.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <iostream>

namespace ky::tool
{

namespace
{

void showProblems(const std::string& message, kyLogType type, const std::string&, void*)
{
    if (type != kyLogType::WARNING && type != kyLogType::CRITICAL)
        return;
    hideBar();
    std::cerr << "ky: " << message << '\n';
}

} // namespace

Session::Session()
{
    kySystemUtils::ExportProcessorCount();
    initializeKySystem(InitType::Full, false);
    kyLog::edit().setEchoToConsole(false);
    kyLog::edit().installCustomHandler(&showProblems, nullptr);
}

Session::~Session() { terminateKySystem(); }

bool Session::startLog(const SessionLog& log)
{
    if (log.file.empty())
        return true;
    kyLog::edit().installFileHandlerExUtf8(log.file, 0, log.maxSizeBytes, log.filesToKeep);
    return !kyLog::get().getCurrentLogFileNameUtf8().empty();
}

} // namespace ky::tool
