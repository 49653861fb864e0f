// SPDX-License-Identifier: MIT
#include "child/child_mode.h"

#include <ky/kySystemUtils.h>

#include <cstdio>
#include <fstream>

namespace
{

int printCommandLine(const std::vector<std::string>&)
{
    for (const std::string& argument : ky::kySystemUtils::ExtractCommandLineUtf8())
        std::printf("%s|", argument.c_str());
    return 0;
}

int printProgram(const std::vector<std::string>&)
{
    std::printf("%s|%s|%s", ky::kySystemUtils::GetProgramFullPath().c_str(),
                ky::kySystemUtils::GetProgramFolder().c_str(), ky::kySystemUtils::GetProgramName().c_str());
    return 0;
}

int removeAndPrintProgram(const std::vector<std::string>& arguments)
{
    return std::remove(ky::kySystemUtils::GetProgramFullPath().c_str()) == 0 ? printProgram(arguments) : 1;
}

/// As an update does it: the running program lost its name to another file.
int replaceAndPrintProgram(const std::vector<std::string>& arguments)
{
    const std::string path = ky::kySystemUtils::GetProgramFullPath();
    if (std::remove(path.c_str()) != 0 || !(std::ofstream(path) << "new"))
        return 1;
    return printProgram(arguments);
}

const ky::test::RegisterChildMode registrations[] = {{"print-command-line", &printCommandLine},
                                                     {"print-program", &printProgram},
                                                     {"remove-and-print-program", &removeAndPrintProgram},
                                                     {"replace-and-print-program", &replaceAndPrintProgram}};

} // namespace
