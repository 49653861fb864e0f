// SPDX-License-Identifier: MIT
#include "child/child_mode.h"
#include "diagnostics/numbered_lines.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <climits>
#include <cstdlib>
#include <thread>
#include <vector>

namespace
{

using ky::kyLog;

void openLog(const std::string& path, const std::string& maxSize, const std::string& filesToKeep)
{
    ky::initializeKySystem(ky::InitType::Full, false);
    kyLog::edit().installFileHandlerExUtf8(path, 0, std::atoll(maxSize.c_str()), std::atoi(filesToKeep.c_str()));
}

/// PATH MAX KEEP WRITER THREADS LINES (0 lines: without end)
int writeNumberedLines(const std::vector<std::string>& a)
{
    openLog(a[0], a[1], a[2]);
    const int writer = std::atoi(a[3].c_str());
    const int count = std::atoi(a[5].c_str()) == 0 ? INT_MAX : std::atoi(a[5].c_str());
    std::vector<std::thread> threads;
    for (int t = 0; t < std::atoi(a[4].c_str()); ++t)
    {
        threads.emplace_back(
            [=]
            {
                for (int n = 0; n < count; ++n)
                    ky::logInfo() << ky::test::makeMessage({writer, t, n});
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    ky::terminateKySystem();
    return 0;
}

/// PATH MESSAGE. Leaves without termination while another thread logs.
int logAndLeave(const std::vector<std::string>& a)
{
    openLog(a[0], "-1", "0");
    std::thread(
        []
        {
            for (;;)
                ky::logInfo() << "busy";
        })
        .detach();
    ky::logWarning("child") << a[1];
    std::exit(0);
}

/// Logs without a logger, and with one that echoes: everything on standard output.
int logToStandardOutput(const std::vector<std::string>&)
{
    ky::logInfo("none") << "no logger";
    ky::kyLogObject(ky::kyLogType::DEBUG, nullptr, nullptr, nullptr) << "debug passes without a logger";
    kyLog::createInstance(false);
    ky::logWarning() << "echo \xC3\xA4\xE6\x97\xA5";
    ky::logDebug() << "off";
    kyLog::edit().setEchoToConsole(false);
    ky::logCritical() << "echo off";
    kyLog::WriteToStd("direct", static_cast<ky::kyLogType>(9), "q");
    kyLog::destroyInstance();
    return 0;
}

const ky::test::RegisterChildMode regWrite("log-write", &writeNumberedLines);
const ky::test::RegisterChildMode regLeave("log-leave", &logAndLeave);
const ky::test::RegisterChildMode regOutput("log-output", &logToStandardOutput);

} // namespace
