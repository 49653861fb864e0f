// SPDX-License-Identifier: MIT
// Writes numbered lines into a rotating log and ends without any clean-up at a chosen step of a rotation:
// crash_writer PATH MAX KEEP FIRST STEP OCCURRENCE PROGRESS_FILE
#include "child/utf8_arguments.h"
#include "diagnostics/log_file.h"
#include "diagnostics/numbered_lines.h"

#include <ky/kyLog.h>
#include <ky/kySystem.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

using ky::impl::LogStep;

int sStep = 0;
int sOccurrences = 0;

void endAt(LogStep step)
{
    if (static_cast<int>(step) == sStep && --sOccurrences == 0)
        std::_Exit(9);
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> a = ky::test::utf8Arguments(argc, argv);
    if (a.size() != 7)
        return 2;
    const auto number = [&a](std::size_t index) { return std::atoi(a[index].c_str()); };
    ky::initializeKySystem(ky::InitType::Full, false);
    ky::kyLog::edit().installFileHandlerExUtf8(a[0], 0, number(1), number(2));
    sStep = number(4);
    sOccurrences = number(5);
    ky::impl::logStepHook = &endAt;
    std::ofstream progress(std::filesystem::path(std::u8string(a[6].begin(), a[6].end())), std::ios::binary);
    for (int n = number(3); n < number(3) + 1000; ++n)
    {
        ky::logInfo() << ky::test::makeMessage({1, 0, n});
        progress << n << std::endl;
    }
    return 3;
}
