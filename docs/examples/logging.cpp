// SPDX-License-Identifier: MIT
// The examples of docs/logging.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <sstream>

int main()
{
    std::remove("app.log");
    const int count = 12;
    const int number = 7;
    const std::string path = "table.csv";

    // [first]
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8("app.log", 0, 1 << 20, 5); // 1 MiB a file, five old ones kept
    ky::logInfo() << "loaded " << count << " rows from " << path;
    ky::logWarning("io") << "device closed";
    ky::logDebug("net") << "packet " << number; // off until DEBUG is enabled
    // [first]

    // [types]
    ky::kyLog& log = ky::kyLog::edit();
    log.setLogTypeEnabled(ky::kyLogType::Debug, true);
    log.setDebugSubTypeEnabled("net,disk", false); // DEBUG, but not of these two
    ky::logDebug("net") << "packet " << number;
    ky::logDebug("cache") << "hit";
    // [types]

    std::stringstream lines;
    lines << std::ifstream("app.log", std::ios::binary).rdbuf();
    const std::string text = lines.str();
    expect(text.find("INFO : ") != std::string::npos, "the type is in front");
    expect(text.find("loaded 12 rows from table.csv\r\n") != std::string::npos, "the message is whole");
    expect(text.find("WARNING(io) : ") != std::string::npos, "the qualifier is in parentheses");
    expect(text.find("packet") == std::string::npos, "DEBUG is off, and then its sub-type");
    expect(text.find("DEBUG(cache) : ") != std::string::npos, "other sub-types are on");

    ky::terminateKySystem();
    return failures;
}
